// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/loop/FileDescriptor.h"
#include "platform/linux/loop/LocalSocket.h"

namespace tarvik::linuxdesktop {

/// The socket at which the helper that KWin starts hands over its connection to KWin. Loop thread
/// only; no operation blocks.
class InputMethodSocket {
  public:
    /// Gets the connection. The helper lives until the next call, or until the end of the object.
    using OnConnection = std::function<void(FileDescriptor wayland)>;

    /// Listens at `path`, where the object replaces what is there.
    InputMethodSocket(std::string path, EventLoop& loop, OnConnection onConnection);
    InputMethodSocket(const InputMethodSocket&) = delete;
    InputMethodSocket& operator=(const InputMethodSocket&) = delete;

    bool isOpen() const { return socket_.isOpen(); }

  private:
    void accept();
    void receive();

    EventLoop& loop_;
    OnConnection onConnection_;
    LocalSocket socket_;
    FileDescriptor helper_;
    std::unique_ptr<EventLoop::Watch> watch_;
    std::unique_ptr<EventLoop::Watch> helperWatch_;
};

}  // namespace tarvik::linuxdesktop
