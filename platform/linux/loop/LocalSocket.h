// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// A socket in the file system at which the user's own programs reach this one. Does not block. The
/// end of the object removes the socket from the file system. One thread.
class LocalSocket {
  public:
    /// Makes a socket of `type`, such as SOCK_DGRAM, at `path`, and replaces what is there. A
    /// stream socket listens.
    LocalSocket(std::string path, int type);
    ~LocalSocket();
    LocalSocket(const LocalSocket&) = delete;
    LocalSocket& operator=(const LocalSocket&) = delete;

    /// False when the path is empty or too long, or when the system has refused the socket.
    bool isOpen() const { return static_cast<bool>(socket_); }
    /// The descriptor of the socket, which belongs to the object; -1 unless isOpen().
    int number() const { return socket_.number(); }

  private:
    const std::string path_;
    FileDescriptor socket_;
};

}  // namespace tarvik::linuxdesktop
