#include "platform/linux/system/QtApplication.h"

#include <QWidget>
#include <cstdlib>
#include <utility>

#include "platform/linux/system/WindowActivation.h"

namespace tarvik::linuxdesktop {

namespace {

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

}  // namespace

QtApplication::QtApplication(int& argumentCount, char** arguments)
    : application_(prepareQt(argumentCount), arguments), signals_([this] { terminate(); }) {
    QApplication::setApplicationDisplayName(QStringLiteral("Tarvik Dictate"));
    QApplication::setQuitOnLastWindowClosed(false);
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
    QMetaObject::invokeMethod(
        &application_,
        [this] {
            if (const std::shared_ptr<platform::ApplicationDelegate> delegate = delegate_) {
                // How it was launched is nowhere to be read.
                delegate->applicationDidFinishLaunching({});
            }
        },
        Qt::QueuedConnection);
    return QApplication::exec();
}

void QtApplication::terminate() {
    isTerminated_ = true;
    QCoreApplication::exit(EXIT_SUCCESS);
}

void QtApplication::activateIgnoringOtherApps() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && (window->windowFlags() & Qt::WindowType_Mask) != Qt::Popup) {
            bringToFront(*window);
        }
    }
}

}  // namespace tarvik::linuxdesktop
