#include "platform/linux/system/LinuxWorkspace.h"

#include <QStandardPaths>
#include <QUrl>
#include <utility>

namespace tarvik::linuxdesktop {

LinuxWorkspace::LinuxWorkspace(FrontmostProcess frontmostProcess,
                               platform::TaskLauncher& taskLauncher, const platform::Clock& clock,
                               platform::Log& log)
    : frontmostProcess_(std::move(frontmostProcess)),
      taskLauncher_(taskLauncher),
      clock_(clock),
      log_(log) {}

std::shared_ptr<platform::RunningApplication> LinuxWorkspace::frontmostApplication() {
    const std::optional<platform::ProcessIdentifier> process = frontmostProcess_();
    return process ? std::make_shared<platform::RunningApplication>(*process) : nullptr;
}

void LinuxWorkspace::observeDidWake(std::function<void()> handler) {
    wakeHandlers_.push_back(std::move(handler));
    if (!sleepMonitor_) {
        sleepMonitor_ = std::make_unique<SleepMonitor>(clock_, log_, [this] { announceWake(); });
    }
}

void LinuxWorkspace::announceWake() {
    // A copy: a handler may add another one.
    for (const std::function<void()>& handler : std::vector(wakeHandlers_)) {
        handler();
    }
}

bool LinuxWorkspace::openUrl(const std::string& url) {
    const QUrl parsed(QString::fromStdString(url), QUrl::StrictMode);
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    std::optional<Error> failure;
    if (!parsed.isValid() || parsed.scheme().isEmpty()) {
        failure = Error{0, "it is no link"};
    } else if (opener.isEmpty()) {
        failure = Error{0, "xdg-open is not installed"};
    } else {
        failure = taskLauncher_.launch(opener.toStdString(),
                                       {parsed.toString(QUrl::FullyEncoded).toStdString()});
    }
    if (failure) {
        log_.write("TarvikDictate: cannot open " + url + ": " + failure->localizedDescription);
    }
    return !failure;
}

}  // namespace tarvik::linuxdesktop
