// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/ibus/IbusAnswers.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/ConditionWait.h"
#include "platform/linux/x11/FrontWindow.h"
#include "platform/linux/x11/HotKeys.h"
#include "platform/linux/x11/InputMethodPacing.h"
#include "platform/linux/x11/KeyBurst.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/TargetWindow.h"
#include "platform/linux/x11/TypingQueue.h"
#include "platform/linux/x11/UnreadKeys.h"
#include "platform/linux/x11/WindowPing.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Types texts one after the other, each into its process or nowhere. A process that is not in
/// front is brought to the front while its text is typed. Input thread only.
class Typist {
  public:
    /// A text waits so long for a program that has taken the keyboard, such as a menu or a locked
    /// screen, however many texts wait before it. After that the text is lost, which the log tells.
    static constexpr std::chrono::milliseconds keyboardTimeout{30'000};

    Typist(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front, HotKeys& hotKeys,
           PollLoop& loop, platform::Log& log, OnLift onLift,
           std::chrono::milliseconds maxKeyboardWait = keyboardTimeout);
    /// Reports the texts that are left as lost, and restores remapped keys.
    ~Typist();
    Typist(const Typist&) = delete;
    Typist& operator=(const Typist&) = delete;

    /// `window` is the one of the process that the text is for; XCB_NONE where any will do.
    /// `onTyped` is called once the target has looked the text's keys up, has had the time to, or
    /// will not get the text.
    void type(TypedText text, xcb_window_t window, std::function<void()> onTyped);
    /// Calls `action` as soon as every text has been typed, and the targets have looked the keys up
    /// or have had the time to. That may be at once; at the latest it is when the typist ends.
    void whenIdle(std::function<void()> action);

    /// A recording may begin for the window in front: whether its program answers pings is found
    /// out before text comes.
    void probeTarget();
    /// Something has changed that typing may be waiting for.
    void handleChange() { wait_.handleChange(); }
    /// A message has come on the root window.
    void handleMessage(const xcb_client_message_event_t& message) {
        if (const auto answer = ping_.answerIn(message)) {
            unread_.handleAnswer(*answer);
        }
    }
    /// A window is gone.
    void handleDestroyed(xcb_window_t window) {
        pacing_.handleDestroyed(window);
        unread_.handleDestroyed(window);
    }

  private:
    void beginNext();
    void endTyping();
    void reachTarget();
    void bringToFront(xcb_window_t window);
    const TypedText& current() const { return item_->text; }
    bool isRead(xcb_window_t window) const { return !unread_.contains(window); }
    bool isReady(xcb_window_t window) { return isRead(window) && !targetWindow_.isAwaited(window); }
    void planRound();
    void waitFor(xcb_window_t window);
    void letOthersPass(xcb_window_t waitsFor);
    void typeRound();
    void waitForKeyboard();
    void endRound();
    void endText();
    void fail(const std::string& reason);
    void reportLoss(const std::string& reason, std::size_t characters);
    void failForProcess(const std::string& reason) {
        fail("process " + std::to_string(*current().process) + " " + reason);
    }
    void tryAgain(const std::string& reason, const std::function<void()>& step);

    void scheduleRestore();
    void listen();

    XcbConnection& connection_;
    Keyboard& keyboard_;
    FrontWindow& front_;
    platform::Log& log_;
    const std::chrono::milliseconds maxKeyboardWait_;
    KeyBurst burst_;
    WindowPing ping_;
    IbusAnswers answers_;
    UnreadKeys unread_;
    TargetWindow targetWindow_;

    TypingQueue queue_;
    bool isBusy_ = false;
    std::function<void()> whenIdle_;

    // The text that is being typed, and what belongs to it.
    std::optional<TypingQueue::Item> item_;
    std::size_t roundEnd_ = 0;
    int failures_ = 0;
    // Since when another program has the keyboard.
    std::optional<SteadyTime> keyboardTaken_;
    xcb_window_t target_ = XCB_NONE;
    // The target's window, where the target is not in front and takes the focus all the same.
    xcb_window_t behind_ = XCB_NONE;
    // The window that has to be in front; XCB_NONE where any of the process will do.
    xcb_window_t inFront_ = XCB_NONE;

    ConditionWait wait_;
    InputMethodPacing pacing_;
    Deadline restoreDeadline_;
};

}  // namespace tarvik::linuxdesktop
