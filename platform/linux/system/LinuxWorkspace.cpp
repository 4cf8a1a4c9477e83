// SPDX-License-Identifier: MIT

#include "platform/linux/system/LinuxWorkspace.h"

#include <QStandardPaths>
#include <QUrl>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// The path of the program; empty when it is not installed.
std::string executable(const std::string& program) {
    return QStandardPaths::findExecutable(QString::fromStdString(program)).toStdString();
}

}  // namespace

LinuxWorkspace::LinuxWorkspace(FrontmostProcess frontmostProcess, NeedsPanel needsPanel,
                               platform::TaskLauncher& taskLauncher, const platform::Clock& clock,
                               platform::Log& log)
    : frontmostProcess_(std::move(frontmostProcess)),
      needsPanel_(std::move(needsPanel)),
      taskLauncher_(taskLauncher),
      clock_(clock),
      log_(log) {}

std::shared_ptr<platform::RunningApplication> LinuxWorkspace::frontmostApplication() {
    const std::optional<platform::ProcessIdentifier> process = frontmostProcess_();
    return process ? std::make_shared<platform::RunningApplication>(*process) : nullptr;
}

void LinuxWorkspace::observeDidWake(std::function<void()> handler) {
    wakeObservers_.push_back(std::move(handler));
    if (!sleepMonitor_) {
        sleepMonitor_ = std::make_unique<SleepMonitor>(clock_, log_, [this] { announceWake(); });
    }
}

void LinuxWorkspace::announceWake() {
    // A copy, because a handler may add another one.
    for (const std::function<void()>& handler : std::vector(wakeObservers_)) {
        handler();
    }
}

bool LinuxWorkspace::openUrl(const std::string& url) {
    const std::optional<SettingsPanel> panel = settingsPanelOf(url);
    if (panel && !needsPanel_(*panel)) {
        return true;
    }
    const std::optional<Error> failure = panel ? openPanel(*panel) : openLink(url);
    if (failure) {
        log_.write("TarvikDictate: cannot open " + url + ": " + failure->localizedDescription);
    }
    return !failure;
}

std::optional<Error> LinuxWorkspace::openLink(const std::string& url) {
    const QUrl parsed(QString::fromStdString(url), QUrl::StrictMode);
    if (!parsed.isValid() || parsed.scheme().isEmpty()) {
        return Error{0, "it is no link"};
    }
    const std::string opener = executable("xdg-open");
    if (opener.empty()) {
        return Error{0, "xdg-open is not installed"};
    }
    return taskLauncher_.launch(opener, {parsed.toString(QUrl::FullyEncoded).toStdString()});
}

std::optional<Error> LinuxWorkspace::openPanel(SettingsPanel panel) {
    const std::string desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString();
    std::string missing;
    for (const PanelCommand& command : commandsFor(panel, desktop)) {
        const std::string program = executable(command.program);
        if (!program.empty()) {
            return taskLauncher_.launch(program, command.arguments);
        }
        missing += (missing.empty() ? "" : ", ") + command.program;
    }
    return Error{0, missing.empty() ? "no settings are known of this desktop (" + desktop + ")"
                                    : "not installed: " + missing};
}

void LinuxWorkspace::activateFileViewerSelecting(const std::string&) {}

}  // namespace tarvik::linuxdesktop
