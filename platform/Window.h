#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Appearance.h"
#include "platform/Views.h"

namespace tarvik::platform {

/// In points.
struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

/// In points, on a screen whose y grows upwards.
struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

/// `origin` is the lower left corner.
struct Rect {
    Point origin = {};
    Size size = {};

    bool operator==(const Rect&) const = default;
};

/// Parts of a window's frame, to be combined; the values are AppKit's.
inline constexpr std::uint32_t titledWindow = 1;
inline constexpr std::uint32_t closableWindow = 2;
inline constexpr std::uint32_t miniaturizableWindow = 4;
inline constexpr std::uint32_t resizableWindow = 8;

/// What a window does among spaces, to be combined; the values are AppKit's.
inline constexpr std::uint32_t canJoinAllSpaces = 1;
inline constexpr std::uint32_t fullScreenAuxiliary = 256;

/// The values are AppKit's.
enum class WindowLevel { normal = 0, floating = 3 };

struct WindowDescription {
    /// Of the content, without the frame. A desktop whose fonts need more room gives more.
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
    /// Called each time the window closes, by its own button or by close().
    std::function<void()> willClose = {};
};

/// A window that is reused: closing hides it. Main thread only.
class Window {
  public:
    virtual ~Window() = default;

    /// Replaces what the window shows by `root`, which fills it and grows with it, on `background`
    /// where one is given. Allowed while a control of the old content calls.
    virtual void setContent(std::shared_ptr<View> root, std::optional<RgbColor> background) = 0;

    /// The window with its frame, shown or not.
    virtual Rect frame() const = 0;
    virtual void setFrameOrigin(Point origin) = 0;
    /// In the middle of the main screen.
    virtual void center() = 0;

    /// Shows the window where it was put; out of the task list or dock when the user had put it
    /// away there. Whether it gets the keyboard is the desktop's decision.
    virtual void show() = 0;
    /// In front of the windows of all applications, whichever is active; shows a hidden window.
    virtual void orderFrontRegardless() = 0;
    /// Whether it is shown. Of a window that the user has put away either may be said.
    virtual bool isVisible() const = 0;
    /// Hides a window that is shown, after willClose. Allowed while one of its controls calls.
    virtual void close() = 0;
};

}  // namespace tarvik::platform
