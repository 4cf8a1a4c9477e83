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
#include "platform/linux/system/SettingsPanel.h"
#include "platform/linux/system/SleepMonitor.h"

namespace tarvik::linuxdesktop {

/// The desktop around the application. Main thread only.
///
/// logind announces waking. Links are handed to xdg-open. A link to a page of the system settings
/// opens that page of the desktop's own settings, as long as something is missing that the page can
/// give.
class LinuxWorkspace final : public platform::Workspace {
  public:
    /// The process whose window has the keyboard; empty where unknown. Called by
    /// frontmostApplication() only, so it may choose the target of a recording. Does not wait.
    using FrontmostProcess = std::function<std::optional<platform::ProcessIdentifier>()>;
    /// The user asks for a page of the settings. Grants what needs no page, and tells whether the
    /// application lacks what the user can give on the page. Does not wait.
    using NeedsPanel = std::function<bool(SettingsPanel)>;

    /// The references outlive the workspace.
    LinuxWorkspace(FrontmostProcess frontmostProcess, NeedsPanel needsPanel,
                   platform::TaskLauncher& taskLauncher, const platform::Clock& clock,
                   platform::Log& log);

    std::shared_ptr<platform::RunningApplication> frontmostApplication() override;
    void observeDidWake(std::function<void()> handler) override;
    /// On failure the log gets a line with the reason.
    bool openUrl(const std::string& url) override;
    /// Does nothing: these desktops have no list of permissions that a file could be dragged into.
    void activateFileViewerSelecting(const std::string& path) override;

  private:
    void announceWake();
    std::optional<Error> openLink(const std::string& url);
    std::optional<Error> openPanel(SettingsPanel panel);

    FrontmostProcess frontmostProcess_;
    NeedsPanel needsPanel_;
    platform::TaskLauncher& taskLauncher_;
    const platform::Clock& clock_;
    platform::Log& log_;
    std::vector<std::function<void()>> wakeObservers_;
    std::unique_ptr<SleepMonitor> sleepMonitor_;
};

}  // namespace tarvik::linuxdesktop
