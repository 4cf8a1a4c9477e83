#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarvik::platform {

/// Colours that the desktop's theme decides.
enum class SystemColor { red };

/// A picture that can stand in the status item.
class Image {
  public:
    virtual ~Image() = default;

    /// A template image takes the colour of the panel it stands in; another keeps its own.
    virtual void setTemplate(bool isTemplate) = 0;
};

/// Modifier flags of a menu item's key equivalent; the values are AppKit's.
inline constexpr std::uint32_t shiftKeyFlag = 0x20000;
inline constexpr std::uint32_t commandKeyFlag = 0x100000;

/// One entry of a menu.
struct MenuItem {
    /// Empty for a separator.
    std::string title;
    bool isSeparator = false;
    bool isEnabled = true;
    /// The character of the shortcut, or empty; an upper-case letter includes Shift.
    std::string keyEquivalent;
    std::uint32_t modifierMask = commandKeyFlag;
    /// What choosing it does, on the main thread; empty for an entry that does nothing.
    std::function<void()> action;
};

/// A menu whose entries are replaced as a whole. Main thread only.
class Menu {
  public:
    virtual ~Menu() = default;

    virtual void setItems(std::vector<MenuItem> items) = 0;
    /// `handler` is called each time right before the menu opens.
    virtual void setNeedsUpdateHandler(std::function<void()> handler) = 0;
};

/// What an entry of the Edit menu does to the field that has the keyboard.
enum class EditAction { undo, redo, cut, copy, paste, selectAll };

/// One entry of the Edit menu.
struct EditMenuItem {
    /// Empty for a separator, which has no action either.
    std::string title;
    std::optional<EditAction> action;
    /// As in MenuItem, always with the command modifier.
    std::string keyEquivalent;
};

/// The visible part of the status item. Main thread only.
class StatusButton {
  public:
    virtual ~StatusButton() = default;

    virtual void setImage(std::shared_ptr<Image> image) = 0;
    /// The colour the image is drawn in; none is the default.
    virtual void setContentTintColor(std::optional<SystemColor> color) = 0;
    virtual void setTitle(const std::string& title) = 0;
};

/// The application's place in the menu bar or tray; it is there while the object lives. Main thread
/// only.
class StatusItem {
  public:
    virtual ~StatusItem() = default;

    /// Null when the desktop has no place for it.
    virtual StatusButton* button() = 0;
    virtual void setMenu(std::shared_ptr<Menu> menu) = 0;
};

/// The first button of an alert answers this, the second one more.
inline constexpr int alertFirstButtonReturn = 1000;

/// A modal question with one line of text to edit.
struct Alert {
    std::string messageText;
    std::string informativeText;
    /// What the field holds at first; it is selected as a whole.
    std::string fieldText;
    std::string fieldPlaceholder;
    /// In points.
    int fieldWidth = 0;
    int fieldHeight = 0;
    /// From first (the default) to last.
    std::vector<std::string> buttons;
};

struct AlertAnswer {
    /// alertFirstButtonReturn plus the number of the button; 0 when the alert was closed otherwise.
    int code = 0;
    /// What the field held when the alert was answered.
    std::string fieldText;
};

/// Everything the user sees. Main thread only.
class UserInterface {
  public:
    virtual ~UserInterface() = default;

    virtual std::shared_ptr<StatusItem> makeStatusItem() = 0;
    virtual std::shared_ptr<Menu> makeMenu() = 0;

    /// Makes the standard editing shortcuts work in the application's own fields. `title` and
    /// `items` are those of a menu that is never shown; a desktop whose fields know the shortcuts
    /// has nothing to do.
    virtual void installMainMenu(const std::string& title,
                                 const std::vector<EditMenuItem>& items) = 0;

    /// One of the symbols "mic" and "mic.fill"; empty when the symbol is unknown.
    virtual std::shared_ptr<Image> systemSymbol(const std::string& name,
                                                const std::string& accessibilityDescription) = 0;

    /// Shows the alert in front of all applications and comes back with the answer; blocks of the
    /// main queue run meanwhile.
    virtual AlertAnswer runModal(const Alert& alert) = 0;

    /// Brings up the setup window.
    virtual void showSetupWindow() = 0;
    /// Brings up the call to action that is due after so many minutes of dictation (10 or 60).
    virtual void showCallToAction(int minutes) = 0;
};

}  // namespace tarvik::platform
