// SPDX-License-Identifier: Apache-2.0
#include <fastrtps/publisher/Publisher.h>
#include <gtest/gtest.h>

#include <fastdds/dds/topic/TopicDataType.hpp>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/aspn2_msgs/Golden.h"
#include "tests/support/OwnBus.h"
#include "tests/tools/Program.h"
#include "tests/tools/TestPublisher.h"
#include "tools/bus/Message.h"

// The tool on a bus that carries every type of message, each on a topic of the type's name.
namespace {

using tools_test::Program;
using Json = nlohmann::json;
using RC = FACE::RETURN_CODE_TYPE;

constexpr size_t kTypes = 32;
const std::string kModules = "aspn2_msgs::idl::";

class EveryTypeOnTheBus : public ::testing::Test {
  protected:
    /// Joins a bus with a publisher on every topic.
    void join() {
        std::string text = tools_test::connectionsXml(m_domain.number(), "UDP");
        text.erase(text.find("  <Connection>"));
        for (const std::string& type : Bus::knownTypes()) {
            m_types.push_back(type.substr(kModules.size()));
            text += tools_test::connection(m_types.back(), m_types.back());
        }
        ASSERT_EQ(m_types.size(), kTypes);
        m_path = m_directory.file("connections.xml", text + "</KD_Configurations>\n");

        auto rc = RC::NO_ERROR;
        m_transport.Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
        m_transport.Initialize(m_path.c_str(), rc);
        ASSERT_EQ(rc, RC::NO_ERROR);
        for (const std::string& type : m_types) {
            m_transport.registerPublisher(connection(type));
        }
    }

    FACE::TSS::KD_TSS::Connection_t& connection(const std::string& topic) {
        auto rc = RC::NO_ERROR;
        long long id = -1;
        int size = 0;
        m_transport.Create_Connection(topic.c_str(), 0, id, size, rc);
        EXPECT_EQ(rc, RC::NO_ERROR) << topic;
        return m_transport.connectionMap_mutex_at(FACE::TSS::KD_TSS::connectionKey(id));
    }

    /// Publishes one message of each type with every field set, each as soon as somebody listens.
    void publishAll() {
        for (const std::string& type : m_types) {
            auto& on = connection(type);
            ASSERT_TRUE(tools_test::waitUntil([&on] { return on.publisherListener->matched() > 0; },
                                              std::chrono::seconds(30)))
                << type;
            const auto message = Bus::makeMessage(kModules + type);
            golden::Payload payload(golden::bytes(type, "little"));
            ASSERT_TRUE(on.type->deserialize(&payload, message->data())) << type;
            EXPECT_TRUE(on.publisher.load()->write(message->data())) << type;
        }
    }

    /// The lines of the program's output by their topic.
    std::map<std::string, Json> linesOf(Program& program) const {
        EXPECT_EQ(program.wait(), 0) << program.errors();
        std::map<std::string, Json> lines;
        std::istringstream output(program.output());
        for (std::string text; std::getline(output, text);) {
            const Json line = Json::parse(text);
            lines[line["topic"]] = line;
        }
        return lines;
    }

    const test_support::OwnBus m_domain;
    tools_test::TemporaryDirectory m_directory;
    std::string m_path;
    std::vector<std::string> m_types;
    FACE::TSS::KD_TSS m_transport{"TestServer"};
};

TEST_F(EveryTypeOnTheBus, IsEchoedWithEveryField) {
    ASSERT_NO_FATAL_FAILURE(join());
    Program program({"echo", "-c", m_path, "--json", "-n", std::to_string(kTypes)});

    ASSERT_NO_FATAL_FAILURE(publishAll());

    auto lines = linesOf(program);
    EXPECT_EQ(lines.size(), kTypes);
    for (const std::string& type : m_types) {
        EXPECT_EQ(lines[type]["type"], kModules + type);
        EXPECT_EQ(lines[type]["message"], Json::parse(golden::json(type))) << type;
    }
}

TEST_F(EveryTypeOnTheBus, IsListed) {
    ASSERT_NO_FATAL_FAILURE(join());
    Program program({"list", "-c", m_path, "--json", "-d", "6"});

    auto lines = linesOf(program);
    EXPECT_EQ(lines.size(), kTypes);
    for (const std::string& type : m_types) {
        EXPECT_EQ(lines[type]["type"], kModules + type);
        EXPECT_EQ(lines[type]["publishers"], Json({"TestServer"})) << type;
    }
}

TEST_F(EveryTypeOnTheBus, IsCountedByHz) {
    ASSERT_NO_FATAL_FAILURE(join());
    Program program({"hz", "-c", m_path, "--json", "-n", std::to_string(kTypes)});

    ASSERT_NO_FATAL_FAILURE(publishAll());

    auto lines = linesOf(program);
    EXPECT_EQ(lines.size(), kTypes);
    for (const std::string& type : m_types) {
        EXPECT_EQ(lines[type]["samples"], 1) << type;
    }
}

}  // namespace
