// SPDX-License-Identifier: MIT

#include "platform/linux/system/StartMessages.h"

#include <QString>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace tarvik::linuxdesktop {

namespace {

// A message handler reaches static data only. Threads that Qt has started may report too.
std::mutex heldMutex;
std::vector<std::pair<QtMsgType, QString>> held;

void holdMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    const std::lock_guard lock(heldMutex);
    if (type != QtFatalMsg) {
        held.emplace_back(type, text);
        return;
    }
    // The first message tells what failed, the fatal one only that something did.
    const QString reason = (held.empty() ? text : held.front().second).simplified();
    std::fprintf(stderr, "TarvikDictate: cannot start: %s\n", qUtf8Printable(reason));
    // Neither the half-made application nor the static objects below it can be destroyed.
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

StartMessages::StartMessages() : previous_(qInstallMessageHandler(&holdMessage)) {}

StartMessages::~StartMessages() {
    qInstallMessageHandler(previous_);
    std::unique_lock lock(heldMutex);
    const auto messages = std::exchange(held, {});
    lock.unlock();
    for (const auto& [type, text] : messages) {
        qt_message_output(type, {}, text);
    }
}

}  // namespace tarvik::linuxdesktop
