// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/KD_MCSQ.h"

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "face/KD_Config.h"
#include "tests/ioss_mcsq/QueueDevices.h"

namespace {

using FACE::KD_Config;
using FACE::RETURN_CODE_TYPE;
using FACE::IOSS::KD_MCSQ;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

using Code = RETURN_CODE_TYPE::Value;
constexpr auto kNoError = RETURN_CODE_TYPE::NO_ERROR;
constexpr auto kInvalidParam = RETURN_CODE_TYPE::INVALID_PARAM;
constexpr auto kInvalidConfig = RETURN_CODE_TYPE::INVALID_CONFIG;
constexpr auto kClosed = RETURN_CODE_TYPE::CONNECTION_CLOSED;
constexpr auto kUntouched = RETURN_CODE_TYPE::IN_PROGRESS;

// Counts its calls for each connection and does what the test wants in each.
class Callback : public FACE::IOSS::IO_Callback {
  public:
    explicit Callback(std::function<void(long long)> action = {}) : m_action(std::move(action)) {}

    void Process_Notification_Event(long long id, int event) override {
        EXPECT_EQ(event, 0);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ids.push_back(id);
        }
        if (m_action) {
            m_action(id);
        }
    }
    long count(long long id) const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::count(m_ids.begin(), m_ids.end(), id);
    }

  private:
    std::function<void(long long)> m_action;
    mutable std::mutex m_mutex;
    std::vector<long long> m_ids;
};

void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

class KD_MCSQTest : public testing::Test {
  protected:
    // No callback may be under way when a test's own objects go.
    void TearDown() override {
        auto rc = kUntouched;
        m_service.Unregister_Notification_Event(0, rc);
    }

    // The service with a configuration of "A" on port 1 and "B" on port 2, or of what is given.
    void configure(const std::vector<std::pair<std::string, std::string>>& ports = {{"A", "1"},
                                                                                    {"B", "2"}}) {
        auto rc = kUntouched;
        m_service.Set_Reference("", std::make_shared<KD_Config>(), 0, rc);
        ASSERT_EQ(rc, kNoError);
        m_service.Initialize(m_devices.configure(ports).c_str(), rc);
        ASSERT_EQ(rc, kNoError);
    }
    long long open(const char* name) {
        long long id = -7;
        auto rc = kUntouched;
        m_service.Open_Connection(name, -1, id, rc);
        EXPECT_EQ(rc, kNoError) << name;
        return id;
    }
    Code openCode(const char* name) {
        long long id = -7;
        auto rc = kUntouched;
        m_service.Open_Connection(name, -1, id, rc);
        EXPECT_TRUE(rc == kNoError || id == -1);
        return rc;
    }
    Code read(long long id, Bytes& bytes) {
        FACE::IOSS::MCSQ::READ_PAYLOAD_TYPE payload;
        auto rc = kUntouched;
        m_service.Read(id, 0, payload, rc);
        const auto& read = payload.payload;
        bytes.assign(read.buffer(), read.buffer() + read.length());
        return rc;
    }
    Bytes read(long long id) {
        Bytes bytes;
        read(id, bytes);
        return bytes;
    }
    Code write(long long id, Bytes bytes) {
        FACE::IOSS::MCSQ::WRITE_PAYLOAD_TYPE payload;
        FACE::Sequence<uint8_t>::RETURN_CODE viewed{};
        const auto length = static_cast<uint32_t>(bytes.size());
        payload.payload = {bytes.data(), length, length, viewed};
        auto rc = kUntouched;
        m_service.Write(id, -1, payload, rc);
        return rc;
    }
    Code enroll(long long id, FACE::IOSS::IO_Callback* callback) {
        auto rc = kUntouched;
        m_service.Register_Notification_Event(id, callback, rc);
        return rc;
    }
    Code close(long long id) {
        auto rc = kUntouched;
        m_service.Close_Connection(id, rc);
        return rc;
    }
    uint32_t stateOf(long long id) {
        FACE::IOSS::CONNECTION_STATUS_TYPE status;
        auto rc = kUntouched;
        m_service.Get_Connection_Status(id, status, rc);
        EXPECT_EQ(rc, kNoError);
        return status.state;
    }
    // A callback that takes what there is.
    std::function<void(long long)> reading() {
        return [this](long long id) { read(id); };
    }

