#include "platform/linux/windows/UserAction.h"

#include <QByteArray>
#include <utility>

#include "platform/linux/windows/StartupNotification.h"
#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

namespace {

// One for the process, as the connection to the display server is.
std::uint32_t presentUserTime = 0;

// Where Qt looks for the token when it activates a window on Wayland.
constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";

}  // namespace

UserAction::UserAction(std::string startupId)
    : startupId_(std::move(startupId)),
      timeBefore_(std::exchange(presentUserTime, timeOfStartup(startupId_))) {
    if (!startupId_.empty() && x11Connection() == nullptr) {
        qputenv(tokenVariable, QByteArray::fromStdString(startupId_));
    }
}

UserAction::~UserAction() {
    presentUserTime = timeBefore_;
    if (x11Connection() == nullptr) {
        // It is good for one use, and no program that is started later may find it.
        qunsetenv(tokenVariable);
    }
    endStartupNotification(startupId_);
}

std::uint32_t UserAction::presentTime() {
    return presentUserTime;
}

}  // namespace tarvik::linuxdesktop
