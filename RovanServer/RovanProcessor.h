// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ASPN/DeviceIdFactory.h"
#include "MSID_messages/Rovan_SVRise_Msg.h"
#include "RovanServer/Publication.h"
#include "aspn2_msgs/ChallengedEnvironment.h"
#include "aspn2_msgs/ChannelStatus.h"
#include "aspn2_msgs/GPSCryptoStatus.h"
#include "aspn2_msgs/GPSLineOfSight.h"
#include "aspn2_msgs/GPSTime.h"
#include "aspn2_msgs/GSSIP.h"
#include "aspn2_msgs/MaintenanceEvent.h"
#include "aspn2_msgs/PositionVelocity.h"
#include "aspn2_msgs/ReceiverStatus.h"
#include "aspn2_msgs/SVStatus.h"
#include "aspn2_msgs/UTCTime.h"
#include "aspn2_msgs/UtcDownlink.h"
#include "face/KD_TSS.h"
#include "utility/WorkerThread.h"

class Rovan_9391_Msg;
struct unpacked_msg8504_t;

// Translates receiver frames into bus messages. Owned by RovanServer, whose cbGssip calls the
// process... functions, one at a time; they decode the frame, build the messages on the stack and
// publish them on that thread. A second thread, started and stopped with the server, makes checks
// every 20 ms. Construction, connecting, start and stop come from the thread that changes the
// server's state, never while a process... call runs.
//
// A frame that its message class refuses is dropped without a word: the link has reported it.
class RovanProcessor {
  public:
    using GSSIP = aspn2_msgs::idl::GSSIP;
    using Time = std::chrono::steady_clock::time_point;
    using Clock = std::function<Time()>;

    // What 8040 says of the keys, as far as changes of it go to the maintenance log.
    struct key_info_storage {
        bool mKeyActive = false;  // loaded and active, like the next
        bool cvdKeyActive = false;
        bool mLoadOk = false;  // the last load succeeded, like all below
        bool bcvmLoadOk = false;
        bool bguv2LoadOk = false;
        bool bbkaupdLoadOk = false;
    };

    /// `name` begins what the processor reports. Without a `tss` the processor runs unconnected.
    /// `clock` gives the time that the limits are measured by; both threads call it.
    RovanProcessor(const std::string& name, std::shared_ptr<FACE::TSS::KD_TSS> tss,
                   const ASPN2::DeviceIdFactory& deviceIds, bool debug,
                   Clock clock = &std::chrono::steady_clock::now);
    RovanProcessor(const RovanProcessor&) = delete;
    RovanProcessor& operator=(const RovanProcessor&) = delete;
    /// Stops the thread first.
    ~RovanProcessor();

    /// Makes the eleven connections. Throws std::runtime_error for the first one that fails, after
    /// a line on the console; a second call without Framework_Disconnect throws too.
    void Framework_Connect();
    void Framework_Disconnect();

    /// Can be repeated; there is never more than one thread.
    void start();
    void stop();

    void process8(const GSSIP& gssip);
    void process253(const GSSIP& gssip);
    void process5040(const GSSIP& gssip);
    void process5042(const GSSIP& gssip);
    void process5047(const GSSIP& gssip);
    void process5048(const GSSIP& gssip);
    void process7270(const GSSIP& gssip);
    void process8040(const GSSIP& gssip);
    void process8080(const GSSIP& gssip);
    void process8504(const GSSIP& gssip);
    void process9225(const GSSIP& gssip);
    void process9391(const GSSIP& gssip);
    void process30409(const GSSIP& gssip);

    // What the latest frames said; any thread may ask.
    uint16_t getOpMode() const { return m_opMode; }
    bool getIsDtsCom1() const { return m_isDtsCom1; }
    bool getCurrentRcvrFail() const { return m_currentRcvrFail; }

  private:
    using Code = FACE::RETURN_CODE_TYPE::Value;
    static constexpr size_t kPublications = 11;

    // One half of a satellite report, ready from its arrival until the other half has come.
    struct SVRiseLatch {
        unpacked_SVRiseMsg_t record{};
        std::atomic<bool> ready{false};
    };

    std::array<PublicationBase*, kPublications> inConnectionOrder();

    void periodicThreadFunction();
    void periodic7270Checker();
    /// Takes a message's worth of what is gathered, if it is time for one.
    bool takeClosedEpoch(Time now, aspn2_msgs::idl::GPSLineOfSight& message,
                         aspn2_msgs::idl::header& header);
    void periodic253Checker();

