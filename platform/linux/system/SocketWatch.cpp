// SPDX-License-Identifier: MIT

#include "platform/linux/system/SocketWatch.h"

#include <QFileInfo>
#include <QString>
#include <string_view>
#include <utility>

namespace tarvik::linuxdesktop {

std::optional<std::string> systemBusSocket() {
    const std::string address =
        qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS",
                             QStringLiteral("unix:path=/run/dbus/system_bus_socket"))
            .toStdString();
    constexpr std::string_view start = "unix:path=";
    if (!address.starts_with(start)) {
        return std::nullopt;
    }
    return address.substr(start.size(), address.find_first_of(",;") - start.size());
}

SocketWatch::SocketWatch(const std::string& path, std::function<void()> onChange) {
    QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &watcher_,
                     [onChange = std::move(onChange)] { onChange(); });
    watcher_.addPath(QFileInfo(QString::fromStdString(path)).path());
}

}  // namespace tarvik::linuxdesktop
