// SPDX-License-Identifier: MIT

#include "platform/linux/system/FileManager.h"

#include <QUrl>
#include <chrono>
#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::chrono::seconds showTimeout{10};

}  // namespace

void FileManager::show(const std::string& path, std::function<void()> onFailure) {
    if (!sessionBus_) {
        auto opened = MessageBus::openSession();
        if (!opened) {
            onFailure();
            return;
        }
        sessionBus_ = std::move(opened).value();
        sessionBus_->attach(loop_, [this](const Error&) { sessionBus_.reset(); });
    }
    const QByteArray link = QUrl::fromLocalFile(QString::fromStdString(path)).toEncoded();
    BusMessage message = sessionBus_->newCall(
        {"org.freedesktop.FileManager1", "/org/freedesktop/FileManager1"},
        "org.freedesktop.FileManager1", "ShowItems", "ass", 1, link.constData(), "");
    const bool isSent =
        sessionBus_->call(std::move(message), showTimeout, [onFailure](sd_bus_message* reply) {
            if (isError(reply)) {
                onFailure();
            }
        });
    if (!isSent) {
        onFailure();
    }
}

}  // namespace tarvik::linuxdesktop
