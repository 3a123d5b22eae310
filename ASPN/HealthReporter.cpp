// SPDX-License-Identifier: Apache-2.0
#include "ASPN/HealthReporter.h"

#include <exception>
#include <utility>

#include "ASPN/FaultHysteresis.h"
#include "ASPN/TimeCodeHelper.h"
#include "ASPN/TimeConversion.h"
#include "aspn2_msgs/EventLog.h"
#include "platform/FPGA.h"
#include "utility/Sleep.h"

using aspn2_msgs::idl::EventLog;

namespace {

constexpr unsigned kQueueSize = 10;
constexpr unsigned char kMessageCode = 1;
constexpr std::chrono::milliseconds kPauseAfterPublish{100};

}  // namespace

HealthReporter& HealthReporter::Instance() {
    static HealthReporter instance;
    return instance;
}

HealthReporter::HealthReporter()
    : m_queue(kQueueSize, EventTypes::eInformation, configRepeatDuration) {
    // Built before this object is, so destroyed after it: the publishing thread may use them until
    // the destructor has joined it.
    FpgaFace::Instance();
    FaultHysteresis::Instance();
    ASPN2::TimeCodeHelper::Instance();
}

HealthReporter::~HealthReporter() {
    DoneHealthReporter();
}

void HealthReporter::InitHealthReporter(
    const std::string& name, const ASPN2::DeviceIdFactory& ids,
    const std::shared_ptr<FACE::TSS::Details::KD_TypedTS<EventLog>>& typedTs,
    long long connectionId) {
    m_link.open(__FILE__, __LINE__, name, ids.makeDeviceId(kMessageCode, 0), typedTs, connectionId);
    m_thread.start([this] { pubThreadFunction(); });
    ASPN2::setUpFaultHysteresis();
}

void HealthReporter::DoneHealthReporter() {
    m_thread.stop();
    m_link.close();
}

void HealthReporter::SendEvent(const char* file, int line, eEventType type,
                               const std::string& text) {
    const std::string marked =
        FaultHysteresis::Instance().Check(type, file != nullptr ? file : "", line, text);
    m_queue.push_back(type < EventTypes::kEventTypeCount ? static_cast<int>(type) : 0, marked);
}

uint32_t HealthReporter::SendConfigEvent(const std::string& text) {
    return m_queue.push_back_config(text);
}

uint32_t HealthReporter::ReplaceConfigEvent(const std::string& text, uint32_t oldHash) {
    return m_queue.push_back_config(text, oldHash);
}

void HealthReporter::pubThreadFunction() {
    while (!m_thread.stopRequested()) {
        try {
            publishNext();
        } catch (const std::exception& e) {
            m_link.complain(std::string("caught exception: ") + e.what());
        } catch (...) {
            m_link.complain("caught UNKNOWN exception");
        }
    }
}

void HealthReporter::publishNext() {
    int type = 0;
    std::string text;
    if (m_queue.pop_front(type, text, eventQPollDuration)) {
        publishChange(type, std::move(text));
        Utility::sleepFor(kPauseAfterPublish);
    }
}

void HealthReporter::publishChange(int type, std::string text) {
    EventLog message;
    ASPN2::setToVandToA_fromFpgaTicks(FpgaFace::Instance().fpga_get_SystemCount(),
                                      message.header());
    message.event_log_type(static_cast<aspn2_msgs::idl::event_log_type_enum>(type));
    message.eventlog(std::move(text));
    if (!m_link.publish(message)) {
        m_link.complain("could not publish event type/info = " + std::to_string(type) + '/' +
                        message.eventlog());
    }
}
