#pragma once

#include <atomic>
#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include "platform/EventManager.h"
#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/HotKeys.h"
#include "platform/linux/x11/Typist.h"
#include "platform/linux/x11/XcbConnection.h"
#include "platform/linux/x11/XcbOpening.h"

namespace tarvik::linuxdesktop {

class InputSession;

/// The thread that talks with the X server. Main thread only, unless a line says otherwise.
class InputThread {
  public:
    /// Waits for the connection, 1 s at the most. A server that answers later is used from then on.
    /// `listener` is called on the input thread.
    InputThread(platform::Log& log, HotKeys::Listener listener);
    /// Types what is left, as far as it can be within 0.8 s, puts the keyboard back and ends the
    /// thread; a server that needs longer than 1 s is left.
    ~InputThread();
    InputThread(const InputThread&) = delete;
    InputThread& operator=(const InputThread&) = delete;

    /// Waits for the server, 1 s at the most; eventInternalErr when it does not answer.
    platform::OSStatus addHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                 std::uint32_t modifiers);
    /// Waits likewise, so that the combination is free for others afterwards.
    void removeHotKey(HotKeyNumber number);

    /// Types in the order of the calls; never waits.
    void type(TypedText text);

    /// Any thread.
    bool isConnected() const { return isConnected_; }
    /// Any thread.
    std::optional<platform::ProcessIdentifier> frontmostProcess() const;

  private:
    void run(std::promise<void> connected);
    int drain();
    void finish();
    void drop(HotKeyNumber number);

    platform::Log& log_;
    HotKeys::Listener listener_;
    PollLoop loop_;
    Deadline endDeadline_{loop_};
    XcbOpening opening_;
    std::atomic<bool> isConnected_ = false;
    std::atomic<platform::ProcessIdentifier> frontProcess_ = 0;
    // What the main thread breaks when the input thread waits for a server that does not answer. It
    // outlives the input thread.
    std::atomic<XcbConnection*> breakable_ = nullptr;
    std::unique_ptr<XcbConnection> connection_;
    std::unique_ptr<InputSession> session_;
    std::promise<void> ended_;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
