#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Log.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// Keeps the lines.
class SimulatedLog final : public platform::Log {
  public:
    explicit SimulatedLog(Journal& journal) : journal_(journal) {}

    void write(std::string_view line) override {
        journal_.add("log " + std::string(line));
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

    /// The lines that hold `text` anywhere.
    std::vector<std::string> linesWith(std::string_view text) const {
        std::vector<std::string> found;
        for (const std::string& line : lines()) {
            if (line.find(text) != std::string::npos) {
                found.push_back(line);
            }
        }
        return found;
    }

    void clear() {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }

  private:
    Journal& journal_;
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace tarvik::simulated
