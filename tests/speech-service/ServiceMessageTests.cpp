// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <simdjson.h>

#include "speech-service/ServiceMessages.h"

namespace tarvik::service {

namespace {

class ServiceMessages : public testing::Test {
  protected:
    ServiceMessages() {
        utterance_.words = {{"hello", Seconds(1.25), Seconds(1.5), 0.5},
                            {"world", Seconds(1.5), Seconds(2), 1.0}};
        utterance_.start = Seconds(1.2);
        utterance_.duration = Seconds(1.3004);
        utterance_.isFinal = true;
        utterance_.isSpeechFinal = true;
    }

    simdjson::dom::element parse(const std::string& json) {
        return parser_.parse(simdjson::padded_string(json));
    }

    Utterance utterance_;
    simdjson::dom::parser parser_;
};

TEST_F(ServiceMessages, TellWhatWasSaidWhenAndHowSurely) {
    const simdjson::dom::element message = parse(resultsMessage(utterance_, true, "id-1"));
    EXPECT_EQ(message["type"].get_string().value(), "Results");
    EXPECT_EQ(message["channel_index"].at(0).get_int64().value(), 0);
    EXPECT_EQ(message["channel_index"].at(1).get_int64().value(), 1);
    EXPECT_DOUBLE_EQ(message["start"].get_double().value(), 1.2);
    EXPECT_DOUBLE_EQ(message["duration"].get_double().value(), 1.3);
    EXPECT_TRUE(message["is_final"].get_bool().value());
    EXPECT_TRUE(message["speech_final"].get_bool().value());
    EXPECT_FALSE(message["from_finalize"].get_bool().value());
    EXPECT_EQ(message["metadata"]["request_id"].get_string().value(), "id-1");
    EXPECT_TRUE(message["metadata"]["model_info"].is_object());
    const simdjson::dom::element best = message["channel"]["alternatives"].at(0).value();
    EXPECT_EQ(best["transcript"].get_string().value(), "Hello world.");
    EXPECT_DOUBLE_EQ(best["confidence"].get_double().value(), 0.75);
    const simdjson::dom::element word = best["words"].at(1).value();
    EXPECT_EQ(word["word"].get_string().value(), "world");
    EXPECT_EQ(word["punctuated_word"].get_string().value(), "world.");
    EXPECT_DOUBLE_EQ(word["start"].get_double().value(), 1.5);
    EXPECT_DOUBLE_EQ(word["end"].get_double().value(), 2.0);
    EXPECT_DOUBLE_EQ(word["confidence"].get_double().value(), 1.0);
}

TEST_F(ServiceMessages, LeaveTheWordsAsSpokenWithoutPunctuation) {
    const simdjson::dom::element message = parse(resultsMessage(utterance_, false, "id-1"));
    EXPECT_EQ(message["channel"]["alternatives"].at(0)["transcript"].get_string().value(),
              "hello world");
}

TEST_F(ServiceMessages, WithdrawAnInterimResultByAnEmptyFinalOne) {
    utterance_.words.clear();
    const simdjson::dom::element message = parse(resultsMessage(utterance_, true, "id-1"));
    const simdjson::dom::element best = message["channel"]["alternatives"].at(0).value();
    EXPECT_EQ(best["transcript"].get_string().value(), "");
    EXPECT_DOUBLE_EQ(best["confidence"].get_double().value(), 0);
    EXPECT_EQ(best["words"].get_array().value().size(), 0U);
}

TEST_F(ServiceMessages, SumTheStreamUpAtItsEnd) {
    const simdjson::dom::element message =
        parse(metadataMessage(Seconds(12.3456), "2024-05-06T07:08:09Z", "id-1"));
    EXPECT_EQ(message["type"].get_string().value(), "Metadata");
    EXPECT_DOUBLE_EQ(message["duration"].get_double().value(), 12.346);
    EXPECT_EQ(message["channels"].get_int64().value(), 1);
    EXPECT_EQ(message["created"].get_string().value(), "2024-05-06T07:08:09Z");
    EXPECT_EQ(message["request_id"].get_string().value(), "id-1");
}

}  // namespace

}  // namespace tarvik::service
