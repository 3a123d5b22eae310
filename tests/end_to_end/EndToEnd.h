// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "simulator/SimulatedUnit.h"
#include "tests/end_to_end/BusListener.h"
#include "tests/end_to_end/TestDeployment.h"
#include "tests/end_to_end/WaitFor.h"

// The real server on the simulated unit, with somebody else on the bus. The receiver's own reports
// are off unless a test wants them, so that each sample on the bus has a frame that the test knows.
class EndToEnd : public testing::Test {
  protected:
    explicit EndToEnd(const std::string& variant = "udp");

    /// The receiver sends its reports by itself.
    void letReceiverReport() { m_deployment.setServer("PARAM_7", "253,8504,9225,9391,9405"); }

    /// Joins the bus and starts the unit with the server.
    void startUnit(const std::filesystem::path& listenerConnections = {});
    /// The same, and waits until the server says that it has started and has sent its setup.
    void startAndWait();
    bool waitUntilStarted();
    /// Waits for the receiver's answer to the last command of its setup.
    bool waitUntilSetUp();

    /// Sends SIGTERM and waits for the end.
    Simulator::ProcessEnd terminate(int signal = SIGTERM);
    /// Waits for an end that comes by itself.
    Simulator::ProcessEnd waitForEnd();

    Simulator::ServerProcess& server() { return *m_unit->server(); }
    Simulator::Receiver& receiver() { return m_unit->receiver(); }
    BusListener& bus() { return *m_bus; }

    /// What the server has printed, standard output and standard error apart.
    std::vector<std::string> output();
    std::vector<std::string> errors();

    /// What the server sent to the receiver of its own accord, its answers left out.
    std::vector<Simulator::HeardFrame> heardFrames();
    /// The same as text: "id/flags" and, for messages with data, the words that tell them apart.
    std::vector<std::string> heard();

    TestDeployment m_deployment;
    Simulator::UnitOptions m_unitOptions;
    std::unique_ptr<BusListener> m_bus;
    std::unique_ptr<Simulator::SimulatedUnit> m_unit;

  private:
    std::vector<std::string> console(bool error);
};

/// The server under test.
std::filesystem::path serverProgram();

/// From the signal to the end at 115200 bits per second: half a second of the main loop, a second
/// of the slowest thread, and what the link may have in flight. Sanitizers are slower.
constexpr std::chrono::seconds kLongestStop{4};

/// An 8504 frame whose channels, position and errors differ with `number`.
Simulator::Bytes frame8504(unsigned number);
/// Its altitude in metres.
double frameAltitude(unsigned number);
