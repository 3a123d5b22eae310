// SPDX-License-Identifier: Apache-2.0
#include "simulator/BusEar.h"

#include <tinyxml2.h>

#include <functional>
#include <stdexcept>
#include <utility>

#include "ASPN/ServerIds.h"
#include "aspn2_msgs/ChallengedEnvironment.h"
#include "aspn2_msgs/ChannelStatus.h"
#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/GPSCryptoStatus.h"
#include "aspn2_msgs/GPSLineOfSight.h"
#include "aspn2_msgs/GPSTime.h"
#include "aspn2_msgs/PositionVelocity.h"
#include "aspn2_msgs/ReceiverStatus.h"
#include "aspn2_msgs/SVStatus.h"
#include "aspn2_msgs/UTCTime.h"
#include "aspn2_msgs/UtcDownlink.h"
#include "face/KD_Config.h"
#include "face/KD_TSS.h"
#include "face/KD_TypedTS.h"
#include "simulator/LedgerKeys.h"
#include "simulator/PrivateDev.h"

namespace Simulator {
namespace {

namespace idl = aspn2_msgs::idl;
using Clock = std::chrono::steady_clock;
using FACE::RETURN_CODE_TYPE;

const std::string kTestCommand = "REQUEST_COMPONENT_CBIT";

void require(RETURN_CODE_TYPE::Value rc, const char* what) {
    FACE::Return_Code_Value_No_Error("BusEar", 0, what, rc);
}

void change(tinyxml2::XMLElement& parameters, const char* key, const char* value) {
    if (tinyxml2::XMLElement* const element = parameters.FirstChildElement(key)) {
        element->SetText(value);
    }
}

std::filesystem::path copyForListener(const std::filesystem::path& file) {
    tinyxml2::XMLDocument document;
    if (document.LoadFile(file.c_str()) != tinyxml2::XML_SUCCESS) {
        throw std::runtime_error(file.string() + ": " + document.ErrorStr());
    }
    auto* const root = document.FirstChildElement("KD_Configurations");
    for (auto* element = root == nullptr ? nullptr : root->FirstChildElement(); element != nullptr;
         element = element->NextSiblingElement()) {
        auto* const parameters = element->FirstChildElement("Parameters");
        const auto* const transport =
            parameters == nullptr ? nullptr : parameters->FirstChildElement("UseTransport");
        if (transport == nullptr || transport->GetText() == nullptr) {
            continue;
        }
        const std::string name = transport->GetText();
        if (name == "TCP_Server" || name == "TCP_Client") {
            change(*parameters, "UseTransport", name == "TCP_Server" ? "TCP_Client" : "TCP_Server");
        }
        change(*parameters, "BackFillHistory", "TRUE");
    }
    const std::filesystem::path copy =
        std::filesystem::path(PrivateDev::kDirectory) / "ledger-connections.xml";
    PrivateDev::require(copy.string());
    if (document.SaveFile(copy.c_str()) != tinyxml2::XML_SUCCESS) {
        throw std::runtime_error(copy.string() + ": " + document.ErrorStr());
    }
    return copy;
}

std::shared_ptr<FACE::TSS::KD_TSS> join(const std::filesystem::path& connectionsFile) {
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    auto tss = std::make_shared<FACE::TSS::KD_TSS>("rovan-unit ledger");
    tss->Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
    tss->Initialize(copyForListener(connectionsFile).c_str(), rc);
    require(rc, "cannot join the bus");
    return tss;
}

template <typename T>
Words keyOf(const T&) {
    return {};
}
Words keyOf(const idl::PositionVelocity& sample) {
    const auto& position = sample.position();
    return LedgerKeys::position(position.latitude(), position.longitude(), position.altitude());
}
Words keyOf(const idl::GPSTime& sample) {
    return LedgerKeys::time(sample.gps_tow_sec(), sample.gps_tow_nsec());
}
Words keyOf(const idl::UTCTime& sample) {
    return LedgerKeys::time(sample.gps_tow_sec(), sample.gps_tow_nsec());
}

}  // namespace

// Calls `heard` with every sample of a topic as long as it lives.
template <typename T>
class BusEar::Topic {
  public:
    Topic(std::shared_ptr<FACE::TSS::KD_TSS> tss, const char* name,
          std::function<void(const T&)> heard)
        : m_tss(std::move(tss)) {
        auto rc = RETURN_CODE_TYPE::NO_ERROR;
        int unused = 0;
        m_tss->Create_Connection(name, -1, m_connection, unused, rc);
        require(rc, name);
        m_typed.Set_Reference("", m_tss, 0, rc);
        require(rc, name);
        m_typed.Register_Callback(
            m_connection,
            [heard = std::move(heard)](long long, long long, const T& message, const auto&,
                                       const auto&, auto&) { heard(message); },
            rc);
        require(rc, name);
    }
    Topic(const Topic&) = delete;
    Topic& operator=(const Topic&) = delete;
    ~Topic() {
        auto ignored = RETURN_CODE_TYPE::NO_ERROR;
        m_tss->Unregister_Callback(m_connection, ignored);
    }

