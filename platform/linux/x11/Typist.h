#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/FrontWindow.h"
#include "platform/linux/x11/HotKeys.h"
#include "platform/linux/x11/KeyBurst.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/WindowPing.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Text to be typed, and for whom.
struct TypedText {
    /// The process that gets it; without one it goes to whatever has the keyboard.
    std::optional<platform::ProcessIdentifier> process;
    std::u32string characters;
};

/// Types texts one after the other, each into the process it is meant for or nowhere. A process
/// that is not in front is brought there for the moment. Input thread only.
class Typist {
  public:
    Typist(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front, HotKeys& hotKeys,
           PollLoop& loop, platform::Log& log);
    /// Reports what is left, and takes the symbols of lent keys away again.
    ~Typist();
    Typist(const Typist&) = delete;
    Typist& operator=(const Typist&) = delete;

    void type(TypedText text);
    /// Calls `action` as soon as everything has been typed and its readers have looked the keys up,
    /// or have had the time to; at once if they have, and at the latest when the typist ends.
    void whenIdle(std::function<void()> action);

    /// Hears that something has changed that typing may be waiting for.
    void noticeChange();
    /// Hears a message on the root window.
    void noticeMessage(const xcb_client_message_event_t& message);

  private:
    struct Waiting {
        std::function<bool()> condition;
        std::function<void(bool)> next;
    };

    void beginNext();
    void endTyping();
    void reachTarget();
    void bringToFront(xcb_window_t window);
    void planRound();
    void waitUntilRead();
    void typeRound();
    void endRound();
    void giveFocusBack();
    void endText();
    void fail(const std::string& reason);
    void reportLoss(const std::string& reason, std::size_t characters);
    void failForProcess(const std::string& reason);
    void tryAgain(std::chrono::milliseconds delay, const std::string& reason,
                  const std::function<void()>& step);

    void wait(std::chrono::milliseconds timeout, std::function<bool()> condition,
              std::function<void(bool)> next);
    void endWaiting(bool holds);
    void awaitConsumption();
    void setConsumed();
    void listen();

    XcbConnection& connection_;
    Keyboard& keyboard_;
    FrontWindow& front_;
    platform::Log& log_;
    KeyBurst burst_;
    WindowPing ping_;

    std::deque<TypedText> texts_;
    bool isBusy_ = false;
    std::function<void()> whenIdle_;

    // Of the text that is being typed.
    std::size_t position_ = 0;
    std::size_t roundEnd_ = 0;
    int failures_ = 0;
    xcb_window_t target_ = XCB_NONE;
    xcb_window_t broughtToFront_ = XCB_NONE;
    xcb_window_t earlierFront_ = XCB_NONE;

    // Whether every key pressed so far was looked up by its reader.
    bool isConsumed_ = true;
    std::optional<Waiting> waiting_;
    Deadline waitingDeadline_;
    Deadline consumedDeadline_;
    Deadline restoreDeadline_;
};

}  // namespace tarvik::linuxdesktop
