// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <poll.h>
#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "face/ConnectionTable.h"
#include "face/FACE_Configuration.h"
#include "face/FACE_IOSS.h"
#include "ioss_mcsq/mcsReaderPort.h"
#include "ioss_mcsq/mcsWriterPort.h"
#include "utility/WorkerThread.h"

namespace FACE::IOSS {

// The service of the queue devices: each connection reads and writes one device, whose number is
// the parameter "Port" of the connection's configuration container. A thread polls the devices and
// tells the registered callback which one has data; it runs while a callback is registered and a
// device is open.
//
// Read, Write and the getters may be called by any thread. Set_Reference, Initialize, opening,
// closing and registering belong to one thread, which is not the callback thread. An id out of
// range gives INVALID_PARAM everywhere.
class KD_MCSQ : public MCSQ::IO_Service, public Configuration_Injectable::Injectable {
  public:
    static constexpr const char* kDevicePrefix = "/dev/mcs";
    static constexpr uint32_t kMaxReadBytes = 0x20000;

    explicit KD_MCSQ(std::string devicePrefix = kDevicePrefix);
    KD_MCSQ(const KD_MCSQ&) = delete;
    KD_MCSQ& operator=(const KD_MCSQ&) = delete;
    /// Ends the callback thread and closes the connections.
    ~KD_MCSQ() override;

    /// Loads the configuration. NOT_AVAILABLE without a reference, NO_ACTION when done before.
    void Initialize(const String& path, RETURN_CODE_TYPE::Value& rc) override;

    /// Opens the connection of that name, again when it was open. NO_ERROR also when the device
    /// cannot be opened: the connection then has its id, and reads and writes fail. INVALID_CONFIG,
    /// with `id` -1, without the container or its "Port".
    void Open_Connection(const String& name, long long timeout, long long& id,
                         RETURN_CODE_TYPE::Value& rc) override;
    void Close_Connection(long long id, RETURN_CODE_TYPE::Value& rc) override;

    /// Takes what the device has, at most kMaxReadBytes and the payload's bound, and sets the
    /// payload's length. Never waits. NOT_AVAILABLE when there is nothing, NO_ACTION on an error.
    void Read(long long id, long long timeout, MCSQ::READ_PAYLOAD_TYPE& payload,
              RETURN_CODE_TYPE::Value& rc) override;

    /// Writes the whole payload or nothing: one for which there is no room is dropped with
    /// NO_ACTION. When the device took a part, waits up to 100 ms for room for the rest; if that
    /// fails, opens the device again for writing and gives DATA_OVERFLOW.
    void Write(long long id, long long timeout, const MCSQ::WRITE_PAYLOAD_TYPE& payload,
               RETURN_CODE_TYPE::Value& rc) override;

    // There is nothing to configure: these four only check the id.
    void Configure_Connection_Parameters(long long id, long long timeout,
                                         const IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                         RETURN_CODE_TYPE::Value& rc) override;
    void Get_Connection_Configuration(long long id, long long timeout,
                                      IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                      RETURN_CODE_TYPE::Value& rc) override;
    void Configure_Bus_Parameters(long long id, long long timeout,
                                  IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                  RETURN_CODE_TYPE::Value& rc) override;
    void Get_Bus_Configuration(long long id, long long timeout,
                               IO_PARAMETER_TRANSACTION_TYPE& parameters,
                               RETURN_CODE_TYPE::Value& rc) override;

    /// The state is 2 for an open connection, 4 for one whose device could not be opened, 0 after
    /// closing.
    void Get_Connection_Status(long long id, CONNECTION_STATUS_TYPE& status,
                               RETURN_CODE_TYPE::Value& rc) override;
    /// 0 for a connection of this service, else 1.
    void Get_Bus_Status(long long id, uint16_t& status, RETURN_CODE_TYPE::Value& rc) override;

    /// One callback serves all connections; it outlives its registration and is called without any
    /// lock of this service.
    void Register_Notification_Event(long long id, IO_Callback* callback,
                                     RETURN_CODE_TYPE::Value& rc) override;
    /// Drops the callback and ends the thread: afterwards no call is under way.
    void Unregister_Notification_Event(long long id, RETURN_CODE_TYPE::Value& rc) override;

    void Set_Reference(const String& name, const std::shared_ptr<Configuration>& configuration,
                       long long id, RETURN_CODE_TYPE::Value& rc) override;

    // One device with its two ports. Reading and writing lock each other not: a reader must be able
    // to make the room that a writer waits for. The service calls open, close and readerDescriptor,
    // and looks at isOpen, with its own mutex held.
    class Connection_t : public NamedConnection {
      public:
        Connection_t(std::string itsName, uint16_t port, const std::string& devicePrefix);

        /// Closes the device if it is open and opens it, first for reading: the own reader is what
        /// lets a queue be opened for writing while nobody else reads it.
        void open();
        void close();
        uint32_t state() const { return m_state; }
        int readerDescriptor() const;

        /// As the system call: -1 with errno when there is nothing to read.
        ssize_t read(void* buffer, size_t length);
        /// As the system call, with the rest of a partial write finished. A result between 0 and
        /// `length` means that this failed and that the device was opened again.
        ssize_t write(const void* buffer, size_t length);

      private:
        void closePorts();

        std::mutex m_readMutex;
        std::mutex m_writeMutex;
        std::unique_ptr<mcsReaderPort> m_reader;
        std::unique_ptr<mcsWriterPort> m_writer;
        const std::string m_devicePath;
        uint32_t m_state = 0;
    };

  private:
    Connection_t* getConnection(long long id, RETURN_CODE_TYPE::Value& rc);
    Connection_t* getOpenConnection(long long id, RETURN_CODE_TYPE::Value& rc);
    void updatePollList();
    void watch();
    void callbackThreadFunction();
    bool copyPollList(std::vector<pollfd>& polled);
    void notify(const pollfd& entry);

    const std::string m_devicePrefix;
    std::shared_ptr<Configuration> m_configuration;
    bool m_initialized = false;

    // Connections are never removed and never move: a found one may be used without the lock.
    std::mutex m_mutex;
    ConnectionTable<Connection_t> m_connections;
    std::vector<pollfd> m_pollList;
    IO_Callback* m_callback = nullptr;
    bool m_watching = false;  // the thread has not decided to end

    std::atomic<uint64_t> m_bytesRead{0};
    Utility::WorkerThread m_callbackThread;
};

}  // namespace FACE::IOSS
