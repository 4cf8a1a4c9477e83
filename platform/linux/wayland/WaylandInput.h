// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/loop/Reconnection.h"
#include "platform/linux/wayland/ToplevelWindows.h"
#include "platform/linux/wayland/VirtualTypist.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// Typing through a virtual keyboard, and the window in front, with any compositor that offers the
/// protocols of wlroots.
///
/// The compositor tells the window, and another means its process. A window whose process nobody
/// tells is a target too. Both means share one thread, which sleeps until the compositor or the
/// main thread wants something. Main thread only, unless a line says otherwise.
class WaylandInput final : public TypingMeans, public FrontMeans {
  public:
    /// Connects to the compositor that WAYLAND_DISPLAY names, for which it waits 1 s at the most. A
    /// compositor that answers later is used from then on, and one that comes back is too. The
    /// references outlive the object. `processes` tells the process in front; it may be empty.
    WaylandInput(platform::MainQueue& mainQueue, platform::Log& log,
                 std::shared_ptr<const FrontMeans> processes);
    /// Ends the thread. Text that was taken before is typed first, as far as its targets take it
    /// within 0.8 s.
    ~WaylandInput() override;
    WaylandInput(const WaylandInput&) = delete;
    WaylandInput& operator=(const WaylandInput&) = delete;

    /// Why the session is not served; empty while it is, and while the compositor has not answered
    /// yet.
    std::optional<std::string> refusal() const;

    bool isAvailable() const override { return isConnected_; }
    void type(TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override;
    /// Also keeps the program in front from opening its menu: it may have seen Alt alone of the
    /// combination that began the recording.
    std::optional<platform::ProcessIdentifier> chooseTarget() override;

  private:
    // Everything that lives as long as the connection.
    struct Session {
        std::unique_ptr<WaylandConnection> connection;
        std::optional<ToplevelWindows> windows;
        std::optional<VirtualTypist> typist;
    };

    // The operations from here on are for the loop's thread.
    void begin(std::unique_ptr<WaylandConnection> connection);
    bool connectAgain();
    void handleReady();
    void handleLoss(const std::string& reason);
    void refuse(const std::string& reason);
    void finish();

    platform::MainQueue& mainQueue_;
    platform::Log& log_;
    const std::shared_ptr<const FrontMeans> processes_;
    PollLoop loop_;
    Deadline endDeadline_{loop_};
    Reconnection reconnection_;
    std::promise<void> firstAnswer_;
    bool hasAnswered_ = false;
    std::optional<Session> session_;
    std::atomic<bool> isConnected_ = false;
    std::atomic<std::int64_t> front_ = 0;
    // Of the last chooseTarget(). Main thread only.
    WindowFocus::Window target_;
    mutable std::mutex mutex_;
    // Under the mutex.
    std::optional<std::string> refusal_;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
