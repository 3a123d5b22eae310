// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "ASPN/CmdResponse.h"
#include "ASPN/DeviceIdFactory.h"
#include "ASPN/EventTypes.h"
#include "ASPN/ServerSettings.h"
#include "RovanServer/CommandOutbox.h"
#include "RovanServer/CommandedBit.h"
#include "RovanServer/ReceiverPower.h"
#include "RovanServer/ReceiverSupervision.h"
#include "RovanServer/ServerActions.h"
#include "RovanServer/ZeroizeProcedure.h"
#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/EventLog.h"
#include "aspn2_msgs/GSSIP.h"
#include "aspn2_msgs/MaintenanceEvent.h"
#include "face/FACE_LCM.h"
#include "face/FACE_TSS.h"
#include "utility/VersionStatus.h"
#include "utility/WorkerThread.h"

class GssipMcsq;
class PassthroughQuery;
class RovanIo;
class RovanProcessor;
class TimeDataTransfer;

namespace FACE::IOSS {
class KD_Devmem;
class KD_SerialPort;
}  // namespace FACE::IOSS
namespace FACE::TSS {
class KD_TSS;
namespace Details {
template <typename T>
class KD_TypedTS;
}
}  // namespace FACE::TSS

/// The container of the system's own settings in the top-level configuration file.
extern const char* const SYST_NAME;

