// SPDX-License-Identifier: MIT

#include "platform/linux/x11/UnreadKeys.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// A program that answers no pings has looked up its keys after the delay. One that answers may be
// busy, or be stopped, until the timeout. The short timeout is for a program that may never answer.
constexpr std::chrono::milliseconds lookUpDelay = 200ms;
constexpr std::chrono::milliseconds shortTimeout = 1s;

}  // namespace

UnreadKeys::UnreadKeys(XcbConnection& connection, PollLoop& loop, WindowPing& ping, Events events)
    : connection_(connection), ping_(ping), events_(std::move(events)), deadline_(loop) {}

void UnreadKeys::add(xcb_window_t window, std::u32string_view characters) {
    Keys& keys = windows_[window];
    const auto serial = ping_.send(window);
    keys.isPinged = serial.has_value();
    keys.serial = serial.value_or(0);
    keys.characters += characters;
    keys.isKnownToAnswer = keys.isPinged && ping_.hasAnswered(window);
    keys.deadline = std::chrono::steady_clock::now() + (keys.isKnownToAnswer ? maxTimeout
                                                        : keys.isPinged      ? shortTimeout
                                                                             : lookUpDelay);
    setDeadline();
}

std::set<char32_t> UnreadKeys::characters() const {
    std::set<char32_t> all;
    for (const auto& [window, keys] : windows_) {
        all.insert(keys.characters.begin(), keys.characters.end());
    }
    return all;
}

void UnreadKeys::whenRead(xcb_window_t window, std::function<void()> action) {
    if (const auto found = windows_.find(window); found != windows_.end()) {
        found->second.onRead.push_back(std::move(action));
    } else {
        action();
    }
}

void UnreadKeys::handleAnswer(const WindowPing::Answer& answer) {
    const auto found = windows_.find(answer.window);
    if (found != windows_.end() && found->second.isPinged &&
        answer.serial >= found->second.serial) {
        remove(answer.window);
        setDeadline();
        events_.onChange();
    }
}

void UnreadKeys::clear() {
    while (!windows_.empty()) {
        remove(windows_.begin()->first);
    }
    deadline_.clear();
}

void UnreadKeys::setDeadline() {
    if (windows_.empty()) {
        deadline_.clear();
        return;
    }
    const auto next = std::ranges::min_element(
        windows_, {}, [](const auto& entry) { return entry.second.deadline; });
    deadline_.set(next->second.deadline, [this] { expire(); });
}

void UnreadKeys::expire() {
    const auto now = std::chrono::steady_clock::now();
    std::vector<xcb_window_t> expired;
    for (const auto& [window, keys] : windows_) {
        if (keys.deadline <= now) {
            expired.push_back(window);
        }
    }
    for (const xcb_window_t window : expired) {
        const Keys& keys = windows_[window];
        // A window that is gone answers nothing, and nobody can tell what it has read.
        if (keys.isKnownToAnswer && !keys.characters.empty() && exists(window)) {
            events_.onTimeout(keys.characters.size());
        }
        remove(window);
    }
    setDeadline();
    events_.onChange();
}

void UnreadKeys::remove(xcb_window_t window) {
    const auto keys = windows_.extract(window);
    for (const auto& onRead : keys.mapped().onRead) {
        onRead();
    }
}

bool UnreadKeys::exists(xcb_window_t window) const {
    const XcbReply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        connection_.get(), xcb_get_window_attributes(connection_.get(), window), nullptr));
    return reply != nullptr;
}

}  // namespace tarvik::linuxdesktop