  private:
    const std::shared_ptr<FACE::TSS::KD_TSS> m_tss;
    long long m_connection = -1;
    FACE::TSS::Details::KD_TypedTS<T> m_typed;
};

BusEar::BusEar(const std::filesystem::path& connectionsFile) {
    const std::shared_ptr<FACE::TSS::KD_TSS> tss = join(connectionsFile);
    const auto listen = [&](auto type, const char* name, auto heard) {
        using Type = decltype(type);
        m_topics.push_back(std::make_shared<Topic<Type>>(tss, name, heard));
    };
    const auto count = [&](auto type, const char* name) {
        using Type = decltype(type);
        listen(type, name, [this, topic = std::string(name)](const Type& sample) {
            add(topic, {Clock::now(), keyOf(sample), sample.header().seq_num()});
        });
    };
    count(idl::PositionVelocity(), "PositionVelocity");
    count(idl::ReceiverStatus(), "ReceiverStatus");
    count(idl::ChannelStatus(), "ChannelStatus");
    count(idl::GPSTime(), "GPSTime");
    count(idl::UTCTime(), "UTCTime");
    count(idl::UtcDownlink(), "UtcDownlink");
    count(idl::GPSCryptoStatus(), "GPSCryptoStatus");
    count(idl::ChallengedEnvironment(), "ChallengedEnvironment");
    count(idl::SVStatus(), "SVStatus");
    listen(idl::GPSLineOfSight(), "GPSLineOfSight", [this](const idl::GPSLineOfSight& sample) {
        add("GPSLineOfSight", {Clock::now(), {}, sample.header().seq_num()});
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_measurements += sample.obs().size();
    });
    const auto fromServer = [](const idl::CommandResponse& sample) {
        return ASPN2::ServerIds::ofDevice(sample.header().device_id()) == ASPN2::ServerIds::kRovan;
    };
    listen(idl::CommandResponse(), "Command",
           [this, fromServer](const idl::CommandResponse& sample) {
               if (fromServer(sample) || sample.command_response() == kTestCommand) {
                   onCommand(sample.command_response());
               }
           });
    listen(idl::CommandResponse(), "Response",
           [this, fromServer](const idl::CommandResponse& sample) {
               if (fromServer(sample)) {
                   onResponse(sample.command_response());
               }
           });
}

BusEar::~BusEar() = default;

void BusEar::add(const std::string& topic, LedgerSample sample) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_samples[topic].push_back(std::move(sample));
}

void BusEar::onCommand(const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (text == "SERVER_STARTED" && !m_started) {
        m_started = Clock::now();
    } else if (text == kTestCommand && (m_tests.empty() || m_tests.back().end)) {
        m_tests.push_back({Clock::now(), {}});
    }
}

void BusEar::onResponse(const std::string& text) {
    const bool over = text == kTestCommand + "_PASS" || text == kTestCommand + "_FAIL" ||
                      text == kTestCommand + "_NACK";
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (over && !m_tests.empty() && !m_tests.back().end) {
        m_tests.back().end = Clock::now();
    }
}

std::vector<LedgerSample> BusEar::samples(const std::string& topic) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_samples.find(topic);
    return found == m_samples.end() ? std::vector<LedgerSample>() : found->second;
}

std::size_t BusEar::measurements() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_measurements;
}

std::optional<LedgerTime> BusEar::started() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_started;
}

std::vector<BusTest> BusEar::tests() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_tests;
}

}  // namespace Simulator
