// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "speech-service/Metrics.h"

namespace tarvik::service {

namespace {

bool hasLine(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

TEST(Metrics, CountStreamsAndRefusals) {
    Metrics metrics;
    metrics.addStream();
    metrics.addStream();
    metrics.addRefusal();
    const std::string text = metrics.text(1, 8);
    EXPECT_TRUE(hasLine(text, "tarvik_streams_open 1"));
    EXPECT_TRUE(hasLine(text, "tarvik_streams_limit 8"));
    EXPECT_TRUE(hasLine(text, "tarvik_streams_total 2"));
    EXPECT_TRUE(hasLine(text, "tarvik_refusals_total 1"));
    EXPECT_TRUE(hasLine(text, "# TYPE tarvik_streams_total counter"));
}

TEST(Metrics, TellHowMuchFasterThanSpeechTheDecodingIs) {
    Metrics metrics;
    EXPECT_TRUE(hasLine(metrics.text(0, 8), "tarvik_real_time_factor 0"));
    metrics.addDecoding(Seconds(8), Seconds(1.5));
    metrics.addDecoding(Seconds(2), Seconds(0.5));
    const std::string text = metrics.text(0, 8);
    EXPECT_TRUE(hasLine(text, "tarvik_audio_seconds_total 10"));
    EXPECT_TRUE(hasLine(text, "tarvik_decoding_seconds_total 2"));
    EXPECT_TRUE(hasLine(text, "tarvik_real_time_factor 0.2"));
}

TEST(Metrics, DivideTheTimesToFinalIntoCumulativeBuckets) {
    Metrics metrics;
    for (const double delay : {0.01, 0.05, 0.3, 7.0}) {
        metrics.addFinal(Seconds(delay));
    }
    const std::string text = metrics.text(0, 8);
    EXPECT_TRUE(hasLine(text, "tarvik_time_to_final_seconds_bucket{le=\"0.05\"} 2"));
    EXPECT_TRUE(hasLine(text, "tarvik_time_to_final_seconds_bucket{le=\"0.2\"} 2"));
    EXPECT_TRUE(hasLine(text, "tarvik_time_to_final_seconds_bucket{le=\"0.5\"} 3"));
    EXPECT_TRUE(hasLine(text, "tarvik_time_to_final_seconds_bucket{le=\"2\"} 3"));
    EXPECT_TRUE(hasLine(text, "tarvik_time_to_final_seconds_bucket{le=\"+Inf\"} 4"));
    EXPECT_TRUE(hasLine(text, "tarvik_time_to_final_seconds_sum 7.36"));
    EXPECT_TRUE(hasLine(text, "tarvik_time_to_final_seconds_count 4"));
}

}  // namespace

}  // namespace tarvik::service
