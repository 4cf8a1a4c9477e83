// SPDX-License-Identifier: MIT
#pragma once

#include "platform/TaskLauncher.h"

namespace tarvik::macdesktop {

/// Starts programs as NSTasks.
class ProcessTaskLauncher final : public platform::TaskLauncher {
  public:
    std::optional<Error> launch(const std::string& launchPath,
                                const std::vector<std::string>& arguments) override;
};

}  // namespace tarvik::macdesktop