    QueueDevices m_devices;
    KD_MCSQ m_service{m_devices.prefix()};
};

// ---- Configuration

TEST_F(KD_MCSQTest, TakesOneConfiguration) {
    auto rc = kUntouched;
    m_service.Initialize("x", rc);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NOT_AVAILABLE);
    m_service.Set_Reference("", nullptr, 0, rc);
    EXPECT_EQ(rc, kInvalidParam);
    EXPECT_EQ(openCode("A"), RETURN_CODE_TYPE::NOT_AVAILABLE);
    m_service.Set_Reference("", std::make_shared<KD_Config>(), 0, rc);
    EXPECT_EQ(rc, kNoError);
    m_service.Set_Reference("", std::make_shared<KD_Config>(), 0, rc);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NOT_AVAILABLE);

    m_service.Initialize(m_devices.file("missing").c_str(), rc);
    EXPECT_EQ(rc, kInvalidConfig);
    EXPECT_EQ(openCode("A"), RETURN_CODE_TYPE::NOT_AVAILABLE);
    m_service.Initialize(m_devices.configure({{"A", "1"}}).c_str(), rc);
    EXPECT_EQ(rc, kNoError);
    m_service.Initialize(m_devices.file("missing").c_str(), rc);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NO_ACTION);
}

TEST_F(KD_MCSQTest, WantsAContainerWithAPort) {
    configure({{"A", "1"}, {"Empty", ""}});
    EXPECT_EQ(openCode("Unknown"), kInvalidConfig);
    EXPECT_EQ(openCode("Empty"), kInvalidConfig);
    uint16_t status = 7;
    auto rc = kUntouched;
    m_service.Get_Bus_Status(0, status, rc);
    EXPECT_EQ(status, 1u);  // nothing was entered
}

TEST_F(KD_MCSQTest, UnderstandsAPortOfAnyBase) {
    // 65557 is 21 in 16 bits, and a text without digits is 0.
    const std::vector<std::pair<std::string, int>> kPorts = {
        {"0x10", 16}, {"010", 8}, {"65557", 21}, {"none", 0}, {"7", 7}};
    std::vector<std::pair<std::string, std::string>> containers;
    for (const auto& [text, port] : kPorts) {
        m_devices.makeFifo(port);
        containers.emplace_back(text, text);
    }
    configure(containers);
    for (const auto& [text, port] : kPorts) {
        const long long id = open(text.c_str());
        const Descriptor peer = m_devices.join(port);
        peer.put({1, 2, static_cast<uint8_t>(port)});
        EXPECT_EQ(read(id), (Bytes{1, 2, static_cast<uint8_t>(port)})) << text;
    }
}

// ---- Opening and closing

TEST_F(KD_MCSQTest, GivesEachNameItsId) {
    m_devices.makeFifo(1);
    m_devices.makeFifo(2);
    configure();
    EXPECT_EQ(open("A"), 0);
    EXPECT_EQ(open("B"), 1);
    EXPECT_EQ(open("A"), 0);
    EXPECT_EQ(stateOf(0), 2u);
}

TEST_F(KD_MCSQTest, HasAConnectionAlsoWithoutItsDevice) {
    configure();
    testing::internal::CaptureStderr();
    const long long id = open("A");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unable to open output pipe file: " + m_devices.path(1) + "\n");
    EXPECT_EQ(id, 0);
    EXPECT_EQ(stateOf(id), 4u);
    Bytes bytes;
    EXPECT_EQ(read(id, bytes), kClosed);
    EXPECT_EQ(write(id, {1}), kClosed);
    EXPECT_EQ(close(id), kClosed);
    uint16_t status = 7;
    auto rc = kUntouched;
    m_service.Get_Bus_Status(id, status, rc);
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(status, 0u);
}

