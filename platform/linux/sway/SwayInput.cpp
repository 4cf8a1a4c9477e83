// SPDX-License-Identifier: MIT

#include "platform/linux/sway/SwayInput.h"

#include <chrono>
#include <utility>

#include "platform/linux/sway/SwaySession.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto shutdownTimeout = 950ms;

}  // namespace

SwayInput::SwayInput(platform::MainQueue& mainQueue, platform::Log& log,
                     std::weak_ptr<HotKeyListener> listener)
    : thread_(mainQueue, log, std::move(listener),
              {"no thread can speak to Sway", "Sway does not answer", "Sway is back",
               "no virtual keyboard", SwayConnection::socketPath(), shutdownTimeout,
               [this, &log](EventLoop& loop, const InputSession::Events& events) {
                   return SwaySession::open(loop, log, events, [this](WindowFocus::Window front) {
                       target_.setFront(front);
                   });
               }}) {}

void SwayInput::type(TypedText text, std::function<void()> onDone) {
    const std::int64_t window = target_.windowFor(text.process);
    thread_.type(std::move(text), window, std::move(onDone));
}

}  // namespace tarvik::linuxdesktop
