// SPDX-License-Identifier: MIT

#include "platform/linux/system/DisplayLoss.h"

#include <QCoreApplication>
#include <QString>
#include <QThread>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// What Qt calls right before it ends the process. Nothing but these messages comes before the end:
// an exit handler would run when a part of Qt's static objects is gone, and for Wayland not at all.
constexpr std::array reports = {"The X11 connection broke", "The Wayland connection broke",
                                "The Wayland connection experienced a fatal error"};

// A message handler reaches static data only.
QtMessageHandler handlerBefore = nullptr;
std::function<void()> pendingLoss;

bool isLoss(const QString& text) {
    return std::ranges::any_of(
        reports, [&](const char* report) { return text.startsWith(QLatin1String(report)); });
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (isLoss(text) && QThread::currentThread() == QCoreApplication::instance()->thread()) {
        if (const auto onLoss = std::exchange(pendingLoss, nullptr)) {
            onLoss();
            // The threads of the application still use the objects that exit() would destroy.
            std::_Exit(EXIT_FAILURE);
        }
    }
    handlerBefore(type, context, text);
}

}  // namespace

DisplayLoss::DisplayLoss(std::function<void()> onLoss) {
    pendingLoss = std::move(onLoss);
    // Another thread may report something at once, which goes to the handler before.
    handlerBefore = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(&handleMessage);
}

DisplayLoss::~DisplayLoss() {
    qInstallMessageHandler(handlerBefore);
    pendingLoss = nullptr;
}

}  // namespace tarvik::linuxdesktop
