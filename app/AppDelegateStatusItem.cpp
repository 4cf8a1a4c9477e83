// SPDX-License-Identifier: MIT

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "app/AppDelegate.h"
#include "base/Required.h"
#include "base/Weakly.h"
#include "settings/BundleVersion.h"

namespace tarvik {

void AppDelegate::setupStatusItem() {
    statusItem_ = platform_.userInterface().makeStatusItem();
    updateStatusIcon(false);
    menu_ = platform_.userInterface().makeMenu();
    menu_->setNeedsUpdateHandler(weakly(*this, &AppDelegate::menuNeedsUpdate));
    required(statusItem_).setMenu(menu_);
    rebuildMenu();
}

void AppDelegate::updateStatusIcon(bool recording) {
    platform::StatusButton* button = required(statusItem_).button();
    if (button == nullptr) {
        return;
    }
    const std::shared_ptr<platform::Image> image =
        platform_.userInterface().systemSymbol(recording ? "mic.fill" : "mic", "Tarvik Dictate");
    if (!image) {
        button->setTitle(recording ? "●" : "○");
        return;
    }
    image->setTemplate(!recording);
    button->setImage(image);
    button->setContentTintColor(recording ? std::optional(platform::SystemColor::red)
                                          : std::nullopt);
}

void AppDelegate::menuNeedsUpdate() {
    rebuildMenu();
}

void AppDelegate::rebuildMenu() {
    if (!menu_) {
        return;
    }
    const auto line = [](std::string title) {
        platform::MenuItem item;
        item.title = std::move(title);
        item.isEnabled = false;
        return item;
    };
    const auto command = [](std::string title, std::string keyEquivalent, std::string actionName,
                            std::function<void()> action) {
        platform::MenuItem item;
        item.title = std::move(title);
        item.keyEquivalent = std::move(keyEquivalent);
        item.actionName = std::move(actionName);
        item.action = std::move(action);
        return item;
    };
    platform::MenuItem separator;
    separator.isSeparator = true;
    platform::MenuItem restart = command("Restart Tarvik Dictate", "r", "restartApp",
                                         weakly(*this, &AppDelegate::restartApp));
    restart.modifierMask = platform::commandKeyFlag | platform::shiftKeyFlag;

    menu_->setItems({
        line("Tarvik Dictate  v" + versionText(platform_.bundle())),
        line("Hold ⌥ Space — quick dictation"),
        line("Tap ⌥ ⇧ Space — long-form (tap again to stop)"),
        separator,
        command("Setup…", ",", "openSetupWindow", weakly(*this, &AppDelegate::openSetupWindow)),
        restart,
        separator,
        command("Quit", "q", platform::terminateActionName,
                [&application = platform_.application()] { application.terminate(); }),
    });
}

void AppDelegate::installMainMenu() {
    using platform::EditAction;
    const std::vector<platform::EditMenuItem> items = {
        {"Undo", EditAction::undo, "z"},
        {"Redo", EditAction::redo, "Z"},
        {"", std::nullopt, ""},
        {"Cut", EditAction::cut, "x"},
        {"Copy", EditAction::copy, "c"},
        {"Paste", EditAction::paste, "v"},
        {"Select All", EditAction::selectAll, "a"},
    };
    platform_.userInterface().installMainMenu("Edit", items);
}

}  // namespace tarvik
