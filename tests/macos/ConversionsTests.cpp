// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <limits>

#include "platform/macos/Conversions.h"

namespace tarvik::macdesktop {

namespace {

using platform::WebSocketMessage;

TEST(ConversionsTest, ADelayIsCountedInNanoseconds) {
    EXPECT_EQ(nanoseconds(Seconds(0.3)), 300'000'000);
    EXPECT_EQ(nanoseconds(Seconds(10)), 10'000'000'000);
}

TEST(ConversionsTest, ANegativeDelayAndNaNAreZero) {
    EXPECT_EQ(nanoseconds(Seconds(0)), 0);
    EXPECT_EQ(nanoseconds(Seconds(-1)), 0);
    EXPECT_EQ(nanoseconds(Seconds(std::numeric_limits<double>::quiet_NaN())), 0);
}

TEST(ConversionsTest, ADelayTooLongToCountIsTheLargestCount) {
    constexpr std::int64_t maxCount = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(nanoseconds(Seconds(1e12)), maxCount);
    EXPECT_EQ(nanoseconds(Seconds(std::numeric_limits<double>::infinity())), maxCount);
}

TEST(ConversionsTest, MessagesAreDataTextOrSomethingElse) {
    EXPECT_EQ(messageKind(0), WebSocketMessage::Kind::data);
    EXPECT_EQ(messageKind(1), WebSocketMessage::Kind::string);
    EXPECT_EQ(messageKind(2), WebSocketMessage::Kind::other);
    EXPECT_EQ(messageKind(-1), WebSocketMessage::Kind::other);
}

TEST(ConversionsTest, AValueWithAControlCharacterCannotStandInAHeader) {
    EXPECT_TRUE(canStandInHeader({}));
    EXPECT_TRUE(canStandInHeader({{"Sec-WebSocket-Protocol", "token,  key with blanks \t"}}));
    EXPECT_TRUE(canStandInHeader({{"Name", "gr\xC3\xBC\xC3\x9F"}}));
    EXPECT_FALSE(canStandInHeader({{"Name", "good"}, {"Other", "broken\nline"}}));
    EXPECT_FALSE(canStandInHeader({{"Name", "carriage\rreturn"}}));
    EXPECT_FALSE(canStandInHeader({{"Name", std::string("null\0", 5)}}));
    EXPECT_FALSE(canStandInHeader({{"Name", "delete\x7F"}}));
}

TEST(ConversionsTest, AnErrorKeepsItsWordsInOneLine) {
    const Error error = errorInOneLine(-10868, "The operation couldn’t be completed.");
    EXPECT_EQ(error.code, -10868);
    EXPECT_EQ(error.localizedDescription, "The operation couldn’t be completed.");
    EXPECT_EQ(errorInOneLine(0, "first\nsecond\r\n\r\nthird").localizedDescription,
              "first second third");
    EXPECT_EQ(errorInOneLine(0, "\nwords").localizedDescription, "words");
    EXPECT_EQ(errorInOneLine(0, "").localizedDescription, "");
}

TEST(ConversionsTest, AnAlertAnswersTheButtonOrNothing) {
    EXPECT_EQ(alertCode(1000, 2), 1000);
    EXPECT_EQ(alertCode(1001, 2), 1001);
    EXPECT_EQ(alertCode(1002, 2), 0);
    EXPECT_EQ(alertCode(-1000, 2), 0);
    EXPECT_EQ(alertCode(-1001, 2), 0);
    EXPECT_EQ(alertCode(0, 2), 0);
}

TEST(ConversionsTest, AViewThatHugsItsContentWeaklyTakesTheSpareWidth) {
    EXPECT_FALSE(takesSpareWidth({}));
    EXPECT_TRUE(takesSpareWidth({.minimumWidth = 380, .horizontalContentHugging = 250.0F}));
    EXPECT_FALSE(takesSpareWidth({.horizontalContentHugging = 251.0F}));
    EXPECT_FALSE(takesSpareWidth({.width = 160, .horizontalContentHugging = 250.0F}));
}

TEST(ConversionsTest, AViewWithoutAPriorityKeepsItsWidthBesideOneThatFillsTheRow) {
    EXPECT_EQ(contentHugging({.horizontalContentHugging = 250.0F}), 250.0F);
    EXPECT_EQ(contentHugging({.minimumWidth = 110}), 251.0F);
    EXPECT_FALSE(takesSpareWidth({.horizontalContentHugging = contentHugging({})}));
}

}  // namespace

}  // namespace tarvik::macdesktop
