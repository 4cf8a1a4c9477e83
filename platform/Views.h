#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Appearance.h"

// The views that a window is made of. Each is made from a description by the user interface, and
// only what changes later is an operation. Lengths are points: 1/96 of the inch that the desktop
// assumes where it scales its text, and AppKit's points there. Main thread only.
//
// Members have an initializer even where it says nothing: a compiler warns of a designated
// initializer that leaves out one without.
//
// A view lives as long as anybody holds it, the stack or window that shows it included. What a
// control does runs on the main thread; it may close the window and replace its content.
namespace tarvik::platform {

/// How strongly a view keeps to its own size, from 1 to 1000; 250 gives way first.
using LayoutPriority = float;

/// What the layout owes a single view beside its natural size.
struct ViewLayout {
    /// Exactly.
    std::optional<double> width = {};
    std::optional<double> minimumWidth = {};
    /// Exactly.
    std::optional<double> height = {};
    /// How strongly the view resists to become wider than its content.
    std::optional<LayoutPriority> horizontalContentHugging = {};
    /// How strongly it resists to become narrower.
    std::optional<LayoutPriority> horizontalCompressionResistance = {};

    bool operator==(const ViewLayout&) const = default;
};

class View {
  public:
    virtual ~View() = default;
};

enum class TextAlignment { natural, center };

/// How a label deals with text that is wider than its place.
enum class LabelWrapping {
    /// One line.
    none,
    /// One line where there is room for it, several elsewhere.
    whenNarrow,
    /// As many lines as the preferred width makes of it.
    always
};

struct LabelDescription {
    std::string text = {};
    Font font = {};
    Color color = SystemColor::label;
    TextAlignment alignment = TextAlignment::natural;
    LabelWrapping wrapping = LabelWrapping::none;
    /// In points; where the text of a label that always wraps is broken.
    std::optional<double> preferredMaxLayoutWidth = {};
    ViewLayout layout = {};
};

/// Text that cannot be edited.
class Label : public View {
  public:
    virtual void setText(const std::string& text) = 0;
    virtual void setTextColor(Color color) = 0;
};

struct TextFieldDescription {
    std::string text = {};
    std::string placeholder = {};
    /// Whether its text is hidden from onlookers.
    bool isSecure = false;
    ViewLayout layout = {};
    /// What a screen reader calls it.
    std::string accessibilityLabel = {};
    /// What Return does in it.
    std::function<void()> action = {};
};

/// One line of text to edit.
class TextField : public View {
  public:
    /// What it holds now, exactly.
    virtual std::string text() const = 0;
};

/// The values are AppKit's.
enum class BezelStyle { rounded = 1, recessed = 13 };
enum class ControlSize { regular = 0, large = 3 };

struct ButtonDescription {
    std::string title = {};
    BezelStyle bezelStyle = BezelStyle::rounded;
    ControlSize controlSize = ControlSize::regular;
    /// Whether it has a frame; one without looks like a link.
    bool isBordered = true;
    std::optional<Color> contentTintColor = {};
    std::optional<Font> font = {};
    ViewLayout layout = {};
    /// What a screen reader calls it; its title where this is empty.
    std::string accessibilityLabel = {};
    std::function<void()> action = {};
};

/// A title with a look of its own.
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
    /// Called after the user has changed it.
    std::function<void(Checkbox&)> action = {};
};

class Checkbox : public View {
  public:
    virtual bool isOn() const = 0;
    /// Does not call the action.
    virtual void setOn(bool isOn) = 0;
};

/// The values are AppKit's.
enum class ImageScaling { proportionallyDown = 0, proportionallyUpOrDown = 3 };

struct ImageViewDescription {
    /// May be null: the view then keeps its place and is empty.
    std::shared_ptr<Image> image = {};
    ImageScaling scaling = ImageScaling::proportionallyDown;
    ViewLayout layout = {};
};

/// The values are AppKit's.
enum class Orientation { horizontal = 0, vertical = 1 };
/// Where the views of a stack stand across its orientation; the values are AppKit's.
enum class StackAlignment { leading = 5, centerX = 9, centerY = 10 };

struct EdgeInsets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;

    bool operator==(const EdgeInsets&) const = default;
};

/// Views in a row or column, each at its natural size but for the one that hugs its content least.
struct StackDescription {
    Orientation orientation = Orientation::horizontal;
    StackAlignment alignment = StackAlignment::centerY;
    double spacing = 0;
    EdgeInsets edgeInsets = {};
    /// From the left or the top.
    std::vector<std::shared_ptr<View>> views = {};
};

}  // namespace tarvik::platform
