// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "speech/TranscriptMessage.h"
#include "tests/support/TranscriptJson.h"

namespace tarvik {
namespace {

using Heard = std::optional<std::pair<std::string, bool>>;

Heard heard(const std::string& json) {
    const std::optional<TranscriptMessage> message = parseTranscriptMessage(json);
    if (!message) {
        return std::nullopt;
    }
    return std::pair(message->text, message->isFinal);
}

/// A message with this channel.
std::string withChannel(const std::string& channel) {
    return R"({"channel":)" + channel + R"(,"is_final":true})";
}

/// A message with these alternatives.
std::string withAlternatives(const std::string& alternatives) {
    return withChannel(R"({"alternatives":)" + alternatives + "}");
}

TEST(TranscriptMessage, OfAFinalResultIsFinal) {
    EXPECT_EQ(heard(simulated::transcriptJson("hello world", true)), Heard({"hello world", true}));
}

TEST(TranscriptMessage, OfAnInterimResultIsNotFinal) {
    EXPECT_EQ(heard(simulated::transcriptJson("hel", false)), Heard({"hel", false}));
}

TEST(TranscriptMessage, WithoutTheFinalFlagIsNotFinal) {
    EXPECT_EQ(heard(R"({"channel":{"alternatives":[{"transcript":"hello"}]}})"),
              Heard({"hello", false}));
}

TEST(TranscriptMessage, FlagOfAnotherKindCountsAsFalse) {
    for (const char* finalFlag : {"1", "\"true\"", "null", "[true]", "{}", "1.0"}) {
        EXPECT_EQ(heard(R"({"is_final":)" + std::string(finalFlag) +
                        R"(,"channel":{"alternatives":[{"transcript":"hello"}]}})"),
                  Heard({"hello", false}))
            << finalFlag;
    }
}

TEST(TranscriptMessage, FlagInsideTheChannelIsIgnored) {
    EXPECT_EQ(heard(R"({"channel":{"is_final":true,"alternatives":[{"transcript":"hello"}]}})"),
              Heard({"hello", false}));
}

TEST(TranscriptMessage, TypeIsIgnored) {
    EXPECT_EQ(heard(R"({"type":"Metadata","is_final":true,)"
                    R"("channel":{"alternatives":[{"transcript":"hello"}]}})"),
              Heard({"hello", true}));
}

TEST(TranscriptMessage, OnlyTheFirstAlternativeCounts) {
    EXPECT_EQ(heard(withAlternatives(R"([{"transcript":"one"},{"transcript":"two"}])")),
              Heard({"one", true}));
    EXPECT_EQ(heard(withAlternatives(R"([{},{"transcript":"two"}])")), std::nullopt);
    EXPECT_EQ(heard(withAlternatives(R"([{"transcript":""},{"transcript":"two"}])")), std::nullopt);
}

TEST(TranscriptMessage, TextOfSpacesIsDeliveredUnchanged) {
    EXPECT_EQ(heard(simulated::transcriptJson("  ", true)), Heard({"  ", true}));
    EXPECT_EQ(heard(simulated::transcriptJson(" hello ", true)), Heard({" hello ", true}));
}

TEST(TranscriptMessage, EmptyTextIsNothing) {
    EXPECT_EQ(heard(simulated::transcriptJson("", true)), std::nullopt);
    EXPECT_EQ(heard(simulated::transcriptJson("", false)), std::nullopt);
}

TEST(TranscriptMessage, TextMayHoldEscapesAndAnyCharacter) {
    EXPECT_EQ(heard(withAlternatives(R"([{"transcript":"a\"b\\c\n\u0416\ud83d\ude00"}])")),
              Heard({"a\"b\\c\nЖ\xF0\x9F\x98\x80", true}));
    EXPECT_EQ(heard(simulated::transcriptJson("漢字 Жж \xF0\x9F\x98\x80", true)),
              Heard({"漢字 Жж \xF0\x9F\x98\x80", true}));
}

class MessageOfAnotherShape : public testing::TestWithParam<std::string> {};

TEST_P(MessageOfAnotherShape, IsNothing) {
    EXPECT_EQ(heard(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    NotJson, MessageOfAnotherShape,
    testing::Values("", " ", "hello", "{", "{\"channel\":", "{}}", "{} {}", "{'a':1}", "{\"a\":1,}",
                    "nul", std::string("\0", 1), "\xEF\xBB\xBF",
                    R"({"channel":{"alternatives":[{"transcript":"hello"}]},"is_final":tru})",
                    R"({"channel":{"alternatives":[{"transcript":"hello"}]}} trailing)"));

INSTANTIATE_TEST_SUITE_P(OtherTopLevel, MessageOfAnotherShape,
                         testing::Values("[]", "[{}]", "null", "true", "7", "\"hello\"",
                                         R"([{"channel":{"alternatives":[{"transcript":"a"}]}}])"));

INSTANTIATE_TEST_SUITE_P(
    OtherMembers, MessageOfAnotherShape,
    testing::Values("{}", R"({"type":"Metadata","request_id":"x"})",
                    R"({"type":"SpeechStarted","channel":[0],"timestamp":1.5})",
                    withChannel("null"), withChannel("[]"), withChannel("\"x\""), withChannel("{}"),
                    withAlternatives("null"), withAlternatives("{}"), withAlternatives("\"x\""),
                    withAlternatives("[]"), withAlternatives("[null]"), withAlternatives("[[]]"),
                    withAlternatives(R"(["hello"])"), withAlternatives(R"([{"text":"hello"}])"),
                    withAlternatives(R"([{"transcript":null}])"),
                    withAlternatives(R"([{"transcript":7}])"),
                    withAlternatives(R"([{"transcript":["hello"]}])"),
                    withAlternatives(R"([{"transcript":"hello"},7])"),
                    withAlternatives(R"([{"transcript":"hello"},null])")));

TEST(BadMessage, WithBytesThatAreNotUtf8IsNothing) {
    for (const char* bytes : {"\xFF", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF8\x88\x80\x80\x80"}) {
        EXPECT_EQ(heard(simulated::transcriptJson(bytes, true)), std::nullopt);
    }
}

TEST(TranscriptMessage, MayBeNested512LevelsDeepAndNoDeeper) {
    const auto nested = [](std::size_t levels) {
        // The message itself is the first level.
        return R"({"channel":{"alternatives":[{"transcript":"hello"}]},"other":)" +
               std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
    };
    EXPECT_TRUE(parseTranscriptMessage(nested(512)));
    EXPECT_FALSE(parseTranscriptMessage(nested(513)));
}

TEST(BadMessage, NestedAThousandDeepIsNothing) {
    const std::string deepArray = std::string(1000, '[') + std::string(1000, ']');
    EXPECT_EQ(heard(deepArray), std::nullopt);
    EXPECT_EQ(
        heard(R"({"channel":{"alternatives":[{"transcript":"hello"}]},"x":)" + deepArray + "}"),
        std::nullopt);
    std::string deepObject;
    for (int i = 0; i < 1000; ++i) {
        deepObject += R"({"channel":)";
    }
    EXPECT_EQ(heard(deepObject + "{}" + std::string(1000, '}')), std::nullopt);
}

TEST(BadMessage, OfSixteenMebibytesIsNothing) {
    EXPECT_EQ(heard(simulated::transcriptJson(std::string(std::size_t{16} << 20, 'x'), true)),
              std::nullopt);
    EXPECT_EQ(heard(std::string(std::size_t{16} << 20, ' ')), std::nullopt);
}

TEST(BadMessage, WithANumberOutOfRangeIsNothing) {
    const std::string channel = R"("channel":{"alternatives":[{"transcript":"hello"}]})";
    const auto withNumber = [&](const std::string& number) {
        return heard("{" + channel + R"(,"x":)" + number + "}");
    };
    for (const char* number : {"18446744073709551615", "-9223372036854775808", "1e308"}) {
        EXPECT_EQ(withNumber(number), Heard({"hello", false})) << number;
    }
    for (const char* number : {"18446744073709551616", "-9223372036854775809", "1e400"}) {
        EXPECT_EQ(withNumber(number), std::nullopt) << number;
    }
}

TEST(BadMessage, WithAByteOrderMarkInFrontIsNothing) {
    EXPECT_EQ(heard("\xEF\xBB\xBF" + simulated::transcriptJson("hello", true)), std::nullopt);
}

TEST(BadMessage, OfMoreThanOneMebibyteIsNothing) {
    const std::string message = simulated::transcriptJson("hello", true);
    const std::string padding((std::size_t{1} << 20) - message.size(), ' ');
    EXPECT_EQ(heard(message + padding), Heard({"hello", true}));
    EXPECT_EQ(heard(message + padding + " "), std::nullopt);
}

TEST(BadMessage, DoesNotAffectTheNextOne) {
    EXPECT_EQ(heard("{"), std::nullopt);
    EXPECT_EQ(heard(simulated::transcriptJson("hello", true)), Heard({"hello", true}));
}

TEST(TranscriptMessage, LongTextIsWhole) {
    const std::string text(100'000, 'x');
    EXPECT_EQ(heard(simulated::transcriptJson(text, true)), Heard({text, true}));
}

}  // namespace
}  // namespace tarvik
