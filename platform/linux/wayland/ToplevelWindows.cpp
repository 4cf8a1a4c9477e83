// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/ToplevelWindows.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

#include "platform/linux/input/SocketBacklog.h"

namespace tarvik::linuxdesktop {

namespace {

// No text waits for so many recordings.
constexpr std::size_t maxChoices = 64;

}  // namespace

std::string ToplevelWindows::refusal(const WaylandConnection& connection) {
    if (!connection.offers(wl_seat_interface)) {
        return "the compositor has no seat";
    }
    return connection.offers(zwlr_foreign_toplevel_manager_v1_interface)
               ? ""
               : "the compositor does not tell which window has the keyboard";
}

ToplevelWindows::ToplevelWindows(WaylandConnection& connection, OnFront onFront)
    : connection_(connection),
      onFront_(std::move(onFront)),
      server_(addressOfServer(connection.descriptor())),
      seat_(connection.bind<wl_seat>(wl_seat_interface, 1)),
      manager_(connection.bind<zwlr_foreign_toplevel_manager_v1>(
          zwlr_foreign_toplevel_manager_v1_interface, 1)) {
    static constexpr zwlr_foreign_toplevel_manager_v1_listener listener{
        &handleToplevel, [](void*, zwlr_foreign_toplevel_manager_v1*) {}};
    zwlr_foreign_toplevel_manager_v1_add_listener(manager_.get(), &listener, this);
}

void ToplevelWindows::handleToplevel(void* self, zwlr_foreign_toplevel_manager_v1* /*manager*/,
                                     Handle* handle) {
    static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
        [](void*, Handle*, const char*) {},
        [](void*, Handle*, const char*) {},
        [](void*, Handle*, wl_output*) {},
        [](void*, Handle*, wl_output*) {},
        &handleState,
        [](void*, Handle*) {},
        &handleClosed};
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &listener, self);
    auto& windows = *static_cast<ToplevelWindows*>(self);
    windows.toplevels_[newWindowNumber()].handle.reset(handle);
}

// Not put off until the event "done": compositors send that one later than the answer to a sync.
void ToplevelWindows::handleState(void* self, Handle* handle, wl_array* states) {
    const std::span present(static_cast<const std::uint32_t*>(states->data),
                            states->size / sizeof(std::uint32_t));
    const bool isActivated =
        std::ranges::find(present,
                          std::uint32_t{ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED}) !=
        present.end();
    auto& windows = *static_cast<ToplevelWindows*>(self);
    const std::int64_t number = windows.numberOf(handle);
    if (isActivated) {
        windows.setFront(number);
    } else if (windows.front_ == number) {
        windows.setFront(0);
    }
}

void ToplevelWindows::handleClosed(void* self, Handle* handle) {
    auto& windows = *static_cast<ToplevelWindows*>(self);
    const std::int64_t number = windows.numberOf(handle);
    windows.toplevels_.erase(number);
    std::erase(windows.history_, number);
    if (windows.front_ == number) {
        windows.setFront(0);
    }
}

std::int64_t ToplevelWindows::numberOf(const Handle* handle) const {
    return std::ranges::find_if(
               toplevels_, [&](const auto& entry) { return entry.second.handle.get() == handle; })
        ->first;
}

void ToplevelWindows::setFront(std::int64_t window) {
    if (std::exchange(front_, window) == window) {
        return;
    }
    if (window != 0) {
        ++changeCount_;
        std::erase(history_, window);
        history_.push_front(window);
    }
    onFront_(window);
}

// Who tells the process may be faster than the compositor's socket. The compositor has told every
// change up to its answer.
void ToplevelWindows::choose(std::int64_t choice, platform::ProcessIdentifier process) {
    ask([this, choice, process] {
        const auto found = toplevels_.find(front_);
        if (found == toplevels_.end()) {
            return;
        }
        found->second.process = process;
        found->second.isX11 = !backlogOf(process, server_);
        if (choice != 0) {
            choices_.push_front({choice, front_, process});
            choices_.resize(std::min(choices_.size(), maxChoices));
        }
    });
}

WindowFocus::Window ToplevelWindows::front() const {
    const auto found = toplevels_.find(front_);
    return found != toplevels_.end() ? Window{front_, found->second.process, found->second.isX11}
                                     : Window{};
}

std::int64_t ToplevelWindows::windowOf(std::optional<platform::ProcessIdentifier> process,
                                       std::int64_t wanted) const {
    const auto chosen = std::ranges::find(choices_, wanted, &Choice::number);
    if (chosen != choices_.end() && toplevels_.contains(chosen->window) &&
        (!process || chosen->process == *process)) {
        return chosen->window;
    }
    if (!process) {
        return 0;
    }
    const auto recent = std::ranges::find_if(
        history_, [&](std::int64_t number) { return toplevels_.at(number).process == *process; });
    return recent != history_.end() ? *recent : 0;
}

void ToplevelWindows::activate(std::int64_t window) {
    if (std::exchange(borrower_, window) == 0) {
        lender_ = front_;
    }
    if (const auto found = toplevels_.find(window); found != toplevels_.end()) {
        zwlr_foreign_toplevel_handle_v1_activate(found->second.handle.get(), seat_.get());
    }
}

void ToplevelWindows::giveBack() {
    const auto lender = toplevels_.find(std::exchange(lender_, 0));
    const bool isWithBorrower = std::exchange(borrower_, 0) == front_;
    // The user may have gone elsewhere meanwhile.
    if (isWithBorrower && lender != toplevels_.end()) {
        zwlr_foreign_toplevel_handle_v1_activate(lender->second.handle.get(), seat_.get());
    }
}

}  // namespace tarvik::linuxdesktop
