#pragma once

#include <QRect>
#include <memory>
#include <optional>

#include "platform/Window.h"
#include "platform/linux/windows/ScrolledWindow.h"

namespace tarvik::linuxdesktop {

/// A window as a top-level widget. Main thread only.
///
/// Its content has all the room it needs as long as the screen has it, and scrolls where a user
/// makes the window smaller. It is put on the main screen as a whole, wherever its origin would be.
/// Windows here stay when another application becomes active, whatever the description says: hiding
/// has no counterpart on these desktops. The frame is the window manager's: a transparent title bar
/// is at best as dark as the background, and a hidden title is the application's name.
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
    void applyBackground(std::optional<platform::RgbColor> background);
    void fit();
    void fitUnlessResized();
    QSize margins() const;
    void place(const QRect& frame);
    void correctPlace();
    void onClose();

    platform::WindowDescription description_;
    std::shared_ptr<platform::View> root_;
    ScrolledWindow window_;
    /// Where the frame is meant to be, until the window manager has shown what its frame is like.
    struct Placement {
        QRect frame;
        /// By how much the frame was taken to be larger than the window.
        QSize margins;
    };
    std::optional<Placement> placement_;
    /// The size that the content made it have.
    QSize fitted_;
    bool isOpen_ = false;
};

}  // namespace tarvik::linuxdesktop
