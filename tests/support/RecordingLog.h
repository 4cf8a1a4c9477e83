#pragma once

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

    /// The lines that hold `part` anywhere.
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
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace tarvik::tests
