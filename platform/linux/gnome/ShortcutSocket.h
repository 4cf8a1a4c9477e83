// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/gnome/ShortcutPress.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/loop/LocalSocket.h"

namespace tarvik::linuxdesktop {

/// The socket at which the commands of the custom shortcuts tell of presses. Loop thread only; no
/// operation blocks.
class ShortcutSocket {
  public:
    /// Gets each press. Does not destroy the object.
    using OnPress = std::function<void(const ShortcutPress&)>;

    /// Listens at `path`, where the object replaces what is there. `loop` outlives the object.
    ShortcutSocket(std::string path, EventLoop& loop, OnPress onPress);
    ShortcutSocket(const ShortcutSocket&) = delete;
    ShortcutSocket& operator=(const ShortcutSocket&) = delete;

    /// False when the system has refused the socket.
    bool isOpen() const { return socket_.isOpen(); }

  private:
    void receive();

    const OnPress onPress_;
    LocalSocket socket_;
    std::unique_ptr<EventLoop::Watch> watch_;
};

}  // namespace tarvik::linuxdesktop
