// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/ibus/IbusAnswers.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/InputMethods.h"
#include "platform/linux/x11/KeyQuestions.h"
#include "platform/linux/x11/ProgramProbe.h"
#include "platform/linux/x11/ReadMarkers.h"
#include "platform/linux/x11/WindowPing.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The windows whose programs are not known to have looked up the keys that were typed there. A key
/// must keep its symbol until then: programs look keys up in the map that is valid when they read
/// the key. Input thread only.
///
/// The answer to a later ping proves that a program has looked its keys up. A ping without an
/// answer is repeated. For a local program that answers no pings the proof is a ProgramProbe. For
/// any other program there is no proof: the keys count as read after a delay, and their symbols
/// stay for 30 s where possible.
///
/// A program that asks an input method about each key may look the key up when the answer has come,
/// and answers pings meanwhile or sleeps. IBus tells of the answers, so a program has to be idle
/// after them and to have asked nothing more. Where the answers are unknown, the program and the
/// input method have to rest for a time.
///
/// A program that reads nothing for 30 s is waited for no longer. The symbols of its keys stay
/// where possible, so that the program still reads the right characters when it goes on.
class UnreadKeys {
  public:
    struct Events {
        /// Some keys are read, or not waited for any more.
        std::function<void()> onChange;
        /// A window's program has not looked up its keys for 30 s; so many characters may be lost.
        std::function<void(xcb_window_t window, std::size_t characters)> onTimeout;
        /// A window is gone whose program is not known to have looked up its keys; so many
        /// characters may be lost with the window.
        std::function<void(std::size_t characters)> onDestroyed;
    };

    /// No key is waited for any longer.
    static constexpr std::chrono::seconds maxTimeout{30};
    /// For so long a program rests that has the answers of its input method.
    static constexpr std::chrono::milliseconds restTime{300};

    /// The references outlive the object. `timeout` stands for the 30 s, and `rest` for `restTime`.
    UnreadKeys(XcbConnection& connection, PollLoop& loop, WindowPing& ping, IbusAnswers& answers,
               Events events, std::chrono::milliseconds timeout = maxTimeout,
               std::chrono::milliseconds rest = restTime);

    /// Whether no window is left, not even one whose program may have looked its keys up.
    bool isEmpty() const { return windows_.empty(); }
    /// One of the windows whose keys are waited for; empty when there is none.
    std::optional<xcb_window_t> anyWindow() const;
    /// Whether the keys in a window are waited for.
    bool contains(xcb_window_t window) const;

    /// A window whose keys were typed within the last `time` and are waited for: its program may be
    /// reading the map. Empty when there is none.
    std::optional<xcb_window_t> windowTypedInto(std::chrono::milliseconds time) const;

    /// Whether keys in a window are waited for whose program says that it answers pings.
    bool isPinged(xcb_window_t window) const;
    /// Whether a window's program says that it answers pings. Asks the server.
    bool announcesAnswers(xcb_window_t window) const { return ping_.isAnnounced(window); }

    /// Characters have been typed into a window; or none, to find out whether its program answers
    /// pings.
    void add(xcb_window_t window, std::u32string_view characters, InputMethod method = {});
    /// Every character whose key has to keep its symbol.
    std::set<char32_t> characters() const;
    /// Calls `action` once the keys of a window are read or not waited for any more; at once where
    /// there are none.
    void whenRead(xcb_window_t window, std::function<void()> action);
    /// A window has answered a ping.
    void handleAnswer(const WindowPing::Answer& answer);
    /// A window is gone, and nobody will look its keys up any more. Another window may get its
    /// number.
    void handleDestroyed(xcb_window_t window);
    /// Waits for nothing any more.
    void clear();

  private:
    struct Keys {
        bool isPinged = false;
        bool isKnownToAnswer = false;
        // Of the first ping since the last keys.
        std::uint32_t serial = 0;
        // Another one wakes up a program that sleeps although it has events.
        SteadyTime nextPing = SteadyTime::max();
        std::u32string characters;
        // Of the last keys.
        SteadyTime typed;
        SteadyTime deadline;
        std::vector<std::function<void()>> onRead;
        // The keys may have been read. They are waited for no more.
        bool isDoubtful = false;
        // Earlier keys were not read in time.
        bool hasExpired = false;
        // The program, while it is probed from outside.
        std::optional<std::int32_t> probed;
        InputMethod method;
        // Tells the answers about earlier keys.
        std::uint64_t number = 0;
        KeyQuestions::Count questions;
        // The program was idle after the answers to these questions.
        bool hasLooked = false;
        // A program with many threads that answers pings is looked at no longer than that.
        SteadyTime lookDeadline;
        // The program rests since then, by the number of its switches.
        std::uint64_t switches = 0;
        SteadyTime resting;
        SteadyTime nextProbe;
        std::chrono::milliseconds probeInterval{};
        ReadMarkers::Count markers;
    };

    void startProbing(xcb_window_t window, Keys& keys, SteadyTime time);
    bool probe(xcb_window_t window, Keys& keys);
    /// When an input method that nobody hears of has handled the keys at the latest.
    static SteadyTime handledTime(const Keys& keys);
    void handleSwitches(Keys& keys, std::uint64_t switches) const;
    bool hasRested(const Keys& keys) const;
    void finishLook(xcb_window_t window);
    void awaitAnswers(xcb_window_t window, Keys& keys);
    void handleAnswers(xcb_window_t window, std::uint64_t number);
    void lookAgain(xcb_window_t window, Keys& keys);
    void setDeadline();
    void handleDeadline();
    void pingAgain(xcb_window_t window, Keys& keys, SteadyTime now);
    void expire(xcb_window_t window);
    void remove(xcb_window_t window);
    void finish(xcb_window_t window);

    XcbConnection& connection_;
    WindowPing& ping_;
    IbusAnswers& answers_;
    KeyQuestions questions_;
    ProgramProbe probe_;
    ReadMarkers markers_;
    Events events_;
    std::chrono::milliseconds timeout_;
    std::chrono::milliseconds rest_;
    std::map<xcb_window_t, Keys> windows_;
    std::uint64_t number_ = 0;
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
