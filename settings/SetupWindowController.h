// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/Platform.h"
#include "settings/ConfigRow.h"

namespace tarvik {

/// The window in which a user sets the application up. While the window is open, it reads the state
/// of the key, the permissions and the login item once a second. Main thread only.
class SetupWindowController : public std::enable_shared_from_this<SetupWindowController> {
  public:
    /// Builds the window without showing it.
    explicit SetupWindowController(platform::Platform& platform);

    /// The controller of the current platform.
    static SetupWindowController& shared();

    /// Shows the window in the top right corner of the main screen. Allowed any number of times.
    void show();

  private:
    std::shared_ptr<platform::View> buildContent();
    std::shared_ptr<platform::View> buildHeader();
    std::shared_ptr<platform::View> buildKeyRow();
    std::shared_ptr<platform::View> buildKeyStatusRow();
    std::shared_ptr<platform::Image> iconImage();
    void positionTopRight();
    void refresh();
    bool isLoginItemEnabled();

    void saveApiKey();
    void grantMic();
    void grantAccess();
    void toggleLoginItem(platform::Checkbox& checkbox);
    void restartApp();
    void windowWillClose();

    platform::Platform& platform_;
    platform::UserInterface& userInterface_;

    std::shared_ptr<platform::TextField> keyField_;
    std::shared_ptr<platform::Label> keyStatus_;
    std::unique_ptr<ConfigRow> micRow_;
    std::unique_ptr<ConfigRow> accessRow_;
    std::shared_ptr<platform::Checkbox> loginItemCheckbox_;
    std::unique_ptr<platform::Timer> refreshTimer_;
    // Declared last, so that the controls end before the members that their actions use.
    std::shared_ptr<platform::Window> window_;
};

}  // namespace tarvik
