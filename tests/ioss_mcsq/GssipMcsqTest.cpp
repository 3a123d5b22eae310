// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/GssipMcsq.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/ioss_mcsq/EventLogRecorder.h"
#include "tests/ioss_mcsq/QueueDevices.h"
#include "tests/ioss_mcsq/Samples.h"

namespace {

using aspn2_msgs::idl::GSSIP;
using FACE::RETURN_CODE_TYPE;

using Code = RETURN_CODE_TYPE::Value;
using Ids = std::vector<unsigned short>;
constexpr auto kNoError = RETURN_CODE_TYPE::NO_ERROR;
constexpr auto kInvalidConfig = RETURN_CODE_TYPE::INVALID_CONFIG;
constexpr auto kUntouched = RETURN_CODE_TYPE::IN_PROGRESS;

// Keeps the samples that a connection's callback brings, and the threads it came on.
class Inbox {
  public:
    void take(const GSSIP& sample) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_samples.push_back(sample);
        m_threads.push_back(std::this_thread::get_id());
    }
    GssipMcsq::Callback callback() {
        return [this](const GSSIP& sample) { take(sample); };
    }
    size_t count() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_samples.size();
    }
    std::vector<GSSIP> samples() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_samples;
    }
    std::vector<std::thread::id> threads() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_threads;
    }
    std::vector<Bytes> frames() const {
        std::vector<Bytes> all;
        for (const GSSIP& sample : samples()) {
            all.push_back(sample.data());
        }
        return all;
    }

  private:
    mutable std::mutex m_mutex;
    std::vector<GSSIP> m_samples;
    std::vector<std::thread::id> m_threads;
};

class GssipMcsqTest : public testing::Test {
  protected:
    // Connects "ROVAN_KD", which is port 3, both ways; its callback is the inbox.
    Code connect(const Ids& excluded = {}) { return connect(excluded, m_inbox.callback()); }
    Code connect(const Ids& excluded, GssipMcsq::Callback callback) {
        m_queue = std::make_unique<GssipMcsq>("Rovan", excluded, m_devices.prefix());
        auto rc = kUntouched;
        m_queue->Connect_IOWrite(m_configuration.c_str(), "ROVAN_KD", m_handle, std::move(callback),
                                 rc);
        return rc;
    }
    // The same for writing only, so that nothing but the test reads the device.
    Code connectForWriting() {
        m_queue = std::make_unique<GssipMcsq>("Rovan", Ids{}, m_devices.prefix());
        auto rc = kUntouched;
        m_queue->Connect_WriteOnly(m_configuration.c_str(), "ROVAN_KD", m_handle, rc);
        return rc;
    }
    void makeTerminal() { m_peer = m_devices.makeTerminal(3); }
    // A FIFO that the test has joined before the service opens it.
    void makeFifo() {
        m_devices.makeFifo(3);
        m_peer = m_devices.join(3);
    }
    Code write(const GSSIP& sample) {
        auto rc = kUntouched;
        m_queue->Write(m_handle, sample, rc);
        return rc;
    }
    bool receives(size_t count) {
        return eventually([this, count] { return m_inbox.count() == count; });
    }
    // Whether these bytes, and no others, come out at the far end.
    bool peerTakes(const Bytes& expected) {
        Bytes taken;
        eventually([&] {
            taken = taken + m_peer.take();
            return taken.size() >= expected.size();
        });
        return taken == expected && m_peer.take().empty();
    }

    QueueDevices m_devices;
    const std::string m_configuration =
        m_devices.configure({{"ROVAN_KD", "3"}, {"KD_ROVAN", "4"}, {"NoPort", ""}});
    Descriptor m_peer;
    Inbox m_inbox;
    long long m_handle = -7;
    std::unique_ptr<GssipMcsq> m_queue;
};

// ---- Connecting

