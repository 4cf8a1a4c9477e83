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
                   return SwaySession::open(
                       loop, log, events, [this](WindowFocus::Window front) { handleFront(front); },
                       [this] { return accompanyInX(); });
               }}) {}

void SwayInput::type(TypedText text, std::function<void()> onDone) {
    const std::int64_t window = target_.windowFor(text.process);
    thread_.type(std::move(text), window, std::move(onDone));
}

void SwayInput::setAccompaniment(std::function<void()> accompanyAlt) {
    const std::lock_guard lock(mutex_);
    accompanyAlt_ = std::move(accompanyAlt);
}

void SwayInput::setXProgramObserver(std::function<void()> onXProgram) {
    const std::lock_guard lock(mutex_);
    onXProgram_ = std::move(onXProgram);
}

void SwayInput::handleFront(WindowFocus::Window front) {
    target_.setFront(front);
    const std::lock_guard lock(mutex_);
    if (front.isX11 && !accompanyAlt_ && onXProgram_) {
        onXProgram_();
    }
}

bool SwayInput::accompanyInX() const {
    const std::lock_guard lock(mutex_);
    if (accompanyAlt_) {
        accompanyAlt_();
    }
    return accompanyAlt_ != nullptr;
}

void SwayInput::lendKeyboard(std::uint32_t window) {
    thread_.post([window](InputSession& session) {
        // No other kind of session is opened here.
        static_cast<SwaySession&>(session).lendKeyboard(window);
    });
}

void SwayInput::giveKeyboardBack(std::uint32_t window) {
    thread_.post([window](InputSession& session) {
        static_cast<SwaySession&>(session).giveKeyboardBack(window);
    });
}

}  // namespace tarvik::linuxdesktop
