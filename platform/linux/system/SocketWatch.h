#pragma once

#include <QFileSystemWatcher>
#include <functional>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// Where the system bus listens; empty when it is no socket in the file system.
std::optional<std::string> systemBusSocket();

/// Tells when something comes or goes in the folder of a socket, which may not be there yet. Costs
/// nothing while nothing does. Main thread only; a folder that does not exist is not watched.
class SocketWatch {
  public:
    SocketWatch(const std::string& path, std::function<void()> onChange);

  private:
    QFileSystemWatcher watcher_;
};

}  // namespace tarvik::linuxdesktop