TEST_F(GssipMcsqTest, KnowsTheHandlesThatItGave) {
    makeTerminal();
    EXPECT_EQ(connect(), kNoError);
    EXPECT_TRUE(m_queue->IsInitialized(m_handle));
    EXPECT_FALSE(m_queue->IsInitialized(-1));
    EXPECT_FALSE(m_queue->IsInitialized(m_handle + 1));
    EXPECT_FALSE(m_queue->IsInitialized(LLONG_MAX));
}

TEST_F(GssipMcsqTest, NeedsTheFileTheContainerAndThePort) {
    makeFifo();
    GssipMcsq queue("Rovan", Ids{}, m_devices.prefix());
    auto rc = kUntouched;
    long long handle = -7;
    queue.Connect_WriteOnly(m_devices.file("missing").c_str(), "ROVAN_KD", handle, rc);
    EXPECT_EQ(rc, kInvalidConfig);
    EXPECT_EQ(handle, -1);
    queue.Connect_IOWrite(m_configuration.c_str(), "NoPort", handle, m_inbox.callback(), rc);
    EXPECT_EQ(rc, kInvalidConfig);
    EXPECT_EQ(handle, -1);
    queue.Connect_ReadOnly(m_configuration.c_str(), "Unknown", m_inbox.callback(), rc);
    EXPECT_EQ(rc, kInvalidConfig);
    queue.Connect_WriteOnly(m_configuration.c_str(), "ROVAN_KD", handle, rc);
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(handle, 0);
}

TEST_F(GssipMcsqTest, ReadsOneFileForAllConnections) {
    makeFifo();
    m_devices.makeFifo(4);
    EXPECT_EQ(connectForWriting(), kNoError);
    auto rc = kUntouched;
    m_queue->Connect_WriteOnly(m_devices.file("missing").c_str(), "KD_ROVAN", m_handle, rc);
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(m_handle, 1);
}

TEST_F(GssipMcsqTest, ServesItsCallbackAlsoWithoutADevice) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(connect(), kNoError);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unable to open output pipe file: " + m_devices.path(3) + "\n");
    EXPECT_TRUE(m_queue->IsInitialized(m_handle));
    EXPECT_EQ(write(sampleOf(frameOf(8504))), RETURN_CODE_TYPE::CONNECTION_CLOSED);
    EXPECT_EQ(m_inbox.count(), 1u);
}

TEST_F(GssipMcsqTest, IsBroughtUpOnFifosWithoutAnyPeer) {
    m_devices.makeFifo(3);
    m_devices.makeFifo(4);
    EXPECT_EQ(connect(), kNoError);
    auto rc = kUntouched;
    m_queue->Connect_ReadOnly(m_configuration.c_str(), "KD_ROVAN", m_inbox.callback(), rc);
    EXPECT_EQ(rc, kNoError);
    m_queue.reset();
}

// ---- Writing

TEST_F(GssipMcsqTest, PutsTheBytesOfASampleOnTheDevice) {
    makeTerminal();
    connect();
    EXPECT_EQ(write(sampleOf(frameOf(8504, 14), 7)), kNoError);
    EXPECT_TRUE(peerTakes(bytesOf(frameOf(8504, 14), 7)));
    EXPECT_EQ(bytesOf(frameOf(8504, 14), 7).size(), 24u + 56u);
}

TEST_F(GssipMcsqTest, CallsTheWritersOwnCallbackOnItsThread) {
    makeTerminal();
    connect();
    write(sampleOf(frameOf(8504), 7));
    ASSERT_EQ(m_inbox.count(), 1u);  // at once: there is nothing to wait for
    EXPECT_EQ(m_inbox.threads()[0], std::this_thread::get_id());
    EXPECT_EQ(m_inbox.samples()[0].header().seq_num(), 7);
    EXPECT_EQ(m_inbox.samples()[0].data(), frameOf(8504));
}

