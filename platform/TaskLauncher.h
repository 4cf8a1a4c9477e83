// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Error.h"

namespace tarvik::platform {

/// Starts other programs.
class TaskLauncher {
  public:
    virtual ~TaskLauncher() = default;

    /// Starts the program at `launchPath` (absolute) with `arguments`, without waiting for its end.
    /// The program outlives this process. The error says why the program did not start. Main
    /// thread.
    virtual std::optional<Error> launch(const std::string& launchPath,
                                        const std::vector<std::string>& arguments) = 0;
};

}  // namespace tarvik::platform
