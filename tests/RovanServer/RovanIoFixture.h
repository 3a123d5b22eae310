// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ASPN/DeviceIdFactory.h"
#include "MSID_messages/RovanHeaderOnlyMsg.h"
#include "RovanServer/RovanIo.h"
#include "ioss_mcsq/GssipMcsq.h"
#include "platform/FPGA.h"
#include "tests/RovanServer/RovanIoLine.h"
#include "tests/RovanServer/TemporaryDirectory.h"
#include "tests/gssip/Frames.h"
#include "tests/platform/FakeDevmem.h"
#include "utility/Sleep.h"

// The link between a line and a queue whose far ends are the test. Pauses are written into the
// line's journal; those of more than 50 ms are not slept.
class RovanIoFixture : public testing::Test {
  protected:
    using Bytes = Frames::Bytes;
    using GSSIP = aspn2_msgs::idl::GSSIP;
    using RC = FACE::RETURN_CODE_TYPE;

    static constexpr uint8_t kUart = 1;
    static constexpr uint8_t kPulse = 2;
    static constexpr int32_t kBaud = 921600;  // the shortest waits for answers: 0.22 s

    RovanIoFixture() {
        m_devmem->registers["TimeStamp_Interface+0"] = 58'982'400;
        m_devmem->registers["TimeStamp_Interface+8"] = 4;   // UARTs
        m_devmem->registers["TimeStamp_Interface+24"] = 4;  // pulses
        FpgaFace::Instance().InitFpga(m_devmem);

        // The device is missing: samples reach the callback all the same.
        const std::string file = m_directory.write(
            "io.xml",
            "<KD_Configurations><QueuePort><Name>ROVAN_KD</Name><Parameters><Port>1</Port>"
            "</Parameters></QueuePort></KD_Configurations>");
        RC::Value rc = RC::NO_ERROR;
        m_queue = std::make_shared<GssipMcsq>("Rovan", std::vector<unsigned short>{},
                                              m_directory.path("mcs"));
        m_queue->Connect_IOWrite(
            file.c_str(), "ROVAN_KD", m_queueConnection,
            [this](const GSSIP& sample) { onSample(sample); }, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
    }

    ~RovanIoFixture() override { m_link.reset(); }

    void makeLink(bool debug = false) {
        m_link = std::make_unique<RovanIo>("Rovan", kUart, kPulse, m_line, m_queue,
                                           m_queueConnection, m_ids, debug,
                                           [this](std::chrono::nanoseconds time) { pause(time); });
    }

    /// A link that runs, with its configuration already forgotten by the line's written().
    void runLink(bool debug = false) {
        makeLink(debug);
        m_link->configure(false, kBaud, 0);
        m_configurationFrames = m_line->written().size();
        m_link->start();
    }

    /// The frames written since the link was configured.
    std::vector<Bytes> sentFrames() {
        std::vector<Bytes> frames = m_line->written();
        frames.erase(frames.begin(),
                     frames.begin() + static_cast<std::ptrdiff_t>(m_configurationFrames));
        return frames;
    }
    bool waitForSentFrames(size_t count) {
        return m_line->waitForFrames(m_configurationFrames + count);
    }

    bool waitForSamples(size_t count) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10),
                                  [&] { return m_samples.size() >= count; });
    }
    std::vector<GSSIP> samples() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_samples;
    }
    /// What is called for each sample, on the read thread.
    std::function<void(const GSSIP&)> m_onSample;

    static std::shared_ptr<RovanHeaderOnlyMsg> request(uint16_t msgId) {
        return std::make_shared<RovanHeaderOnlyMsg>(msgId, uint16_t{0x9010});
    }

    const TemporaryDirectory m_directory;
    const std::shared_ptr<FakeDevmem> m_devmem = std::make_shared<FakeDevmem>();
    const std::shared_ptr<RovanIoLine> m_line = std::make_shared<RovanIoLine>();
    const ASPN2::DeviceIdFactory m_ids{2, 39};
    std::shared_ptr<GssipMcsq> m_queue;
    long long m_queueConnection = -1;
    std::unique_ptr<RovanIo> m_link;

  private:
    void onSample(const GSSIP& sample) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_samples.push_back(sample);
            m_changed.notify_all();
        }
        if (m_onSample) {
            m_onSample(sample);
        }
    }

    void pause(std::chrono::nanoseconds time) {
        m_line->note("sleep " + std::to_string(time.count()));
        if (time <= std::chrono::milliseconds(50)) {
            Utility::sleepFor(time);
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<GSSIP> m_samples;
    size_t m_configurationFrames = 0;
};

// The outcomes of queued messages, as their ackCallback tells them. The callbacks may outlive the
// object.
class RovanIoOutcome {
  public:
    std::function<void(unsigned short, bool, bool, bool)> callback() {
        return [state = m_state](unsigned short msgId, bool success, bool nak, bool rejected) {
            const std::lock_guard<std::mutex> lock(state->mutex);
            state->texts.push_back(std::to_string(msgId) + (success ? " success" : " failure") +
                                   (nak ? " nak" : "") + (rejected ? " rejected" : ""));
            state->changed.notify_all();
        };
    }
    /// The outcomes once there are `count` of them, as "5001 failure nak rejected"; what there is
    /// after ten seconds.
    std::vector<std::string> texts(size_t count = 1) {
        std::unique_lock<std::mutex> lock(m_state->mutex);
        m_state->changed.wait_for(lock, std::chrono::seconds(10),
                                  [&] { return m_state->texts.size() >= count; });
        return m_state->texts;
    }

  private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<std::string> texts;
    };
    const std::shared_ptr<State> m_state = std::make_shared<State>();
};
