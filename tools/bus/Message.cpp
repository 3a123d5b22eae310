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

#define BUS_MESSAGE(type) {"aspn2_msgs::idl::" #type, make<idl::type>},
constexpr Row kTypes[] = {ASPN2_MESSAGES(BUS_MESSAGE)};
#undef BUS_MESSAGE

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
