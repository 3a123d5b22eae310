// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/tools/gssip/Streams.h"

// The fields of decoded frames against values that were worked out independently.
namespace {

using Tools::Json;

// The fields of a decoded frame; each must be looked at before the end.
class Fields {
  public:
    explicit Fields(const Golden::Bytes& frame) : m_fields(Streams::jsonOf(frame).at("fields")) {}
    explicit Fields(Json fields) : m_fields(std::move(fields)) {}
    ~Fields() { EXPECT_TRUE(m_fields.empty()) << "not looked at: " << m_fields.dump(); }
    Fields(const Fields&) = delete;
    Fields& operator=(const Fields&) = delete;

    void is(const std::string& name, double expected) {
        const Json value = take(name);
        ASSERT_TRUE(value.is_number()) << name;
        EXPECT_DOUBLE_EQ(value.get<double>(), expected) << name;
    }
    void is(const std::string& name, float expected) {
        const Json value = take(name);
        ASSERT_TRUE(value.is_number()) << name;
        EXPECT_EQ(static_cast<float>(value.get<double>()), expected) << name;
    }
    template <typename INTEGER>
    void is(const std::string& name, INTEGER expected) {
        const Json value = take(name);
        ASSERT_TRUE(value.is_number_integer()) << name;
        EXPECT_EQ(value.get<int64_t>(), int64_t{expected}) << name;
    }
    void is(const std::string& name, bool expected) {
        const Json value = take(name);
        ASSERT_TRUE(value.is_boolean()) << name;
        EXPECT_EQ(value.get<bool>(), expected) << name;
    }
    void is(const std::string& name, const std::vector<std::string>& expected) {
        EXPECT_EQ(take(name), Json(expected)) << name;
    }
    Json take(const std::string& name) {
        const auto found = m_fields.find(name);
        if (found == m_fields.end()) {
            ADD_FAILURE() << "no field " << name;
            return nullptr;
        }
        const Json value = *found;
        m_fields.erase(found);
        return value;
    }
    /// For fields that no independent value is known of.
    void skip(const std::string& name) { take(name); }
    /// All that are left are zero, false or empty lists.
    void restIsZero() {
        for (const auto& [name, value] : m_fields.items()) {
            EXPECT_TRUE(value == 0 || value == false || value == Json::array()) << name << value;
        }
        m_fields.clear();
    }

