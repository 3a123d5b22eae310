// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "ASPN/DeviceIdFactory.h"
#include "ASPN/EventQueue.h"
#include "ASPN/EventTypes.h"
#include "ASPN/ReporterLink.h"
#include "face/KD_TypedTS.h"
#include "utility/WorkerThread.h"

namespace aspn2_msgs::idl {
class EventLog;
}

// The process's event log: any thread reports an event, a thread of its own publishes it as
// EventLog, stamped with the FPGA's time of publishing.
//
// Reporting works at any time and never waits. Up to ten events wait for the publisher, also before
// InitHealthReporter; what comes on top is dropped without a word, like what still waits at
// DoneHealthReporter. Nothing that goes wrong in publishing reaches those who report: it is a line
// on the console. InitHealthReporter and DoneHealthReporter come from the thread that brings the
// server up and down. The transport is shared between the two.
class HealthReporter {
  public:
    using eEventType = EventTypes::eEventType;

    static constexpr std::chrono::milliseconds eventQPollDuration{500};
    static constexpr std::chrono::seconds configRepeatDuration{300};

    static HealthReporter& Instance();

    HealthReporter(const HealthReporter&) = delete;
    HealthReporter& operator=(const HealthReporter&) = delete;

    /// Makes the publisher and starts publishing. Throws std::runtime_error without a transport,
    /// when initialised already (the first stays in place) and when there can be no publisher.
    void InitHealthReporter(
        const std::string& name, const ASPN2::DeviceIdFactory& ids,
        const std::shared_ptr<FACE::TSS::Details::KD_TypedTS<aspn2_msgs::idl::EventLog>>& typedTs,
        long long connectionId);

    /// Ends publishing, within about half a second, and lets go of the transport.
    void DoneHealthReporter();

    /// Reports an event. The texts of the types 3, 4 and 5 are marked with `file` and `line`; types
    /// of 6 and more are published as 0.
    void SendEvent(const char* file, int line, eEventType type, const std::string& text);

    /// Reports an information that is published again every 300 seconds and more. Returns the
    /// handle by which it is replaced; never refused.
    uint32_t SendConfigEvent(const std::string& text);
    uint32_t ReplaceConfigEvent(const std::string& text, uint32_t oldHash);

  private:
    HealthReporter();
    ~HealthReporter();

    void pubThreadFunction();
    void publishNext();
    void publishChange(int type, std::string text);

    ASPN2::ReporterLink<aspn2_msgs::idl::EventLog> m_link{"HealthReporter", "HealthReporter"};
    ASPN2::EventQueue m_queue;
    Utility::WorkerThread m_thread;
};
