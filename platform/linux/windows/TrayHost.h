// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>
#include <memory>

#include "platform/Clock.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/MainLoop.h"

namespace tarvik::linuxdesktop {

/// Tells when the desktop has a place for a tray icon: a host of StatusNotifierItem or, where there
/// is none, a tray of the X server. Qt decides between the two once and for good, so Qt's icon must
/// not be made earlier. Main thread only; does not block.
class TrayHost final : private QAbstractNativeEventFilter {
  public:
    /// Calls `onReady` once, in a later turn of the loop; `onReady` must not destroy the object.
    /// `clock` outlives the object.
    TrayHost(const platform::Clock& clock, std::function<void()> onReady);
    ~TrayHost() override;

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void askForNotifierHost();
    void useX11Tray();
    void announce();

    std::function<void()> onReady_;
    MainLoop loop_;
    Deadline announcement_{loop_};
    bool isNotifierHostMissing_ = false;
    std::uint32_t managerMessage_ = 0;
    std::uint32_t traySelection_ = 0;
    /// Empty without a session bus.
    std::unique_ptr<MessageBus> sessionBus_;
};

}  // namespace tarvik::linuxdesktop
