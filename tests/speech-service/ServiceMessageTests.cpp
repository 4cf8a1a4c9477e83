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
        utterance_.isSentenceEnd = true;
    }

    simdjson::dom::element parse(const std::string& json) {
        return parser_.parse(simdjson::padded_string(json));
    }

    Utterance utterance_;
    EngineInfo engine_{"en-us", "1.0", "arch", "model-1"};
    simdjson::dom::parser parser_;
};

TEST_F(ServiceMessages, TellWhatWasSaidWhenAndHowSurely) {
    const simdjson::dom::element message =
        parse(resultsMessage(utterance_, {true, false}, engine_, "id-1"));
    EXPECT_EQ(message["type"].get_string().value(), "Results");
    EXPECT_EQ(message["channel_index"].at(0).get_int64().value(), 0);
    EXPECT_EQ(message["channel_index"].at(1).get_int64().value(), 1);
    EXPECT_DOUBLE_EQ(message["start"].get_double().value(), 1.2);
    EXPECT_DOUBLE_EQ(message["duration"].get_double().value(), 1.3);
    EXPECT_TRUE(message["is_final"].get_bool().value());
    EXPECT_TRUE(message["speech_final"].get_bool().value());
    EXPECT_FALSE(message["from_finalize"].get_bool().value());
    EXPECT_EQ(message["metadata"]["request_id"].get_string().value(), "id-1");
    EXPECT_EQ(message["metadata"]["model_info"]["name"].get_string().value(), "en-us");
    EXPECT_EQ(message["metadata"]["model_info"]["version"].get_string().value(), "1.0");
    EXPECT_EQ(message["metadata"]["model_info"]["arch"].get_string().value(), "arch");
    EXPECT_EQ(message["metadata"]["model_uuid"].get_string().value(), "model-1");
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
    const simdjson::dom::element message = parse(resultsMessage(utterance_, {}, engine_, "id-1"));
    EXPECT_EQ(message["channel"]["alternatives"].at(0)["transcript"].get_string().value(),
              "hello world");
}

TEST_F(ServiceMessages, WithdrawAnInterimResultByAnEmptyFinalOne) {
    utterance_.words.clear();
    const simdjson::dom::element message =
        parse(resultsMessage(utterance_, {true, false}, engine_, "id-1"));
    const simdjson::dom::element best = message["channel"]["alternatives"].at(0).value();
    EXPECT_EQ(best["transcript"].get_string().value(), "");
    EXPECT_DOUBLE_EQ(best["confidence"].get_double().value(), 0);
    EXPECT_EQ(best["words"].get_array().value().size(), 0U);
}

TEST_F(ServiceMessages, SumTheStreamUpAtItsEnd) {
    const simdjson::dom::element message =
        parse(metadataMessage({"id-1", "2024-05-06T07:08:09Z", Seconds(12.3456), "ab12"}, engine_));
    EXPECT_EQ(message["type"].get_string().value(), "Metadata");
    EXPECT_DOUBLE_EQ(message["duration"].get_double().value(), 12.346);
    EXPECT_EQ(message["channels"].get_int64().value(), 1);
    EXPECT_EQ(message["created"].get_string().value(), "2024-05-06T07:08:09Z");
    EXPECT_EQ(message["request_id"].get_string().value(), "id-1");
    EXPECT_EQ(message["sha256"].get_string().value(), "ab12");
    EXPECT_EQ(message["transaction_key"].get_string().value(), "deprecated");
    EXPECT_EQ(message["models"].at(0).get_string().value(), "model-1");
    EXPECT_EQ(message["model_info"]["model-1"]["name"].get_string().value(), "en-us");
}

TEST_F(ServiceMessages, TellWhenSpeechBeginsAndEnds) {
    const simdjson::dom::element started = parse(speechStartedMessage(Seconds(9.54)));
    EXPECT_EQ(started["type"].get_string().value(), "SpeechStarted");
    EXPECT_EQ(started["channel"].at(1).get_int64().value(), 1);
    EXPECT_DOUBLE_EQ(started["timestamp"].get_double().value(), 9.54);
    const simdjson::dom::element ended = parse(utteranceEndMessage(Seconds(2.395)));
    EXPECT_EQ(ended["type"].get_string().value(), "UtteranceEnd");
    EXPECT_EQ(ended["channel"].at(0).get_int64().value(), 0);
    EXPECT_DOUBLE_EQ(ended["last_word_end"].get_double().value(), 2.395);
}

}  // namespace

}  // namespace tarvik::service
