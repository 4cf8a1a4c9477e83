#pragma once

#include <memory>

#include "platform/Platform.h"
#include "settings/ConfigRow.h"

namespace tarvik {

/// The window in which a user gets the application ready. It shows the live state of everything it
/// names and re-reads it once a second while it is open. Main thread only.
class SetupWindowController : public std::enable_shared_from_this<SetupWindowController> {
  public:
    /// Builds the window, which stays hidden.
    explicit SetupWindowController(platform::Platform& platform);

    /// The one controller of the current platform.
    static SetupWindowController& shared();

    /// Brings the window up, in the top right corner of the main screen. Any number of times.
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
    // Its controls call this object, and go with it.
    std::shared_ptr<platform::Window> window_;
};

}  // namespace tarvik
