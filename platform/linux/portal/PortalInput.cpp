// SPDX-License-Identifier: MIT

#include "platform/linux/portal/PortalInput.h"

#include <chrono>
#include <utility>

#include "platform/linux/input/SessionKind.h"
#include "platform/linux/portal/PortalSession.h"
#include "platform/linux/portal/ShortcutsPortal.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto shutdownTimeout = 500ms;

}  // namespace

PortalInput::PortalInput(platform::MainQueue& mainQueue, platform::Log& log,
                         std::weak_ptr<HotKeyListener> listener)
    : thread_(mainQueue, log, std::move(listener),
              {"no thread can speak to the portal", "the desktop's portal does not answer",
               "the session bus is back", "a portal types nothing", MessageBus::sessionSocket(),
               shutdownTimeout,
               [this, &log](EventLoop& loop, const InputSession::Events& events)
                   -> Result<std::unique_ptr<InputSession>> {
                   if (const auto refusal = isOffered_ ? std::nullopt : askForPortal()) {
                       return Error{0, *refusal};
                   }
                   return PortalSession::open(loop, log, events);
               }}) {}

std::optional<std::string> PortalInput::askForPortal() {
    // Portals of X11 sessions report shortcuts that are never heard.
    if (!isWaylandSession()) {
        return "WAYLAND_DISPLAY is not set";
    }
    auto asked = MessageBus::openSession();
    if (!asked) {
        return "there is no session bus: " + asked.error().localizedDescription;
    }
    const auto offer = ShortcutsPortal::offer(*asked.value());
    if (offer == ShortcutsPortal::Offer::absent) {
        return "no portal of this session offers global shortcuts";
    }
    hasAnswered_ = offer == ShortcutsPortal::Offer::present;
    isOffered_ = true;
    return std::nullopt;
}

}  // namespace tarvik::linuxdesktop
