// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/KWinInput.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto kwinTimeout = 1s;
constexpr auto typingTimeoutAtEnd = 800ms;
constexpr auto deletingTimeout = 500ms;

}  // namespace

KWinInput::KWinInput(platform::MainQueue& mainQueue, platform::Log& log,
                     std::weak_ptr<HotKeyListener> listener)
    : mainQueue_(mainQueue), log_(log), notifier_(mainQueue, std::move(listener)) {
    auto opened = MessageBus::openSession();
    if (!opened) {
        refusal_ = "there is no session bus: " + opened.error().localizedDescription;
        return;
    }
    if (std::string refusal = KWinSession::refusal(*opened.value()); !refusal.empty()) {
        refusal_ = std::move(refusal);
        return;
    }
    isConnected_ = true;
    const auto ready = std::make_shared<std::promise<void>>();
    const std::future<void> isReady = ready->get_future();
    session_ = std::make_unique<KWinSession>(std::move(opened).value(), loop_, log_, events(ready));
    try {
        thread_ = startThread("input", [this] { run(); });
    } catch (const std::system_error& failure) {
        session_.reset();
        isConnected_ = false;
        refusal_ = "no thread can speak to KWin: " + failure.code().message();
        return;
    }
    isReady.wait_for(kwinTimeout);
}

KWinInput::~KWinInput() {
    if (!thread_.joinable()) {
        return;
    }
    loop_.post([this] { finish(); });
    thread_.join();
}

std::optional<std::string> KWinInput::refusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_;
}

std::optional<std::string> KWinInput::frontRefusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_ ? refusal_ : frontRefusal_;
}

void KWinInput::run() {
    loop_.run([this] {
        if (session_) {
            session_->flush();
        }
    });
    session_.reset();
}

KWinSession::Events KWinInput::events(const std::shared_ptr<std::promise<void>>& ready) {
    return {{[this](HotKeyNumber number) { notifier_.tellPressed(number); },
             [this](HotKeyNumber number) { notifier_.tellReleased(number); },
             [this](HotKeyNumber number, const std::string& reason) {
                 notifier_.tellLost(number, reason);
             },
             [this](bool canTakeOver) { canTakeOver_ = canTakeOver; }},
            [this](WindowFocus::Window front) {
                const std::lock_guard lock(mutex_);
                front_ = front;
            },
            [this, ready](const std::string& frontRefusal) {
                const std::lock_guard lock(mutex_);
                if (!frontRefusal.empty()) {
                    frontRefusal_ = frontRefusal;
                }
                ready->set_value();
            },
            [this](const std::string& reason) {
                log_.write("TarvikDictate: " + reason);
                isConnected_ = false;
                // The caller is a part of the session.
                loop_.post([this] { session_.reset(); });
            }};
}

void KWinInput::finish() {
    const auto end = [this] {
        if (!session_) {
            loop_.quit();
            return;
        }
        endDeadline_.set(deletingTimeout, [this] { loop_.quit(); });
        session_->hotKeys().removeAll([this] { loop_.quit(); });
    };
    if (session_ && session_->typist() != nullptr) {
        endDeadline_.set(typingTimeoutAtEnd, end);
        session_->typist()->whenIdle(end);
    } else {
        end();
    }
}

platform::OSStatus KWinInput::registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                             std::uint32_t modifiers) {
    if (!isConnected_) {
        return platform::eventInternalErr;
    }
    const auto answer = std::make_shared<Answer>();
    std::future<platform::OSStatus> status = answer->status.get_future();
    loop_.post([this, answer, number, keyCode, modifiers] {
        if (!session_) {
            settle(*answer, number, platform::eventInternalErr);
            return;
        }
        session_->hotKeys().add(
            number, keyCode, modifiers,
            [this, answer, number](platform::OSStatus result) { settle(*answer, number, result); });
    });
    const bool isKnown = status.wait_for(kwinTimeout) == std::future_status::ready ||
                         answer->isSettled.exchange(true);
    // A busy KWin decides later.
    return isKnown ? status.get() : platform::noErr;
}

void KWinInput::settle(Answer& answer, HotKeyNumber number, platform::OSStatus status) {
    if (!answer.isSettled.exchange(true)) {
        answer.status.set_value(status);
    } else if (status != platform::noErr) {
        notifier_.tellLost(number, status == platform::eventHotKeyExistsErr
                                       ? "another program has the combination"
                                       : "KDE does not answer");
    }
}

void KWinInput::unregisterHotKey(HotKeyNumber number) {
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
        isDone.wait_for(kwinTimeout);
    }
}

void KWinInput::takeOver() {
    loop_.post([this] {
        if (session_) {
            session_->hotKeys().takeOver();
        }
    });
}

void KWinInput::type(TypedText text, std::function<void()> onDone) {
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
            log_.write("TarvikDictate: typed text not delivered: KWin does not answer (" +
                       std::to_string(text.characters.size()) + " characters)");
            onTyped();
        }
    });
}

std::optional<platform::ProcessIdentifier> KWinInput::frontmostProcess() const {
    const std::lock_guard lock(mutex_);
    return front_.process > 0 ? std::optional(front_.process) : std::nullopt;
}

std::optional<platform::ProcessIdentifier> KWinInput::chooseTarget() {
    {
        const std::lock_guard lock(mutex_);
        target_ = front_;
    }
    return target_.process > 0 ? std::optional(target_.process) : std::nullopt;
}

}  // namespace tarvik::linuxdesktop