TEST_F(GssipMcsqTest, KeepsExcludedFramesFromTheDevice) {
    makeTerminal();
    connect({5044, 253});
    EXPECT_EQ(write(sampleOf(frameOf(5044))), kNoError);
    EXPECT_EQ(write(sampleOf(frameOf(253))), kNoError);
    EXPECT_EQ(write(sampleOf(frameOf(8504))), kNoError);
    EXPECT_TRUE(peerTakes(bytesOf(frameOf(8504))));
    EXPECT_EQ(m_inbox.frames(), (std::vector<Bytes>{frameOf(5044), frameOf(253), frameOf(8504)}));
    EXPECT_EQ(m_inbox.threads()[0], std::this_thread::get_id());
}

// Decimal only: "0x1FF4" is 0, which names nothing. 70576 is 5040 in 16 bits.
TEST_F(GssipMcsqTest, ReadsExcludedIdsFromTexts) {
    makeFifo();
    const std::vector<std::string> texts = {"253",  " 5044",  "0",     "",
                                            "none", "0x1FF4", "70576", "8040x"};
    m_queue = std::make_unique<GssipMcsq>("Rovan", texts, m_devices.prefix());
    auto rc = kUntouched;
    m_queue->Connect_WriteOnly(m_configuration.c_str(), "ROVAN_KD", m_handle, rc);
    for (const unsigned id : {253u, 5044u, 0u, 0x1FF4u, 5040u, 8040u, 8504u}) {
        EXPECT_EQ(write(sampleOf(frameOf(id))), kNoError) << id;
    }
    EXPECT_TRUE(peerTakes(bytesOf(frameOf(0)) + bytesOf(frameOf(0x1FF4)) + bytesOf(frameOf(8504))));
}

TEST_F(GssipMcsqTest, DoesNothingForAHandleThatItNeverGave) {
    makeTerminal();
    connect();
    auto rc = kUntouched;
    m_queue->Write(m_handle + 1, sampleOf(frameOf(8504)), rc);
    m_queue->Write(-1, sampleOf(frameOf(8504)), rc);
    EXPECT_EQ(rc, kUntouched);
    EXPECT_EQ(m_inbox.count(), 0u);
    EXPECT_TRUE(peerTakes({}));
}

TEST_F(GssipMcsqTest, PutsNoFrameWithoutAMessageIdOnTheDevice) {
    makeFifo();
    connectForWriting();
    EXPECT_EQ(write(sampleOf({})), RETURN_CODE_TYPE::NO_ACTION);
    EXPECT_EQ(write(sampleOf({0xFF, 0x81, 0x13})), RETURN_CODE_TYPE::NO_ACTION);
    EXPECT_EQ(write(sampleOf({0xFF, 0x81, 0x13, 0x14})), kNoError);
    EXPECT_TRUE(peerTakes(bytesOf({0xFF, 0x81, 0x13, 0x14})));
}

TEST_F(GssipMcsqTest, CallsBackForAFrameWithoutAMessageId) {
    makeTerminal();
    connect();
    write(sampleOf({0xFF, 0x81, 0x13}));
    EXPECT_EQ(m_inbox.count(), 1u);
}

TEST_F(GssipMcsqTest, WritesWithoutACallback) {
    makeTerminal();
    EXPECT_EQ(connect({}, GssipMcsq::Callback()), kNoError);
    EXPECT_EQ(write(sampleOf(frameOf(8504))), kNoError);
    EXPECT_TRUE(peerTakes(bytesOf(frameOf(8504))));
}

TEST_F(GssipMcsqTest, DropsASampleOfAFullDevice) {
    makeFifo();
    connectForWriting();
    m_peer.put(Bytes(65536, 1));
    EXPECT_EQ(write(sampleOf(frameOf(8504))), RETURN_CODE_TYPE::NO_ACTION);
    EXPECT_TRUE(peerTakes(Bytes(65536, 1)));
    EXPECT_EQ(write(sampleOf(frameOf(253))), kNoError);
    EXPECT_TRUE(peerTakes(bytesOf(frameOf(253))));
}

TEST_F(GssipMcsqTest, CallsBackForASampleThatTheDeviceDropped) {
    makeTerminal();
    connect();
    size_t written = 0;
    Code rc = kNoError;
    while (rc == kNoError && written < 100000) {
        rc = write(sampleOf(frameOf(8504)));  // until the terminal, which nobody reads, is full
        ++written;
    }
    EXPECT_NE(rc, kNoError);
    EXPECT_EQ(m_inbox.count(), written);
}

