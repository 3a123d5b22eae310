// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Message.h"

#include "tools/bus/Text.h"

namespace Bus {
namespace {

template <typename T>
class MessageOf : public Message {
  public:
    void* data() override { return &m_message; }
    idl::header& header() override { return m_message.header(); }
    Json json() const override { return toJson(m_message); }
    std::string text() const override { return toText(m_message, 2); }

  private:
    T m_message;
};

template <typename T>
std::unique_ptr<Message> make() {
    return std::make_unique<MessageOf<T>>();
}

struct Row {
    const char* typeName;
    std::unique_ptr<Message> (*make)();
};

constexpr Row kTypes[] = {
    {"aspn2_msgs::idl::ChallengedEnvironment", make<idl::ChallengedEnvironment>},
    {"aspn2_msgs::idl::ChannelStatus", make<idl::ChannelStatus>},
    {"aspn2_msgs::idl::CommandResponse", make<idl::CommandResponse>},
    {"aspn2_msgs::idl::EventLog", make<idl::EventLog>},
    {"aspn2_msgs::idl::GPSCryptoStatus", make<idl::GPSCryptoStatus>},
    {"aspn2_msgs::idl::GPSLineOfSight", make<idl::GPSLineOfSight>},
    {"aspn2_msgs::idl::GPSTime", make<idl::GPSTime>},
    {"aspn2_msgs::idl::GSSIP", make<idl::GSSIP>},
    {"aspn2_msgs::idl::MaintenanceEvent", make<idl::MaintenanceEvent>},
    {"aspn2_msgs::idl::PositionVelocity", make<idl::PositionVelocity>},
    {"aspn2_msgs::idl::ReceiverStatus", make<idl::ReceiverStatus>},
    {"aspn2_msgs::idl::SVStatus", make<idl::SVStatus>},
    {"aspn2_msgs::idl::UTCTime", make<idl::UTCTime>},
    {"aspn2_msgs::idl::UtcDownlink", make<idl::UtcDownlink>},
};

}  // namespace

std::unique_ptr<Message> makeMessage(const std::string& typeName) {
    for (const Row& row : kTypes) {
        if (typeName == row.typeName) {
            return row.make();
        }
    }
    return nullptr;
}

std::vector<std::string> knownTypes() {
    std::vector<std::string> names;
    for (const Row& row : kTypes) {
        names.emplace_back(row.typeName);
    }
    return names;
}

}  // namespace Bus
