// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "platform/Log.h"
#include "platform/Workspace.h"

namespace tarvik::macdesktop {

/// The desktop, by NSWorkspace. Main thread only.
class MacWorkspace final : public platform::Workspace {
  public:
    /// `log` outlives the workspace.
    explicit MacWorkspace(platform::Log& log) : log_(log) {}

    std::shared_ptr<platform::RunningApplication> frontmostApplication() override;
    void observeDidWake(std::function<void()> handler) override;
    bool openUrl(const std::string& url) override;
    void activateFileViewerSelecting(const std::string& path) override;

  private:
    platform::Log& log_;
    /// Each removes its observer from the notification centre when dropped.
    std::vector<std::shared_ptr<void>> wakeObservers_;
};

}  // namespace tarvik::macdesktop