TEST_F(GssipMcsqTest, ReportsASampleThatWasCutShort) {
    EventLogRecorder log;
    makeFifo();
    connectForWriting();
    m_peer.put(Bytes(60000, 1));
    EXPECT_EQ(write(sampleOf(frameOf(8504, 20000))), RETURN_CODE_TYPE::DATA_OVERFLOW);
    ASSERT_TRUE(eventually([&log] { return log.events().size() == 1; }));
    EXPECT_EQ(log.events()[0].type, 3);
    EXPECT_TRUE(endsIn(log.events()[0].text,
                       "]:Rovan: Write() GSSIP QUEUE WRITE ERROR, the sample was cut short"))
        << log.events()[0].text;
    EXPECT_GT(m_peer.take().size(), 60000u);
    EXPECT_EQ(write(sampleOf(frameOf(253))), kNoError);
    EXPECT_TRUE(peerTakes(bytesOf(frameOf(253))));
}

TEST_F(GssipMcsqTest, KeepsTheSamplesOfSeveralWritersWhole) {
    makeFifo();
    connectForWriting();
    constexpr int kWriters = 4;
    constexpr int kSamples = 500;
    constexpr size_t kEach = 110 + 56;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < kWriters; ++writer) {
        writers.emplace_back([this, writer] {
            for (int i = 0; i < kSamples; ++i) {
                while (write(sampleOf(frameOf(8504, 100), writer)) != kNoError) {
                    std::this_thread::yield();
                }
            }
        });
    }
    Bytes received;
    EXPECT_TRUE(eventually([&] {
        received = received + m_peer.take();
        return received.size() >= kWriters * kSamples * kEach;
    }));
    for (std::thread& writer : writers) {
        writer.join();
    }
    std::vector<int> counts(kWriters);
    for (size_t i = 0; i + kEach <= received.size(); i += kEach) {
        const Bytes one(received.begin() + static_cast<long>(i),
                        received.begin() + static_cast<long>(i + kEach));
        const int writer = one[4];  // the lowest byte of the sequence number
        ASSERT_LT(writer, kWriters);
        ASSERT_EQ(one, bytesOf(frameOf(8504, 100), writer));
        ++counts[static_cast<size_t>(writer)];
    }
    EXPECT_EQ(counts, std::vector<int>(kWriters, kSamples));
}

// ---- Reading

TEST_F(GssipMcsqTest, DeliversWhatAnotherProcessWrote) {
    makeTerminal();
    connect();
    m_peer.put(bytesOf(frameOf(5040, 6), 41));
    ASSERT_TRUE(receives(1));
    const GSSIP sample = m_inbox.samples()[0];
    EXPECT_EQ(sample.header().seq_num(), 41);
    EXPECT_EQ(sample.header().timestamp_valid().nsec(), 999999999);
    EXPECT_EQ(sample.num_bytes(), 16);
    EXPECT_EQ(sample.data(), frameOf(5040, 6));
    EXPECT_NE(m_inbox.threads()[0], std::this_thread::get_id());
}

TEST_F(GssipMcsqTest, DeliversTheSamplesOfOneReadInOrder) {
    makeFifo();
    m_peer.put(bytesOf(frameOf(5040, 6)) + bytesOf(frameOf(253, 0)) + bytesOf(frameOf(8504, 33)));
    connect();
    ASSERT_TRUE(receives(3));
    EXPECT_EQ(m_inbox.frames(),
              (std::vector<Bytes>{frameOf(5040, 6), frameOf(253, 0), frameOf(8504, 33)}));
    EXPECT_EQ(m_inbox.samples()[0].num_bytes(), 16);
    EXPECT_EQ(m_inbox.samples()[1].num_bytes(), 10);
    EXPECT_EQ(m_inbox.samples()[2].num_bytes(), 43);
}

