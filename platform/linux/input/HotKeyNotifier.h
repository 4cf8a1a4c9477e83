// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/MainQueue.h"
#include "platform/linux/input/HotKeyMeans.h"

namespace tarvik::linuxdesktop {

/// Tells a listener on the main thread what another thread hears of hotkeys. The operations are for
/// any thread and do not block. The main thread ends the object, and no listener is called
/// afterwards.
class HotKeyNotifier {
  public:
    /// `mainQueue` outlives the object; the listener need not.
    HotKeyNotifier(platform::MainQueue& mainQueue, std::weak_ptr<HotKeyListener> listener);

    /// As the operations of HotKeyListener, in a later turn of the main queue.
    void tellPressed(HotKeyNumber number) const;
    void tellReleased(HotKeyNumber number) const;
    void tellLost(HotKeyNumber number, const std::string& reason) const;
    void tellRegistered(HotKeyNumber number) const;

  private:
    void tell(std::function<void(HotKeyListener&)> event) const;

    platform::MainQueue& mainQueue_;
    // Blocks of the main queue hold the pointer weakly, so that none calls after the end.
    const std::shared_ptr<const std::weak_ptr<HotKeyListener>> listener_;
};

}  // namespace tarvik::linuxdesktop
