// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "platform/Accessibility.h"
#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/AccessibilityState.h"
#include "platform/linux/accessibility/AtspiDesktop.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/WriteReply.h"
#include "platform/linux/loop/PollLoop.h"

namespace tarvik::linuxdesktop {

/// The thread that speaks to the session bus and the accessibility bus. It sleeps until a message
/// or a request comes. Operations are for the main thread and do not block.
class AccessibilityWorker {
  public:
    /// Starts the thread. Where the system has no thread left, one line in the log says so, and
    /// there is no accessibility: nothing is ever connected. `log` outlives the worker.
    explicit AccessibilityWorker(platform::Log& log);
    /// Ends the thread after all earlier requests, which end by their timeouts.
    ~AccessibilityWorker();
    AccessibilityWorker(const AccessibilityWorker&) = delete;
    AccessibilityWorker& operator=(const AccessibilityWorker&) = delete;

    const AccessibilityState& state() const { return state_; }

    /// Replaces the selection of an element. The reply has its status shortly before `deadline`. A
    /// write whose program has not replied by then is pending. A pending write is settled once the
    /// program has replied or left the bus, or has not taken part in it for 5 s.
    std::shared_ptr<WriteReply> startWrite(const std::shared_ptr<AtspiElement>& element,
                                           const std::string& text, SteadyTime deadline);
    /// The same for a write whose status nobody awaits. The write is pending from the start.
    std::shared_ptr<WriteReply> startPendingWrite(const std::shared_ptr<AtspiElement>& element,
                                                  const std::string& text);
    /// Calls `handler` on the worker's thread once the first replies of the desktop are in. Without
    /// that thread it is called at once.
    void whenFirstKnown(std::function<void()> handler);
    /// Connects to a bus that is missing.
    void connect();
    /// Switches accessibility on for the whole desktop.
    void enable();
    /// Finds out what has the focus in a process.
    void scan(platform::ProcessIdentifier process);

  private:
    void run();
    /// Runs `task` on the thread; drops `task` where there is no thread.
    void post(std::function<void()> task);
    void runWrite(const std::shared_ptr<WriteReply>& reply,
                  const std::shared_ptr<AtspiElement>& element, const std::string& text,
                  SteadyTime deadline);

    platform::Log& log_;
    AccessibilityState state_;
    PollLoop loop_;
    /// Worker thread only. There while the loop runs.
    std::optional<AtspiDesktop> desktop_;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
