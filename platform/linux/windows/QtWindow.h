// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <memory>
#include <optional>

#include "platform/Window.h"
#include "platform/linux/windows/FloatingLayer.h"
#include "platform/linux/windows/ScrolledWindow.h"

namespace tarvik::linuxdesktop {

/// A window as a top-level widget. Main thread only.
///
/// The window takes the keyboard only when the user has asked for the window (see UserAction). No
/// control has the focus when the window appears.
///
/// The content has all the room that it needs, up to the size of the screen, and scrolls where the
/// user makes the window smaller. The whole window is put on the main screen, wherever its origin
/// would be. A floating window is above the windows of other programs until the user turns to one
/// of them, or to another window. Windows stay when another application becomes active, whatever
/// the description says: hiding them has no counterpart on these desktops. The frame is the window
/// manager's: a transparent title bar is at best as dark as the background, and in place of a
/// hidden title stands the application's name.
class QtWindow final : public platform::Window {
  public:
    explicit QtWindow(platform::WindowDescription description);
    ~QtWindow() override;

    void setContent(std::shared_ptr<platform::View> root,
                    std::optional<platform::RgbColor> background) override;
    platform::Rect frame() const override;
    void setFrameOrigin(platform::Point origin) override;
    void center() override;
    void show() override;
    void orderFrontRegardless() override;
    bool isVisible() const override;
    void close() override;

    QWidget& widget() { return window_; }

  private:
    void describeWindow(const QWidget& content);
    void applyBackground(std::optional<platform::RgbColor> background);
    void fit();
    void fitUnlessResized();
    QSize margins() const;
    void place(const QRect& frame);
    void correctPosition();
    void onClose();

    platform::WindowDescription description_;
    std::shared_ptr<platform::View> root_;
    ScrolledWindow window_;
    FloatingLayer layer_{window_};
    /// The intended position, until the window manager has told the size of its frame.
    struct Placement {
        QRect frame;
        /// The assumed difference between the size of the frame and that of the window.
        QSize margins;
    };
    std::optional<Placement> placement_;
    /// The size that fit() chose.
    QSize fitted_;
    bool isOpen_ = false;
};

}  // namespace tarvik::linuxdesktop
