#pragma once

#include <vector>

#include "platform/Workspace.h"

namespace tarvik::macdesktop {

/// The desktop as NSWorkspace knows it. Main thread only.
class MacWorkspace final : public platform::Workspace {
  public:
    std::shared_ptr<platform::RunningApplication> frontmostApplication() override;
    void observeDidWake(std::function<void()> handler) override;
    bool openUrl(const std::string& url) override;
    void activateFileViewerSelecting(const std::string& path) override;

  private:
    /// Dropping one removes it from the notification centre.
    std::vector<std::shared_ptr<void>> wakeObservers_;
};

}  // namespace tarvik::macdesktop
