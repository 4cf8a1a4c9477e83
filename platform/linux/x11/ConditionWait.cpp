// SPDX-License-Identifier: MIT

#include "platform/linux/x11/ConditionWait.h"

#include <utility>

namespace tarvik::linuxdesktop {

void ConditionWait::begin(std::chrono::milliseconds timeout, std::function<bool()> condition,
                          std::function<void(bool)> next) {
    waiting_ = {std::move(condition), std::move(next)};
    deadline_.set(timeout, [this] { end(waiting_->condition()); });
    handleChange();
}

void ConditionWait::pause(std::chrono::milliseconds delay, std::function<void()> next) {
    begin(
        delay, [] { return false; }, [next = std::move(next)](bool) { next(); });
}

void ConditionWait::handleChange() {
    if (waiting_ && waiting_->condition()) {
        end(true);
    }
}

void ConditionWait::end(bool holds) {
    const auto next = std::move(waiting_->next);
    waiting_.reset();
    deadline_.clear();
    next(holds);
}

}  // namespace tarvik::linuxdesktop
