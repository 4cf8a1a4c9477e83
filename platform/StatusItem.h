#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Appearance.h"

namespace tarvik::platform {

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

    /// Replaces all entries, from the top. Allowed while an entry's action runs.
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
    /// A short text for where there is no image.
    virtual void setTitle(const std::string& title) = 0;
};

/// The application's place in the menu bar or tray; it is there while the object lives. Main thread
/// only.
class StatusItem {
  public:
    virtual ~StatusItem() = default;

    /// Null when the desktop has no place for it.
    virtual StatusButton* button() = 0;
    /// The menu that a click on the item opens, instead of any earlier one. The item holds it.
    virtual void setMenu(std::shared_ptr<Menu> menu) = 0;
};

}  // namespace tarvik::platform
