#include "platform/linux/system/QtApplication.h"

#include <QWidget>
#include <cstdlib>
#include <utility>

#include "platform/linux/windows/StartupNotification.h"
#include "platform/linux/windows/WindowManagerRequests.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds longestHold(0.5);

// What has to be said before Qt starts; `argumentCount` is only passed on.
int& prepareQt(int& argumentCount) {
    // Nothing here draws with OpenGL, and loading a driver costs tens of megabytes.
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    // A session manager would start the application again at login, beside the login item.
    QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
    QCoreApplication::setOrganizationName(QStringLiteral("Tarvik"));
    QCoreApplication::setApplicationName(QStringLiteral("Tarvik Dictate"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.tarvik.dictate"));
    return argumentCount;
}

std::vector<QWidget*> visibleWindows() {
    std::vector<QWidget*> windows;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        // A menu is none, nor is a tray's icon, which is a window to X alone.
        if (window->isVisible() && window->windowType() != Qt::Popup &&
            !window->windowFlags().testFlag(Qt::BypassWindowManagerHint)) {
            windows.push_back(window);
        }
    }
    return windows;
}

}  // namespace

QtApplication::QtApplication(int& argumentCount, char** arguments, const platform::Clock& clock)
    : clock_(clock),
      application_(prepareQt(argumentCount), arguments),
      signals_([this] { terminate(); }),
      launch_([this] { finishLaunching(); }) {
    QApplication::setApplicationDisplayName(QStringLiteral("Tarvik Dictate"));
    QApplication::setQuitOnLastWindowClosed(false);
}

void QtApplication::holdLaunchUntil(std::vector<Knowledge> awaited) {
    awaited_ = std::move(awaited);
}

void QtApplication::setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) {
    // The old delegate goes last: it may ask for the present one while it is destroyed.
    delegate_.swap(delegate);
}

// Every window here belongs to an accessory; the task list shows those that are open.
void QtApplication::setActivationPolicy(platform::ActivationPolicy) {}

int QtApplication::run() {
    if (isTerminated_) {
        return EXIT_SUCCESS;
    }
    unknown_ = awaited_.size();
    launch_.set(awaited_.empty() ? TimePoint() : clock_.now() + longestHold);
    for (const Knowledge& knowledge : std::exchange(awaited_, {})) {
        knowledge([this] {
            if (--unknown_ == 0) {
                launch_.set({});
            }
        });
    }
    return QApplication::exec();
}

void QtApplication::finishLaunching() {
    // Also what became known too late comes here.
    launch_.clear();
    if (isTerminated_ || std::exchange(hasLaunched_, true)) {
        return;
    }
    if (const std::shared_ptr<platform::ApplicationDelegate> delegate = delegate_) {
        // How it was launched is nowhere to be read.
        delegate->applicationDidFinishLaunching({});
    }
    for (std::function<void()>& block : std::exchange(early_, {})) {
        post(std::move(block));
    }
}

void QtApplication::reopen(const std::string& startupId) {
    ask(startupId, [](platform::ApplicationDelegate& delegate) {
        // There is nothing that the desktop would usually do besides.
        delegate.applicationShouldHandleReopen(!visibleWindows().empty());
    });
}

void QtApplication::perform(platform::ApplicationAction action, const std::string& startupId) {
    ask(startupId, [action](platform::ApplicationDelegate& delegate) {
        delegate.applicationShouldPerform(action);
    });
}

void QtApplication::ask(const std::string& startupId, Request request) {
    std::function<void()> block = [this, startupId, request = std::move(request)] {
        const std::shared_ptr<platform::ApplicationDelegate> delegate = delegate_;
        if (!delegate || isTerminated_) {
            return;
        }
        const StartupNotification notification(startupId);
        request(*delegate);
    };
    if (hasLaunched_) {
        post(std::move(block));
    } else {
        early_.push_back(std::move(block));
    }
}

// In a turn of its own: what is asked may open a modal window, which is no place to wait in for
// whoever brought the request.
void QtApplication::post(std::function<void()> block) {
    QMetaObject::invokeMethod(&application_, std::move(block), Qt::QueuedConnection);
}

void QtApplication::terminate() {
    isTerminated_ = true;
    if (const auto onTerminate = std::exchange(onTerminate_, nullptr)) {
        onTerminate();
    }
    QCoreApplication::exit(EXIT_SUCCESS);
}

// The desktop has one way only to hand the keyboard to an application that the user asked for by a
// key or an icon.
void QtApplication::activate() {
    activateIgnoringOtherApps();
}

void QtApplication::activateIgnoringOtherApps() {
    for (QWidget* window : visibleWindows()) {
        bringToFront(*window);
    }
}

}  // namespace tarvik::linuxdesktop
