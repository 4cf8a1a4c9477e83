// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/Time.h"

namespace tarvik {

/// A desktop on which somebody dictates: the application on the simulated platform, or the model of
/// it. An action only queues its effects; settle() and advance() carry the effects out.
///
/// Sockets are counted from 0 in the order of their opening, text elements from 0 to `elements`
/// - 1.
class SessionWorld {
  public:
    static constexpr std::size_t elements = 3;
    /// This element refuses every text.
    static constexpr std::size_t refusingElement = 2;
    static constexpr int processes[] = {11, 22};

    SessionWorld() = default;
    SessionWorld(const SessionWorld&) = delete;
    SessionWorld& operator=(const SessionWorld&) = delete;
    virtual ~SessionWorld() = default;

    virtual void pressHold() = 0;
    virtual void releaseHold() = 0;
    virtual void tapToggle() = 0;
    virtual void wake() = 0;
    virtual void setKey(bool isStored) = 0;
    virtual void focus(std::optional<std::size_t> element) = 0;
    virtual void bringToFront(std::optional<int> process) = 0;
    /// One sample arrives at the microphone.
    virtual void speak() = 0;

    // What the speech service does with a socket.
    virtual void accept(std::size_t socket) = 0;
    virtual void close(std::size_t socket) = 0;
    virtual void lose(std::size_t socket) = 0;
    virtual void say(std::size_t socket, const std::string& text, bool isFinal) = 0;
    virtual void sayNothing(std::size_t socket) = 0;

    virtual void settle() = 0;
    virtual void advance(Seconds interval) = 0;

    /// What has happened since the last call, in order.
    virtual std::vector<std::string> takeEvents() = 0;
    /// What remains of everything so far: texts, usage, messages on each socket, timers.
    virtual std::vector<std::string> state() const = 0;
};

}  // namespace tarvik
