// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Appearance.h"

namespace tarvik::platform {

/// Modifier flags of a menu item's key equivalent. The values are AppKit's.
inline constexpr std::uint32_t shiftKeyFlag = 0x20000;
inline constexpr std::uint32_t commandKeyFlag = 0x100000;

/// The name of the action that ends the application. A desktop with an action of its own for this
/// may carry out that one instead.
inline constexpr const char* terminateActionName = "terminate:";

/// One entry of a menu.
struct MenuItem {
    /// Empty for a separator.
    std::string title;
    bool isSeparator = false;
    bool isEnabled = true;
    /// The character of the shortcut, or empty. An upper-case letter implies Shift.
    std::string keyEquivalent;
    std::uint32_t modifierMask = commandKeyFlag;
    /// The name by which tests and the desktop know the action. On macOS the name is the selector
    /// that the control sends, and a colon at the end stands for the control as an argument.
    std::string actionName;
    /// Called on the main thread when the user chooses the entry. May be empty.
    std::function<void()> action;
};

/// A menu whose entries can only be replaced all together. Main thread only.
class Menu {
  public:
    virtual ~Menu() = default;

    /// Replaces all entries, listed from the top. Allowed while an entry's action runs.
    virtual void setItems(std::vector<MenuItem> items) = 0;
    /// Sets the handler that is called each time before the menu opens.
    virtual void setNeedsUpdateHandler(std::function<void()> handler) = 0;
};

/// What an entry of the Edit menu does to the field that has the keyboard focus.
enum class EditAction { undo, redo, cut, copy, paste, selectAll };

/// One entry of the Edit menu.
struct EditMenuItem {
    /// Empty for a separator. A separator has no action either.
    std::string title;
    std::optional<EditAction> action;
    /// As in MenuItem. The modifier is always the command key.
    std::string keyEquivalent;
};

/// The visible part of the status item. Main thread only.
class StatusButton {
  public:
    virtual ~StatusButton() = default;

    virtual void setImage(std::shared_ptr<Image> image) = 0;
    /// Sets the colour in which the image is drawn; none means the default.
    virtual void setContentTintColor(std::optional<SystemColor> color) = 0;
    /// Sets a short text that replaces a missing image.
    virtual void setTitle(const std::string& title) = 0;
};

/// The application's item in the menu bar or tray, present while the object lives. Main thread
/// only.
class StatusItem {
  public:
    virtual ~StatusItem() = default;

    /// The button; null when the desktop has no place for the item.
    virtual StatusButton* button() = 0;
    /// Sets the menu that a click on the item opens. The item holds the menu.
    virtual void setMenu(std::shared_ptr<Menu> menu) = 0;
};

}  // namespace tarvik::platform
