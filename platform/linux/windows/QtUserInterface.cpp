// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtUserInterface.h"

#include <QApplication>

#include "platform/linux/windows/AlertDialog.h"
#include "platform/linux/windows/Assets.h"
#include "platform/linux/windows/QtButton.h"
#include "platform/linux/windows/QtCheckbox.h"
#include "platform/linux/windows/QtImage.h"
#include "platform/linux/windows/QtImageView.h"
#include "platform/linux/windows/QtLabel.h"
#include "platform/linux/windows/QtMenu.h"
#include "platform/linux/windows/QtSeparator.h"
#include "platform/linux/windows/QtStack.h"
#include "platform/linux/windows/QtStatusItem.h"
#include "platform/linux/windows/QtTextField.h"
#include "platform/linux/windows/QtWindow.h"
#include "platform/linux/windows/ScreenGeometry.h"
#include "platform/linux/windows/WidgetLayout.h"

namespace tarvik::linuxdesktop {

namespace {

// In points, for a view without a size of its own.
constexpr QSize iconSize(128, 128);
constexpr QSize wordmarkSize(160, 32);

class Spacer final : public QWidget, public platform::View {};

// Null for a picture without a size to show.
std::shared_ptr<platform::Image> imageOf(const QIcon& picture, QSize naturalSize) {
    return picture.availableSizes().isEmpty() ? nullptr
                                              : std::make_shared<QtImage>(picture, naturalSize);
}

}  // namespace

std::shared_ptr<platform::StatusItem> QtUserInterface::makeStatusItem() {
    const auto item = std::make_shared<QtStatusItem>(clock_, log_);
    statusItem_ = item;
    return item;
}

void QtUserInterface::showKeyAnswer(bool isKeyAccepted) {
    if (const auto item = statusItem_.lock()) {
        item->setKeyAccepted(isKeyAccepted);
    }
}

std::shared_ptr<platform::Menu> QtUserInterface::makeMenu() {
    return std::make_shared<QtMenu>();
}

void QtUserInterface::installMainMenu(const std::string&,
                                      const std::vector<platform::EditMenuItem>&) {}

std::shared_ptr<platform::Image> QtUserInterface::systemSymbol(
    const std::string& name, const std::string& accessibilityDescription) {
    if (name == "mic") {
        return std::make_shared<QtImage>(Symbol::microphone, accessibilityDescription);
    }
    if (name == "mic.fill") {
        return std::make_shared<QtImage>(Symbol::filledMicrophone, accessibilityDescription);
    }
    return nullptr;
}

std::shared_ptr<platform::Image> QtUserInterface::imageNamed(const std::string& name) {
    return imageOf(picture(name), name == "TarvikWordmark" ? wordmarkSize : iconSize);
}

std::shared_ptr<platform::Image> QtUserInterface::applicationIconImage() {
    return imageOf(applicationIcon(), iconSize);
}

std::shared_ptr<platform::Image> QtUserInterface::genericApplicationIcon() {
    return imageOf(linuxdesktop::genericApplicationIcon(), iconSize);
}

platform::AlertAnswer QtUserInterface::runModal(const platform::Alert& alert) {
    if (QApplication::activeModalWidget() != nullptr) {
        return {};
    }
    return AlertDialog(alert).run();
}

std::shared_ptr<platform::Label> QtUserInterface::makeLabel(
    const platform::LabelDescription& description) {
    return std::make_shared<QtLabel>(description);
}

std::shared_ptr<platform::TextField> QtUserInterface::makeTextField(
    const platform::TextFieldDescription& description) {
    return std::make_shared<QtTextField>(description);
}

std::shared_ptr<platform::Button> QtUserInterface::makeButton(
    const platform::ButtonDescription& description) {
    return std::make_shared<QtButton>(description);
}

std::shared_ptr<platform::Checkbox> QtUserInterface::makeCheckbox(
    const platform::CheckboxDescription& description) {
    return std::make_shared<QtCheckbox>(description);
}

std::shared_ptr<platform::View> QtUserInterface::makeImageView(
    const platform::ImageViewDescription& description) {
    return std::make_shared<QtImageView>(description);
}

std::shared_ptr<platform::View> QtUserInterface::makeSeparator() {
    return std::make_shared<QtSeparator>();
}

std::shared_ptr<platform::View> QtUserInterface::makeSpacer(const platform::ViewLayout& layout) {
    const auto spacer = std::make_shared<Spacer>();
    spacer->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    applyLayout(*spacer, layout);
    return spacer;
}

std::shared_ptr<platform::View> QtUserInterface::makeStack(
    const platform::StackDescription& description) {
    return std::make_shared<QtStack>(description);
}

std::shared_ptr<platform::Window> QtUserInterface::makeWindow(
    const platform::WindowDescription& description) {
    return std::make_shared<QtWindow>(description);
}

std::optional<platform::Rect> QtUserInterface::mainScreenVisibleFrame() {
    const std::optional<QRect> area = mainScreenArea();
    return area ? std::optional(toPoints(*area)) : std::nullopt;
}

}  // namespace tarvik::linuxdesktop
