// SPDX-License-Identifier: Apache-2.0
#include "simulator/SimulatedUnit.h"

#include <cstdlib>
#include <utility>

#include "simulator/PrivateDev.h"

namespace Simulator {
namespace {

ReceiverSettings receiverSettings(const UnitOptions& options, const Deployment& deployment) {
    ReceiverSettings settings = options.receiver;
    settings.bootSpeed = deployment.serialSpeed;
    return settings;
}

std::string path() {
    const char* const value = std::getenv("PATH");
    return value == nullptr ? "/usr/bin:/bin" : value;
}

}  // namespace

SimulatedUnit::SimulatedUnit(UnitOptions options)
    : m_options(std::move(options)),
      m_deployment(Deployment::read(m_options.configFile)),
      m_fpga(m_memory, m_deployment.memory),
      m_line(m_deployment.serialChannel),
      m_queues(m_deployment.rovanKdPort, m_deployment.kdRovanPort),
      m_devmem(std::filesystem::path(PrivateDev::kDirectory) / "bin"),
      m_stamps(m_fpga, m_deployment),
      m_receiver(m_line, m_stamps, receiverSettings(m_options, m_deployment)),
      m_scenario(m_options.scenario, {m_receiver, m_line, m_fpga, m_queues}),
      m_power(m_memory, [this](bool on) { m_receiver.setPower(on); }) {
    m_line.setPaced(m_options.paced);
    if (!m_options.server.empty()) {
        ServerProcess::Options server;
        server.program = std::filesystem::absolute(m_options.server);
        server.argument = m_deployment.file.filename().string();
        server.directory = m_deployment.directory;
        server.environment["PATH"] = m_devmem.inFrontOf(path());
        server.passThrough = m_options.passConsoleThrough;
        m_server = std::make_unique<ServerProcess>(std::move(server));
    }
}

SimulatedUnit::~SimulatedUnit() {
    stop();
}

void SimulatedUnit::start() {
    m_started = true;
    m_fpga.start();
    m_queues.start();
    m_scenario.start();
    m_receiver.start();
    m_line.start(
        [this](const std::uint8_t* bytes, std::size_t count) { m_receiver.hear(bytes, count); });
    m_power.start();
    if (m_server) {
        m_server->start();
    }
}

std::optional<ProcessEnd> SimulatedUnit::stop(std::chrono::milliseconds patience) {
    std::optional<ProcessEnd> end;
    if (m_server) {
        end = m_server->stop(patience);
    }
    if (std::exchange(m_started, false)) {
        m_power.stop();
        m_line.stop();
        m_receiver.stop();
        m_scenario.stop();
        m_queues.stop();
        m_fpga.stop();
    }
    return end;
}

void SimulatedUnit::Stamps::onPulse() {
    m_fpga.stampPulse(m_pulse);
}

void SimulatedUnit::Stamps::onLastByte(const FrameStamps& stamps) {
    if (stamps.pulse) {
        m_fpga.setPulseStamp(m_pulse, *stamps.pulse);
    }
    if (stamps.uart) {
        m_fpga.setUartStamp(m_uart, *stamps.uart);
    } else {
        m_fpga.stampUart(m_uart);
    }
}

}  // namespace Simulator
