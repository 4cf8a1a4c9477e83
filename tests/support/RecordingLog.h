// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Log.h"
#include "tests/support/Journal.h"

namespace tarvik::tests {

/// A log that keeps its lines for a test. Any thread.
class RecordingLog final : public platform::Log {
  public:
    /// With a journal, which outlives the log, every line is added there as well ("log …").
    explicit RecordingLog(simulated::Journal* journal = nullptr) : journal_(journal) {}

    void write(std::string_view line) override {
        if (journal_ != nullptr) {
            journal_->add("log " + std::string(line));
        }
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(line);
    }

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

    /// How often exactly this line was written.
    std::size_t count(std::string_view line) const {
        const std::lock_guard lock(mutex_);
        return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
    }

    /// The lines that contain `part`.
    std::vector<std::string> linesWith(std::string_view part) const {
        std::vector<std::string> found = lines();
        std::erase_if(
            found, [&](const std::string& line) { return line.find(part) == std::string::npos; });
        return found;
    }

    bool hasLineWith(std::string_view part) const { return !linesWith(part).empty(); }

    void clear() {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }

  private:
    simulated::Journal* journal_;
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace tarvik::tests
