// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "aspn2_msgs/GSSIP.h"
#include "face/FACE_Common.h"
#include "face/FACE_IOSS.h"
#include "ioss_mcsq/GssipTopicSerializer.h"
#include "ioss_mcsq/KD_MCSQ.h"

// Receiver frames on the queue devices: turns samples into bytes and back and delivers them by
// callback. A connection has one device, at most one callback, and a handle that stays valid for
// the life of this object.
//
// A callback gets the samples of two sources, and may thus run on two threads at once: what another
// process wrote to the device comes on the callback thread, what is written here comes on the
// thread of the writer, without the round trip through the device. On the callback thread it runs
// with the read path locked: it may call Write, and must not call Process_Notification_Event.
//
// Connect from one thread; Write and IsInitialized may be called by any. What a callback is bound
// to must outlive this object.
class GssipMcsq : public FACE::IOSS::MCSQ::IO_Callback {
  public:
    using Callback = std::function<void(const aspn2_msgs::idl::GSSIP&)>;

    /// `name` begins the text of each reported event. Frames with an excluded message id reach the
    /// local callback and not the device. `devicePrefix` and the port number are a device's path.
    explicit GssipMcsq(std::string name, std::vector<unsigned short> excludedIds = {},
                       const std::string& devicePrefix = FACE::IOSS::KD_MCSQ::kDevicePrefix);
    /// The same with decimal texts; one that gives 0 names no message and is skipped.
    GssipMcsq(std::string name, const std::vector<std::string>& excludedIds,
              const std::string& devicePrefix = FACE::IOSS::KD_MCSQ::kDevicePrefix);
    GssipMcsq(const GssipMcsq&) = delete;
    GssipMcsq& operator=(const GssipMcsq&) = delete;
    /// Ends the callback thread and closes the connections.
    ~GssipMcsq() override;

    /// Opens the connection of that name in the I/O configuration file. The first call reads the
    /// file for all. NO_ERROR also when the device cannot be opened: the local callback works
    /// without it. INVALID_CONFIG, with `handle` -1, for a bad file and a missing container or
    /// "Port".
    void Connect_WriteOnly(const FACE::String& ioDevicesFile, const FACE::String& connectionName,
                           long long& handle, FACE::RETURN_CODE_TYPE::Value& rc);
    void Connect_ReadOnly(const FACE::String& ioDevicesFile, const FACE::String& connectionName,
                          Callback callback, FACE::RETURN_CODE_TYPE::Value& rc);
    void Connect_IOWrite(const FACE::String& ioDevicesFile, const FACE::String& connectionName,
                         long long& handle, Callback callback, FACE::RETURN_CODE_TYPE::Value& rc);

    /// True for a handle that one of the three above gave.
    bool IsInitialized(long long handle) const;

    /// Puts the sample on the device and then calls the connection's callback with it. Waits at
    /// most 100 ms, and only to finish a sample of which the device took a part; one for which
    /// there is no room at all is dropped. NO_ERROR, CONNECTION_CLOSED without an open device,
    /// NO_ACTION for a sample that was dropped, DATA_OVERFLOW for one that was cut short, which is
    /// also reported. The callback is called in each of these cases. An unknown handle leaves `rc`
    /// alone and does nothing.
    void Write(long long handle, const aspn2_msgs::idl::GSSIP& sample,
               FACE::RETURN_CODE_TYPE::Value& rc);

    /// Reads the device and delivers what it gave. A non-zero `event` is ignored.
    void Process_Notification_Event(long long handle, int event) override;

  private:
    void writeToQueue(long long handle, const aspn2_msgs::idl::GSSIP& sample,
                      FACE::RETURN_CODE_TYPE::Value& rc);
    void callCallback(long long handle, const aspn2_msgs::idl::GSSIP& sample);
    void processMessage(long long handle);
    /// Reads the sample at the front of the bytes; how many of them it takes, 0 when they are bad.
    size_t takeSample(const uint8_t* bytes, size_t length, aspn2_msgs::idl::GSSIP& sample);
    bool isExcluded(unsigned short msgId) const;

    const std::string m_name;
    const std::vector<unsigned short> m_excludedIds;

    std::mutex m_readMutex;  // the read path, held across the callbacks that it makes
    std::vector<uint8_t> m_receiveBuffer;
    GssipTopicSerializer m_readSerializer;

    std::mutex m_writeMutex;  // one sample at a time becomes bytes
    std::vector<uint8_t> m_writeBuffer;
    GssipTopicSerializer m_writeSerializer;

    // Behind pointers, so that a writer takes one along without copying the function.
    std::mutex m_callbackMutex;
    std::map<long long, std::shared_ptr<const Callback>> m_callbacks;

    // Last, so that its thread ends before anything that the thread uses.
    std::unique_ptr<FACE::IOSS::KD_MCSQ> m_queue;
};