TEST_F(GssipMcsqTest, DeliversEachConnectionsSamplesToItsOwnCallback) {
    makeTerminal();
    const Descriptor other = m_devices.makeTerminal(4);
    Inbox passthrough;
    connect();
    auto rc = kUntouched;
    m_queue->Connect_ReadOnly(m_configuration.c_str(), "KD_ROVAN", passthrough.callback(), rc);
    ASSERT_EQ(rc, kNoError);
    m_peer.put(bytesOf(frameOf(1)));
    other.put(bytesOf(frameOf(2)));
    EXPECT_TRUE(receives(1));
    EXPECT_TRUE(eventually([&] { return passthrough.count() == 1; }));
    EXPECT_EQ(m_inbox.frames(), (std::vector<Bytes>{frameOf(1)}));
    EXPECT_EQ(passthrough.frames(), (std::vector<Bytes>{frameOf(2)}));
    m_queue.reset();
}

TEST_F(GssipMcsqTest, LetsACallbackWrite) {
    makeTerminal();
    std::atomic<int> calls{0};
    connect({}, [this, &calls](const GSSIP& sample) {
        if (++calls == 1) {
            write(sample);  // passes it on, and is called for what it wrote
        }
    });
    m_peer.put(bytesOf(frameOf(5040)));
    EXPECT_TRUE(eventually([&calls] { return calls == 2; }));
    EXPECT_TRUE(peerTakes(bytesOf(frameOf(5040))));
    m_queue.reset();
}

TEST_F(GssipMcsqTest, IgnoresOtherEvents) {
    makeFifo();
    connectForWriting();
    m_peer.put(bytesOf(frameOf(5040)));
    m_queue->Process_Notification_Event(m_handle, 1);
    m_queue->Process_Notification_Event(m_handle, -1);
    EXPECT_TRUE(peerTakes(bytesOf(frameOf(5040))));  // nobody else took it
}

// A FIFO gives this process its own samples back: each frame comes twice.
TEST_F(GssipMcsqTest, HearsItselfOnAFifo) {
    m_devices.makeFifo(3);
    connect();
    write(sampleOf(frameOf(8504)));
    EXPECT_TRUE(receives(2));
    EXPECT_EQ(m_inbox.frames(), (std::vector<Bytes>{frameOf(8504), frameOf(8504)}));
}

TEST_F(GssipMcsqTest, ReportsACallbackThatThrowsAndGoesOn) {
    EventLogRecorder log;
    makeTerminal();
    connect({}, [this](const GSSIP& sample) {
        m_inbox.take(sample);
        if (sample.header().seq_num() == 1) {
            throw std::runtime_error("no good");
        }
    });
    m_peer.put(bytesOf(frameOf(253), 1));
    ASSERT_TRUE(eventually([&log] { return log.events().size() == 1; }));
    m_peer.put(bytesOf(frameOf(253), 2));
    EXPECT_TRUE(receives(2));
    EXPECT_EQ(log.events()[0].type, 3);
    EXPECT_TRUE(endsIn(log.events()[0].text,
                       "]:Rovan: Process_Notification_Event(): A memory exception occurred "))
        << log.events()[0].text;
}

TEST_F(GssipMcsqTest, EndsWhileSamplesArrive) {
    makeFifo();
    connect();
    std::atomic<bool> stop{false};
    std::thread writer([this, &stop] {
        const Bytes bytes = bytesOf(frameOf(253));
        while (!stop) {
            if (::write(m_peer.number(), bytes.data(), bytes.size()) < 0) {
                std::this_thread::yield();
            }
        }
    });
    EXPECT_TRUE(eventually([this] { return m_inbox.count() > 10; }));
    const auto start = std::chrono::steady_clock::now();
    m_queue.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    stop = true;
    writer.join();
}

// ---- Damaged streams

struct Damage {
    const char* name;
    size_t delivered;  // samples before the damage
    size_t remainder;  // of the bytes, from the damage on
    Bytes bytes;
};

