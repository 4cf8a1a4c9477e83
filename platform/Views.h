// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Appearance.h"

// The views that make up a window. The user interface makes each view from a description. Only
// properties that change later have an operation. Main thread only.
//
// Lengths are in points. A point is 1/96 of the inch that the desktop assumes when it scales text;
// on macOS a point is AppKit's.
//
// Every member of a description has an initializer, because compilers warn of a designated
// initializer that omits a member without one.
//
// The stack or window that shows a view holds the view. Actions run on the main thread. An action
// may close its window and replace the window's content.
namespace tarvik::platform {

/// How strongly a view keeps its size, from 1 to 1000. Of two views the lower priority gives way.
using LayoutPriority = float;

/// The layout constraints of a single view. Without them a view has its natural size.
struct ViewLayout {
    /// The exact width.
    std::optional<double> width = {};
    std::optional<double> minimumWidth = {};
    /// The exact height.
    std::optional<double> height = {};
    /// How strongly the view resists growing wider than its content.
    std::optional<LayoutPriority> horizontalContentHugging = {};
    /// How strongly the view resists becoming narrower than its content.
    std::optional<LayoutPriority> horizontalCompressionResistance = {};

    bool operator==(const ViewLayout&) const = default;
};

/// Anything that a window can show.
class View {
  public:
    virtual ~View() = default;
};

enum class TextAlignment { natural, center };

/// How a label shows text that is wider than the label.
enum class LabelWrapping {
    /// One line.
    none,
    /// One line where the width suffices, several lines otherwise.
    whenNarrow,
    /// As many lines as the preferred width requires.
    always
};

struct LabelDescription {
    std::string text = {};
    Font font = {};
    Color color = SystemColor::label;
    TextAlignment alignment = TextAlignment::natural;
    LabelWrapping wrapping = LabelWrapping::none;
    /// The width in points at which LabelWrapping::always breaks lines.
    std::optional<double> preferredMaxLayoutWidth = {};
    ViewLayout layout = {};
};

/// A text that the user cannot edit.
class Label : public View {
  public:
    virtual void setText(const std::string& text) = 0;
    virtual void setTextColor(Color color) = 0;
};

struct TextFieldDescription {
    std::string text = {};
    std::string placeholder = {};
    /// Whether the field hides its text from onlookers.
    bool isSecure = false;
    ViewLayout layout = {};
    /// The name of the field for screen readers.
    std::string accessibilityLabel = {};
};

/// One line of text to edit. Return in the field does nothing.
class TextField : public View {
  public:
    /// The current text, unchanged.
    virtual std::string text() const = 0;
};

/// The values are AppKit's.
enum class BezelStyle { rounded = 1, recessed = 13 };
enum class ControlSize { regular = 0, large = 3 };

struct ButtonDescription {
    std::string title = {};
    BezelStyle bezelStyle = BezelStyle::rounded;
    ControlSize controlSize = ControlSize::regular;
    /// Whether the button has a frame. A button without a frame looks like a link.
    bool isBordered = true;
    std::optional<Color> contentTintColor = {};
    std::optional<Font> font = {};
    ViewLayout layout = {};
    /// The name of the button for screen readers. When empty, the title is the name.
    std::string accessibilityLabel = {};
    /// The name of the action, as in MenuItem.
    std::string actionName = {};
    std::function<void()> action = {};
};

/// A title with its own colour and font.
struct AttributedTitle {
    std::string text = {};
    Color foregroundColor = SystemColor::label;
    Font font = {};
};

/// A push button.
class Button : public View {
  public:
    virtual std::string title() const = 0;
    virtual void setAttributedTitle(const AttributedTitle& title) = 0;
    virtual void setBezelColor(Color color) = 0;
};

class Checkbox;

struct CheckboxDescription {
    std::string title = {};
    bool isOn = false;
    /// The name of the action, as in MenuItem.
    std::string actionName = {};
    /// Called after the user has changed the state.
    std::function<void(Checkbox&)> action = {};
};

/// A check box with a title.
class Checkbox : public View {
  public:
    virtual bool isOn() const = 0;
    /// Sets the state without calling the action.
    virtual void setOn(bool isOn) = 0;
};

/// The values are AppKit's.
enum class ImageScaling { proportionallyDown = 0, proportionallyUpOrDown = 3 };

struct ImageViewDescription {
    /// May be null. The view is then empty and still takes up its space.
    std::shared_ptr<Image> image = {};
    ImageScaling scaling = ImageScaling::proportionallyDown;
    ViewLayout layout = {};
};

/// The values are AppKit's.
enum class Orientation { horizontal = 0, vertical = 1 };
/// How a stack aligns its views across its orientation. The values are AppKit's.
enum class StackAlignment { leading = 5, centerX = 9, centerY = 10 };

/// The empty margins inside a stack, in points.
struct EdgeInsets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;

    bool operator==(const EdgeInsets&) const = default;
};

/// Views in a row or column. Each has its natural size, except that the view with the lowest
/// content hugging takes up the remaining space.
struct StackDescription {
    Orientation orientation = Orientation::horizontal;
    StackAlignment alignment = StackAlignment::centerY;
    double spacing = 0;
    EdgeInsets edgeInsets = {};
    /// The views, from the left or from the top.
    std::vector<std::shared_ptr<View>> views = {};
};

}  // namespace tarvik::platform