  private:
    Json m_fields;
};

std::string numbered(const char* name, unsigned i) {
    return name + std::to_string(i);
}

TEST(GoldenFields, Of5040) {
    for (const auto& [frame, expected] : Golden::k5040) {
        Fields fields(frame);
        fields.is("time", expected.time);
        for (unsigned i = 0; i < 7; ++i) {
            fields.is(numbered("word", 18 + i), expected.words18to24[i]);
        }
        fields.is("word25", expected.word25);
        fields.is("nibble33", expected.nibble33);
        fields.is("word42", expected.word42);
        fields.is("single44", expected.single44);
        fields.is("nibble46", expected.nibble46);
        fields.is("operatingMode", expected.operatingMode);
        fields.is("word71", expected.word71);
        fields.is("word72", expected.word72);
        fields.is("word73", expected.word73);
        fields.is("hundredths74", expected.hundredths74);
        fields.is("remainingKeyTime", expected.remainingKeyTime);
        fields.is("word76", expected.word76);
        fields.is("cryptoState", expected.cryptoState);
        fields.is("single78", expected.single78);
        fields.is("nibble80", expected.nibble80);
        fields.is("single36", expected.single36);
        fields.is("nibble38", expected.nibble38);
        fields.is("single82", expected.single82);
        fields.is("nibble84", expected.nibble84);
        fields.is("bit61", expected.bit61);
    }
}

TEST(GoldenFields, Of5042) {
    for (const auto& [frame, expected] : Golden::k5042) {
        Fields fields(frame);
        fields.is("time", expected.time);
        fields.is("isDtsCom1", expected.isDtsCom1);
        fields.is("lowByte58", expected.lowByte58);
    }
}

TEST(GoldenFields, Of7270) {
    for (const auto& [frame, expected] : Golden::k7270) {
        Fields fields(frame);
        fields.skip("time");
        fields.is("epochTag", expected.epochTag);
        fields.is("deltaRangeValid", expected.deltaRangeValid);
        fields.is("pseudorangeValid", expected.pseudorangeValid);
        fields.is("expectedRangeError", expected.expectedRangeError);
        fields.is("prn", expected.prn);
        fields.is("frequency", expected.frequency);
        fields.is("carrierToNoise", expected.carrierToNoise);
        fields.is("channelState", expected.channelState);
        fields.is("pseudorange", expected.pseudorange);
        fields.is("deltaRange", expected.deltaRange);
        fields.is("deltaRangeIntervalMs", expected.deltaRangeIntervalMs);
        for (unsigned axis = 0; axis < 3; ++axis) {
            fields.is(std::string("svPositionStart") + "XYZ"[axis], expected.svPositionStart[axis]);
            fields.is(std::string("svPositionStop") + "XYZ"[axis], expected.svPositionStop[axis]);
        }
        fields.is("pseudorangeCorrection", expected.pseudorangeCorrection);
        fields.is("rangeRateCorrection", expected.rangeRateCorrection);
        fields.is("hasSecondRateCorrection", expected.hasSecondRateCorrection);
        fields.is("secondRateCorrection", expected.secondRateCorrection);
        EXPECT_EQ(fields.take("assured") != 0, expected.assured);
        fields.is("tropoCorrectionApplied", expected.tropoCorrectionApplied);
        fields.is("ionoCorrectionApplied", expected.ionoCorrectionApplied);
        fields.is("ionoCorrectionSource", expected.ionoCorrectionSource);
        fields.is("channelCode", expected.channelCode);
        fields.is("pseudorangeSigma", expected.pseudorangeSigma);
        fields.is("deltaRangeSigma", expected.deltaRangeSigma);
    }
}

TEST(GoldenFields, Of8040) {
    for (const auto& [frame, expected] : Golden::k8040) {
        Fields fields(frame);
        fields.is("time", expected.time);
        const unsigned further = expected.furtherKeys.word;
        fields.is("selector", further & 3);
        for (unsigned i = 0; i < 4; ++i) {
            fields.is(numbered("loadStatus", i), (further >> (2 + i) & 1) != 0);
        }
        fields.is("firstRemainingTime", further >> 6 & 0xFF);
        fields.is("secondRemainingTime", further >> 14);
        const Json keys = fields.take("keys");
        ASSERT_EQ(keys.size(), 3u);
        for (unsigned i = 0; i < 3; ++i) {
            Fields key(keys[i]);
            const unsigned word = expected.keys[i].word;
            key.is("status", (word & 1) != 0);
            key.is("loadStatus", (word >> 1 & 1) != 0);
            key.is("remainingTime", word >> 2 & 0x3FF);
            key.is("zeroizationStatus", word >> 12 & 3);
        }
    }
}

TEST(GoldenFields, Of8080) {
    for (const auto& [frame, expected] : Golden::k8080) {
        Fields fields(frame);
        fields.is("time", expected.time);
        fields.is("word5", expected.word5);
        fields.is("interference0", (expected.indications & 1) != 0);
        fields.is("interference1", (expected.indications & 2) != 0);
        fields.is("interference2", (expected.indications & 4) != 0);
        fields.is("interference3", expected.indications >> 3 & 3);
    }
}

void expectChannel(const Json& json, const uint8_t (&bytes)[8]) {
    Fields channel(json);
    channel.is("prn", bytes[0]);
    channel.is("channel", bytes[1] & 0x7F);
    channel.is("usedInSolution", bytes[1] >= 0x80);
    channel.is("signalCode", bytes[2] & 0xF);
    channel.is("frequency", (bytes[3] << 8 | bytes[2]) >> 7 & 0xF);
    channel.is("assured", bytes[3] >> 3 & 3);
    channel.is("carrierToNoise", bytes[4] & 0x3F);
    channel.is("jammerToSignal", 2.0 * ((bytes[5] << 8 | bytes[4]) >> 6 & 0x3F));
    channel.is("trackingStatus", bytes[7] & 0xF);
}

TEST(GoldenFields, Of8504) {
    for (const auto& [frame, expected] : Golden::k8504) {
        Fields fields(frame);
        fields.is("time", expected.time);
        fields.is("double4", expected.double4);
        fields.is("latitude", expected.latitude);
        fields.is("longitude", expected.longitude);
        fields.is("double14", expected.double14);
        fields.is("double18", expected.double18);
        fields.is("double22", expected.double22);
        fields.is("single26", expected.single26);
        fields.is("altitude", expected.altitude);
        fields.is("eastVelocity", expected.eastVelocity);
        fields.is("northVelocity", expected.northVelocity);
        fields.is("upVelocity", expected.upVelocity);
        fields.is("single42", expected.single42);
        fields.is("horizontalPositionError", expected.horizontalPositionError);
        fields.is("verticalPositionError", expected.verticalPositionError);
        fields.is("horizontalVelocityError", expected.horizontalVelocityError * 0.03125);
        fields.is("verticalVelocityError", expected.verticalVelocityError * 0.03125);
        fields.is("bits48at0", expected.bits48at0);
        fields.is("receiverFailure", expected.receiverFailure);
        fields.is("noSolution", expected.noSolution);
        fields.is("bits48at6", expected.bits48at6);
        fields.is("bits48at8", expected.bits48at8);
        fields.is("bits48at10", expected.bits48at10);
        fields.is("word49", expected.word49);
        fields.is("byte50", expected.byte50);
        fields.is("bit50at8", expected.bit50at8);
        fields.is("bit50at9", expected.bit50at9);
        fields.is("bit50at10", expected.bit50at10);
        fields.is("bits50at11", expected.bits50at11);
        for (unsigned i = 0; i < 8; ++i) {
            fields.is(numbered("nibble51at", i), expected.nibbles51[i]);
        }
        fields.is("hdop", expected.hdop / 10.0);
        fields.is("vdop", expected.vdop / 10.0);
        fields.is("tdop", expected.tdop / 10.0);
        fields.is("byte58", expected.byte58);
        fields.is("bit58at8", expected.bit58at8);
        fields.is("corrections58at9", expected.corrections58at9);
        fields.is("corrections58at11", expected.corrections58at11);
        fields.is("bits58at13", expected.bits58at13);
        fields.is("bit58at15", expected.bit58at15);
        fields.is("bits59at0", expected.bits59at0);
        fields.is("bits59at3", expected.bits59at3);
        fields.is("byte59at8", expected.byte59at8);
        fields.is("bits60at0", expected.bits60at0);
        fields.is("bit60at2", expected.bit60at2);
        fields.is("bits60at3", expected.bits60at3);
        fields.is("byte60at8", expected.byte60at8);
        fields.is("single61", expected.single61);
        fields.is("single63", expected.single63);
        fields.is("bits65at0", expected.bits65at0);
        fields.is("bits65at4", expected.bits65at4);
        fields.is("byte65at8", expected.byte65at8);
        const Json channels = fields.take("channels");
        ASSERT_EQ(channels.size(), 32u);
        for (unsigned i = 0; i < 32; ++i) {
            expectChannel(channels[i], expected.channels[i].bytes);
        }
    }
}

TEST(GoldenFields, Of9391) {
    for (const auto& [frame, expected] : Golden::k9391) {
        Fields fields(frame);
        fields.skip("time");
        fields.is("clockBias", expected.clockBias);
        fields.is("gpsWeek", expected.gpsWeek);
        fields.is("gpsTimeOfWeek", expected.gpsTimeOfWeek);
        fields.is("gpsTimeOfWeekFraction", expected.gpsTimeOfWeekFraction);
        fields.is("receiverSetTime", expected.receiverSetTime);
        fields.is("receiverSetTimeFraction", expected.receiverSetTimeFraction);
        fields.is("clockBiasError", expected.clockBiasError);
        fields.is("clockBiasErrorRate", expected.clockBiasErrorRate);
        fields.is("firstSigma", expected.firstSigma);
        fields.is("secondSigma", expected.secondSigma);
    }
}

TEST(GoldenFields, Of30409AndOf9409WithTheSameLayout) {
    for (const auto& [frame, expected] : Golden::k30409) {
        std::vector<uint16_t> data;
        for (size_t i = 10; i + 2 < frame.size(); i += 2) {
            data.push_back(static_cast<uint16_t>(frame[i] | frame[i + 1] << 8));
        }
        for (const Frames::Bytes& bytes : {frame, Frames::frame(9409, data)}) {
            Fields fields(bytes);
            fields.skip("time");
            fields.is("sourceOneValid", expected.sourceOneValid);
            fields.is("sourceTwoValid", expected.sourceTwoValid);
            fields.is("a1", expected.a1);
            fields.is("a0", expected.a0);
            fields.is("tot", expected.tot);
            fields.is("delta_t_lsf", expected.delta_t_lsf);
            fields.is("WNt", expected.WNt);
            fields.is("dn", expected.dn);
            fields.is("wn_lsf", expected.wn_lsf);
            fields.is("delta_t_ls", expected.delta_t_ls);
            fields.is("utcDataValid", expected.utcDataValid);
        }
    }
}

TEST(GoldenFields, OfSatellitesInView) {
    for (const auto& [frame, expected] : Golden::k5047) {
        Fields fields(frame);
        fields.is("time", expected.time);
        const Json records = fields.take("records");
        ASSERT_EQ(records.size(), 6u);
        for (unsigned i = 0; i < 6; ++i) {
            Fields record(records[i]);
            record.is("svid", expected.records[i].svid);
            record.is("health", expected.records[i].health);
            record.is("azimuth", expected.records[i].azimuth);
            record.is("elevation", expected.records[i].elevation);
            record.is("rising", (expected.records[i].flags & 1) != 0);
        }
    }
}

TEST(GoldenFields, OfTheModeCommand) {
    const std::pair<const Golden::Bytes&, int> kCommands[] = {{Golden::kPowerOnCommand, 0},
                                                              {Golden::kContinuousCommand, 1},
                                                              {Golden::kStandbyCommand, 5},
                                                              {Golden::kEmergencyZeroize, 7},
                                                              {Golden::kCvZeroizeCommand, 8}};
    for (const auto& [frame, command] : kCommands) {
        Fields fields(frame);
        fields.is("command", command);
        fields.restIsZero();
    }
    Fields extended(Golden::kMistCommand);
    extended.is("command", 64);
    extended.is("extendedSelector", 14371);
    extended.is("extendedValue", 3);
    extended.restIsZero();
}

TEST(GoldenFields, OfThePortSetup) {
    using Names = std::vector<std::string>;
    Fields speed(Golden::kLineSpeed115200);
    speed.is("validity", Names{"receive", "transmit"});
    speed.is("receiveBaud", 11);
    speed.is("receiveParity", 1);
    speed.is("transmitBaud", 11);
    speed.is("transmitParity", 1);
    speed.restIsZero();
    Fields redundant(Golden::kRedundantPort);
    redundant.is("validity", Names{"redundantPorts"});
    redundant.is("port", 2);
    redundant.is("redundantPorts", 1);
    redundant.restIsZero();
    Fields pulse(Golden::kPulseOnPort15);
    pulse.is("validity", Names{"pulse"});
    pulse.is("port", 15);
    pulse.is("pulse", 2);
    pulse.restIsZero();
    Fields sentences(Golden::kSentences);
    sentences.is("validity", Names{"sentences"});
    const int kSentences[] = {5, 11, 19, 20, 4, 0, 14};
    for (unsigned i = 0; i < 7; ++i) {
        sentences.is(numbered("sentence", i + 1), kSentences[i]);
    }
    sentences.restIsZero();
}

TEST(GoldenFields, OfTheReceiverSetup) {
    Fields fields(Golden::kReceiverSetup);
    fields.is("validity", std::vector<std::string>{"codeType", "bfeaMode"});
    fields.is("codeType", 11);
    fields.is("bfeaMode", 2);
    fields.restIsZero();
}

TEST(GoldenFields, OfZeroizeAndMission) {
    using Names = std::vector<std::string>;
    Fields ip(Golden::kIpZeroize);
    ip.is("selection", Names{"ipZeroize"});
    ip.is("validity", Names{"ipZeroize"});
    ip.restIsZero();
    Fields cv(Golden::kCvZeroize);
    cv.is("selection", Names{"cvZeroize"});
    cv.is("validity", Names{"cvZeroize"});
    cv.restIsZero();
    Fields mission(Golden::kMission84);
    mission.is("validity", Names{"missionDuration"});
    mission.is("missionDuration", 84);
    mission.restIsZero();
}

TEST(GoldenFields, OfHeadersAlone) {
    const std::pair<const Golden::Bytes&, Json> kHeaders[] = {
        {Golden::kConnect8504, {"marker", "ack-request", "connect"}},
        {Golden::kDisconnect0, {"marker", "ack-request", "disconnect"}},
        {Golden::kRequest9225, {"marker", "ack-request", "request"}},
        {Golden::kAcknowledge8504, {"marker", "ack"}}};
    for (const auto& [frame, flags] : kHeaders) {
        const Json json = Streams::jsonOf(frame);
        EXPECT_EQ(json["flags"], flags);
        EXPECT_EQ(json["words"], 0);
        EXPECT_FALSE(json.contains("fields"));
    }
}

// The messages that have no golden frame: one word or text each, put in by hand.

Json fieldsWith(uint16_t msgId, unsigned wdcnt, unsigned word, const std::string& text) {
    std::vector<uint16_t> data(wdcnt);
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        data[word + i / 2] = static_cast<uint16_t>(data[word + i / 2] | byte << i % 2 * 8);
    }
    return Streams::jsonOf(Frames::frame(msgId, data)).at("fields");
}

