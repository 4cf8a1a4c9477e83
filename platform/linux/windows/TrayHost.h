#pragma once

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>

#include "platform/Clock.h"
#include "platform/linux/bus/BusConnection.h"

namespace tarvik::linuxdesktop {

/// Waits until the desktop has a place for a tray icon: a host of StatusNotifierItem or, where
/// there is none, a tray of the X server. Qt decides between the two once and for good, so its icon
/// must not be made earlier. Main thread only; does not wait for the panel.
class TrayHost final : private QAbstractNativeEventFilter {
  public:
    /// Calls `onReady` once, in a later turn of the loop; it must not destroy the object. `clock`
    /// outlives the object.
    TrayHost(const platform::Clock& clock, std::function<void()> onReady);
    ~TrayHost() override;

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void askForNotifierHost();
    void useX11Tray();
    void finish();

    std::function<void()> onReady_;
    Alarm ready_;
    bool isNotifierHostMissing_ = false;
    std::uint32_t managerMessage_ = 0;
    std::uint32_t traySelection_ = 0;
    BusConnection sessionBus_;
};

}  // namespace tarvik::linuxdesktop
