// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Workspace.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A program with a window that text is typed into. It is in front when it has been made. Of a
/// terminal the program inside has started by then; nobody tells whether the window is there.
class X11Target {
  public:
    enum class Kind { gtk3Entry, gtk3Text, gtk4Text, qt5Text, qt6Entry, qt6Text, tkText, terminal };

    /// `wrapper` is a command that runs the program as its only child; without one the program is
    /// run itself.
    X11Target(Kind kind, RealTimeQueue& mainQueue, const std::vector<std::string>& wrapper = {});
    ~X11Target();
    X11Target(const X11Target&) = delete;
    X11Target& operator=(const X11Target&) = delete;

    platform::ProcessIdentifier process() const { return program_; }
    /// The whole text in it, UTF-8.
    std::string text() const;
    /// Deletes the text. Not for a terminal.
    void clear();
    /// The program's main loop handles nothing for a while, asleep or at work. Not for a terminal.
    void sleepInMainLoop(std::chrono::milliseconds time) { occupy("sleep", time); }
    void workInMainLoop(std::chrono::milliseconds time) { occupy("work", time); }
    /// Opens another window, which comes to the front. For GTK 3.
    void openSecondWindow(RealTimeQueue& mainQueue) const;
    std::string textOfSecondWindow() const;
    /// It reads nothing from here until it goes on.
    void hang() const;
    void goOn() const;
    /// Kills the program.
    void end();
    bool isRunning() const;

  private:
    void command(const std::string& line, std::string_view answer);
    void occupy(const std::string& name, std::chrono::milliseconds time);

    std::filesystem::path folder_;
    std::unique_ptr<TestProcess> process_;
    // The process or its child; 0 after the end.
    platform::ProcessIdentifier program_ = 0;
};

/// The toolkit's name, for the name of a test.
std::string nameOf(X11Target::Kind kind);

}  // namespace tarvik::tests
