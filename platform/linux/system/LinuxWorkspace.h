// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/TaskLauncher.h"
#include "platform/Workspace.h"
#include "platform/linux/system/FileManager.h"
#include "platform/linux/system/SettingsPanel.h"
#include "platform/linux/system/SleepMonitor.h"

namespace tarvik::linuxdesktop {

/// The desktop around the application. Main thread only.
///
/// logind announces waking. Links are handed to xdg-open; links to a page of the system settings
/// open that page of the desktop's own settings.
class LinuxWorkspace final : public platform::Workspace {
  public:
    /// The process whose window has the keyboard; empty where unknown. Does not wait.
    using FrontmostProcess = std::function<std::optional<platform::ProcessIdentifier>()>;

    /// The references outlive the workspace.
    LinuxWorkspace(FrontmostProcess frontmostProcess, platform::TaskLauncher& taskLauncher,
                   const platform::Clock& clock, platform::Log& log);

    std::shared_ptr<platform::RunningApplication> frontmostApplication() override;
    void observeDidWake(std::function<void()> handler) override;
    /// On failure the log gets a line with the reason.
    bool openUrl(const std::string& url) override;
    /// Without a file manager that answers, the folder is opened without a selection.
    void activateFileViewerSelecting(const std::string& path) override;

  private:
    void announceWake();
    std::optional<Error> openLink(const std::string& url);
    std::optional<Error> openPanel(SettingsPanel panel);

    FrontmostProcess frontmostProcess_;
    platform::TaskLauncher& taskLauncher_;
    const platform::Clock& clock_;
    platform::Log& log_;
    std::vector<std::function<void()>> wakeObservers_;
    std::unique_ptr<SleepMonitor> sleepMonitor_;
    FileManager fileManager_;
};

}  // namespace tarvik::linuxdesktop
