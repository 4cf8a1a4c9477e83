// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace tarvik::tests {

/// Makes this process hear another rate of every source than the server tells, as from a PipeWire
/// source that has started to run. At most one object at a time.
class ReportedRate {
  public:
    explicit ReportedRate(std::uint32_t sampleRate);
    ~ReportedRate();
    ReportedRate(const ReportedRate&) = delete;
    ReportedRate& operator=(const ReportedRate&) = delete;

    /// The number of whole lists of sources with this rate that this process has heard. Any thread.
    int lists() const;
};

}  // namespace tarvik::tests
