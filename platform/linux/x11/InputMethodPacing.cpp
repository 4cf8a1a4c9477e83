// SPDX-License-Identifier: MIT

#include "platform/linux/x11/InputMethodPacing.h"

#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr milliseconds answerTimeout = 300ms;
constexpr milliseconds keyInterval = 12ms;
constexpr int furtherPings = 2;
// A text for programs that IBus does not serve need not wait for IBus.
constexpr milliseconds ibusTimeout = 1s;

}  // namespace

InputMethod InputMethodPacing::method() const {
    const InputMethods::Running& running = keyboard_.inputMethods();
    if (!running.isAny) {
        return {};
    }
    const bool isObserved = running.isIBus && answers_.isReady();
    return {isObserved ? InputMethod::Kind::ibus : InputMethod::Kind::unobserved,
            running.process.value_or(0)};
}

// The questions about the first key count as well.
bool InputMethodPacing::awaitIbus(std::function<void()> next) {
    if (!keyboard_.inputMethods().isIBus || !answers_.listen([this] { wait_.handleChange(); }) ||
        answers_.isReady() || std::exchange(hasAwaitedIbus_, true)) {
        return false;
    }
    wait_.begin(
        ibusTimeout, [this] { return answers_.isReady(); },
        [next = std::move(next)](bool) { next(); });
    return true;
}

// The toolkits answer pings. The X library asks about one key at a time, in order, and answers
// none. Nothing is known of a program without a window.
bool InputMethodPacing::areKeptApart(xcb_window_t window) const {
    return method().kind != InputMethod::Kind::none &&
           (window == XCB_NONE || unread_.announcesAnswers(window));
}

void InputMethodPacing::handleKey(xcb_window_t window) {
    paces_[window] = {unread_.isPinged(window),
                      method().kind == InputMethod::Kind::ibus ? 0 : furtherPings};
}

// Where nothing tells when a program has got the answer of its input method: a program that answers
// the first ping has asked the input method. The further pings come after the answer in most cases.
void InputMethodPacing::await(xcb_window_t window, std::function<void(bool)> next) {
    if (!paces_[window].isPinged) {
        paces_.erase(window);
        wait_.pause(keyInterval, [next = std::move(next)] { next(true); });
        return;
    }
    wait_.begin(
        answerTimeout, [this, window] { return !unread_.contains(window); },
        [this, window, next = std::move(next)](bool hasAnswered) {
            if (hasAnswered) {
                pingAgain(window, next);
            } else {
                next(false);
            }
        });
}

void InputMethodPacing::pingAgain(xcb_window_t window, const std::function<void(bool)>& next) {
    Pace& pace = paces_[window];
    if (pace.pings == 0) {
        paces_.erase(window);
        next(true);
        return;
    }
    const bool isFirst = pace.pings-- == furtherPings;
    wait_.pause(isFirst ? keyInterval : 0ms, [this, window, next] {
        unread_.add(window, {});
        await(window, next);
    });
}

}  // namespace tarvik::linuxdesktop
