// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/TargetWindow.h"

namespace tarvik::linuxdesktop {

namespace {

std::optional<platform::ProcessIdentifier> processOf(WindowFocus::Window window) {
    return window.process > 0 ? std::optional(window.process) : std::nullopt;
}

}  // namespace

void TargetWindow::setFront(WindowFocus::Window front) {
    const std::lock_guard lock(mutex_);
    front_ = front;
}

std::optional<platform::ProcessIdentifier> TargetWindow::frontmostProcess() const {
    const std::lock_guard lock(mutex_);
    return processOf(front_);
}

std::optional<platform::ProcessIdentifier> TargetWindow::choose() {
    const std::lock_guard lock(mutex_);
    target_ = front_;
    return processOf(target_);
}

std::int64_t TargetWindow::windowFor(std::optional<platform::ProcessIdentifier> process) const {
    return target_.process == process ? target_.number : 0;
}

}  // namespace tarvik::linuxdesktop
