// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/WaylandInput.h"

#include <chrono>
#include <utility>

#include "platform/linux/wayland/WaylandSession.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto shutdownTimeout = 800ms;
// A program may report its window before this process reads what the compositor tells.
constexpr auto maxReportLead = 100ms;

}  // namespace

WaylandInput::WaylandInput(platform::MainQueue& mainQueue, platform::Log& log,
                           FrontSince frontSince)
    : frontSince_(std::move(frontSince)),
      thread_(
          mainQueue, log, {},
          {"no thread can speak to the compositor", "the Wayland compositor does not answer",
           "the Wayland compositor is back", "no virtual keyboard", WaylandConnection::socketPath(),
           shutdownTimeout, [this, &log](EventLoop& loop, const InputSession::Events& events) {
               return WaylandSession::open(loop, log, events,
                                           [this](std::int64_t window) { setFront(window); });
           }}) {}

void WaylandInput::type(TypedText text, std::function<void()> onDone) {
    const std::int64_t window = target_.process == text.process.value_or(0) ? target_.number : 0;
    thread_.type(std::move(text), window, std::move(onDone));
}

// The window that is in front at the connection may be there for long.
void WaylandInput::setFront(std::int64_t window) {
    front_ = window;
    if (window != 0 && isAvailable()) {
        processTime_ = std::chrono::steady_clock::now() - maxReportLead;
    }
}

std::optional<platform::ProcessIdentifier> WaylandInput::frontmostProcess() const {
    return frontSince_ ? frontSince_(processTime_) : std::nullopt;
}

std::optional<platform::ProcessIdentifier> WaylandInput::chooseTarget() {
    const auto process = frontmostProcess();
    // Without a window, whatever has the keyboard gets the text of a process that is not known.
    target_ = {front_ != 0 ? WindowFocus::newWindowNumber() : 0, process.value_or(0)};
    thread_.post([target = target_](InputSession& session) {
        // No other kind of session is opened here.
        static_cast<WaylandSession&>(session).beginRecording(target.number, target.process);
    });
    return process;
}

}  // namespace tarvik::linuxdesktop
