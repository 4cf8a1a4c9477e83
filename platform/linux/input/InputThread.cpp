// SPDX-License-Identifier: MIT

#include "platform/linux/input/InputThread.h"

#include <system_error>
#include <utility>
#include <vector>

#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto answerTimeout = 1s;
constexpr auto typingTimeout = 800ms;

}  // namespace

InputThread::InputThread(platform::MainQueue& mainQueue, platform::Log& log,
                         std::weak_ptr<HotKeyListener> listener, Desktop desktop)
    : mainQueue_(mainQueue),
      log_(log),
      notifier_(mainQueue, std::move(listener)),
      desktop_(std::move(desktop)),
      reconnection_(loop_, desktop_.socket, [this] { return !open(); }) {
    if (const auto error = open()) {
        refusal_ = error->localizedDescription;
        return;
    }
    awaitAnswer();
    if (refusal_) {
        session_.reset();
        return;
    }
    try {
        thread_ = startThread("input", [this] {
            run();
            session_.reset();
        });
    } catch (const std::system_error& failure) {
        session_.reset();
        isConnected_ = false;
        refusal_ = desktop_.noThreadText + ": " + failure.code().message();
    }
}

// Here and not on a thread: most desktops that are asked do not serve.
void InputThread::awaitAnswer() {
    Deadline deadline(loop_);
    deadline.set(answerTimeout, [this] { loop_.quit(); });
    isAwaitingAnswer_ = true;
    run();
    isAwaitingAnswer_ = false;
    if (!hasAnswered_) {
        log_.write("TarvikDictate: " + desktop_.noAnswerText);
    }
}

InputThread::~InputThread() {
    if (thread_.joinable()) {
        loop_.post([this] { shutDown(); });
        thread_.join();
    }
}

std::optional<std::string> InputThread::refusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_;
}

std::optional<std::string> InputThread::typingRefusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_ ? refusal_ : typingRefusal_;
}

platform::OSStatus InputThread::registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                               std::uint32_t modifiers) {
    if (!isConnected_) {
        return platform::eventInternalErr;
    }
    const auto registration = std::make_shared<Registration>();
    std::future<platform::OSStatus> status = registration->status.get_future();
    loop_.post([this, registration, number, keyCode, modifiers] {
        hotKeys_[number] = {keyCode, modifiers, registration};
        if (session_ && !isLost_) {
            request(number);
        } else {
            refusePendingHotKeys();
        }
    });
    const bool isKnown = status.wait_for(answerTimeout) == std::future_status::ready ||
                         registration->isSettled.exchange(true);
    return isKnown ? status.get() : platform::noErr;
}

void InputThread::unregisterHotKey(HotKeyNumber number) {
    const auto answer = std::make_shared<std::promise<void>>();
    const std::future<void> isDone = answer->get_future();
    loop_.post([this, answer, number] {
        hotKeys_.erase(number);
        if (session_) {
            session_->hotKeys()->remove(number, [answer] { answer->set_value(); });
        } else {
            answer->set_value();
        }
    });
    if (isConnected_) {
        isDone.wait_for(answerTimeout);
    }
}

void InputThread::type(TypedText text, std::int64_t window, std::function<void()> onDone) {
    auto onTyped = [this, onDone = std::move(onDone)] {
        if (onDone) {
            mainQueue_.async(onDone);
        }
    };
    loop_.post([this, text = std::move(text), window, onTyped = std::move(onTyped)]() mutable {
        if (SessionTypist* typist = session_ ? session_->typist() : nullptr) {
            typist->type(std::move(text), window, std::move(onTyped));
        } else {
            log_.write("TarvikDictate: typed text not delivered: " + desktop_.noTypistText + " (" +
                       std::to_string(text.characters.size()) + " characters)");
            onTyped();
        }
    });
}

void InputThread::post(std::function<void(InputSession&)> action) {
    loop_.post([this, action = std::move(action)] {
        if (session_) {
            action(*session_);
        }
    });
}

void InputThread::run() {
    loop_.run([this] {
        if (session_) {
            session_->flush();
        }
    });
}

std::optional<Error> InputThread::open() {
    isLost_ = false;
    auto opened = desktop_.open(loop_, events());
    if (!opened) {
        return opened.error();
    }
    session_ = std::move(opened).value();
    return std::nullopt;
}

