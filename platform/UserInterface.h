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

/// Everything the user sees. What it makes lives no longer than the service. Main thread only.
class UserInterface {
  public:
    virtual ~UserInterface() = default;

    /// An item without a look and a menu; it appears as soon as the desktop has a place for it.
    virtual std::shared_ptr<StatusItem> makeStatusItem() = 0;
    /// A menu without entries.
    virtual std::shared_ptr<Menu> makeMenu() = 0;

    /// Makes the standard editing shortcuts work in the application's own fields. `title` and
    /// `items` are those of a menu that is never shown; a desktop whose fields know the shortcuts
    /// has nothing to do.
    virtual void installMainMenu(const std::string& title,
                                 const std::vector<EditMenuItem>& items) = 0;

    /// One of the symbols "mic" and "mic.fill"; empty when the symbol is unknown.
    virtual std::shared_ptr<Image> systemSymbol(const std::string& name,
                                                const std::string& accessibilityDescription) = 0;
    /// A picture that comes with the application, by its name without an ending; empty when it is
    /// missing.
    virtual std::shared_ptr<Image> imageNamed(const std::string& name) = 0;
    /// The application's icon as the desktop shows it; empty when it has none.
    virtual std::shared_ptr<Image> applicationIconImage() = 0;
    /// What the desktop shows for an application without an icon.
    virtual std::shared_ptr<Image> genericApplicationIcon() = 0;

    /// Shows the alert in front of all applications and comes back with the answer; blocks of the
    /// main queue run meanwhile. One at a time: while one is up, another is not shown and counts as
    /// closed.
    virtual AlertAnswer runModal(const Alert& alert) = 0;

    virtual std::shared_ptr<Label> makeLabel(const LabelDescription& description) = 0;
    virtual std::shared_ptr<TextField> makeTextField(const TextFieldDescription& description) = 0;
    virtual std::shared_ptr<Button> makeButton(const ButtonDescription& description) = 0;
    virtual std::shared_ptr<Checkbox> makeCheckbox(const CheckboxDescription& description) = 0;
    virtual std::shared_ptr<View> makeImageView(const ImageViewDescription& description) = 0;
    /// A line across the window.
    virtual std::shared_ptr<View> makeSeparator() = 0;
    /// A place that stays empty.
    virtual std::shared_ptr<View> makeSpacer(const ViewLayout& layout) = 0;
    virtual std::shared_ptr<View> makeStack(const StackDescription& description) = 0;

    /// A hidden, empty window, centred.
    virtual std::shared_ptr<Window> makeWindow(const WindowDescription& description) = 0;
    /// The main screen without the desktop's panels; nothing when there is no screen.
    virtual std::optional<Rect> mainScreenVisibleFrame() = 0;
};

}  // namespace tarvik::platform