TEST_F(KD_MCSQTest, ClosesAndOpensAgain) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    EXPECT_EQ(write(id, {1, 2}), kNoError);
    EXPECT_EQ(close(id), kNoError);
    EXPECT_EQ(stateOf(id), 0u);
    EXPECT_EQ(write(id, {3}), kClosed);
    EXPECT_EQ(open("A"), id);
    EXPECT_EQ(write(id, {4}), kNoError);
    EXPECT_EQ(read(id), (Bytes{4}));  // a FIFO that nobody held open has forgotten
}

TEST_F(KD_MCSQTest, KnowsNoIdThatItNeverGave) {
    m_devices.makeFifo(1);
    configure();
    open("A");
    for (const long long id : {-1LL, 1LL, 1LL << 40, LLONG_MIN, LLONG_MAX}) {
        Bytes bytes;
        EXPECT_EQ(read(id, bytes), kInvalidParam);
        EXPECT_EQ(write(id, {1}), kInvalidParam);
        EXPECT_EQ(close(id), kInvalidParam);
        Callback callback;
        EXPECT_EQ(enroll(id, &callback), kInvalidParam);
        FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE parameters;
        FACE::IOSS::CONNECTION_STATUS_TYPE connectionStatus;
        uint16_t busStatus = 0;
        std::vector<Code> codes(7, kUntouched);
        m_service.Configure_Connection_Parameters(id, 0, parameters, codes[0]);
        m_service.Get_Connection_Configuration(id, 0, parameters, codes[1]);
        m_service.Configure_Bus_Parameters(id, 0, parameters, codes[2]);
        m_service.Get_Bus_Configuration(id, 0, parameters, codes[3]);
        m_service.Get_Connection_Status(id, connectionStatus, codes[4]);
        m_service.Get_Bus_Status(id, busStatus, codes[5]);
        m_service.Unregister_Notification_Event(id, codes[6]);
        EXPECT_EQ(codes, std::vector<Code>(7, kInvalidParam)) << id;
        EXPECT_EQ(busStatus, 1u);
    }
}

TEST_F(KD_MCSQTest, HasNothingToConfigure) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE parameters;
    std::vector<Code> codes(4, kUntouched);
    m_service.Configure_Connection_Parameters(id, 0, parameters, codes[0]);
    m_service.Get_Connection_Configuration(id, 0, parameters, codes[1]);
    m_service.Configure_Bus_Parameters(id, 0, parameters, codes[2]);
    m_service.Get_Bus_Configuration(id, 0, parameters, codes[3]);
    EXPECT_EQ(codes, std::vector<Code>(4, kNoError));
}

// ---- Reading and writing

TEST_F(KD_MCSQTest, CarriesBytesBothWays) {
    const Descriptor peer = m_devices.makeTerminal(1);
    configure();
    const long long id = open("A");
    EXPECT_EQ(write(id, {1, 2, 3}), kNoError);
    EXPECT_TRUE(eventually([&] { return peer.take() == Bytes{1, 2, 3}; }));
    peer.put({4, 5});
    Bytes bytes;
    ASSERT_TRUE(eventually([&] { return read(id, bytes) == kNoError; }));
    EXPECT_EQ(bytes, (Bytes{4, 5}));
}

TEST_F(KD_MCSQTest, HasNothingToReadAndDoesNotWait) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    Bytes bytes = {9};
    EXPECT_EQ(read(id, bytes), RETURN_CODE_TYPE::NOT_AVAILABLE);
    EXPECT_EQ(bytes, Bytes{});
}

TEST_F(KD_MCSQTest, ReadsAtMostOneBufferAtATime) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    const Descriptor peer = m_devices.join(1);
    ASSERT_GE(fcntl(peer.number(), F_SETPIPE_SZ, 1 << 18), 1 << 18);
    Bytes sent(200000);
    for (size_t i = 0; i < sent.size(); ++i) {
        sent[i] = static_cast<uint8_t>(i * 7 / 3);
    }
    peer.put(sent);
    Bytes received = read(id);
    EXPECT_EQ(received.size(), 131072u);
    append(received, read(id));
    EXPECT_EQ(received, sent);
}

