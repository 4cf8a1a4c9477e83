// SPDX-License-Identifier: MIT

#include "platform/linux/sway/SwayInput.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto swayTimeout = 1s;
// Leaves the time to remove the bindings.
constexpr auto typingTimeoutAtEnd = 800ms;
constexpr auto unbindingTimeout = 150ms;

}  // namespace

SwayInput::SwayInput(platform::MainQueue& mainQueue, platform::Log& log,
                     std::weak_ptr<HotKeyListener> listener)
    : mainQueue_(mainQueue),
      log_(log),
      listener_(std::make_shared<std::weak_ptr<HotKeyListener>>(std::move(listener))) {
    auto opened = SwayConnection::open();
    if (!opened) {
        refusal_ = opened.error().localizedDescription;
        return;
    }
    const auto ready = std::make_shared<std::promise<void>>();
    const std::future<void> isReady = ready->get_future();
    session_ = std::make_unique<SwaySession>(std::move(opened).value(), loop_, log_, events(ready));
    try {
        thread_ = startThread("input", [this] { run(); });
    } catch (const std::system_error& failure) {
        session_.reset();
        refusal_ = "no thread can speak to Sway: " + failure.code().message();
        return;
    }
    if (isReady.wait_for(swayTimeout) != std::future_status::ready) {
        log.write("TarvikDictate: Sway does not answer");
    }
}

SwayInput::~SwayInput() {
    if (!thread_.joinable()) {
        return;
    }
    loop_.post([this] { finish(); });
    thread_.join();
}

std::optional<std::string> SwayInput::refusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_;
}

std::optional<std::string> SwayInput::typingRefusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_ ? refusal_ : typingRefusal_;
}

void SwayInput::run() {
    loop_.run([this] {
        if (session_) {
            session_->flush();
        }
    });
    session_.reset();
}

SwaySession::Events SwayInput::events(const std::shared_ptr<std::promise<void>>& ready) {
    return {{[this](HotKeyNumber number) {
                 tellListener([number](HotKeyListener& to) { to.onPressed(number); });
             },
             [this](HotKeyNumber number) {
                 tellListener([number](HotKeyListener& to) { to.onReleased(number); });
             },
             [this](HotKeyNumber number, const std::string& reason) {
                 tellListener([number, reason](HotKeyListener& to) { to.onLost(number, reason); });
             }},
            [this](WindowFocus::Window front) {
                const std::lock_guard lock(mutex_);
                front_ = front;
            },
            [this, ready](const std::string& typingRefusal) {
                // One turn may bring the end of one connection and the answer on the other.
                if (std::exchange(hasAnswered_, true)) {
                    return;
                }
                if (!typingRefusal.empty()) {
                    const std::lock_guard lock(mutex_);
                    typingRefusal_ = typingRefusal;
                }
                isConnected_ = true;
                ready->set_value();
            },
            [this, ready](const std::string& reason) {
                if (!std::exchange(hasAnswered_, true)) {
                    refuse(reason);
                    ready->set_value();
                }
                lose(reason);
            }};
}

void SwayInput::refuse(const std::string& reason) {
    const std::lock_guard lock(mutex_);
    refusal_ = reason;
}

void SwayInput::lose(const std::string& reason) {
    log_.write("TarvikDictate: " + reason);
    isConnected_ = false;
    // The caller is a part of the session.
    loop_.post([this] { session_.reset(); });
}

void SwayInput::tellListener(std::function<void(HotKeyListener&)> event) {
    mainQueue_.async([weakListener = std::weak_ptr(listener_), event = std::move(event)] {
        if (const auto listener = weakListener.lock()) {
            if (const auto listening = listener->lock()) {
                event(*listening);
            }
        }
    });
}

void SwayInput::finish() {
    const auto end = [this] {
        if (!session_) {
            loop_.quit();
            return;
        }
        endDeadline_.set(unbindingTimeout, [this] { loop_.quit(); });
        session_->hotKeys().removeAll([this] { loop_.quit(); });
    };
    if (session_ && session_->typist() != nullptr) {
        endDeadline_.set(typingTimeoutAtEnd, end);
        session_->typist()->whenIdle(end);
    } else {
        end();
    }
}

platform::OSStatus SwayInput::registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                             std::uint32_t modifiers) {
    const auto answer = std::make_shared<std::promise<platform::OSStatus>>();
    std::future<platform::OSStatus> status = answer->get_future();
    loop_.post([this, answer, number, keyCode, modifiers] {
        if (session_) {
            session_->hotKeys().add(
                number, keyCode, modifiers,
                [answer](platform::OSStatus result) { answer->set_value(result); });
        } else {
            answer->set_value(platform::eventInternalErr);
        }
    });
    if (isConnected_ && status.wait_for(swayTimeout) == std::future_status::ready) {
        return status.get();
    }
    // Sway may still make the binding, after everybody has forgotten it.
    loop_.post([this, number] {
        if (session_) {
            session_->hotKeys().remove(number, [] {});
        }
    });
    return platform::eventInternalErr;
}

void SwayInput::unregisterHotKey(HotKeyNumber number) {
    const auto answer = std::make_shared<std::promise<void>>();
    const std::future<void> isDone = answer->get_future();
    loop_.post([this, answer, number] {
        if (session_) {
            session_->hotKeys().remove(number, [answer] { answer->set_value(); });
        } else {
            answer->set_value();
        }
    });
    if (isConnected_) {
        isDone.wait_for(swayTimeout);
    }
}

void SwayInput::type(TypedText text, std::function<void()> onDone) {
    auto onTyped = [this, onDone = std::move(onDone)] {
        if (onDone) {
            mainQueue_.async(onDone);
        }
    };
    const std::int64_t window = target_.process == text.process ? target_.number : 0;
    loop_.post([this, text = std::move(text), window, onTyped = std::move(onTyped)]() mutable {
        if (session_ && session_->typist() != nullptr) {
            session_->typist()->type(std::move(text), window, std::move(onTyped));
        } else {
            log_.write("TarvikDictate: typed text not delivered: no virtual keyboard (" +
                       std::to_string(text.characters.size()) + " characters)");
            onTyped();
        }
    });
}

std::optional<platform::ProcessIdentifier> SwayInput::frontmostProcess() const {
    const std::lock_guard lock(mutex_);
    return front_.process > 0 ? std::optional(front_.process) : std::nullopt;
}

std::optional<platform::ProcessIdentifier> SwayInput::chooseTarget() {
    {
        const std::lock_guard lock(mutex_);
        target_ = front_;
    }
    return target_.process > 0 ? std::optional(target_.process) : std::nullopt;
}

}  // namespace tarvik::linuxdesktop
