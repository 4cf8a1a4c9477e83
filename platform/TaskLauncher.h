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

    /// Starts the program at `launchPath` (absolute) with `arguments` and does not wait for it. It
    /// goes on when this process ends. Main thread. The error, if any, says why it could not be
    /// started.
    virtual std::optional<Error> launch(const std::string& launchPath,
                                        const std::vector<std::string>& arguments) = 0;
};

}  // namespace tarvik::platform
