// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

namespace tarvik::linuxdesktop {

/// The sequence numbers of requests whose events are to be told from all others. An event carries
/// the number of the last request that the server had processed. Numbers may wrap around. Input
/// thread only.
class SequenceRanges {
  public:
    /// A range begins, and has its last number with end().
    void begin(std::uint32_t first) {
        // The events of a request come right after the request.
        constexpr std::size_t maxRanges = 64;
        if (ranges_.size() == maxRanges) {
            ranges_.pop_front();
        }
        ranges_.push_back({first, first});
    }
    void end(std::uint32_t last) { ranges_.back().last = last; }

    /// Whether an event belongs to one of the requests. Events are asked about in their order.
    bool contains(std::uint32_t sequence) {
        while (!ranges_.empty() && isAfter(sequence, ranges_.front().last)) {
            ranges_.pop_front();
        }
        return !ranges_.empty() && !isAfter(ranges_.front().first, sequence);
    }
    static bool isAfter(std::uint32_t one, std::uint32_t other) {
        return static_cast<std::int32_t>(one - other) > 0;
    }

  private:
    struct Range {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
    };

    std::deque<Range> ranges_;
};

}  // namespace tarvik::linuxdesktop
