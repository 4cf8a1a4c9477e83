// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/EventManager.h"
#include "platform/KeyboardEvents.h"

namespace tarvik::tests {

/// The keyboard of one platform, the person at it, and two programs that text is typed into. The
/// thread of the test is the main thread.
class InputWorld {
  public:
    enum class Program { first, second };

    virtual ~InputWorld() = default;

    virtual platform::EventManager& eventManager() = 0;
    virtual platform::KeyboardEvents& keyboardEvents() = 0;

    /// The process that has the keyboard, as the means of the front window has it. Any thread.
    virtual std::optional<platform::ProcessIdentifier> frontmostProcess() = 0;

    /// Runs the main loop until `condition` holds; false when that takes more than ten seconds.
    virtual bool runUntil(const std::function<bool()>& condition) = 0;
    /// Runs the main loop until everything that was on its way has arrived.
    virtual void settle() = 0;

    /// The user presses or releases the space bar together with these modifiers.
    virtual void press(std::uint32_t modifiers) = 0;
    virtual void release(std::uint32_t modifiers) = 0;
    /// Another program has the space bar with these modifiers.
    virtual void take(std::uint32_t modifiers) = 0;
    /// Whether a hotkey was reported lost, on a desktop that decides after the registration.
    virtual bool isHotKeyLost() { return false; }

    /// The programs exist from here on, the second one is in front.
    virtual void startPrograms() = 0;
    virtual platform::ProcessIdentifier processOf(Program program) = 0;
    /// Ends the program in front, so that the other program comes to the front.
    virtual void endSecondProgram() = 0;
    /// A process that has ended.
    virtual platform::ProcessIdentifier endedProcess() = 0;
    /// What was typed into a program, UTF-8.
    virtual std::string textOf(Program program) = 0;
    /// What was logged so far, a line each; empty where the services log nothing.
    virtual std::string logText() { return {}; }
};

using InputWorldMaker = std::unique_ptr<InputWorld> (*)();

std::unique_ptr<InputWorld> makeSimulatedInputWorld();

}  // namespace tarvik::tests
