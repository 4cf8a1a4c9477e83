#include "platform/linux/system/QtUserInterface.h"

#include "platform/linux/system/AlertDialog.h"
#include "platform/linux/system/QtImage.h"
#include "platform/linux/system/QtMenu.h"
#include "platform/linux/system/QtStatusItem.h"

namespace tarvik::linuxdesktop {

std::shared_ptr<platform::StatusItem> QtUserInterface::makeStatusItem() {
    return std::make_shared<QtStatusItem>(clock_);
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

platform::AlertAnswer QtUserInterface::runModal(const platform::Alert& alert) {
    return AlertDialog(alert).run();
}

void QtUserInterface::showSetupWindow() {
    log_.write("TarvikDictate: setup window requested");
}

void QtUserInterface::showCallToAction(int minutes) {
    log_.write("TarvikDictate: call to action requested (" + std::to_string(minutes) + " minutes)");
}

}  // namespace tarvik::linuxdesktop
