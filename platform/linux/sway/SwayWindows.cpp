// SPDX-License-Identifier: MIT

#include "platform/linux/sway/SwayWindows.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// More than anybody goes back to.
constexpr std::size_t maxHistory = 64;

}  // namespace

SwayWindows::SwayWindows(SwayConnection& connection, OnFront onFront)
    : connection_(connection), onFront_(std::move(onFront)) {
    floatOwnWindows();
    refresh();
}

// A rule of Sway's own, because a window that was a tile first may keep the size of the tile.
void SwayWindows::floatOwnWindows() {
    connection_.run(R"(for_window [app_id="^com\.tarvik\.dictate$"] )"
                    R"("floating enable, sticky enable, move position center")");
}

// Only the tree tells when the keyboard goes to no window, so the tree is asked after every change.
void SwayWindows::handleEvent(SwayConnection::Event event, std::string_view json) {
    const std::string change = changeIn(json);
    if (change == "focus") {
        ++changeCount_;
    }
    if (event == SwayConnection::Event::workspace || change == "focus" || change == "close" ||
        change == "new") {
        refresh();
    }
}

void SwayWindows::refresh() {
    if (!std::exchange(isRefreshing_, true)) {
        ask([this] { isRefreshing_ = false; });
    }
}

void SwayWindows::ask(std::function<void()> onKnown) {
    connection_.request(SwayConnection::Request::getTree, "",
                        [this, onKnown = std::move(onKnown)](std::string_view json) {
                            tree_ = SwayTree(json);
                            remember(tree_.focused());
                            onKnown();
                        });
}

void SwayWindows::remember(Window window) {
    onFront_(window);
    if (window.number != 0 && (history_.empty() || history_.front() != window.number)) {
        std::erase(history_, window.number);
        history_.push_front(window.number);
        history_.resize(std::min(history_.size(), maxHistory));
    }
}

std::int64_t SwayWindows::windowOf(std::optional<platform::ProcessIdentifier> process,
                                   std::int64_t wanted) const {
    const auto belongs = [&](std::int64_t number) {
        return std::ranges::any_of(tree_.windows(), [&](const Window& window) {
            return window.number == number && (!process || window.process == *process);
        });
    };
    if (belongs(wanted)) {
        return wanted;
    }
    if (!process) {
        return 0;
    }
    if (const auto recent = std::ranges::find_if(history_, belongs); recent != history_.end()) {
        return *recent;
    }
    const auto any = std::ranges::find(tree_.windows(), *process, &Window::process);
    return any != tree_.windows().end() ? any->number : 0;
}

std::int64_t SwayWindows::windowOfX(std::uint32_t xNumber) const {
    const auto found = std::ranges::find(tree_.windows(), xNumber, &Window::xNumber);
    return found != tree_.windows().end() ? found->number : 0;
}

void SwayWindows::activate(std::int64_t window) {
    if (std::exchange(borrower_, window) == 0) {
        returnCommand_ = tree_.focusCommand();
    }
    connection_.run(focusCommandFor(window));
}

void SwayWindows::giveBack() {
    const std::string command = std::exchange(returnCommand_, {});
    const bool isWithBorrower = std::exchange(borrower_, 0) == front().number;
    // The user may have gone elsewhere meanwhile.
    if (isWithBorrower && !command.empty()) {
        connection_.run(command);
    }
}

}  // namespace tarvik::linuxdesktop
