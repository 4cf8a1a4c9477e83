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
                       isInFront);
               }}) {}

void GnomeInput::takeOver() {
    thread_.post([](InputSession& session) {
        // No other kind of session is opened here.
        static_cast<GnomeSession&>(session).hotKeys()->takeFromWindowMenu();
    });
}

}  // namespace tarvik::linuxdesktop
