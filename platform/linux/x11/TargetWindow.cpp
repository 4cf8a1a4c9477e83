// SPDX-License-Identifier: MIT

#include "platform/linux/x11/TargetWindow.h"

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto maxTimeout = 30s;
// A window that comes to the front later than this does so because the user wants it there.
constexpr auto maxActivation = 3s;

}  // namespace

TargetWindow::TargetWindow(XcbConnection& connection, FrontWindow& front, PollLoop& loop,
                           std::function<void()> onChange)
    : connection_(connection), front_(front), onChange_(std::move(onChange)), deadline_(loop) {}

TargetWindow::Target TargetWindow::find(platform::ProcessIdentifier process, xcb_window_t wanted) {
    // Zero and negative numbers are groups of processes.
    if (process <= 0) {
        return {Place::missing};
    }
    const xcb_window_t window = front_.windowOf(process, wanted);
    const xcb_window_t required = window == wanted ? wanted : xcb_window_t{XCB_NONE};
    if (front_.isInFront(process, required)) {
        arrive(window);
        return {Place::inFront, required};
    }
    if (kill(process, 0) != 0 && errno == ESRCH) {
        return {Place::ended};
    }
    if (window == XCB_NONE) {
        return {Place::missing};
    }
    if (front_.canBeGivenFocus(window)) {
        forget(window);
        return {Place::behind, window};
    }
    return {forget(window) ? Place::late : Place::hidden, window};
}

void TargetWindow::bringToFront(xcb_window_t window) {
    const xcb_window_t front = front_.window();
    // The focus may be on its way back from this very window.
    if (broughtToFront_ == XCB_NONE && front != window) {
        earlierFront_ = front;
    }
    broughtToFront_ = window;
    connection_.selectEvents(window, XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    front_.activate(window);
}

void TargetWindow::giveFocusBack() {
    connection_.selectEvents(broughtToFront_, XCB_EVENT_MASK_NO_EVENT);
    const bool isReturned = front_.endLoan(broughtToFront_);
    const xcb_window_t front = front_.window();
    if (!isReturned && earlierFront_ != XCB_NONE &&
        (front == broughtToFront_ || front == earlierFront_)) {
        front_.activate(earlierFront_);
        if (front_.canBeGivenFocus(earlierFront_)) {
            front_.setFocus({earlierFront_});
        }
        return_ = {broughtToFront_, earlierFront_, front_.processOf(earlierFront_), Clock::now()};
    }
    broughtToFront_ = XCB_NONE;
}

bool TargetWindow::isFocusOnItsWayBack() {
    if (!return_) {
        return false;
    }
    const auto& [from, to, process, requested] = *return_;
    const xcb_window_t front = front_.window();
    const bool isElsewhere = front != XCB_NONE && front != from && front != to;
    const bool isBack = process ? front_.isInFront(*process, to) : front == to;
    const bool isGone = process && front_.windowOf(*process, to) != to;
    if (isBack || isElsewhere || isGone || Clock::now() >= requested + maxTimeout) {
        return_.reset();
    }
    return return_.has_value();
}

void TargetWindow::await(platform::ProcessIdentifier process) {
    const xcb_window_t window = std::exchange(broughtToFront_, XCB_NONE);
    awaited_[window] = {process, earlierFront_, Clock::now()};
    setDeadline();
}

bool TargetWindow::isAwaited(xcb_window_t window) {
    const auto found = awaited_.find(window);
    if (found == awaited_.end()) {
        return false;
    }
    const Awaited& awaited = found->second;
    const auto now = Clock::now();
    if (now >= awaited.requested + maxTimeout ||
        front_.windowOf(awaited.process, window) != window ||
        front_.isInFront(awaited.process, window)) {
        return false;
    }
    // A window that is just being brought to the front is shown shortly before it gets there.
    return now < awaited.requested + maxActivation || !front_.canBeGivenFocus(window);
}

void TargetWindow::arrive(xcb_window_t window) {
    const auto found = awaited_.find(window);
    if (found == awaited_.end()) {
        return;
    }
    const Awaited awaited = found->second;
    // A host brings a window late that had to wait for other texts, and takes the keyboard back.
    if (front_.isBorrower(window) || Clock::now() < awaited.requested + maxActivation) {
        awaited_.erase(found);
        broughtToFront_ = window;
        earlierFront_ = awaited.earlierFront;
        setDeadline();
    } else {
        forget(window);
    }
}

bool TargetWindow::forget(xcb_window_t window) {
    if (awaited_.erase(window) == 0) {
        return false;
    }
    connection_.selectEvents(window, XCB_EVENT_MASK_NO_EVENT);
    front_.endLoan(window);
    setDeadline();
    return true;
}

void TargetWindow::setDeadline() {
    const auto now = Clock::now();
    auto next = SteadyTime::max();
    for (const auto& [window, awaited] : awaited_) {
        for (const auto timeout : {Clock::duration(maxActivation), Clock::duration(maxTimeout)}) {
            if (awaited.requested + timeout > now) {
                next = std::min(next, awaited.requested + timeout);
            }
        }
    }
    if (next == SteadyTime::max()) {
        deadline_.clear();
    } else {
        deadline_.set(next, [this] {
            setDeadline();
            onChange_();
        });
    }
}

}  // namespace tarvik::linuxdesktop
