// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/TaskLauncher.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// Records the launches without starting anything.
class SimulatedTaskLauncher final : public platform::TaskLauncher {
  public:
    struct Launch {
        std::string launchPath;
        std::vector<std::string> arguments;
    };

    explicit SimulatedTaskLauncher(Journal& journal) : journal_(journal) {}

    std::optional<Error> launch(const std::string& launchPath,
                                const std::vector<std::string>& arguments) override {
        journal_.add("launch " + launchPath);
        launches.push_back({launchPath, arguments});
        return failure;
    }

    /// The result of every launch.
    std::optional<Error> failure;
    /// All launches, including failed ones.
    std::vector<Launch> launches;

  private:
    Journal& journal_;
};

}  // namespace tarvik::simulated