TEST_F(KD_MCSQTest, ReadsNoMoreThanThePayloadMayHold) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    const Descriptor peer = m_devices.join(1);
    peer.put({1, 2, 3, 4, 5});
    std::array<uint8_t, 4> store = {9, 9, 9, 9};
    FACE::IOSS::MCSQ::READ_PAYLOAD_TYPE payload;
    FACE::Sequence<uint8_t>::RETURN_CODE viewed{};
    payload.payload = {store.data(), 0, 3, viewed};
    auto rc = kUntouched;
    m_service.Read(id, 0, payload, rc);
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(payload.payload.length(), 3u);
    EXPECT_EQ(store, (std::array<uint8_t, 4>{1, 2, 3, 9}));

    payload.payload = {nullptr, 0, 3, viewed};
    m_service.Read(id, 0, payload, rc);
    EXPECT_EQ(rc, kInvalidParam);
    EXPECT_EQ(read(id), (Bytes{4, 5}));
}

TEST_F(KD_MCSQTest, DropsWhatAFullDeviceHasNoRoomFor) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    const Descriptor peer = m_devices.join(1);
    peer.put(Bytes(65536, 1));
    EXPECT_EQ(write(id, Bytes(100, 2)), RETURN_CODE_TYPE::NO_ACTION);
    EXPECT_EQ(write(id, Bytes(10000, 2)), RETURN_CODE_TYPE::NO_ACTION);
    EXPECT_EQ(peer.take(), Bytes(65536, 1));
    EXPECT_EQ(write(id, Bytes(100, 3)), kNoError);
    EXPECT_EQ(peer.take(), Bytes(100, 3));
}

// The rest has 100 ms to go out, within which a busy machine may not let this reader run: so there
// are some attempts.
TEST_F(KD_MCSQTest, FinishesWhatTheDeviceTookInPart) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    const Descriptor peer = m_devices.join(1);
    const Bytes whole(30000, 2);
    Code rc = kUntouched;
    Bytes received;
    for (int attempt = 0; attempt < 20 && rc != kNoError; ++attempt) {
        peer.put(Bytes(60000, 1));
        received.clear();
        std::atomic<bool> done{false};
        std::thread writer([&] {
            rc = write(id, whole);
            done = true;
        });
        // A part is there; only then is room made.
        int waiting = 0;
        while (ioctl(peer.number(), FIONREAD, &waiting) == 0 && waiting <= 60000) {
            std::this_thread::yield();
        }
        while (!done) {
            append(received, peer.take());
            std::this_thread::yield();
        }
        writer.join();
        append(received, peer.take());
    }
    EXPECT_EQ(rc, kNoError);
    ASSERT_EQ(received.size(), 90000u);
    EXPECT_EQ(Bytes(received.begin() + 60000, received.end()), whole);
}

TEST_F(KD_MCSQTest, OpensTheDeviceAgainWhenItCannotFinish) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    const Descriptor peer = m_devices.join(1);
    peer.put(Bytes(60000, 1));
    const auto start = steady_clock::now();
    EXPECT_EQ(write(id, Bytes(30000, 2)), RETURN_CODE_TYPE::DATA_OVERFLOW);
    EXPECT_GE(steady_clock::now() - start, milliseconds(100));
    EXPECT_GT(peer.take().size(), 60000u);
    EXPECT_EQ(write(id, Bytes(100, 3)), kNoError);
    EXPECT_EQ(peer.take(), Bytes(100, 3));
}

TEST_F(KD_MCSQTest, SendsOneWriteAfterTheOther) {
    m_devices.makeFifo(1);
    configure();
    const long long id = open("A");
    const Descriptor peer = m_devices.join(1);
    constexpr size_t kLength = 9000;  // of which a FIFO may take a part
    constexpr size_t kWrites = 6;
    bool cutShort = true;  // as in the test above, when this reader could not run
    Bytes received;
    for (int attempt = 0; attempt < 20 && cutShort; ++attempt) {
        received.clear();
        std::atomic<int> running{4};
        std::atomic<bool> anyCutShort{false};
        std::vector<std::thread> writers;
        for (uint8_t writer = 1; writer <= 4; ++writer) {
            writers.emplace_back([&, writer] {
                size_t written = 0;
                while (written < kWrites && !anyCutShort) {
                    const Code rc = write(id, Bytes(kLength, writer));
                    written += rc == kNoError ? 1 : 0;
                    anyCutShort = anyCutShort || rc == RETURN_CODE_TYPE::DATA_OVERFLOW;
                }
                --running;
            });
        }
        while (running > 0) {
            append(received, peer.take());
            std::this_thread::yield();
        }
        append(received, peer.take());
        for (std::thread& writer : writers) {
            writer.join();
        }
        cutShort = anyCutShort;
    }
    ASSERT_EQ(received.size(), 4 * kWrites * kLength);
    for (size_t i = 0; i < received.size(); i += kLength) {
        const auto begin = received.begin() + static_cast<long>(i);
        ASSERT_EQ(std::count(begin, begin + kLength, *begin), static_cast<long>(kLength));
    }
}

