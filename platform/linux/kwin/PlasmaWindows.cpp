// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/PlasmaWindows.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// The first version of the interface that names windows by a text, as KWin 6 still does.
constexpr std::uint32_t managementVersion = 13;

}  // namespace

const org_kde_plasma_window_listener PlasmaWindows::windowListener{
    [](void*, org_kde_plasma_window*, const char*) {},
    [](void*, org_kde_plasma_window*, const char*) {},
    [](void* window, org_kde_plasma_window*, std::uint32_t flags) {
        auto& described = *static_cast<Described*>(window);
        described.owner->handleState(described, flags);
    },
    [](void*, org_kde_plasma_window*, std::int32_t) {},
    [](void*, org_kde_plasma_window*, const char*) {},
    [](void* window, org_kde_plasma_window*) {
        const auto& described = *static_cast<Described*>(window);
        described.owner->remove(described.number);
    },
    [](void*, org_kde_plasma_window*) {},
    [](void*, org_kde_plasma_window*, org_kde_plasma_window*) {},
    [](void*, org_kde_plasma_window*, std::int32_t, std::int32_t, std::uint32_t, std::uint32_t) {},
    [](void*, org_kde_plasma_window*) {},
    [](void* window, org_kde_plasma_window*, std::uint32_t process) {
        auto& described = *static_cast<Described*>(window);
        described.process = static_cast<platform::ProcessIdentifier>(process);
        described.owner->tellFront();
    },
    [](void*, org_kde_plasma_window*, const char*) {},
    [](void*, org_kde_plasma_window*, const char*) {},
    [](void*, org_kde_plasma_window*, const char*, const char*) {}};

PlasmaWindows::PlasmaWindows(WaylandConnection& connection, OnFront onFront)
    : connection_(connection),
      onFront_(std::move(onFront)),
      manager_(connection.bind<org_kde_plasma_window_management>(
          org_kde_plasma_window_management_interface, managementVersion)) {
    static constexpr org_kde_plasma_window_management_listener listener{
        [](void*, org_kde_plasma_window_management*, std::uint32_t) {},
        [](void*, org_kde_plasma_window_management*, std::uint32_t) {},
        [](void*, org_kde_plasma_window_management*, wl_array*) {},
        [](void*, org_kde_plasma_window_management*, const char*) {},
        [](void* self, org_kde_plasma_window_management*, std::uint32_t, const char* uuid) {
            static_cast<PlasmaWindows*>(self)->add(uuid);
        }};
    org_kde_plasma_window_management_add_listener(manager_.get(), &listener, this);
}

PlasmaWindows::~PlasmaWindows() {
    onFront_(Window());
}

void PlasmaWindows::add(const char* uuid) {
    const std::int64_t number = newWindowNumber();
    Described& window = windows_[number];
    window.owner = this;
    window.number = number;
    window.proxy.reset(org_kde_plasma_window_management_get_window_by_uuid(manager_.get(), uuid));
    org_kde_plasma_window_add_listener(window.proxy.get(), &windowListener, &window);
}

void PlasmaWindows::remove(std::int64_t number) {
    const bool wasFront = front().number == number;
    windows_.erase(number);
    std::erase(history_, number);
    if (wasFront) {
        ++changeCount_;
        tellFront();
    }
}

void PlasmaWindows::handleState(Described& window, std::uint32_t flags) {
    const bool isActive = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0;
    if (std::exchange(window.isActive, isActive) == isActive) {
        return;
    }
    ++changeCount_;
    if (isActive) {
        std::erase(history_, window.number);
        history_.push_front(window.number);
    }
    tellFront();
}

void PlasmaWindows::tellFront() {
    onFront_(front());
}

// Of two active windows, as between two events, it is the later one.
WindowFocus::Window PlasmaWindows::front() const {
    for (const std::int64_t number : history_) {
        if (const Described& window = windows_.at(number); window.isActive) {
            return {window.number, window.process};
        }
    }
    return {};
}

// The compositor answers after every event of an earlier change.
void PlasmaWindows::ask(std::function<void()> onKnown) {
    connection_.sync(std::move(onKnown));
}

std::int64_t PlasmaWindows::windowOf(std::optional<platform::ProcessIdentifier> process,
                                     std::int64_t wanted) const {
    const auto belongs = [&](std::int64_t number) {
        const auto found = windows_.find(number);
        return found != windows_.end() && (!process || found->second.process == *process);
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
    const auto any = std::ranges::find_if(
        windows_, [&](const auto& entry) { return entry.second.process == *process; });
    return any != windows_.end() ? any->first : 0;
}

void PlasmaWindows::activate(std::int64_t window) {
    const auto found = windows_.find(window);
    if (found == windows_.end()) {
        return;
    }
    if (std::exchange(borrower_, window) == 0) {
        lender_ = front().number;
    }
    org_kde_plasma_window_set_state(found->second.proxy.get(),
                                    ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE,
                                    ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE);
}

void PlasmaWindows::giveBack() {
    const std::int64_t lender = std::exchange(lender_, 0);
    // The user may have gone elsewhere meanwhile.
    if (std::exchange(borrower_, 0) == front().number && lender != 0) {
        activate(lender);
        borrower_ = 0;
        lender_ = 0;
    }
}

}  // namespace tarvik::linuxdesktop
