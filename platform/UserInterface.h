// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Alert.h"
#include "platform/Appearance.h"
#include "platform/StatusItem.h"
#include "platform/Views.h"
#include "platform/Window.h"

namespace tarvik::platform {

/// Makes everything that the user sees. The service outlives all objects it makes. Main thread
/// only.
class UserInterface {
  public:
    virtual ~UserInterface() = default;

    /// Makes a status item without image and menu. The item appears as soon as the desktop has a
    /// place for it.
    virtual std::shared_ptr<StatusItem> makeStatusItem() = 0;
    /// Makes a menu without entries.
    virtual std::shared_ptr<Menu> makeMenu() = 0;

    /// Makes the standard editing shortcuts work in the application's text fields. `title` and
    /// `items` describe a menu that is never shown. Does nothing on a desktop whose text fields
    /// have the shortcuts already.
    virtual void installMainMenu(const std::string& title,
                                 const std::vector<EditMenuItem>& items) = 0;

    /// The symbol with this name ("mic" or "mic.fill"); empty when the symbol is unknown.
    virtual std::shared_ptr<Image> systemSymbol(const std::string& name,
                                                const std::string& accessibilityDescription) = 0;
    /// A picture of the application's resources, by its file name without the extension; empty when
    /// the picture is missing.
    virtual std::shared_ptr<Image> imageNamed(const std::string& name) = 0;
    /// The application's icon as the desktop shows it; empty when there is none.
    virtual std::shared_ptr<Image> applicationIconImage() = 0;
    /// The icon that the desktop shows for an application without one.
    virtual std::shared_ptr<Image> genericApplicationIcon() = 0;

    /// Shows the alert in front of all applications, with the keyboard, and returns the user's
    /// answer. Called only in answer to an action of the user. Blocks of the main queue run in the
    /// meantime. A call made while another alert is open shows nothing and
    /// returns as if its alert had been closed.
    virtual AlertAnswer runModal(const Alert& alert) = 0;

    virtual std::shared_ptr<Label> makeLabel(const LabelDescription& description) = 0;
    virtual std::shared_ptr<TextField> makeTextField(const TextFieldDescription& description) = 0;
    virtual std::shared_ptr<Button> makeButton(const ButtonDescription& description) = 0;
    virtual std::shared_ptr<Checkbox> makeCheckbox(const CheckboxDescription& description) = 0;
    virtual std::shared_ptr<View> makeImageView(const ImageViewDescription& description) = 0;
    /// Makes a line across the window.
    virtual std::shared_ptr<View> makeSeparator() = 0;
    /// Makes an empty view that takes up space.
    virtual std::shared_ptr<View> makeSpacer(const ViewLayout& layout) = 0;
    virtual std::shared_ptr<View> makeStack(const StackDescription& description) = 0;

    /// Makes a hidden, empty, centred window.
    virtual std::shared_ptr<Window> makeWindow(const WindowDescription& description) = 0;
    /// The area of the main screen without the desktop's panels; nothing when there is no screen.
    virtual std::optional<Rect> mainScreenVisibleFrame() = 0;
};

}  // namespace tarvik::platform
