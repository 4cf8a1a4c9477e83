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

// The status of one registration. A connection that is lost meanwhile drops the answer, which then
// says so.
class StatusAnswer {
  public:
    StatusAnswer() = default;
    ~StatusAnswer() { give(platform::eventInternalErr); }
    StatusAnswer(const StatusAnswer&) = delete;
    StatusAnswer& operator=(const StatusAnswer&) = delete;

    std::future<platform::OSStatus> future() { return status_.get_future(); }
    void give(platform::OSStatus status) {
        if (!std::exchange(isGiven_, true)) {
            status_.set_value(status);
        }
    }

  private:
    std::promise<platform::OSStatus> status_;
    bool isGiven_ = false;
};

}  // namespace

SwayInput::SwayInput(platform::MainQueue& mainQueue, platform::Log& log,
                     std::weak_ptr<HotKeyListener> listener)
    : mainQueue_(mainQueue),
      log_(log),
      notifier_(mainQueue, std::move(listener)),
      reconnection_(loop_, SwayConnection::socketPath(), [this] { return connectAgain(); }) {
    auto opened = SwayConnection::open();
    if (!opened) {
        refusal_ = opened.error().localizedDescription;
        return;
    }
    begin(std::move(opened).value());
    try {
        thread_ = startThread("input", [this] { run(); });
    } catch (const std::system_error& failure) {
        session_.reset();
        refusal_ = "no thread can speak to Sway: " + failure.code().message();
        return;
    }
    if (firstAnswer_.get_future().wait_for(swayTimeout) != std::future_status::ready) {
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

void SwayInput::begin(std::unique_ptr<SwayConnection> connection) {
    isLost_ = false;
    session_ = std::make_unique<SwaySession>(std::move(connection), loop_, log_, events());
}

bool SwayInput::connectAgain() {
    auto opened = SwayConnection::open();
    if (!opened) {
        return false;
    }
    begin(std::move(opened).value());
    return true;
}

SwaySession::Events SwayInput::events() {
    return {{[this](HotKeyNumber number) { notifier_.tellPressed(number); },
             [this](HotKeyNumber number) { notifier_.tellReleased(number); },
             [this](HotKeyNumber number, const std::string& reason) {
                 notifier_.tellLost(number, reason);
             }},
            [this](WindowFocus::Window front) {
                const std::lock_guard lock(mutex_);
                front_ = front;
            },
            [this](const std::string& typingRefusal) { handleReady(typingRefusal); },
            [this](const std::string& reason) { handleLoss(reason); }};
}

void SwayInput::handleReady(const std::string& typingRefusal) {
    // One turn may bring the end of one connection and the answer on the other.
    if (isLost_) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        typingRefusal_ = typingRefusal.empty() ? std::nullopt : std::optional(typingRefusal);
    }
    isConnected_ = true;
    if (std::exchange(hasAnswered_, true)) {
        log_.write("TarvikDictate: Sway is back");
        session_->hotKeys().resume(hotKeys_);
    } else {
        firstAnswer_.set_value();
    }
}

void SwayInput::handleLoss(const std::string& reason) {
    if (std::exchange(isLost_, true)) {
        return;
    }
    log_.write("TarvikDictate: " + reason);
    isConnected_ = false;
    if (!std::exchange(hasAnswered_, true)) {
        const std::lock_guard lock(mutex_);
        refusal_ = reason;
        firstAnswer_.set_value();
    }
    // The caller is a part of the session.
    loop_.post([this] {
        session_.reset();
        reconnection_.begin();
    });
}

void SwayInput::finish() {
    reconnection_.end();
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
    const auto answer = std::make_shared<StatusAnswer>();
    std::future<platform::OSStatus> status = answer->future();
    loop_.post([this, answer, number, keyCode, modifiers] {
        if (session_) {
            session_->hotKeys().add(number, keyCode, modifiers,
                                    [answer](platform::OSStatus result) { answer->give(result); });
        }
    });
    if (isConnected_ && status.wait_for(swayTimeout) == std::future_status::ready) {
        const platform::OSStatus result = status.get();
        if (result == platform::noErr) {
            loop_.post([this, number, modifiers] { hotKeys_[number] = modifiers; });
        }
        return result;
    }
    // Sway may still make the binding, after everybody has forgotten it.
    loop_.post([this, number] {
        hotKeys_.erase(number);
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
        hotKeys_.erase(number);
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
