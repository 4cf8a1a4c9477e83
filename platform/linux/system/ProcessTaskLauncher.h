// SPDX-License-Identifier: MIT
#pragma once

#include "platform/TaskLauncher.h"

namespace tarvik::linuxdesktop {

/// Starts processes, each in a session of its own, with default signal dispositions. A process
/// inherits the standard streams of this process and no other descriptor. Main thread only; needs
/// its QCoreApplication.
class ProcessTaskLauncher final : public platform::TaskLauncher {
  public:
    std::optional<Error> launch(const std::string& launchPath,
                                const std::vector<std::string>& arguments) override;
};

}  // namespace tarvik::linuxdesktop