// The root object of the process: it builds every service and worker, owns them, decides what the
// receiver should be doing, and takes everything apart again.
//
// The main thread drives it through the life-cycle operations, one at a time. Everything else
// happens on the threads that those start, and in three callbacks: cbCmd and cbRsp on the
// transport's listener threads, cbGssip on the link's read thread or the queue's callback thread.
// Each callback returns at once unless the state is RUNNING. A destructor with a thread still
// joinable ends the process; otherwise it gives back what Framework_Connect set up and
// Framework_Disconnect has not given back, so that nothing calls an object that is gone.
//
// The procedures that take several steps over time are objects of their own; the server brings them
// the commands, the receiver's reports and the passing of time, and acts for them (ServerActions).
//
// The sources are split by duty: RovanServer.cpp (life cycle), RovanServerConfigure.cpp,
// RovanServerConnect.cpp (bring-up and tear-down), RovanServerCommands.cpp,
// RovanServerSupervision.cpp (frames), RovanServerThreads.cpp, RovanServerActions.cpp.
class RovanServer
    : public FACE::LCM::Initializable::InitializableInstance,
      public FACE::LCM::Configurable::ConfigurableInstance,
      public FACE::LCM::Connectable::ConnectableInstance,
      public FACE::LCM::Keldra::RequestedState_ReportedState::Stateful::StatefulInstance,
      protected ServerActions {
  public:
    RovanServer();
    RovanServer(const RovanServer&) = delete;
    RovanServer& operator=(const RovanServer&) = delete;
    ~RovanServer() override;

    /// Both have nothing to do: NO_ACTION.
    void Initialize(FACE::RETURN_CODE_TYPE::Value& rc) override;
    void Finalize(FACE::RETURN_CODE_TYPE::Value& rc) override;

    /// Reads the top-level file and sets priority and affinity. NO_ERROR or INVALID_CONFIG.
    void Configure(const FACE::String& configFile, FACE::RETURN_CODE_TYPE::Value& rc) override;

    /// Builds services and workers, queues the receiver's setup and reports the configuration.
    /// NO_ERROR or INVALID_CONFIG; throws std::runtime_error where the link, the FPGA, the
    /// reporters or the processor cannot be brought up. What was made stays for the destructor.
    void Framework_Connect(const FACE::String& configFile,
                           FACE::RETURN_CODE_TYPE::Value& rc) override;
    /// Always NO_ERROR.
    void Framework_Disconnect(FACE::RETURN_CODE_TYPE::Value& rc) override;

    void Query_State(FACE::LCM::Keldra::ReportedState::Value& state,
                     FACE::RETURN_CODE_TYPE::Value& rc) override;
    /// START and STOP from the other state; NOT_AVAILABLE for anything else.
    void Request_State_Transition(FACE::LCM::Keldra::RequestedState::Value requested,
                                  FACE::RETURN_CODE_TYPE::Value& rc) override;

  protected:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;
    using GSSIP = aspn2_msgs::idl::GSSIP;

    // Callbacks.
    void cbCmd(const CommandResponse& cmd);
    void cbRsp(const CommandResponse& rsp);
    void cbGssip(const GSSIP& gssip);
    void cbGssipPassthrough(const GSSIP& gssip);
    /// The commandCallback of a queued command: answers `cmd` with "_ACK" or "_NACK".
    void ackMessageCallback(const CommandResponse& cmd, bool success);

    /// Publishes `msg`; a failure becomes an event of type 3 and is not tried again.
    void sendCommandResponse(long long connection, const CommandResponse& msg);

    void enableRovanPower() override;
    void disableRovanPower() override;
    /// Power off for good, then the orderly end of the process with SIGTERM.
    void commandShutdown();

    // Thread functions.
    void serverThreadFunction();
    void periodicThreadFunction();
    void zeroizeThreadFunction();
    void timeDataWorkerThreadFunction();

    // What the report of an exception says behind the server's name.
    struct ExceptionTexts {
        const char* known;  // what() follows
        const char* unknown;
    };
    static const ExceptionTexts kPeriodicTexts;
    static const ExceptionTexts kZeroizeTexts;
    static const ExceptionTexts kServerTexts;
    static const ExceptionTexts kTimeDataTexts;
    static const ExceptionTexts kCommandTexts;
    static const ExceptionTexts kResponseTexts;
    static const ExceptionTexts kOutboxTexts;
    /// Runs `work`; an exception of its becomes an event of type 3 and a line on standard output.
    void survive(const ExceptionTexts& texts, const std::function<void()>& work);

    bool isRunning() const { return m_state == FACE::LCM::Keldra::ReportedState::RUNNING; }

    /// What runs a shell command; std::system, except where a test needs it to fail.
    std::function<int(const char*)> m_system;

    // The configuration, written by Configure and only read afterwards.
    using Configuration = ASPN2::ServerSettings;
    Configuration m_configuration;

    // The server's own connections on the bus; -1 until connected.
    struct Connections {
        long long command = -1;
        long long response = -1;
        long long eventLog = -1;
        long long maintenance = -1;
    };
    Connections m_connections;

  private:
    template <typename T>
    using TypedTS = FACE::TSS::Details::KD_TypedTS<T>;
    using Code = FACE::RETURN_CODE_TYPE::Value;

    struct CommandRow;
    struct FrameRow;
    static const CommandRow kCommandTable[];
    static const FrameRow kFrameTable[];

    void startSequence();
    void stopSequence();
    /// Gives back what Framework_Connect has set up, as far as it came.
    void takeApart();
    /// From a listener thread: starts the thread of a commanded BIT, and with `restartPeriodic` the
    /// periodic thread again if that has ended. Nothing is started once the server stops.
    void startBit(const CommandResponse& cmd, bool restartPeriodic);

    // Bring-up, in the order of the calls; each says whether all went well.
    bool okConnectTransport(const FACE::String& configFile);
    bool okConnectIo(const FACE::String& configFile);
    void connectReporters();
    void connectWorkers();
    void queueReceiverSetup();
    void reportConfiguration();

    // Commands.
    void handleCommand(const CommandResponse& cmd);
    void handleResponse(const CommandResponse& rsp);
    void handleAccessoryResponse(const std::string& text);
    void answer(const CommandResponse& response);
    void publishCommandResponse(const char* caller, long long connection,
                                const CommandResponse& msg);
    void onLiveMode(const CommandResponse& cmd);
    void onSimulationMode(const CommandResponse& cmd);
    void onDestroyStatus(const CommandResponse& cmd);
    void onPing(const CommandResponse& cmd);
    void onAntennaState(const CommandResponse& cmd);
    void onRovanStatus(const CommandResponse& cmd);
    void onSetStandby(const CommandResponse& cmd);
    void onSetContinuous(const CommandResponse& cmd);
    template <ZeroizeProcedure::Acceptance (ZeroizeProcedure::*accept)(const CommandResponse&)>
    void onZeroize(const CommandResponse& cmd);
    void onComponentCbit(const CommandResponse& cmd);
    void onPartNumbers(const CommandResponse& cmd);
    void onPassthroughEnabled(const CommandResponse& cmd);
    void onFirstBbitDone(const CommandResponse& cmd);
    void onIgnored(const CommandResponse& cmd);

    // Frames.
    template <void (RovanProcessor::*process)(const GSSIP&)>
    void translate(const GSSIP& gssip);
    void handle8(const GSSIP& gssip);
    void handle5040(const GSSIP& gssip);
    void handle5042(const GSSIP& gssip);
    void process5044(const GSSIP& gssip);
    void process5404(const GSSIP& gssip);
    void handle8504(const GSSIP& gssip);
    void handle9225(const GSSIP& gssip);
    void process9405(const GSSIP& gssip);
    /// The receiver has reported a fault in 8504 or 9405.
    bool isCbitRequired() const;

    // ServerActions.
    void queueMessage(GssipMessagePtr message) override;
    void queueMessage(GssipMessagePtr message, AckCallback callback) override;
    void queueMessage(GssipMessagePtr message, const CommandResponse& cmd) override;
    void respondText(const CommandResponse& cmd, const std::string& text) override;
    void respondResult(const CommandResponse& cmd, bool pass) override;
    void respondAck(const CommandResponse& cmd, bool ack) override;
    void sendCommand(const std::string& text) override;
    void sendEvent(const char* file, int line, EventTypes::eEventType type,
                   const std::string& text) override;
    uint32_t replaceConfigEvent(const std::string& text, uint32_t handle) override;
    void reportFault(const std::string& description, const std::string& identity) override;
    std::chrono::steady_clock::time_point now() const override;

  protected:
    // For tests, which put a server together without devices and threads.
    const uint8_t m_serverId;
    const std::string m_serverName;

    std::atomic<FACE::LCM::Keldra::ReportedState::Value> m_state{
        FACE::LCM::Keldra::ReportedState::STOPPED};
    std::set<uint16_t> m_passthroughMessages;
    ASPN2::DeviceIdFactory m_deviceIdFactory;
    ASPN2::CmdResponse m_cmdResponse;

    // A command may start a thread while the main thread stops the server: the handles are touched
    // under the mutex only, and nothing is started once m_stopping is set.
    std::mutex m_threadsMutex;
    bool m_stopping = false;
    Utility::WorkerThread m_serverThread;
    Utility::WorkerThread m_zeroizeThread;
    Utility::WorkerThread m_periodicThread;
    Utility::WorkerThread m_timeDataThread;

    std::unique_ptr<RovanIo> m_rovanIo;
    std::unique_ptr<RovanProcessor> m_rovanProcessor;
    std::shared_ptr<FACE::TSS::KD_TSS> m_tss;
    std::shared_ptr<TypedTS<aspn2_msgs::idl::CommandResponse>> m_commandResponseTS;
    std::shared_ptr<TypedTS<aspn2_msgs::idl::EventLog>> m_eventLogTS;
    std::shared_ptr<TypedTS<aspn2_msgs::idl::MaintenanceEvent>> m_maintenanceTS;
    std::shared_ptr<FACE::IOSS::KD_SerialPort> m_serialPort;
    std::shared_ptr<FACE::IOSS::KD_Devmem> m_devmem;
    std::shared_ptr<GssipMcsq> m_gssipMcsq;
    long long m_gssipConnection = -1;

    ReceiverPower m_power;
    CommandOutbox m_commandOutbox;

    // The procedures. The last two depend on the configuration.
    ReceiverSupervision m_supervision;
    ZeroizeProcedure m_zeroize;
    CommandedBit m_bit;
    std::unique_ptr<PassthroughQuery> m_passthroughQuery;
    std::unique_ptr<TimeDataTransfer> m_timeDataTransfer;
    VersionStatus m_versionStatus;

    // Held for the whole of cbGssip, which can come on two threads, and of cbGssipPassthrough, and
    // once while the state goes to STOPPED, so that no frame is inside when the tear-down starts.
    std::mutex m_gssipMutex;

  private:
    // What this object has set up, and has to give back.
    struct SetUp {
        bool transport = false;
        bool processor = false;
        bool fpga = false;
        bool healthReporter = false;
        bool maintenanceReporter = false;
    };
    SetUp m_setUp;
};
