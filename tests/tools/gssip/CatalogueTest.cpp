// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "MSID_messages/MessageTable.h"

namespace {

using GssipTool::catalogue;
using GssipTool::Field;
using GssipTool::findMessage;
using GssipTool::Message;

// The bits of the data words that the fields take, each once.
class Occupied {
  public:
    explicit Occupied(unsigned words) : m_words(words) {}

    void take(const Field& field, unsigned first) {
        for (unsigned i = 0; i < field.words; ++i) {
            const unsigned word = first + field.word + i;
            ASSERT_LT(word, m_words.size()) << field.name;
            for (unsigned bit = field.low; bit <= field.high; ++bit) {
                ASSERT_EQ(m_words[word] >> bit & 1, 0u) << field.name << " overlaps";
                m_words[word] |= 1u << bit;
            }
        }
    }

  private:
    std::vector<unsigned> m_words;
};

TEST(Catalogue, DescribesEveryKnownMessage) {
    EXPECT_EQ(catalogue().size(), Msid::kMessageSizes.size() + 2);
    for (const Msid::MessageSize& row : Msid::kMessageSizes) {
        const Message* const message = findMessage(row.msgId);
        ASSERT_NE(message, nullptr) << row.msgId;
        EXPECT_EQ(message->wdcnt, row.wdcnt);
        EXPECT_FALSE(message->fields.empty());
    }
    for (const uint16_t msgId : {uint16_t{8}, uint16_t{253}}) {
        ASSERT_NE(findMessage(msgId), nullptr);
        EXPECT_TRUE(findMessage(msgId)->anyLength);
    }
    EXPECT_EQ(findMessage(1), nullptr);
}

TEST(Catalogue, IsInTheOrderOfTheIds) {
    EXPECT_TRUE(
        std::is_sorted(catalogue().begin(), catalogue().end(),
                       [](const Message& a, const Message& b) { return a.msgId < b.msgId; }));
}

TEST(Catalogue, PutsEveryFieldIntoItsMessageAndNoTwoOnOneBit) {
    for (const Message& message : catalogue()) {
        Occupied occupied(message.wdcnt);
        for (const Field& field : message.fields) {
            occupied.take(field, 0);
        }
        for (unsigned i = 0; i < message.records.count; ++i) {
            for (const Field& field : message.records.fields) {
                occupied.take(field, message.records.word + i * message.records.stride);
            }
        }
    }
}

TEST(Catalogue, NamesEveryFieldOnce) {
    for (const Message& message : catalogue()) {
        std::set<std::string> names{message.records.name};
        for (const Field& field : message.fields) {
            EXPECT_TRUE(names.insert(field.name).second) << message.msgId << ' ' << field.name;
        }
        std::set<std::string> recordNames;
        for (const Field& field : message.records.fields) {
            EXPECT_TRUE(recordNames.insert(field.name).second) << field.name;
        }
    }
}

TEST(Catalogue, GivesSentMessagesAndReceivedOnesTheirDirection) {
    std::set<unsigned> sent;
    for (const Message& message : catalogue()) {
        if (message.toReceiver) {
            sent.insert(message.msgId);
        }
    }
    EXPECT_EQ(sent, (std::set<unsigned>{5001, 5313, 5331, 5402}));
}

}  // namespace
