// SPDX-License-Identifier: MIT
#pragma once

#include <QFileSystemWatcher>
#include <functional>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// The path of the system bus's socket; empty when the bus does not listen in the file system.
std::optional<std::string> systemBusSocket();

/// Tells when something comes or goes in the folder of a socket; the socket itself need not exist.
/// Costs nothing while nothing changes. Main thread only; a missing folder is not watched.
class SocketWatch {
  public:
    SocketWatch(const std::string& path, std::function<void()> onChange);

  private:
    QFileSystemWatcher watcher_;
};

}  // namespace tarvik::linuxdesktop
