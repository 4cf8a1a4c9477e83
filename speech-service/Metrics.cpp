// SPDX-License-Identifier: MIT

#include "speech-service/Metrics.h"

#include <algorithm>
#include <chrono>
#include <sstream>

namespace tarvik::service {

namespace {

std::uint64_t microseconds(Seconds time) {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(time).count());
}

double seconds(std::uint64_t microseconds) {
    return static_cast<double>(microseconds) / 1e6;
}

template <typename Value>
void describe(std::ostream& text, const char* name, const char* type, const char* help,
              Value value) {
    text << "# HELP " << name << ' ' << help << "\n# TYPE " << name << ' ' << type << '\n'
         << name << ' ' << value << '\n';
}

}  // namespace

void Metrics::addDecoding(Seconds audio, Seconds time) {
    audioMicroseconds_ += microseconds(audio);
    decodingMicroseconds_ += microseconds(time);
}

void Metrics::addFinal(Seconds delay) {
    const auto bound = std::lower_bound(bounds.begin(), bounds.end(), delay.count());
    ++finals_[static_cast<std::size_t>(bound - bounds.begin())];
    delayMicroseconds_ += microseconds(delay);
}

std::string Metrics::text(std::size_t openStreams, std::size_t maxStreams) const {
    std::ostringstream text;
    describe(text, "tarvik_streams_open", "gauge", "Streams that are open now.", openStreams);
    describe(text, "tarvik_streams_limit", "gauge", "Streams that may be open at once.",
             maxStreams);
    describe(text, "tarvik_streams_total", "counter", "Streams opened since the start.",
             streams_.load());
    describe(text, "tarvik_refusals_total", "counter", "Requests refused since the start.",
             refusals_.load());
    const double audio = seconds(audioMicroseconds_);
    const double decoding = seconds(decodingMicroseconds_);
    describe(text, "tarvik_audio_seconds_total", "counter", "Length of the decoded audio.", audio);
    describe(text, "tarvik_decoding_seconds_total", "counter", "Time spent on decoding.", decoding);
    describe(text, "tarvik_real_time_factor", "gauge",
             "Decoding time divided by the length of the audio since the start.",
             audio > 0 ? decoding / audio : 0);
    constexpr const char* name = "tarvik_time_to_final_seconds";
    text << "# HELP " << name
         << " Time from the sound that ends an utterance to its final words.\n# TYPE " << name
         << " histogram\n";
    std::uint64_t count = 0;
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        count += finals_[i];
        text << name << "_bucket{le=\"" << bounds[i] << "\"} " << count << '\n';
    }
    count += finals_.back();
    text << name << "_bucket{le=\"+Inf\"} " << count << '\n'
         << name << "_sum " << seconds(delayMicroseconds_) << '\n'
         << name << "_count " << count << '\n';
    return text.str();
}

}  // namespace tarvik::service
