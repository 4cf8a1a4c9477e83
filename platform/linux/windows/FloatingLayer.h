// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractNativeEventFilter>
#include <cstdint>

class QWidget;

namespace tarvik::linuxdesktop {

/// Takes a floating window out of the layer above all others once the user turns to another window.
/// Otherwise the floating window would cover the field that the user wants to dictate into. Without
/// an X server nothing happens. Main thread only.
class FloatingLayer final : private QAbstractNativeEventFilter {
  public:
    /// `window` outlives this object.
    explicit FloatingLayer(QWidget& window);

    /// Puts the window, which is shown, into the layer above all others, until the user turns to
    /// another window. Waits for a reply of the X server.
    void enter();

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void followActiveWindow();
    std::uint32_t activeWindow() const;

    QWidget& window_;
    /// The X server's number of the property with the active window.
    std::uint32_t activeWindowProperty_ = 0;
    /// The window that the user is in. 0 is no window.
    std::uint32_t current_ = 0;
};

}  // namespace tarvik::linuxdesktop