InputSession::Events InputThread::events() {
    return {{[this](HotKeyNumber number) { notifier_.tellPressed(number); },
             [this](HotKeyNumber number) { notifier_.tellReleased(number); },
             [this](HotKeyNumber number, const std::string& reason) {
                 notifier_.tellLost(number, reason);
             }},
            [this](const std::string& typingRefusal) { handleReady(typingRefusal); },
            [this](const std::string& reason) { handleRefusal(reason); },
            [this](const std::string& reason) { handleLoss(reason); }};
}

void InputThread::handleReady(const std::string& typingRefusal) {
    // One turn may bring the end of one connection and the answer on another.
    if (isLost_) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        refusal_.reset();
        typingRefusal_ = typingRefusal.empty() ? std::nullopt : std::optional(typingRefusal);
    }
    isConnected_ = true;
    if (hasAnswered_) {
        log_.write("TarvikDictate: " + desktop_.returnText);
        resumeHotKeys();
    } else {
        answerFirst(std::nullopt);
    }
}

void InputThread::handleRefusal(const std::string& reason) {
    if (hasAnswered_) {
        return;
    }
    answerFirst(reason);
    isLost_ = true;
    // The caller is a part of the session.
    loop_.post([this] { session_.reset(); });
}

void InputThread::handleLoss(const std::string& reason) {
    if (std::exchange(isLost_, true)) {
        return;
    }
    // A session that ends before its answer belongs to a loss that has its line.
    if (isConnected_.exchange(false) || !hasAnswered_) {
        log_.write("TarvikDictate: " + reason);
    }
    if (!hasAnswered_) {
        answerFirst(reason);
    }
    refusePendingHotKeys();
    // The caller is a part of the session.
    loop_.post([this] {
        session_.reset();
        if (isShuttingDown_) {
            loop_.quit();
        } else {
            reconnection_.begin();
        }
    });
}

void InputThread::answerFirst(std::optional<std::string> refusal) {
    hasAnswered_ = true;
    {
        const std::lock_guard lock(mutex_);
        refusal_ = std::move(refusal);
    }
    if (isAwaitingAnswer_) {
        loop_.quit();
    }
}

void InputThread::request(HotKeyNumber number) {
    const HotKey hotKey = hotKeys_[number];
    session_->hotKeys()->add(
        number, hotKey.keyCode, hotKey.modifiers,
        [this, number, registration = hotKey.pending](platform::OSStatus status) {
            handleStatus(number, *registration, status);
        });
}

void InputThread::handleStatus(HotKeyNumber number, Registration& registration,
                               platform::OSStatus status) {
    const bool isAwaited = !registration.isSettled.exchange(true);
    if (const auto found = hotKeys_.find(number); found != hotKeys_.end()) {
        found->second.pending.reset();
        if (isAwaited && status != platform::noErr) {
            hotKeys_.erase(found);
        }
    }
    if (isAwaited) {
        registration.status.set_value(status);
    } else if (status != platform::noErr) {
        notifier_.tellLost(number, status == platform::eventHotKeyExistsErr
                                       ? "another program has the combination"
                                       : desktop_.noAnswerText);
    }
}

void InputThread::resumeHotKeys() {
    std::map<HotKeyNumber, std::uint32_t> registered;
    std::vector<HotKeyNumber> pending;
    for (const auto& [number, hotKey] : hotKeys_) {
        if (hotKey.pending) {
            pending.push_back(number);
        } else {
            registered[number] = hotKey.modifiers;
        }
    }
    if (!registered.empty()) {
        session_->hotKeys()->resume(registered);
    }
    for (const HotKeyNumber number : pending) {
        request(number);
    }
}

// The main thread waits for these. Others were answered with noErr: the next session decides.
void InputThread::refusePendingHotKeys() {
    std::erase_if(hotKeys_, [](const auto& entry) {
        const auto& registration = entry.second.pending;
        const bool isAwaited = registration && !registration->isSettled.exchange(true);
        if (isAwaited) {
            registration->status.set_value(platform::eventInternalErr);
        }
        return isAwaited;
    });
}

void InputThread::shutDown() {
    isShuttingDown_ = true;
    reconnection_.end();
    if (!session_ || isLost_) {
        loop_.quit();
        return;
    }
    shutdownDeadline_.set(desktop_.shutdownTimeout, [this] { loop_.quit(); });
    if (SessionTypist* typist = session_->typist()) {
        typingDeadline_.set(typingTimeout, [this] { endSession(); });
        typist->whenIdle([this] { endSession(); });
    } else {
        endSession();
    }
}

void InputThread::endSession() {
    typingDeadline_.clear();
    if (!std::exchange(isEndingSession_, true)) {
        session_->end([this] { loop_.quit(); });
    }
}

}  // namespace tarvik::linuxdesktop
