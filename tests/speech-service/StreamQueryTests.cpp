// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "speech-service/StreamQuery.h"

namespace tarvik::service {

namespace {

std::string refusalOf(std::string_view query) {
    const Result<StreamQuery> parsed = parseStreamQuery(query);
    return parsed ? "accepted" : parsed.error().localizedDescription;
}

TEST(StreamQuery, ReadsWhatADictationAsksFor) {
    const Result<StreamQuery> query = parseStreamQuery(
        "model=nova-3&smart_format=true&punctuate=true&interim_results=true&mip_opt_out=true"
        "&encoding=linear16&sample_rate=48000&channels=1");
    ASSERT_TRUE(query);
    EXPECT_EQ(query.value().sampleRate, 48000);
    EXPECT_TRUE(query.value().recognition.interimResults);
    EXPECT_TRUE(query.value().style.punctuate);
    EXPECT_TRUE(query.value().style.numerals);
}

TEST(StreamQuery, LeavesInterimResultsAndPunctuationOutUnlessAsked) {
    const Result<StreamQuery> query = parseStreamQuery("encoding=linear16&sample_rate=16000");
    ASSERT_TRUE(query);
    EXPECT_FALSE(query.value().recognition.interimResults);
    EXPECT_FALSE(query.value().recognition.speechEvents);
    EXPECT_EQ(query.value().recognition.endpointing, Seconds(1));
    EXPECT_FALSE(query.value().recognition.utteranceEnd);
    EXPECT_FALSE(query.value().style.punctuate);
    EXPECT_FALSE(query.value().style.numerals);
}

TEST(StreamQuery, TakesEveryRateFrom8To192Kilohertz) {
    for (const char* rate : {"8000", "11025", "44100", "192000"}) {
        EXPECT_EQ(refusalOf("encoding=linear16&sample_rate=" + std::string(rate)), "accepted");
    }
}

TEST(StreamQuery, RefusesOtherRatesAndSaysWhatIsAllowed) {
    for (const char* rate :
         {"7999", "192001", "0", "-16000", "", "16k", "16000.0", "99999999999"}) {
        EXPECT_EQ(refusalOf("encoding=linear16&sample_rate=" + std::string(rate)),
                  "Invalid value \"" + std::string(rate) +
                      "\" for the parameter sample_rate: a whole number of hertz from 8000 to "
                      "192000");
    }
    EXPECT_EQ(refusalOf("encoding=linear16"),
              "The parameter sample_rate is missing: a whole number of hertz from 8000 to 192000");
}

TEST(StreamQuery, RefusesOtherEncodings) {
    EXPECT_EQ(refusalOf("encoding=opus&sample_rate=16000"),
              "Invalid value \"opus\" for the parameter encoding: this service understands "
              "linear16");
    EXPECT_EQ(refusalOf("sample_rate=16000"),
              "The parameter encoding is missing: this service understands linear16");
}

TEST(StreamQuery, RefusesMoreOrLessThanOneChannel) {
    for (const char* channels : {"0", "2", "one"}) {
        EXPECT_EQ(
            refusalOf("encoding=linear16&sample_rate=16000&channels=" + std::string(channels)),
            "Invalid value \"" + std::string(channels) +
                "\" for the parameter channels: this service understands one channel");
    }
}

TEST(StreamQuery, RefusesLanguagesThatItCannotUnderstand) {
    EXPECT_EQ(refusalOf("encoding=linear16&sample_rate=16000&language=en-GB"), "accepted");
    EXPECT_EQ(refusalOf("encoding=linear16&sample_rate=16000&language=de"),
              "Invalid value \"de\" for the parameter language: this service understands English");
}

TEST(StreamQuery, RefusesFlagsThatAreNeitherTrueNorFalse) {
    EXPECT_EQ(refusalOf("encoding=linear16&sample_rate=16000&interim_results=maybe"),
              "Invalid value \"maybe\" for the parameter interim_results: true or false");
}

TEST(StreamQuery, QuotesBadValuesInReadableCharacters) {
    EXPECT_EQ(refusalOf("encoding=a%22%0a%ff&sample_rate=16000"),
              R"(Invalid value "a\"\u000a\ufffd" for the parameter encoding: )"
              "this service understands linear16");
}

StreamQuery queryOf(const std::string& parameters) {
    return parseStreamQuery("encoding=linear16&sample_rate=16000&" + parameters).value();
}

std::string refusalWith(const std::string& parameters) {
    return refusalOf("encoding=linear16&sample_rate=16000&" + parameters);
}

TEST(StreamQuery, ReadsHowNumbersAreWritten) {
    EXPECT_FALSE(queryOf("punctuate=true").style.numerals);
    EXPECT_TRUE(queryOf("numerals=true").style.numerals);
    EXPECT_FALSE(queryOf("numerals=true").style.punctuate);
}

TEST(StreamQuery, ReadsThePauseThatEndsSpeech) {
    EXPECT_EQ(queryOf("endpointing=300").recognition.endpointing, Seconds(0.3));
    EXPECT_EQ(queryOf("endpointing=true").recognition.endpointing, Seconds(1));
    EXPECT_FALSE(queryOf("endpointing=false").recognition.endpointing);
    for (const char* value : {"0", "10", "199", "5001", "often", ""}) {
        EXPECT_EQ(refusalWith("endpointing=" + std::string(value)),
                  "Invalid value \"" + std::string(value) +
                      "\" for the parameter endpointing: true, false or a whole number of "
                      "milliseconds from 200 to 5000");
    }
}

TEST(StreamQuery, ReadsTheGapThatEndsAnUtterance) {
    EXPECT_EQ(queryOf("interim_results=true&utterance_end_ms=1500").recognition.utteranceEnd,
              Seconds(1.5));
    EXPECT_EQ(refusalWith("interim_results=true&utterance_end_ms=999"),
              "Invalid value \"999\" for the parameter utterance_end_ms: a whole number of "
              "milliseconds from 1000 to 5000");
    EXPECT_EQ(refusalWith("utterance_end_ms=1500"),
              "Invalid value \"1500\" for the parameter utterance_end_ms: it needs "
              "interim_results=true");
}

TEST(StreamQuery, ReadsWhetherToTellWhenSpeechBegins) {
    EXPECT_TRUE(queryOf("vad_events=true").recognition.speechEvents);
    EXPECT_EQ(refusalWith("vad_events=1"),
              "Invalid value \"1\" for the parameter vad_events: true or false");
}

TEST(StreamQuery, RefusesWhatWouldChangeTheWordsAndIsNotDoneHere) {
    for (const char* name : {"diarize", "multichannel", "dictation", "profanity_filter",
                             "detect_entities", "measurements"}) {
        EXPECT_EQ(refusalWith(std::string(name) + "=true"),
                  "Invalid value \"true\" for the parameter " + std::string(name) +
                      ": this service does not do that");
        EXPECT_EQ(refusalWith(std::string(name) + "=false"), "accepted");
    }
    for (const char* name : {"callback", "redact", "replace", "search"}) {
        EXPECT_NE(refusalWith(std::string(name) + "=x"), "accepted");
    }
}

TEST(StreamQuery, DecodesEscapesAndIgnoresWhatItDoesNotKnow) {
    EXPECT_EQ(refusalOf("tag=100%&=&&encodin%67=linear%31%36&sample_rate=16000&keyterm=a+b%zz"),
              "accepted");
}

}  // namespace

}  // namespace tarvik::service
