// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/InputThread.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// Typing through a virtual keyboard, and the window in front, with any compositor that offers the
/// protocols of wlroots.
///
/// The compositor tells the window, and another means its process. A window whose process nobody
/// tells is a target too. Main thread only, unless a line says otherwise.
class WaylandInput final : public TypingMeans, public FrontMeans {
  public:
    /// The process in front, if somebody has told that since a time. Any thread.
    using FrontSince = std::function<std::optional<platform::ProcessIdentifier>(
        std::chrono::steady_clock::time_point)>;

    /// Connects to the compositor that WAYLAND_DISPLAY names, as InputThread does. The references
    /// outlive the object. `frontSince` may be empty.
    WaylandInput(platform::MainQueue& mainQueue, platform::Log& log, FrontSince frontSince);

    /// Why the session is not served; empty while it is, and while the compositor has not answered
    /// yet.
    std::optional<std::string> refusal() const { return thread_.refusal(); }

    bool isAvailable() const override { return thread_.isConnected(); }
    void type(TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override;
    /// Also keeps the program in front from opening its menu: the program may have seen Alt alone
    /// of the combination that began the recording.
    std::optional<platform::ProcessIdentifier> chooseTarget() override;
    bool followsReports() const override { return isAvailable(); }

  private:
    void setFront(std::int64_t window);

    const FrontSince frontSince_;
    std::atomic<std::int64_t> front_ = 0;
    // Reports of the process in front count from here on.
    std::atomic<std::chrono::steady_clock::time_point> processTime_{};
    // Of the last chooseTarget(). Main thread only.
    WindowFocus::Window target_;
    InputThread thread_;
};

}  // namespace tarvik::linuxdesktop
