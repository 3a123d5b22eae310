// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/tools/WatchSamples.h"
#include "tools/bus/WatchCommands.h"
#include "tools/bus/WatchScreen.h"
#include "tools/bus/WatchText.h"

namespace {

using namespace tools_test;
using Bus::Canvas;
using Bus::WatchControl;
using Bus::WatchModel;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using Dialog = WatchControl::Dialog;

const std::vector<std::string> kTopics = {"GPSTime", "PositionVelocity", "EventLog"};

class Screen : public ::testing::Test {
  protected:
    Canvas draw(int width = 80, int height = 24) const {
        Bus::WatchMoment moment;
        moment.now = at(m_now);
        moment.unixNs = kUnixNs;
        moment.bus = "UDP, domain 7";
        return Bus::watchScreen(m_model, m_control, moment, width, height);
    }
    std::string text(int width = 80, int height = 24) const { return draw(width, height).text(); }

    WatchModel m_model{kTopics};
    WatchControl m_control;
    double m_now = 0;
};

TEST_F(Screen, WithoutDataHasNoNumbers) {
    const Canvas canvas = draw();
    EXPECT_THAT(canvas.line(0), StartsWith("rovan-bus watch  UDP, domain 7"));
    EXPECT_THAT(canvas.line(0), HasSubstr("22:13:20 UTC"));
    EXPECT_EQ(canvas.line(1).substr(0, 38), "POSITION                       no data");
    EXPECT_EQ(canvas.line(2).substr(0, 38), " lat            --           -- deg   ");
    EXPECT_EQ(canvas.line(5).substr(0, 38), " vel N      -- E      -- D      -- m/s");
    EXPECT_EQ(canvas.line(8).substr(0, 38), " satellites used  --  available  --   ");
    EXPECT_EQ(canvas.line(13).substr(0, 38), " UTC  --                              ");
    // Of the panes on the left only names have digits.
    for (int y = 1; y < 22; ++y) {
        const std::string left = canvas.line(y).substr(0, 38);
        EXPECT_EQ(left.find_first_of("123456789"), std::string::npos) << left;
    }
}

TEST_F(Screen, ShowsPositionAndVelocityWithTheirErrors) {
    m_model.take(sampleOf("PositionVelocity", position(), 0));
    m_now = 0.25;
    const Canvas canvas = draw();
    EXPECT_EQ(canvas.line(1).substr(0, 38), "POSITION                         0.2 s");
    EXPECT_EQ(canvas.line(2).substr(0, 38), " lat   0.785398163   45.0000000 deg   ");
    EXPECT_EQ(canvas.line(3).substr(0, 38), " lon  -1.570796327  -90.0000000 deg   ");
    EXPECT_EQ(canvas.line(4).substr(0, 38), " alt     100.5 +-N  2.0 E  2.0 D  3.0 ");
    EXPECT_EQ(canvas.line(5).substr(0, 38), " vel N    1.25 E   -2.50 D    0.12 m/s");
    EXPECT_EQ(canvas.line(6).substr(0, 38), "  +- N    0.50 E    0.50 D    1.00 m/s");
}

TEST_F(Screen, SaysWhenThereIsNoSolution) {
    m_model.take(sampleOf("PositionVelocity", position(), 0));
    m_model.take(sampleOf("PositionVelocity", noPosition(), 1));
    m_now = 1;
    const Canvas canvas = draw();
    EXPECT_THAT(canvas.line(1), HasSubstr("NO SOLUTION"));
    EXPECT_EQ(canvas.line(2).substr(0, 38), " lat            --           -- deg   ");
    EXPECT_EQ(canvas.line(6).substr(0, 38), "  +- N      -- E      -- D      -- m/s");
}

TEST_F(Screen, MarksWhatIsTooOld) {
    m_model.take(sampleOf("PositionVelocity", position(), 0));
    m_now = 3.4;
    EXPECT_THAT(text(), Not(HasSubstr("STALE")));
    m_now = 12;
    const Canvas canvas = draw();
    EXPECT_EQ(canvas.line(1).substr(0, 38), "POSITION                  STALE 12.0 s");
    EXPECT_EQ(canvas.at(6, 2).style, Bus::kDim);
    m_control.press('3');
    EXPECT_THAT(text(), HasSubstr("STALE"));
}

TEST_F(Screen, ANumberThatDoesNotFitIsNotCut) {
    auto message = position();
    message.position().altitude(123456789.5);
    message.velocity()[0] = -123456.78;
    m_model.take(sampleOf("PositionVelocity", message, 0));
    const Canvas canvas = draw();
    EXPECT_THAT(canvas.line(4), StartsWith(" alt        -- +-N"));
    EXPECT_THAT(canvas.line(5), StartsWith(" vel N      -- E   -2.50"));
}

TEST_F(Screen, ShowsReceiverTimeKeysAndInterference) {
    auto status = receiver();
    status.rcvr_fail(true);
    m_model.take(sampleOf("ReceiverStatus", status, 0));
    idl::GPSTime gps;
    gps.gps_week(2445);
    gps.gps_tow_sec(601100);
    gps.gps_tow_nsec(5);
    m_model.take(sampleOf("GPSTime", gps, 0));
    m_model.take(sampleOf("UTCTime", utc(81'123, 500, 1), 0));
    idl::UtcDownlink leap;
    leap.delta_t_ls(18);
    leap.delta_t_lsf(19);
    leap.wn_lsf(1929);
    leap.dn(7);
    m_model.take(sampleOf("UtcDownlink", leap, 0));
    m_model.take(sampleOf("GPSCryptoStatus", keys(5, 30), 0));
    m_model.take(sampleOf("GPSCryptoStatus", keys(9, 65535), 0));
    idl::ChallengedEnvironment environment;
    idl::interference_type_set indicated;
    indicated.interference_type(idl::INTERFERENCE_TYPE_1);
    indicated.interference_signal(idl::INTERFERENCE_SIGNAL_4);
    indicated.interference_value(1);
    environment.interference_types() = {indicated, idl::interference_type_set()};
    m_model.take(sampleOf("ChallengedEnvironment", environment, 0));

    const Canvas canvas = draw();
    EXPECT_THAT(canvas.line(7), StartsWith("RECEIVER  FAILURE"));
    EXPECT_THAT(canvas.line(8), StartsWith(" satellites used   8  available  11 "));
    EXPECT_THAT(canvas.line(9), StartsWith(" PDOP   1.6   TDOP   0.9 "));
    EXPECT_THAT(canvas.line(11), StartsWith(" GPS  week  2445 601100.000000005 s "));
    // 81123 s are 22 h, 32 min and 3 s.
    EXPECT_THAT(canvas.line(13), StartsWith(" UTC  22:32:03.000000500 "));
    EXPECT_THAT(canvas.line(14), StartsWith(" leap 18 s, 19 s from week  1929,  7 "));
    EXPECT_THAT(canvas.line(16), StartsWith("type   5     9 "));
    EXPECT_THAT(canvas.line(17), StartsWith("now   on    on"));
    EXPECT_THAT(canvas.line(18), StartsWith("load BAD   BAD"));
    EXPECT_THAT(canvas.line(20), StartsWith("left  30 65535"));
    EXPECT_THAT(canvas.line(22), StartsWith(" 1/4 YES  0/0 no"));
}

TEST_F(Screen, PlacesTheSatellitesInTheSky) {
    m_model.take(sampleOf("SVStatus", satellites(), 0));
    m_control.press('2');
    // Lines 1 to 14 of 24, 37 columns from 43 on: the centre is at column 61 and line 8, the
    // horizon 12 columns and 6 lines away.
    const Canvas canvas = draw();
    EXPECT_EQ(canvas.at(61, 2).character, '7') << canvas.text();
    EXPECT_EQ(canvas.line(8).substr(61, 2), "31") << canvas.text();
    EXPECT_EQ(canvas.line(8).substr(67, 3), "12!") << canvas.text();
    EXPECT_THAT(canvas.text(), HasSubstr("1 not shown"));
    EXPECT_THAT(canvas.line(3), StartsWith(" 12       90        45  setting UNHEALTHY"));
    EXPECT_THAT(canvas.line(5), StartsWith("  5       --        --  setting "));
}

TEST_F(Screen, NumbersOfSatellitesNeverRunTogether) {
    idl::SVStatus crowd;
    for (int32_t i = 0; i < 20; ++i) {
        idl::sv_set satellite;
        satellite.svid(10 + i);
        satellite.healthy(true);
        satellite.azimuth(80);
        satellite.elevation(40 + i / 10);
        crowd.svs().push_back(satellite);
    }
    m_model.take(sampleOf("SVStatus", crowd, 0));
    m_control.press('2');
    const Canvas canvas = draw();
    int shown = 0;
    for (int y = 2; y < 14; ++y) {
        std::istringstream words(
            canvas.line(y).substr(std::min<size_t>(43, canvas.line(y).size())));
        for (std::string word; words >> word;) {
            word.erase(std::remove(word.begin(), word.end(), '.'), word.end());
            if (word.find_first_of("123456789") == 0 && word.size() > 1) {
                EXPECT_EQ(word.size(), 2u) << canvas.text();
                ++shown;
            }
        }
    }
    EXPECT_GE(shown, 3) << canvas.text();
    EXPECT_THAT(canvas.text(), HasSubstr(std::to_string(20 - shown) + " not shown"));
}

TEST_F(Screen, ShowsABarForEachChannel) {
    m_model.take(sampleOf("ChannelStatus", channels(), 0));
    m_control.press('2');
    // Half of the full scale of 60.
    const std::string screen = text();
    EXPECT_THAT(screen,
                HasSubstr("  7/0*" + std::string(34, '#') + std::string(34, ' ') + " 30\n"));
    EXPECT_THAT(screen, HasSubstr(" 12/0 " + std::string(68, ' ') + " --\n"));
}

TEST_F(Screen, ShowsTheLink) {
    for (int i = 0; i < 4; ++i) {
        m_model.take(sampleOf("GPSTime", idl::GPSTime(), 0.5 * i, i == 3 ? 7 : i));
    }
    m_now = 1.5;
    EXPECT_THAT(text(), HasSubstr("GPSTime        2.0#"));
    m_control.press('3');
    EXPECT_THAT(text(),
                HasSubstr("GPSTime                  2.0     0.0        4        4  Rovan GAPS"));
    EXPECT_THAT(text(), HasSubstr("EventLog                  --      --        0        0"));
}

TEST_F(Screen, ScrollsTheLog) {
    for (int i = 0; i < 100; ++i) {
        m_model.take(sampleOf("EventLog", event("number " + std::to_string(i)), i, i));
    }
    m_control.press('4');
    Canvas canvas = draw();
    EXPECT_EQ(canvas.line(1), "LOG 100");
    EXPECT_EQ(canvas.line(2), "22:13:20 EVT error: number 79");
    EXPECT_EQ(canvas.line(22), "22:13:20 EVT error: number 99");
    m_control.press(WatchControl::kUp);
    m_control.press(WatchControl::kPageUp);
    canvas = draw();
    EXPECT_EQ(canvas.line(1), "LOG 100, 11 below");
    EXPECT_EQ(canvas.line(22), "22:13:20 EVT error: number 88");
    m_control.press(WatchControl::kEnd);
    EXPECT_EQ(draw().line(22), "22:13:20 EVT error: number 99");
}

TEST_F(Screen, WrapsALongLineOfTheLog) {
    m_model.take(sampleOf("EventLog", event(std::string(70, 'a') + "end"), 0));
    m_control.press('4');
    EXPECT_EQ(draw().line(2), "22:13:20 EVT error: " + std::string(60, 'a'));
    EXPECT_EQ(draw().line(3), std::string(13, ' ') + std::string(10, 'a') + "end");
}

TEST_F(Screen, IsDrawnInAnySizeOnEveryPageWithEveryDialog) {
    m_model.take(sampleOf("PositionVelocity", position(), 0));
    m_model.take(sampleOf("SVStatus", satellites(), 0));
    m_model.take(sampleOf("ChannelStatus", channels(), 0));
    m_model.take(sampleOf("GPSCryptoStatus", keys(5, 30), 0));
    m_model.take(sampleOf("EventLog", event(std::string(200, 'x')), 0));
    for (const char page : {'1', '2', '3', '4'}) {
        for (const char opens : {' ', '?', 'c'}) {
            m_control = WatchControl();
            m_control.press(page);
            m_control.press(opens);
            for (int width = 0; width <= 200; width += 7) {
                for (int height = 0; height <= 60; height += 3) {
                    const Canvas canvas = draw(width, height);
                    EXPECT_EQ(canvas.width(), width);
                    EXPECT_EQ(canvas.height(), height);
                }
            }
        }
    }
}

TEST_F(Screen, ListsTheCommandsAlsoOnALowScreen) {
    m_control.press('c');
    EXPECT_THAT(text(), HasSubstr("|   BITSERVER_PING"));
    EXPECT_THAT(text(), HasSubstr("| ! ROVAN_DESTROY "));
    EXPECT_THAT(text(80, 10), Not(HasSubstr("ROVAN_DESTROY ")));
    m_control.press(WatchControl::kEnd);
    EXPECT_THAT(text(80, 10), HasSubstr("another text ..."));
}

TEST(WatchControl, AHarmlessCommandIsSentByAPlainYes) {
    for (const char other : {'n', ' ', 'q'}) {
        WatchControl control;
        control.press('c');
        EXPECT_EQ(control.press(WatchControl::kEnter).command, "");
        EXPECT_EQ(control.dialog(), Dialog::kConfirm);
        EXPECT_EQ(control.press(other).command, "");
        EXPECT_EQ(control.dialog(), Dialog::kNone);
        EXPECT_EQ(control.message(), "nothing was sent");
    }
    WatchControl control;
    control.press('c');
    control.press(WatchControl::kEnter);
    EXPECT_EQ(control.press(WatchControl::kEnter).command, "") << "Enter is no yes";
    control.press('c');
    control.press(WatchControl::kEnter);
    EXPECT_EQ(control.press('y').command, "BITSERVER_PING");
    EXPECT_EQ(control.dialog(), Dialog::kNone);
}

TEST(WatchControl, EveryDangerousCommandNeedsTheWord) {
    const auto& texts = Bus::WatchCommands::texts();
    int dangerous = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
        const std::string word = texts[i] == "ROVAN_DESTROY"      ? "destroy"
                                 : texts[i] == "ROVAN_ZEROIZE"    ? "zeroize"
                                 : texts[i] == "ROVAN_CV_ZEROIZE" ? "zeroize"
                                                                  : "";
        EXPECT_EQ(Bus::WatchCommands::wordFor(texts[i]), word) << texts[i];
        WatchControl control;
        control.press('c');
        for (size_t down = 0; down < i; ++down) {
            control.press(WatchControl::kDown);
        }
        control.press(WatchControl::kEnter);
        EXPECT_EQ(control.command(), texts[i]);
        EXPECT_EQ(control.dialog(), word.empty() ? Dialog::kConfirm : Dialog::kWord);
        if (word.empty()) {
            continue;
        }
        ++dangerous;
        EXPECT_EQ(control.press('y').command, "");
        EXPECT_EQ(control.press(WatchControl::kEnter).command, "") << "y is not the word";
        EXPECT_EQ(control.message(), "that was not the word, nothing was sent");
        control.press('c');
        control.press(WatchControl::kEnter);
        for (const char c : word + "x") {
            EXPECT_EQ(control.press(c).command, "");
        }
        control.press(WatchControl::kBackspace);
        EXPECT_EQ(control.press(WatchControl::kEnter).command, texts[i]);
    }
    EXPECT_EQ(dangerous, 3);
}

TEST(WatchControl, AnyTextCanBeSentWithTheSameCare) {
    const auto typed = [](const std::string& text) {
        WatchControl control;
        control.press('c');
        control.press(WatchControl::kEnd);
        control.press(WatchControl::kEnter);
        EXPECT_EQ(control.dialog(), Dialog::kText);
        for (const char c : text) {
            control.press(c);
        }
        EXPECT_EQ(control.press(WatchControl::kEnter).command, "");
        return control.dialog();
    };
    EXPECT_EQ(typed("QUERY_VERSIONING,q?"), Dialog::kConfirm);
    EXPECT_EQ(typed("START_DESTROY"), Dialog::kWord);
    EXPECT_EQ(typed("start_zeroize,1"), Dialog::kWord);
    EXPECT_EQ(typed("ROVAN_DESTROY_STATUS"), Dialog::kConfirm);
    EXPECT_EQ(typed(""), Dialog::kNone);
}

TEST(WatchControl, EscapeLeavesEveryDialog) {
    WatchControl control;
    control.press('c');
    control.press(WatchControl::kEnd);
    control.press(WatchControl::kEnter);
    control.press('A');
    control.press(WatchControl::kEscape);
    EXPECT_EQ(control.dialog(), Dialog::kNone);
    EXPECT_FALSE(control.press('?').quits);
    EXPECT_EQ(control.dialog(), Dialog::kHelp);
    EXPECT_FALSE(control.press('q').quits) << "closes the help only";
    EXPECT_TRUE(control.press('q').quits);
}

TEST(WatchControl, TabGoesThroughThePages) {
    WatchControl control;
    for (const char* page : {"2", "3", "4", "1"}) {
        control.press('\t');
        WatchControl direct;
        direct.press(*page);
        EXPECT_EQ(control.page(), direct.page());
    }
}

TEST(CanvasTest, CutsAtItsEdgesAndKeepsItsCharactersPrintable) {
    Canvas canvas(4, 2);
    canvas.put(-1, 0, "abcdefg");
    canvas.put(0, 2, "x");
    canvas.put(0, -1, "x");
    canvas.put(0, 1, "\x1b\xff\n~");
    EXPECT_EQ(canvas.text(), "bcde\n???~\n");
}

}  // namespace
