#include "platform/linux/system/FileManager.h"

#include <QUrl>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds patience(10);

}  // namespace

void FileManager::show(const std::string& path, std::function<void()> onFailure) {
    if (!sessionBus_ || isLost_) {
        isLost_ = false;
        sessionBus_ = std::make_unique<BusConnection>(BusConnection::Bus::session, clock_,
                                                      [this](const Error&) { isLost_ = true; });
    }
    BusMessage request =
        sessionBus_->newCall("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                             "org.freedesktop.FileManager1", "ShowItems");
    if (request) {
        const QByteArray link = QUrl::fromLocalFile(QString::fromStdString(path)).toEncoded();
        sd_bus_message_append(request.get(), "ass", 1, link.constData(), "");
    }
    const bool isSent =
        sessionBus_->call(std::move(request), patience, [onFailure](sd_bus_message* answer) {
            if (sd_bus_message_is_method_error(answer, nullptr)) {
                onFailure();
            }
        });
    if (!isSent) {
        onFailure();
    }
}

}  // namespace tarvik::linuxdesktop
