// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::simulated {

/// The calls of all simulated services in one order, one line per call, for example "log …",
/// "registerEventHotKey …" or "setContentTintColor red". Any thread.
class Journal {
  public:
    void add(std::string line) {
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
    }

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

    /// The lines that begin with `prefix`.
    std::vector<std::string> linesWithPrefix(std::string_view prefix) const {
        std::vector<std::string> found;
        for (const std::string& line : lines()) {
            if (line.starts_with(prefix)) {
                found.push_back(line);
            }
        }
        return found;
    }

    /// How often exactly this line was added.
    std::size_t count(std::string_view line) const {
        const std::lock_guard lock(mutex_);
        return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
    }

    void clear() {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace tarvik::simulated
