#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/Accessibility.h"
#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/AccessibilityState.h"
#include "platform/linux/accessibility/AtspiDesktop.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// The thread that speaks to the accessibility bus. It sleeps until a message or a request comes.
/// All operations are for the main thread; only write() waits.
class AccessibilityWorker {
  public:
    /// Starts the thread. `log` outlives the worker.
    explicit AccessibilityWorker(platform::Log& log);
    /// Ends the thread.
    ~AccessibilityWorker();
    AccessibilityWorker(const AccessibilityWorker&) = delete;
    AccessibilityWorker& operator=(const AccessibilityWorker&) = delete;

    const AccessibilityState& state() const { return state_; }

    /// Replaces the selection of an element; answers within 0.5 s.
    platform::AXError write(const std::shared_ptr<AtspiElement>& element, const std::string& text);
    /// Calls `handler` on the worker's thread once the first answers of the desktop are in.
    void whenFirstKnown(std::function<void()> handler);
    /// Looks again for a bus that is missing.
    void connect();
    /// Switches accessibility on for the whole desktop.
    void enable();
    /// Finds out what has the focus in a process.
    void scan(platform::ProcessIdentifier process);

  private:
    using Job = std::function<void(AtspiDesktop&)>;

    void submit(Job job);
    void run();
    void runJobs(AtspiDesktop& desktop);
    void waitForMore(AtspiDesktop& desktop);

    platform::Log& log_;
    AccessibilityState state_;
    FileDescriptor wakeUp_;
    std::mutex mutex_;
    std::vector<Job> jobs_;
    bool isEnding_ = false;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
