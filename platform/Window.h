// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Appearance.h"
#include "platform/Views.h"

namespace tarvik::platform {

/// A size in points.
struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

/// A position in points, on a screen whose y axis points up.
struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

/// A rectangle. `origin` is its lower left corner.
struct Rect {
    Point origin = {};
    Size size = {};

    bool operator==(const Rect&) const = default;
};

/// Flags for the parts of a window's frame. The values are AppKit's.
inline constexpr std::uint32_t titledWindow = 1;
inline constexpr std::uint32_t closableWindow = 2;
inline constexpr std::uint32_t miniaturizableWindow = 4;
inline constexpr std::uint32_t resizableWindow = 8;

/// Flags for the behaviour of a window on several spaces. The values are AppKit's.
inline constexpr std::uint32_t canJoinAllSpaces = 1;
inline constexpr std::uint32_t fullScreenAuxiliary = 256;

/// The values are AppKit's.
enum class WindowLevel { normal = 0, floating = 3 };

struct WindowDescription {
    /// The size of the content, without the frame. A desktop whose fonts need more room makes the
    /// window larger.
    Size contentSize = {};
    std::optional<Size> minimumSize = {};
    std::uint32_t styleMask = 0;
    std::string title = {};
    bool titlebarAppearsTransparent = false;
    bool isTitleHidden = false;
    std::optional<RgbColor> backgroundColor = {};
    WindowLevel level = WindowLevel::normal;
    bool hidesOnDeactivate = false;
    std::uint32_t collectionBehavior = 0;
    /// Called each time the window closes, through its close button or close().
    std::function<void()> willClose = {};
};

/// A window. Closing only hides the window, for its next use. Main thread only.
class Window {
  public:
    virtual ~Window() = default;

    /// Replaces the content by `root`, which fills the window at every size. `background` is the
    /// colour behind it; none means the default. Allowed inside an action of the old content.
    virtual void setContent(std::shared_ptr<View> root, std::optional<RgbColor> background) = 0;

    /// The position and size of the window including its frame, also while it is hidden.
    virtual Rect frame() const = 0;
    virtual void setFrameOrigin(Point origin) = 0;
    /// Moves the window to the middle of the main screen.
    virtual void center() = 0;

    /// Shows the window at its position. Restores a window that the user has minimised. The desktop
    /// decides whether the window gets the keyboard. No control has the focus when the window
    /// appears, and the first Tab reaches the first control.
    virtual void show() = 0;
    /// Puts the window in front of the windows of all applications, whichever application is
    /// active. Shows a hidden window, like show().
    virtual void orderFrontRegardless() = 0;
    /// Whether the window is shown. The result for a minimised window depends on the desktop.
    virtual bool isVisible() const = 0;
    /// Calls `willClose` and hides the window. Does nothing when the window is hidden. Allowed
    /// inside an action of the window's content.
    virtual void close() = 0;
};

}  // namespace tarvik::platform
