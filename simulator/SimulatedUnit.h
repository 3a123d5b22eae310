// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "simulator/Deployment.h"
#include "simulator/Devmem.h"
#include "simulator/FpgaRegisters.h"
#include "simulator/IFrameStamps.h"
#include "simulator/PhysicalMemory.h"
#include "simulator/PowerSwitch.h"
#include "simulator/QueueDevices.h"
#include "simulator/Receiver.h"
#include "simulator/Scenario.h"
#include "simulator/ScenarioPlayer.h"
#include "simulator/SerialLine.h"
#include "simulator/ServerProcess.h"

namespace Simulator {

struct UnitOptions {
    /// The server's top-level configuration file; all devices are made as it says.
    std::filesystem::path configFile;
    /// The server program. Empty: the unit runs without one, and whoever likes opens its devices.
    std::filesystem::path server;
    /// Print what the server prints.
    bool passConsoleThrough = false;
    /// Let bytes take the time on the line that they take on a real one.
    bool paced = false;
    /// The receiver's line speed after power on is taken from the configuration.
    ReceiverSettings receiver{};
    /// What the receiver does besides its duty; times count from the unit's start.
    Scenario scenario{};
};

// Everything round the server, and the server: memory with the FPGA's registers and the power
// switches, serial line, receiver, queue devices and the devmem command, in the private /dev that
// the process must have (see PrivateDev). One unit at a time in a process; construct, start and
// stop it on one thread, the main thread by preference: the server dies with the thread that starts
// it.
class SimulatedUnit {
  public:
    /// Makes all devices. Throws what their classes throw.
    explicit SimulatedUnit(UnitOptions options);
    SimulatedUnit(const SimulatedUnit&) = delete;
    SimulatedUnit& operator=(const SimulatedUnit&) = delete;
    ~SimulatedUnit();

    /// Starts the devices, then the receiver, then the server.
    void start();

    /// Ends the server within `patience`, by force if need be, then everything else in reverse.
    /// Gives the server's end when there was a server.
    std::optional<ProcessEnd> stop(std::chrono::milliseconds patience = std::chrono::seconds(15));

    const Deployment& deployment() const { return m_deployment; }
    PhysicalMemory& memory() { return m_memory; }
    FpgaRegisters& fpga() { return m_fpga; }
    SerialLine& line() { return m_line; }
    QueueDevices& queues() { return m_queues; }
    Devmem& devmem() { return m_devmem; }
    Receiver& receiver() { return m_receiver; }
    PowerSwitch& power() { return m_power; }
    ScenarioPlayer& scenario() { return m_scenario; }
    /// Null without a server.
    ServerProcess* server() { return m_server.get(); }

  private:
    // Puts the receiver's stamps into the registers that the deployment tells the server to read.
    class Stamps : public IFrameStamps {
      public:
        Stamps(FpgaRegisters& fpga, const Deployment& deployment)
            : m_fpga(fpga), m_uart(deployment.uart), m_pulse(deployment.pulse) {}
        void onPulse() override;
        void onLastByte(const FrameStamps& stamps) override;

      private:
        FpgaRegisters& m_fpga;
        const unsigned m_uart;
        const unsigned m_pulse;
    };

    const UnitOptions m_options;
    const Deployment m_deployment;
    PhysicalMemory m_memory;
    FpgaRegisters m_fpga;
    SerialLine m_line;
    QueueDevices m_queues;
    Devmem m_devmem;
    Stamps m_stamps;
    Receiver m_receiver;
    ScenarioPlayer m_scenario;
    PowerSwitch m_power;
    std::unique_ptr<ServerProcess> m_server;
    bool m_started = false;
};

}  // namespace Simulator
