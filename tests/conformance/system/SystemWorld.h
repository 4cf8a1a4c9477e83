// SPDX-License-Identifier: MIT
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

/// The system services of one platform, with the user and the desktop that act on them. The thread
/// of the test is the main thread.
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

    /// Starts to collect the lines of the system log, and returns those since the start.
    virtual void watchLog() = 0;
    virtual std::vector<std::string> logLines() = 0;
    /// Ends the settings and reads them again, as the next run of the application does.
    virtual void reopenUserDefaults() = 0;
    /// A program that can be launched, and one that cannot.
    virtual std::string goodProgram() = 0;
    virtual std::string missingProgram() = 0;
    /// Makes launches fail, where a simulation decides that.
    virtual void refuseLaunch() = 0;
    /// Whether the good program has been started with `arguments`.
    virtual bool wasLaunched(const std::vector<std::string>& arguments) = 0;
    /// Puts a window of `process` in front, or no window.
    virtual void bringToFront(std::optional<platform::ProcessIdentifier> process) = 0;
    /// Enables sleep on the machine. Called before the first observer of waking is added.
    virtual void provideSleep() = 0;
    /// The machine goes to sleep and wakes.
    virtual void sleepAndWake() = 0;
    /// The links that the desktop was asked to open.
    virtual std::vector<std::string> openedUrls() = 0;
    /// Makes opening links impossible.
    virtual void refuseUrls() = 0;
    /// Makes registering and unregistering as a login item impossible.
    virtual void refuseLoginItem() = 0;
    /// The user opens `menu`. Returns the titles in the menu.
    virtual std::vector<std::string> openMenu(platform::Menu& menu) = 0;
    /// The user chooses the entry of `menu`; false when the entry cannot be chosen.
    virtual bool chooseFromMenu(platform::Menu& menu, const std::string& title) = 0;
    /// The user types `text` into the next alert and presses `button`, counted from 0.
    virtual void answerNextAlert(int button, const std::string& text) = 0;
    /// The user replaces the text of the field.
    virtual void type(platform::TextField& field, const std::string& text) = 0;
    virtual void press(platform::Button& button) = 0;
    virtual void click(platform::Checkbox& checkbox) = 0;
    /// The user closes the window.
    virtual void closeByHand(platform::Window& window) = 0;
};

using SystemWorldMaker = std::unique_ptr<SystemWorld> (*)();

std::unique_ptr<SystemWorld> makeSimulatedSystemWorld();
/// The services of the backend for which the program is built.
std::unique_ptr<SystemWorld> makeRealSystemWorld();

}  // namespace tarvik::tests
