// SPDX-License-Identifier: Apache-2.0
// Commands and responses as fast as others can send them, while the server publishes on all of its
// threads: it goes on answering.
#include <atomic>
#include <chrono>
#include <iterator>
#include <thread>

#include "tests/end_to_end/Steering.h"

using namespace Simulator;
using testing::Contains;

namespace {

class Flood : public Steering {
  protected:
    /// Publishes these over and over, at some hundred a second, while the object lives.
    class Stream {
      public:
        template <typename Publish>
        explicit Stream(Publish publish)
            : m_thread([this, publish] {
                  for (unsigned i = 0; !m_ended; ++i) {
                      publish(i);
                      std::this_thread::sleep_for(std::chrono::milliseconds(2));
                  }
              }) {}
        ~Stream() {
            m_ended = true;
            m_thread.join();
        }

      private:
        std::atomic<bool> m_ended{false};
        std::thread m_thread;
    };
};

constexpr std::chrono::seconds kFlood{8};

}  // namespace

TEST_F(Flood, OfRequestsForABuiltInTestLeavesTheServerAlive) {
    // It asks for passthrough once a second, and its receiver has failed: it asks for a test, too.
    m_deployment.setSystem("Environment", "SYSTEM_ENV_RERAD");
    letReceiverReport();
    startAndPing();
    receiver().changeReports([](ReceiverReports& reports) { reports.receiverFailure = true; });
    ASSERT_TRUE(waitFor([&] {
        const auto states = bus().receiverStatus.samples();
        return !states.empty() && states.back().rcvr_fail();
    }));
    const auto asked = [&](const char* text) {
        const auto texts = BusListener::texts(bus().command);
        return std::count(texts.begin(), texts.end(), text);
    };
    const auto queries = asked("QUERY_PASSTHROUGH_STATE");
    {
        const char* const harmless[] = {"FIRST_BBIT_DONE", "QUERY_ROVAN_STATUS",
                                        "REQUEST_ANTENNA_STATE", "REQUEST_PARTNUMBERS"};
        const CommandResponse command = makeCommand("FIRST_BBIT_DONE");
        const Stream tests([&](unsigned) { bus().command.publish(command); });
        const Stream others([&](unsigned i) {
            CommandResponse other = command;
            other.command_response(harmless[i % std::size(harmless)]);
            bus().command.publish(other);
        });
        const Stream responses([&](unsigned) { sendAsAccessory("REQUEST_COMPONENT_CBIT_PASS"); });
        EXPECT_FALSE(server().waitFor(kFlood));
    }
    settle();
    // Every second one query, and with it never a pause.
    EXPECT_GE(asked("QUERY_PASSTHROUGH_STATE") - queries, kFlood.count() / 2);
    EXPECT_THAT(BusListener::texts(bus().command), Contains("REQUEST_CBIT"));
    EXPECT_TRUE(terminate().good());
}
