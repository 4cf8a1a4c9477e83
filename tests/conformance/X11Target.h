#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/Workspace.h"
#include "tests/conformance/X11MainQueue.h"
#include "tests/conformance/X11Process.h"

namespace tarvik::conformance {

/// A program with a window that text is typed into. It is in front when it has been made.
class X11Target {
  public:
    enum class Kind { gtk3Entry, gtk3Text, qt6Entry, terminal };

    X11Target(Kind kind, X11MainQueue& mainQueue);
    ~X11Target();
    X11Target(const X11Target&) = delete;
    X11Target& operator=(const X11Target&) = delete;

    platform::ProcessIdentifier process() const { return process_->identifier(); }
    /// The whole text in it, UTF-8.
    std::string text() const;
    /// It reads nothing from here until it goes on.
    void hang() const;
    void goOn() const;
    /// Kills the program.
    void end() { process_->end(); }
    bool isRunning() const;

  private:
    std::filesystem::path folder_;
    std::unique_ptr<X11Process> process_;
};

}  // namespace tarvik::conformance
