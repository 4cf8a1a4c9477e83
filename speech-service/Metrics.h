// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "base/Time.h"

namespace tarvik::service {

/// What the service has done since its start. Any thread.
class Metrics {
  public:
    /// A stream was opened.
    void addStream() { ++streams_; }

    /// A request was refused, for example because too many streams were open.
    void addRefusal() { ++refusals_; }

    /// `audio` was decoded in `time` of a thread.
    void addDecoding(Seconds audio, Seconds time);

    /// A final utterance was reported this long after the arrival of the audio or the message that
    /// ended the utterance.
    void addFinal(Seconds delay);

    /// The metrics in the text format of Prometheus. The first arguments are the present number of
    /// streams and its limit.
    std::string text(std::size_t openStreams, std::size_t maxStreams) const;

  private:
    /// The upper bounds of the histogram's buckets in seconds; one more bucket has no bound.
    static constexpr std::array<double, 8> bounds{0.05, 0.1, 0.2, 0.5, 0.7, 1, 1.5, 2};

    std::atomic<std::uint64_t> streams_ = 0;
    std::atomic<std::uint64_t> refusals_ = 0;
    std::atomic<std::uint64_t> audioMicroseconds_ = 0;
    std::atomic<std::uint64_t> decodingMicroseconds_ = 0;
    std::array<std::atomic<std::uint64_t>, bounds.size() + 1> finals_{};
    std::atomic<std::uint64_t> delayMicroseconds_ = 0;
};

}  // namespace tarvik::service
