// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ASPN/HealthReporter.h"
#include "aspn2_msgs/EventLog.h"
#include "face/KD_TypedTS.h"

// Takes the place of the bus: keeps what the process's HealthReporter publishes, for as long as the
// object lives. Events arrive 100 ms apart.
class EventLogRecorder {
  public:
    struct Event {
        int type;
        std::string text;
    };

    EventLogRecorder() {
        HealthReporter::Instance().InitHealthReporter("Rovan", ASPN2::DeviceIdFactory(1, 39),
                                                      m_transport, 0);
    }
    EventLogRecorder(const EventLogRecorder&) = delete;
    EventLogRecorder& operator=(const EventLogRecorder&) = delete;
    ~EventLogRecorder() { HealthReporter::Instance().DoneHealthReporter(); }

    std::vector<Event> events() const { return m_transport->events(); }

  private:
    class Transport : public FACE::TSS::Details::KD_TypedTS<aspn2_msgs::idl::EventLog> {
      public:
        void Register_Sender(long long, FACE::RETURN_CODE_TYPE::Value& rc) override {
            rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        }
        void Send_Message(long long, long long, long long&,
                          const aspn2_msgs::idl::EventLog& message,
                          FACE::RETURN_CODE_TYPE::Value& rc) override {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_events.push_back({static_cast<int>(message.event_log_type()), message.eventlog()});
            rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        }
        std::vector<Event> events() const {
            const std::lock_guard<std::mutex> lock(m_mutex);
            return m_events;
        }

      private:
        mutable std::mutex m_mutex;
        std::vector<Event> m_events;
    };

    std::shared_ptr<Transport> m_transport = std::make_shared<Transport>();
};

/// Whether `text` ends in `end`. An error's text begins with its place in the sources.
inline bool endsIn(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}
