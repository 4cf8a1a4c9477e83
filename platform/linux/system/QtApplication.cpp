// SPDX-License-Identifier: MIT

#include "platform/linux/system/QtApplication.h"

#include <QAbstractEventDispatcher>
#include <QWidget>
#include <cstdlib>
#include <utility>

#include "platform/linux/windows/StartupNotification.h"
#include "platform/linux/windows/WindowManagerRequests.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds maxLaunchDelay(0.5);

// The loop of an application that has ended.
QAbstractEventDispatcher* endedDispatcher = nullptr;

// Removes what an earlier application has left, and makes the settings that Qt reads when it
// starts. Returns `argumentCount`, so that the call can stand in the initialiser of the
// QApplication.
int& prepareQt(int& argumentCount) {
    delete std::exchange(endedDispatcher, nullptr);
    // Nothing here draws with OpenGL, and loading a driver costs tens of megabytes.
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    // A session manager would start the application again at login, beside the login item.
    QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
    QCoreApplication::setOrganizationName(QStringLiteral("Tarvik"));
    QCoreApplication::setApplicationName(QStringLiteral("Tarvik Dictate"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.tarvik.dictate"));
    // All texts are English. A theme may load Qt's translation into a language that is written from
    // right to left; without this line full stops would then stand in front of their sentences.
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    return argumentCount;
}

std::vector<QWidget*> visibleWindows() {
    std::vector<QWidget*> windows;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        // Neither a menu nor a tray icon counts; a tray icon is a window to the X server only.
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
    startMessages_.reset();
    QApplication::setApplicationDisplayName(QStringLiteral("Tarvik Dictate"));
    QApplication::setQuitOnLastWindowClosed(false);
}

// Qt's thread for D-Bus runs on until the process ends. When it posts an event it fetches the loop
// of the receiver's thread and then wakes that loop, with no lock in between. So the loop is not
// destroyed with the application.
QtApplication::~QtApplication() {
    endedDispatcher = QAbstractEventDispatcher::instance();
    endedDispatcher->setParent(nullptr);
}

void QtApplication::holdLaunchUntil(std::vector<LaunchCondition> conditions) {
    launchConditions_ = std::move(conditions);
}

void QtApplication::setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) {
    // The old delegate is destroyed last, because its destructor may use the application's
    // delegate.
    delegate_.swap(delegate);
}

// These desktops know no such policy: the application is always an accessory.
void QtApplication::setActivationPolicy(platform::ActivationPolicy) {}

int QtApplication::run() {
    if (isTerminated_) {
        return EXIT_SUCCESS;
    }
    unmetConditions_ = launchConditions_.size();
    launch_.set(launchConditions_.empty() ? TimePoint() : clock_.now() + maxLaunchDelay);
    for (const LaunchCondition& condition : std::exchange(launchConditions_, {})) {
        condition([this] {
            if (--unmetConditions_ == 0) {
                launch_.set({});
            }
        });
    }
    return QApplication::exec();
}

void QtApplication::finishLaunching() {
    // A condition that is met too late leads here again.
    launch_.clear();
    if (isTerminated_ || std::exchange(hasLaunched_, true)) {
        return;
    }
    if (const std::shared_ptr<platform::ApplicationDelegate> delegate = delegate_) {
        // These desktops do not tell how an application was launched.
        delegate->applicationDidFinishLaunching({});
    }
    for (std::function<void()>& block : std::exchange(requestsBeforeLaunch_, {})) {
        post(std::move(block));
    }
}

void QtApplication::reopen(const std::string& startupId) {
    deliver(startupId, [](platform::ApplicationDelegate& delegate) {
        // The answer is of no use: these desktops do nothing by themselves on a reopening.
        delegate.applicationShouldHandleReopen(!visibleWindows().empty());
    });
}

void QtApplication::perform(platform::ApplicationAction action, const std::string& startupId) {
    deliver(startupId, [action](platform::ApplicationDelegate& delegate) {
        delegate.applicationShouldPerform(action);
    });
}

void QtApplication::deliver(const std::string& startupId, Request request) {
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
        requestsBeforeLaunch_.push_back(std::move(block));
    }
}

// A block gets a turn of its own, because a request may open a modal window: the caller must not
// wait for the end of its nested loop.
void QtApplication::post(std::function<void()> block) {
    QMetaObject::invokeMethod(&application_, std::move(block), Qt::QueuedConnection);
}

void QtApplication::terminate() {
    if (std::exchange(isTerminated_, true)) {
        return;
    }
    if (const auto onTerminate = std::exchange(onTerminate_, nullptr)) {
        onTerminate();
    }
    const auto exit = [this] {
        hasEnded_ = true;
        QCoreApplication::exit(EXIT_SUCCESS);
    };
    const std::shared_ptr<platform::ApplicationDelegate> delegate = delegate_;
    if (delegate && hasLaunched_) {
        delegate->applicationShouldTerminate(exit);
    } else {
        exit();
    }
}

// These desktops have a single way to give the keyboard to an application that the user asked for.
void QtApplication::activate() {
    activateIgnoringOtherApps();
}

void QtApplication::activateIgnoringOtherApps() {
    for (QWidget* window : visibleWindows()) {
        bringToFront(*window);
    }
}

}  // namespace tarvik::linuxdesktop
