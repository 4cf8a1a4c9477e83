// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/GnomeInput.h"

#include <chrono>
#include <utility>

#include "platform/linux/gnome/GnomeSession.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto shutdownTimeout = 1s;

std::function<bool(platform::ProcessIdentifier)> comparison(const GnomeInput::Front& front) {
    if (!front) {
        return {};
    }
    return [front](platform::ProcessIdentifier process) { return front() == process; };
}

}  // namespace

GnomeInput::GnomeInput(platform::MainQueue& mainQueue, platform::Log& log,
                       std::weak_ptr<HotKeyListener> listener, const Front& front)
    : thread_(mainQueue, log, std::move(listener),
              {"no thread can speak to GNOME", "the session bus does not answer",
               "GNOME Shell is back", "GNOME is gone", MessageBus::sessionSocket(), shutdownTimeout,
               [this, &log, isInFront = comparison(front)](EventLoop& loop,
                                                           const InputSession::Events& events) {
                   return GnomeSession::open(
                       loop, log, events, [this](bool isTaken) { canTakeOver_ = isTaken; },
                       [this](std::optional<std::uint64_t> hold) { tellX(hold); }, isInFront);
               }}) {}

void GnomeInput::takeOver() {
    thread_.post([](InputSession& session) {
        // No other kind of session is opened here.
        static_cast<GnomeSession&>(session).hotKeys()->takeFromWindowMenu();
    });
}

void GnomeInput::setXFollower(Follow follow) {
    {
        const std::lock_guard lock(mutex_);
        followX_ = std::move(follow);
    }
    withHold([](ShortcutHold& hold) { hold.announce(); });
}

void GnomeInput::tellX(std::optional<std::uint64_t> hold) {
    const std::lock_guard lock(mutex_);
    if (followX_) {
        followX_(hold);
    }
}

void GnomeInput::handleKeysSeenInX(std::uint64_t hold, bool areSeen) {
    withHold([=](ShortcutHold& current) { current.handleKeysSeenInX(hold, areSeen); });
}

void GnomeInput::handleReleaseInX(std::uint64_t hold) {
    withHold([=](ShortcutHold& current) { current.handleReleaseInX(hold); });
}

void GnomeInput::withHold(std::function<void(ShortcutHold&)> action) {
    thread_.post([action = std::move(action)](InputSession& session) {
        // No other kind of session is opened here.
        action(static_cast<GnomeSession&>(session).hotKeys()->hold());
    });
}

}  // namespace tarvik::linuxdesktop