    void followReceiverState(bool failed);
    void publishPositionVelocity(const GSSIP& gssip, const unpacked_msg8504_t& report);
    void publishReceiverStatus(const GSSIP& gssip, const unpacked_msg8504_t& report);
    void publishChannelStatus(const GSSIP& gssip, const unpacked_msg8504_t& report);

    void publishGpsTime(const GSSIP& gssip, const Rovan_9391_Msg& report);
    void publishUtcTime(const GSSIP& gssip, const Rovan_9391_Msg& report);

    void followCryptoState(unsigned state);
    void eventLog8040(const key_info_storage& facts);
    void publishKeys(const GSSIP& gssip, std::vector<aspn2_msgs::idl::key_type_set> sets,
                     const char* failureWords);

    void latchSVRise(const GSSIP& gssip, uint16_t msgId, SVRiseLatch& latch);
    void sendSVStatusMsg(const GSSIP& gssip);

    const std::string m_name;
    [[maybe_unused]] const bool m_debug;
    const ASPN2::DeviceIdFactory m_deviceIds;
    const std::shared_ptr<FACE::TSS::KD_TSS> m_tss;
    const Clock m_clock;

    Publication<aspn2_msgs::idl::GPSTime> m_gpsTime;
    Publication<aspn2_msgs::idl::UTCTime> m_utcTime;
    Publication<aspn2_msgs::idl::UtcDownlink> m_utcDownlink;
    Publication<aspn2_msgs::idl::PositionVelocity> m_pv;
    const int32_t m_pvSecondDeviceId;  // for positions that are not the normal ones
    Publication<aspn2_msgs::idl::ReceiverStatus> m_rcvrStatus;
    Publication<aspn2_msgs::idl::ChannelStatus> m_chanStatus;
    Publication<aspn2_msgs::idl::ChallengedEnvironment> m_challEnv;
    Publication<aspn2_msgs::idl::GPSCryptoStatus> m_gpsCryptoStatus;
    Publication<aspn2_msgs::idl::GPSLineOfSight> m_gpsLineOfSight;
    // A connection only: maintenance events go out through PCSMaintReporter.
    Publication<aspn2_msgs::idl::MaintenanceEvent> m_maintenanceLog;
    Publication<aspn2_msgs::idl::SVStatus> m_svStatus;

    Utility::WorkerThread m_periodicThread;

    // Held for copying and comparing only, never across a publish or a report.
    std::mutex m_dataMutex;
    // Guarded by m_dataMutex.
    // The latest valid parameters, which never age.
    std::optional<aspn2_msgs::idl::UtcDownlink> m_lastUtcDownlink;
    // A restart forgets neither half: its tag tells whether the other one belongs to it.
    SVRiseLatch m_svRiseFirst;                                  // 5047
    SVRiseLatch m_svRiseSecond;                                 // 5048
    std::vector<aspn2_msgs::idl::gpslos_obs> m_lineOfSightObs;  // of the epoch being collected
    uint16_t m_lineOfSightEpoch = 0;                            // 0 before the first
    aspn2_msgs::idl::header m_lineOfSightHeader;  // of the frame that opened the epoch
    Time m_last7270Time;
    Time m_last253Time;
    bool m_commOk = false;              // the receiver is known to be talking
    bool m_reportRcvrStateOnce = true;  // report the next 8504's state whatever it is
    bool m_lastRcvrFail = false;        // the state last reported

    std::atomic<bool> m_currentRcvrFail{false};
    bool m_configEventsSent = false;
    std::atomic<uint16_t> m_opMode{0};
    std::atomic<bool> m_isDtsCom1{false};

    // Used by the process... functions only. What the crypto states of 5040 have led to, and what
    // the maintenance log knows; a restart changes neither.
    aspn2_msgs::idl::key_status_enum m_keyStatus = aspn2_msgs::idl::KEY_STATUS_5;
    aspn2_msgs::idl::key_load_status_enum m_keyLoadStatus = aspn2_msgs::idl::KEY_LOAD_STATUS_2;
    aspn2_msgs::idl::key_zeroization_status_enum m_keyZeroizationStatus =
        aspn2_msgs::idl::KEY_ZEROIZATION_STATUS_3;
    unsigned m_lastCryptoState = 0;
    key_info_storage m_keyInfo;
};