// ---- Notification

TEST_F(KD_MCSQTest, TellsWhichConnectionHasData) {
    const Descriptor first = m_devices.makeTerminal(1);
    const Descriptor second = m_devices.makeTerminal(2);
    configure();
    open("A");
    Callback callback(reading());
    EXPECT_EQ(enroll(0, &callback), kNoError);
    open("B");  // while the thread runs
    second.put({1});
    EXPECT_TRUE(eventually([&] { return callback.count(1) == 1; }));
    EXPECT_EQ(callback.count(0), 0);
    first.put({1});
    EXPECT_TRUE(eventually([&] { return callback.count(0) == 1; }));
    TearDown();
}

TEST_F(KD_MCSQTest, HoldsNoLockWhileItCalls) {
    const Descriptor peer = m_devices.makeTerminal(1);
    m_devices.makeFifo(2);
    configure();
    const long long id = open("A");
    Callback callback([this](long long of) {
        read(of);
        std::thread other([this, of] {
            EXPECT_EQ(stateOf(of), 2u);
            EXPECT_EQ(openCode("B"), kNoError);
            EXPECT_EQ(write(of, {7}), kNoError);
        });
        other.join();
    });
    enroll(id, &callback);
    peer.put({1});
    EXPECT_TRUE(eventually([&] { return peer.take() == Bytes{7}; }));
    TearDown();
}

TEST_F(KD_MCSQTest, GoesOnAfterACallbackThatThrows) {
    const Descriptor peer = m_devices.makeTerminal(1);
    configure();
    const long long id = open("A");
    testing::internal::CaptureStderr();
    std::atomic<int> throws{0};
    Callback callback([this, &throws](long long of) {
        read(of);
        if (++throws == 1) {
            throw std::runtime_error("no good");
        }
        throw 5;
    });
    enroll(id, &callback);
    peer.put({1});
    EXPECT_TRUE(eventually([&] { return throws == 1; }));
    peer.put({1});
    EXPECT_TRUE(eventually([&] { return throws == 2; }));
    TearDown();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "KD_MCSQ callback failed: no good\nKD_MCSQ callback failed\n");
}

TEST_F(KD_MCSQTest, CallsNobodyAfterUnregistering) {
    const Descriptor peer = m_devices.makeTerminal(1);
    configure();
    const long long id = open("A");
    auto callback = std::make_unique<Callback>(reading());
    EXPECT_EQ(enroll(id, nullptr), kInvalidParam);
    EXPECT_EQ(enroll(id, callback.get()), kNoError);
    peer.put({1});
    ASSERT_TRUE(eventually([&] { return callback->count(id) == 1; }));
    auto rc = kUntouched;
    m_service.Unregister_Notification_Event(id, rc);
    EXPECT_EQ(rc, kNoError);
    callback.reset();
    peer.put({2});
    std::this_thread::sleep_for(milliseconds(120));  // two rounds of the thread, were there one
    EXPECT_EQ(read(id), (Bytes{2}));

    Callback again(reading());
    EXPECT_EQ(enroll(id, &again), kNoError);
    peer.put({3});
    EXPECT_TRUE(eventually([&] { return again.count(id) == 1; }));
    TearDown();
}

