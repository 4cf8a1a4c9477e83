#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/Log.h"
#include "platform/LoginItemService.h"
#include "platform/TaskLauncher.h"
#include "platform/UserDefaults.h"
#include "platform/UserInterface.h"
#include "platform/Workspace.h"
#include "tests/conformance/system/LoopWorld.h"

namespace tarvik::tests {

/// The system services of one platform and the outside that drives them. The thread of the test is
/// the main thread.
class SystemWorld : public LoopWorld {
  public:
    virtual platform::Log& log() = 0;
    virtual platform::UserDefaults& userDefaults() = 0;
    virtual platform::Application& application() = 0;
    virtual platform::Bundle& bundle() = 0;
    virtual platform::TaskLauncher& taskLauncher() = 0;
    virtual platform::Workspace& workspace() = 0;
    virtual platform::LoginItemService& loginItem() = 0;
    virtual platform::UserInterface& userInterface() = 0;

    /// Reads the system log from now on, and the lines that have come since.
    virtual void watchLog() = 0;
    virtual std::vector<std::string> logLines() = 0;
    /// Ends the settings and reads them again, as the next run of the application does.
    virtual void reopenUserDefaults() = 0;
    /// A program that a launch can start, and one that it cannot.
    virtual std::string goodProgram() = 0;
    virtual std::string missingProgram() = 0;
    /// Arranges that programs cannot be started, where the world decides it by itself.
    virtual void refuseLaunch() = 0;
    /// Whether the good program has been started with these arguments.
    virtual bool wasLaunched(const std::vector<std::string>& arguments) = 0;
    /// Puts a window of the process in front, or no window.
    virtual void bringToFront(std::optional<platform::ProcessIdentifier> process) = 0;
    /// Makes the machine one that can sleep; before anybody observes that it wakes.
    virtual void provideSleep() = 0;
    /// The machine goes to sleep and wakes.
    virtual void sleepAndWake() = 0;
    /// The links that the desktop was given to open.
    virtual std::vector<std::string> openedUrls() = 0;
    /// Takes away from the desktop what opens links.
    virtual void refuseUrls() = 0;
    /// Makes registering and unregistering as a login item impossible.
    virtual void refuseLoginItem() = 0;
    /// The user opens `menu`; the titles that it shows.
    virtual std::vector<std::string> openMenu(platform::Menu& menu) = 0;
    /// The user chooses the entry of `menu`; false when it cannot be chosen.
    virtual bool chooseFromMenu(platform::Menu& menu, const std::string& title) = 0;
    /// The next alert gets this text and is answered with this button, counted from 0.
    virtual void answerNextAlert(int button, const std::string& text) = 0;
    /// The user replaces what is in the field, and presses Return in it.
    virtual void type(platform::TextField& field, const std::string& text) = 0;
    virtual void pressReturn(platform::TextField& field) = 0;
    virtual void press(platform::Button& button) = 0;
    virtual void click(platform::Checkbox& checkbox) = 0;
    /// The user closes the window.
    virtual void closeByHand(platform::Window& window) = 0;
};

using SystemWorldMaker = std::unique_ptr<SystemWorld> (*)();

std::unique_ptr<SystemWorld> makeSimulatedSystemWorld();
std::unique_ptr<SystemWorld> makeLinuxSystemWorld();

}  // namespace tarvik::tests