class DamagedStream : public GssipMcsqTest, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedStream, IsReportedOnceAndDropped) {
    EventLogRecorder log;
    const Damage& damage = GetParam();
    makeFifo();
    m_peer.put(damage.bytes);
    connect();
    ASSERT_TRUE(eventually([&log] { return !log.events().empty(); }));
    EXPECT_EQ(m_inbox.count(), damage.delivered);

    m_peer.put(bytesOf(frameOf(8504), 99));
    ASSERT_TRUE(receives(damage.delivered + 1));
    EXPECT_EQ(m_inbox.samples().back().header().seq_num(), 99);

    ASSERT_EQ(log.events().size(), 1u);
    EXPECT_EQ(log.events()[0].type, 3);
    EXPECT_TRUE(
        endsIn(log.events()[0].text,
               "]:Rovan: Process_Notification_Event(): A memory exception occurred on deserialize. "
               "Max Length: " +
                   std::to_string(damage.bytes.size()) +
                   " MCSQ remainder: " + std::to_string(damage.remainder)))
        << log.events()[0].text;
}

// 68 bytes: a frame of 12.
Bytes good() {
    return bytesOf(frameOf(253));
}

Bytes withNumBytes(int64_t numBytes) {
    Form form;
    form.numBytes = numBytes;
    return bytesOf(frameOf(253), form);
}

Bytes withDataLength(int64_t dataLength) {
    Form form;
    form.dataLength = dataLength;
    return bytesOf(frameOf(253), form);
}

Bytes cut(Bytes bytes, size_t count) {
    bytes.resize(count);
    return bytes;
}

Bytes noise(size_t count) {
    std::mt19937 random(1);
    Bytes bytes(count);
    for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(random());
    }
    return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, DamagedStream,
    testing::Values(Damage{"OneByte", 0, 1, {0x55}},                                          //
                    Damage{"Zeroes", 0, 20, Bytes(20)},                                       //
                    Damage{"Noise", 0, 3000, noise(3000)},                                    //
                    Damage{"CutInTheHeader", 0, 30, cut(good(), 30)},                         //
                    Damage{"CutInTheData", 0, 67, cut(good(), 67)},                           //
                    Damage{"CutAfterAGoodOne", 1, 50, good() + cut(good(), 50)},              //
                    Damage{"NoiseAfterTwoGoodOnes", 2, 9, good() + good() + Bytes(9, 0xA5)},  //
                    Damage{"NoEncapsulation", 0, 72, Bytes(4, 0x77) + good()},                //
                    Damage{"NumBytesOfNoAdvance", 0, 68, withNumBytes(-56)},                  //
                    Damage{"NumBytesMinusOne", 0, 68, withNumBytes(-1)},                      //
                    Damage{"NumBytesSmallest", 0, 68, withNumBytes(INT_MIN)},                 //
                    Damage{"NumBytesLargest", 0, 68, withNumBytes(INT_MAX)},                  //
                    Damage{"NumBytesOneTooMany", 0, 68, withNumBytes(13)},                    //
                    Damage{"NumBytesOneTooManyAtTheEnd", 1, 68, good() + withNumBytes(13)},   //
                    Damage{"NumBytesOneTooFew", 1, 1, withNumBytes(11)},                      //
                    Damage{"DataLongerThanTheStream", 0, 68, withDataLength(1000)},           //
                    Damage{"DataOfTheLargestLength", 0, 68, withDataLength(0xFFFFFFFF)}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(GssipMcsqTest, SurvivesAnyStream) {
    makeFifo();
    connectForWriting();
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        Bytes stream = good() + good() + good();
        for (unsigned flips = random() % 8 + 1; flips > 0; --flips) {
            stream[random() % stream.size()] = static_cast<uint8_t>(random());
        }
        stream.resize(random() % stream.size() + 1);
        m_peer.put(stream);
        m_queue->Process_Notification_Event(m_handle, 0);
        ASSERT_EQ(m_peer.take(), Bytes{});  // read whole, whatever it was
    }
}

}  // namespace
