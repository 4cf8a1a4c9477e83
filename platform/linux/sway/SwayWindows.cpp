// SPDX-License-Identifier: MIT

#include "platform/linux/sway/SwayWindows.h"

#include <simdjson.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// More than anybody goes back to.
constexpr std::size_t maxHistory = 64;

struct Change {
    std::string kind;
    std::int64_t window = 0;
    std::int64_t process = 0;
};

Change changeIn(std::string_view json) {
    simdjson::dom::parser parser;
    simdjson::dom::element event;
    Change change;
    if (parser.parse(json.data(), json.size()).get(event) == simdjson::SUCCESS) {
        std::string_view kind;
        if (event["change"].get(kind) == simdjson::SUCCESS) {
            change.kind = kind;
        }
        // An event about a workspace has neither.
        if (event.at_pointer("/container/id").get(change.window) != simdjson::SUCCESS ||
            event.at_pointer("/container/pid").get(change.process) != simdjson::SUCCESS) {
            change.window = 0;
            change.process = 0;
        }
    }
    return change;
}

}  // namespace

SwayWindows::SwayWindows(SwayConnection& connection, OnFront onFront)
    : connection_(connection), onFront_(std::move(onFront)) {
    refresh();
}

// Only the tree tells when the keyboard goes to no window, so the tree is asked after every change.
void SwayWindows::handleEvent(SwayConnection::Event event, std::string_view json) {
    const Change change = changeIn(json);
    if (change.kind == "focus") {
        ++changeCount_;
    }
    if (change.kind == "new" && change.process == getpid()) {
        // A window of this process keeps its own size, and stays in front on every workspace.
        connection_.run("[con_id=" + std::to_string(change.window) +
                        "] floating enable, sticky enable, move position center");
    }
    if (event == SwayConnection::Event::workspace || change.kind == "focus" ||
        change.kind == "close" || change.kind == "new") {
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
