// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "face/FACE_Common.h"

namespace {

using FACE::RETURN_CODE_TYPE;

std::string nameOf(uint32_t value) {
    return FACE::toStdString(
        RETURN_CODE_TYPE::ToString(static_cast<RETURN_CODE_TYPE::Value>(value)));
}

// What the helper printed and threw; both empty when it returned.
struct Outcome {
    std::string printed;
    std::string thrown;
};

template <typename HELPER>
Outcome callWith(HELPER helper, uint32_t value) {
    Outcome outcome;
    testing::internal::CaptureStdout();
    try {
        helper("RovanIo.cpp", 180, "Unable to start", static_cast<RETURN_CODE_TYPE::Value>(value));
    } catch (const std::runtime_error& error) {
        outcome.thrown = error.what();
    }
    outcome.printed = testing::internal::GetCapturedStdout();
    return outcome;
}

TEST(ReturnCode, HasFixedNumbersAndNames) {
    EXPECT_EQ(sizeof(RETURN_CODE_TYPE::Value), 4u);
    const struct {
        RETURN_CODE_TYPE::Value value;
        uint32_t number;
        const char* name;
    } kTable[] = {{RETURN_CODE_TYPE::NO_ERROR, 0, "NO_ERROR"},
                  {RETURN_CODE_TYPE::NO_ACTION, 1, "NO_ACTION"},
                  {RETURN_CODE_TYPE::NOT_AVAILABLE, 2, "NOT_AVAILABLE"},
                  {RETURN_CODE_TYPE::INVALID_PARAM, 3, "INVALID_PARAM"},
                  {RETURN_CODE_TYPE::INVALID_CONFIG, 4, "INVALID_CONFIG"},
                  {RETURN_CODE_TYPE::INVALID_MODE, 5, "INVALID_MODE"},
                  {RETURN_CODE_TYPE::TIMED_OUT, 6, "TIMED_OUT"},
                  {RETURN_CODE_TYPE::ADDR_IN_USE, 7, "ADDR_IN_USE"},
                  {RETURN_CODE_TYPE::PERMISSION_DENIED, 8, "PERMISSION_DENIED"},
                  {RETURN_CODE_TYPE::MESSAGE_STALE, 9, "MESSAGE_STALE"},
                  {RETURN_CODE_TYPE::IN_PROGRESS, 10, "IN_PROGRESS"},
                  {RETURN_CODE_TYPE::CONNECTION_CLOSED, 11, "CONNECTION_CLOSED"},
                  {RETURN_CODE_TYPE::DATA_BUFFER_TOO_SMALL, 12, "DATA_BUFFER_TOO_SMALL"},
                  {RETURN_CODE_TYPE::DATA_OVERFLOW, 13, "DATA_OVERFLOW"}};
    for (const auto& row : kTable) {
        EXPECT_EQ(static_cast<uint32_t>(row.value), row.number);
        EXPECT_EQ(nameOf(row.number), row.name);
    }
}

TEST(ReturnCode, IsUnknownFromFourteenOn) {
    EXPECT_EQ(nameOf(14), "RC_UNKNOWN");
    EXPECT_EQ(nameOf(1000), "RC_UNKNOWN");
    EXPECT_EQ(nameOf(0xFFFFFFFFu), "RC_UNKNOWN");
}

TEST(ReturnCode, LetsOnlyNoErrorPass) {
    const Outcome passed = callWith(FACE::Return_Code_Value_No_Error, 0);
    EXPECT_EQ(passed.thrown, "");
    EXPECT_EQ(passed.printed, "");
    EXPECT_EQ(callWith(FACE::Return_Code_Value_No_Error, 1).thrown,
              "RovanIo.cpp[180]:NO_ACTION Unable to start");
}

TEST(ReturnCode, LetsNoActionPassTooWhenAskedTo) {
    for (const uint32_t value : {0u, 1u}) {
        const Outcome passed = callWith(FACE::Return_Code_Value_No_Error_No_Action, value);
        EXPECT_EQ(passed.thrown, "");
        EXPECT_EQ(passed.printed, "");
    }
    EXPECT_EQ(callWith(FACE::Return_Code_Value_No_Error_No_Action, 2).thrown,
              "RovanIo.cpp[180]:NOT_AVAILABLE Unable to start");
}

TEST(ReturnCode, PrintsWhatItThrows) {
    const Outcome outcome = callWith(FACE::Return_Code_Value_No_Error, 4);
    EXPECT_EQ(outcome.thrown, "RovanIo.cpp[180]:INVALID_CONFIG Unable to start");
    EXPECT_EQ(outcome.printed, "RovanIo.cpp[180]:INVALID_CONFIG Unable to start\n");
    EXPECT_EQ(callWith(FACE::Return_Code_Value_No_Error_No_Action, 99).printed,
              "RovanIo.cpp[180]:RC_UNKNOWN Unable to start\n");
}

// Nobody catches the exception of a failed start-up step, and the process dies without flushing.
TEST(ReturnCodeDeathTest, HasPrintedItsLineBeforeTheProcessDies) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            // The matcher looks at standard error only; a pipe there is as fully buffered as any.
            dup2(STDERR_FILENO, STDOUT_FILENO);
            try {
                FACE::Return_Code_Value_No_Error("main.cpp", 7, "Configure() failed",
                                                 RETURN_CODE_TYPE::INVALID_CONFIG);
            } catch (const std::runtime_error&) {
                _exit(3);
            }
        },
        testing::ExitedWithCode(3), "main.cpp\\[7\\]:INVALID_CONFIG Configure\\(\\) failed\n");
}

TEST(ReturnCode, SurvivesMissingTexts) {
    testing::internal::CaptureStdout();
    EXPECT_THROW(
        FACE::Return_Code_Value_No_Error(nullptr, 1, nullptr, RETURN_CODE_TYPE::INVALID_PARAM),
        std::runtime_error);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "[1]:INVALID_PARAM \n");
}

}  // namespace