TEST(HandMadeFields, OfTheEventReportHaveTheTextsBytesSwapped) {
    Fields fields(fieldsWith(5044, 21, 4,
                             std::string("\x22\x01"
                                         "BADCFE\0G",
                                         10)));
    fields.is("eventId", 0x122);
    EXPECT_EQ(fields.take("text"), "ABCDEFG");
    fields.restIsZero();
}

TEST(HandMadeFields, OfTheZeroizeStatus) {
    Fields fields(fieldsWith(5404, 60, 5, "\x6F"));  // bits 5 and 4 are 10
    fields.is("ipZeroizeStatus", 2);
    fields.restIsZero();
}

TEST(HandMadeFields, OfTheVersionIdentifiers) {
    const std::pair<unsigned, const char*> kTexts[] = {
        {24, "PAP_SW_Build"},    {84, "PAP_Boot_Build"}, {164, "PSP_SW_Build"},
        {224, "PSP_Boot_Build"}, {338, "HPN_PAP_SW"},    {346, "HPN_PAP_Boot"},
        {354, "HPN_PSP_SW"},     {362, "HPN_PSP_Boot"},  {370, "HPN_Civil_Boot"},
        {378, "HPN_Civil_App"},  {386, "HPN_FPGA"},      {394, "HPN_HW"},
        {402, "HPN_BSL"},        {410, "FCM_ID"}};
    for (const auto& [word, name] : kTexts) {
        const Json fields = fieldsWith(9225, 416, word, "123-4567");
        for (const auto& [other, value] : fields.items()) {
            const bool isText =
                other.find("Build") != std::string::npos || other[0] == 'H' || other == "FCM_ID";
            if (isText) {
                EXPECT_EQ(value, other == name ? "123-4567" : "") << name << ' ' << other;
            }
        }
    }
    Fields built(fieldsWith(9225, 416, 20, "\x0B\x15\x1A\x16\x19\x2D"));
    built.is("buildMonth", 11);
    built.is("buildDay", 21);
    built.is("buildYear", 26);
    built.is("buildHour", 22);
    built.is("buildMinute", 25);
    built.is("buildSecond", 45);
    EXPECT_EQ(fieldsWith(9225, 416, 298, "\x01")["bootFlag"], 1);
    for (const auto& [word, name] : kTexts) {
        EXPECT_EQ(built.take(name), "");
    }
    built.is("bootFlag", 0);
    built.is("time", 0.0);
}

TEST(HandMadeFields, OfTheConnectionStatus) {
    EXPECT_EQ(fieldsWith(9405, 104, 26, "\x1F")["bciFailures"],
              (Json{"BCI_ST_FPGA_TURN_ON_FAIL", "BCI_ST_BCI_CLOCK_TRUN_FAIL", "BCI_ST_CABLE_LOSS",
                    "BCI_ST_INVLD_FPGA_SIG", "BCI_ST_BCI_CLK_FAIL"}));
    EXPECT_EQ(fieldsWith(9405, 104, 26, "\x24")["bciFailures"],
              (Json{"BCI_ST_CABLE_LOSS", "0x0020"}));
    EXPECT_EQ(fieldsWith(9405, 104, 27, "\x01")["serialCableDisconnected"], true);
    EXPECT_EQ(fieldsWith(9405, 104, 27, "\xFE")["serialCableDisconnected"], false);
    EXPECT_EQ(fieldsWith(9405, 104, 86, std::string("\0\x40", 2))["inReRad"], true);
    EXPECT_EQ(fieldsWith(9405, 104, 86, "\xFF\xBF")["inReRad"], false);
}

}  // namespace
