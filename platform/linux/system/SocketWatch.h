#pragma once

#include <QFileSystemWatcher>
#include <functional>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// The path of the socket of the system bus; empty when the bus has no socket in the file system.
std::optional<std::string> systemBusSocket();

/// Watches the folder of a socket, which need not exist yet, for entries that come and go. Costs
/// nothing between changes. Main thread only; a folder that does not exist is not watched.
class SocketWatch {
  public:
    SocketWatch(const std::string& path, std::function<void()> onChange);

  private:
    QFileSystemWatcher watcher_;
};

}  // namespace tarvik::linuxdesktop
