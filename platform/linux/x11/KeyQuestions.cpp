// SPDX-License-Identifier: MIT

#include "platform/linux/x11/KeyQuestions.h"

#include <algorithm>

namespace tarvik::linuxdesktop {

namespace {

using std::chrono::milliseconds;

// A program that is never idle, such as a browser, is looked at no longer. One that asks IBus may
// be late with the question or with the handling of the answer.
constexpr milliseconds lookTimeOfOthers{50};
constexpr milliseconds lookTimeOfAskers{1000};
// A window that is forgotten is looked at as a new one.
constexpr std::size_t maxKnownWindows = 256;

}  // namespace

KeyQuestions::Count KeyQuestions::begin() const {
    return {answers_.questionCount(), answers_.questionCount()};
}

std::optional<bool> KeyQuestions::habit(xcb_window_t window) const {
    const auto found = habits_.find(window);
    return found == habits_.end() ? std::nullopt : std::optional(found->second);
}

milliseconds KeyQuestions::lookTime(xcb_window_t window) const {
    const auto known = habit(window);
    return !known ? firstLookTime : *known ? lookTimeOfAskers : lookTimeOfOthers;
}

// A program that asks does so at least once a key.
bool KeyQuestions::areLeft(xcb_window_t window, const Count& count, std::size_t keys,
                           SteadyTime typed) const {
    const std::uint64_t now = answers_.questionCount();
    const bool mayAsk = hasAsked(count) || habit(window) != false;
    const milliseconds timeout = hasAsked(count) ? lookTimeOfAskers : lookTime(window);
    const SteadyTime deadline = std::max(typed, answers_.lastAnswer()) + timeout;
    return now != count.last ||
           (mayAsk && now - count.first < keys && std::chrono::steady_clock::now() < deadline);
}

void KeyQuestions::remember(xcb_window_t window, const Count& count) {
    if (habits_.size() >= maxKnownWindows) {
        habits_.clear();
    }
    habits_[window] = hasAsked(count);
}

}  // namespace tarvik::linuxdesktop
