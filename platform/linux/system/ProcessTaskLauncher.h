#pragma once

#include "platform/TaskLauncher.h"

namespace tarvik::linuxdesktop {

/// Starts processes in sessions of their own, with the usual signal dispositions and the standard
/// streams of this process. Needs the main thread's QCoreApplication.
class ProcessTaskLauncher final : public platform::TaskLauncher {
  public:
    std::optional<Error> launch(const std::string& launchPath,
                                const std::vector<std::string>& arguments) override;
};

}  // namespace tarvik::linuxdesktop