TEST_F(KD_MCSQTest, WatchesADeviceThatComesLater) {
    configure();
    Callback callback(reading());
    const long long id = open("A");
    EXPECT_EQ(enroll(id, &callback), kNoError);
    const Descriptor peer = m_devices.makeTerminal(1);
    EXPECT_EQ(open("A"), id);
    peer.put({1});
    EXPECT_TRUE(eventually([&] { return callback.count(id) == 1; }));
    EXPECT_EQ(close(id), kNoError);                  // the thread ends by itself,
    std::this_thread::sleep_for(milliseconds(120));  // within a round,
    EXPECT_EQ(open("A"), id);                        // and is there again
    peer.put({2});
    EXPECT_TRUE(eventually([&] { return callback.count(id) == 2; }));
    TearDown();
}

// A busy thread would make some thousand calls in the time of these.
TEST_F(KD_MCSQTest, RestsWhenADeviceIsReadyAndGivesNothing) {
    { const std::ofstream file(m_devices.path(1)); }  // a file is always ready
    configure();
    const long long id = open("A");
    Callback callback(reading());
    const auto start = steady_clock::now();
    enroll(id, &callback);
    EXPECT_TRUE(eventually([&] { return callback.count(id) >= 4; }));
    EXPECT_GE(steady_clock::now() - start, milliseconds(150));
    TearDown();
}

TEST_F(KD_MCSQTest, RestsWhenACallbackDoesNotRead) {
    const Descriptor peer = m_devices.makeTerminal(1);
    configure();
    const long long id = open("A");
    Callback callback;
    peer.put({1});
    const auto start = steady_clock::now();
    enroll(id, &callback);
    EXPECT_TRUE(eventually([&] { return callback.count(id) >= 4; }));
    EXPECT_GE(steady_clock::now() - start, milliseconds(150));
    TearDown();
}

TEST_F(KD_MCSQTest, UsesHardlyAnyTimeOnATerminalThatHasHungUp) {
    Descriptor peer = m_devices.makeTerminal(1);
    configure();
    const long long id = open("A");
    Callback callback(reading());
    enroll(id, &callback);
    peer.hangUp();
    const auto processorTime = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return std::chrono::seconds(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               std::chrono::microseconds(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
    };
    const auto before = processorTime();
    std::this_thread::sleep_for(milliseconds(300));
    EXPECT_LT(processorTime() - before, milliseconds(50));
    EXPECT_EQ(write(id, {1}), RETURN_CODE_TYPE::NO_ACTION);
    TearDown();
}

TEST_F(KD_MCSQTest, ServesTheOthersWhenOneHasHungUp) {
    Descriptor lost = m_devices.makeTerminal(1);
    const Descriptor peer = m_devices.makeTerminal(2);
    configure();
    open("A");
    open("B");
    std::atomic<size_t> received{0};
    Callback callback([this, &received](long long of) {
        const size_t count = read(of).size();
        received += of == 1 ? count : 0;
    });
    lost.hangUp();
    enroll(0, &callback);
    for (size_t i = 1; i <= 5; ++i) {
        peer.put({static_cast<uint8_t>(i)});
        EXPECT_TRUE(eventually([&] { return received == i; }));
    }
    TearDown();
}

TEST_F(KD_MCSQTest, EndsItsThreadWithItself) {
    m_devices.makeFifo(1);
    Callback callback;
    auto service = std::make_unique<KD_MCSQ>(m_devices.prefix());
    auto rc = kUntouched;
    service->Set_Reference("", std::make_shared<KD_Config>(), 0, rc);
    service->Initialize(m_devices.configure({{"A", "1"}}).c_str(), rc);
    long long id = -1;
    service->Open_Connection("A", -1, id, rc);
    service->Register_Notification_Event(id, &callback, rc);
    const auto start = steady_clock::now();
    service.reset();
    EXPECT_LT(steady_clock::now() - start, milliseconds(5000));
    // Its descriptors are closed: nobody reads the FIFO any more.
    EXPECT_EQ(::open(m_devices.path(1).c_str(), O_WRONLY | O_NONBLOCK), -1);
    EXPECT_EQ(errno, ENXIO);
}

TEST(KD_MCSQ, TakesTheDevicesOfTheSystemByDefault) {
    EXPECT_STREQ(KD_MCSQ::kDevicePrefix, "/dev/mcs");
}

}  // namespace
