// SPDX-License-Identifier: MIT

#include "platform/linux/input/InputThread.h"

#include <future>
#include <system_error>
#include <utility>

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
        want(number, {keyCode, modifiers, State::refused});
        return platform::eventInternalErr;
    }
    const auto answer = std::make_shared<RegistrationAnswer>();
    want(number, {keyCode, modifiers, State::undecided, false, {}, answer});
    return answer->wait(answerTimeout).value_or(platform::noErr);
}

void InputThread::want(HotKeyNumber number, HotKey hotKey) {
    loop_.post([this, number, hotKey = std::move(hotKey)] {
        hotKeys_[number] = hotKey;
        if (isConnected_) {
            request(number);
        } else {
            refuseAwaited();
        }
    });
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
             },
             [this] { requestRefused(); }},
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
    } else {
        answerFirst(std::nullopt);
    }
    requestAll();
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
    refuseAwaited();
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
    HotKey& hotKey = hotKeys_[number];
    hotKey.isAsked = true;
    session_->hotKeys()->add(number, hotKey.keyCode, hotKey.modifiers,
                             [this, number](platform::OSStatus status, const std::string& reason) {
                                 handleStatus(number, status, reason);
                             });
}

// An answer may forget a hotkey in the same turn.
void InputThread::requestAll() {
    for (const auto& [number, hotKey] : std::map(hotKeys_)) {
        request(number);
    }
}

void InputThread::requestRefused() {
    // A session that is not ready yet is asked for all of them later.
    if (!isConnected_) {
        return;
    }
    for (const auto& [number, hotKey] : std::map(hotKeys_)) {
        if (hotKey.state == State::refused && !hotKey.isAsked) {
            request(number);
        }
    }
}

void InputThread::handleStatus(HotKeyNumber number, platform::OSStatus status,
                               const std::string& reason) {
    if (isLost_) {
        return;
    }
    const auto found = hotKeys_.find(number);
    if (found == hotKeys_.end()) {
        // The hotkey was unregistered while the session registered it.
        session_->hotKeys()->remove(number, [] {});
        return;
    }
    HotKey& hotKey = found->second;
    const bool isRegistered = status == platform::noErr;
    const State before =
        std::exchange(hotKey.state, isRegistered ? State::registered : State::refused);
    const auto answer = std::exchange(hotKey.answer, nullptr);
    const bool isNewReason = std::exchange(hotKey.reason, reason) != reason && !reason.empty();
    hotKey.isAsked = false;
    if (status == platform::eventHotKeyInvalidErr) {
        hotKeys_.erase(found);
    }
    // The line about a loss has the reason.
    if (isNewReason && before != State::registered) {
        log_.write("TarvikDictate: " + reason);
    }
    if (answer && answer->settle(status)) {
        return;
    }
    if (isRegistered && before == State::refused) {
        notifier_.tellRegistered(number);
    } else if (!isRegistered && before == State::undecided) {
        notifier_.tellLost(number, refusalText(status));
    } else if (!isRegistered && before == State::registered) {
        notifier_.tellLost(number, reason.empty() ? refusalText(status) : reason);
    }
}

std::string InputThread::refusalText(platform::OSStatus status) const {
    return status == platform::eventHotKeyExistsErr ? "another program has the combination"
                                                    : desktop_.noAnswerText;
}

// The main thread waits for these. Others were answered with noErr: the next session decides.
void InputThread::refuseAwaited() {
    for (auto& [number, hotKey] : hotKeys_) {
        if (hotKey.answer && hotKey.answer->settle(platform::eventInternalErr)) {
            hotKey.state = State::refused;
            hotKey.answer.reset();
        }
    }
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
