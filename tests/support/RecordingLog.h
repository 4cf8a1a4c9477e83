#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Log.h"

namespace tarvik::tests {

/// A log that a test reads.
class RecordingLog final : public platform::Log {
  public:
    void write(std::string_view line) override {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(line);
    }

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

    bool hasLineWith(std::string_view part) const {
        const auto all = lines();
        return std::ranges::any_of(
            all, [&](const std::string& line) { return line.find(part) != std::string::npos; });
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace tarvik::tests
