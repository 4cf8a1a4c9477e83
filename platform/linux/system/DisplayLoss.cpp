// SPDX-License-Identifier: MIT

#include "platform/linux/system/DisplayLoss.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QString>
#include <QThread>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <semaphore>
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

// Longer than the application takes to end in order.
constexpr std::chrono::seconds endTimeout(5);

bool isLoss(const QString& text) {
    return std::ranges::any_of(
        reports, [&](const char* report) { return text.startsWith(QLatin1String(report)); });
}

// Main thread. Does nothing inside the call that it makes itself.
void endInOrder() {
    if (const auto onLoss = std::exchange(pendingLoss, nullptr)) {
        onLoss();
        // The threads of the application still use the objects that exit() would destroy.
        std::_Exit(EXIT_FAILURE);
    }
}

// On Wayland a thread of Qt's own may be the first to notice. Qt ends the process when the message
// has been handled, so that thread waits here for the main thread to end the process.
void endFromAnotherThread(QCoreApplication& application) {
    QMetaObject::invokeMethod(&application, &endInOrder, Qt::QueuedConnection);
    std::binary_semaphore isProcessLeft(0);
    static_cast<void>(isProcessLeft.try_acquire_for(endTimeout));
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (isLoss(text)) {
        QCoreApplication& application = *QCoreApplication::instance();
        if (QThread::currentThread() == application.thread()) {
            endInOrder();
        } else {
            endFromAnotherThread(application);
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
