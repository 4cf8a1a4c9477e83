// SPDX-License-Identifier: MIT

#include "platform/linux/x11/Typist.h"

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// For a program to come to the front or to read what was typed there, and for another program to
// let go of the keyboard.
constexpr auto targetTimeout = 300ms;
// A program that answers no pings needs this long to read a changed keyboard map.
constexpr auto mapDelay = 20ms;
// Longer than the keys of any target are waited for.
constexpr auto reuseTimeout = 31s;
// The end of the program waits no longer than a second in all.
constexpr auto lookUpTimeoutAtEnd = 700ms;
// Keys may be needed again for the next piece of a dictation.
constexpr auto restoreDelay = 700ms;
constexpr int maxFailures = 12;
// The server listens to this client alone during a burst, so bursts are short.
constexpr std::size_t maxBurstLength = 40;

}  // namespace

Typist::Typist(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front, HotKeys& hotKeys,
               PollLoop& loop, platform::Log& log, OnLift onLift)
    : connection_(connection),
      keyboard_(keyboard),
      front_(front),
      log_(log),
      burst_(connection, keyboard, front, hotKeys, std::move(onLift)),
      ping_(connection),
      unread_(connection, loop, ping_,
              {[this] {
                   listen();
                   scheduleRestore();
                   handleChange();
               },
               [this](std::size_t characters) {
                   reportLoss("its program has not answered for 30 s", characters);
               }}),
      waitingDeadline_(loop),
      restoreDeadline_(loop) {}

Typist::~Typist() {
    for (const Item& item : items_) {
        const std::size_t typed = &item == &items_.front() ? position_ : 0;
        reportLoss("the connection to the X server ends", item.text.characters.size() - typed);
        for (const auto& onTyped : item.onTyped) {
            onTyped();
        }
    }
    unread_.clear();
    keyboard_.restore();
    // A socket that is closed while it holds unread events may lose the requests in it.
    connection_.synchronise();
    if (const auto action = std::exchange(whenIdle_, nullptr)) {
        action();
    }
}

void Typist::type(TypedText text, std::function<void()> onTyped) {
    const std::size_t started = isBusy_ ? 1 : 0;
    if (items_.size() > started && items_.back().text.process == text.process) {
        items_.back().text.characters += text.characters;
        items_.back().onTyped.push_back(std::move(onTyped));
    } else {
        items_.push_back({std::move(text), {std::move(onTyped)}});
    }
    if (!isBusy_) {
        isBusy_ = true;
        restoreDeadline_.clear();
        listen();
        beginNext();
    }
}

void Typist::whenIdle(std::function<void()> action) {
    whenIdle_ = std::move(action);
    if (!isBusy_) {
        isBusy_ = true;
        endTyping();
    }
}

void Typist::beginNext() {
    if (items_.empty()) {
        endTyping();
    } else {
        position_ = 0;
        failures_ = 0;
        reachTarget();
    }
}

// Remapped keys yield nothing any more after the end, so the targets get time to look them up.
void Typist::endTyping() {
    if (whenIdle_ && keyboard_.hasRemappedKeys() && !unread_.isEmpty()) {
        wait(
            lookUpTimeoutAtEnd, [this] { return unread_.isEmpty(); },
            [this](bool) {
                unread_.clear();
                beginNext();
            });
        return;
    }
    isBusy_ = false;
    listen();
    scheduleRestore();
    if (const auto action = std::exchange(whenIdle_, nullptr)) {
        action();
    }
}

// A key that is restored too early yields nothing to a target that looks the key up late.
void Typist::scheduleRestore() {
    if (!isBusy_ && unread_.isEmpty() && keyboard_.hasRemappedKeys()) {
        restoreDeadline_.set(restoreDelay, [this] { keyboard_.restore(); });
    }
}

void Typist::reachTarget() {
    const auto process = current().process;
    behind_ = XCB_NONE;
    if (!process || front_.isInFront(*process)) {
        planRound();
        return;
    }
    if (kill(*process, 0) != 0 && errno == ESRCH) {
        failForProcess("has ended");
        return;
    }
    const xcb_window_t window = front_.windowOf(*process);
    if (window == XCB_NONE) {
        failForProcess("has no window");
    } else if (front_.canBeGivenFocus(window)) {
        behind_ = window;
        planRound();
    } else {
        bringToFront(window);
    }
}

void Typist::bringToFront(xcb_window_t window) {
    if (broughtToFront_ == XCB_NONE) {
        earlierFront_ = front_.window();
    }
    broughtToFront_ = window;
    connection_.selectEvents(window, XCB_EVENT_MASK_FOCUS_CHANGE);
    front_.activate(window);
    wait(
        targetTimeout, [this] { return front_.isInFront(*current().process); },
        [this](bool isInFront) {
            if (isInFront) {
                planRound();
            } else {
                failForProcess("did not come to the front");
            }
        });
}

// A round is as many characters as there are keys for. A key that yields another character is
// reused only after its target has looked it up, because programs look keys up in the map that is
// valid then.
void Typist::planRound() {
    target_ = behind_ != XCB_NONE ? behind_ : front_.window();
    keyboard_.refresh();
    const KeyboardState state = KeyboardState::read(connection_);
    const std::u32string& characters = current().characters;
    std::set<char32_t> lacking;
    const auto fits = [&](std::size_t i) {
        if (!keyboard_.keyFor(characters[i], state.group, state.down)) {
            lacking.insert(characters[i]);
        }
        return lacking.size() <= keyboard_.freeKeys();
    };
    roundEnd_ = position_;
    while (roundEnd_ < characters.size() && fits(roundEnd_)) {
        ++roundEnd_;
    }
    if (roundEnd_ < characters.size()) {
        if (!unread_.isEmpty()) {
            wait(
                reuseTimeout, [this] { return unread_.isEmpty(); }, [this](bool) { planRound(); });
            return;
        }
        keyboard_.allowReuse({});
        lacking.clear();
        roundEnd_ = position_;
        while (roundEnd_ < characters.size() && fits(roundEnd_)) {
            ++roundEnd_;
        }
        if (roundEnd_ < characters.size()) {
            lacking.erase(characters[roundEnd_]);
        }
    }
    if (roundEnd_ == position_) {
        fail("the keyboard has no spare key");
    } else if (lacking.empty()) {
        typeRound();
    } else {
        keyboard_.remapKeys(lacking);
        waitUntilRead();
    }
}

// A program may read a changed map late, and would look the keys up in the old map. A program that
// does not answer in time gets the keys all the same, and perhaps reads them wrongly: a program
// that hangs must not hold up every other text.
void Typist::waitUntilRead() {
    if (const auto serial = ping_.send(target_)) {
        mapPing_ = {target_, *serial};
        wait(
            targetTimeout, [this] { return !mapPing_; }, [this](bool) { typeRound(); });
    } else {
        wait(
            mapDelay, [] { return false; }, [this](bool) { typeRound(); });
    }
}

void Typist::typeRound() {
    const TypedText& text = current();
    while (position_ < roundEnd_) {
        const std::size_t length = std::min(maxBurstLength, roundEnd_ - position_);
        switch (burst_.type(std::u32string_view(text.characters).substr(position_, length),
                            text.process, behind_)) {
            case KeyBurst::Outcome::done:
                position_ += length;
                failures_ = 0;
                unread_.add(target_, length);
                listen();
                break;
            case KeyBurst::Outcome::notInFront:
                tryAgain(0ms, "its process does not stay in front", [this] { reachTarget(); });
                return;
            case KeyBurst::Outcome::keyboardTaken:
                tryAgain(targetTimeout / maxFailures, "another program has taken the keyboard",
                         [this] { typeRound(); });
                return;
            case KeyBurst::Outcome::keysChanged:
                tryAgain(0ms, "the keyboard map does not stay the same", [this] { planRound(); });
                return;
        }
    }
    endRound();
}

void Typist::endRound() {
    if (position_ < current().characters.size()) {
        planRound();
    } else if (broughtToFront_ != XCB_NONE) {
        // Until then the user's own keys go to the wrong window.
        wait(
            targetTimeout, [this] { return !unread_.contains(broughtToFront_); },
            [this](bool) { giveFocusBack(); });
    } else {
        endText();
    }
}

// The focus stays where it is when the user has moved it meanwhile.
void Typist::giveFocusBack() {
    connection_.selectEvents(broughtToFront_, XCB_EVENT_MASK_NO_EVENT);
    const xcb_window_t front = front_.window();
    if (earlierFront_ != XCB_NONE && (front == broughtToFront_ || front == earlierFront_)) {
        front_.activate(earlierFront_);
    }
    broughtToFront_ = XCB_NONE;
    endText();
}

void Typist::endText() {
    for (auto& onTyped : items_.front().onTyped) {
        unread_.whenRead(target_, std::move(onTyped));
    }
    items_.pop_front();
    beginNext();
}

void Typist::fail(const std::string& reason) {
    reportLoss(reason, current().characters.size() - position_);
    if (broughtToFront_ != XCB_NONE) {
        giveFocusBack();
    } else {
        endText();
    }
}

void Typist::reportLoss(const std::string& reason, std::size_t characters) {
    log_.write("TarvikDictate: typed text not delivered: " + reason + " (" +
               std::to_string(characters) + " characters)");
}

void Typist::failForProcess(const std::string& reason) {
    fail("process " + std::to_string(*current().process) + " " + reason);
}

void Typist::tryAgain(std::chrono::milliseconds delay, const std::string& reason,
                      const std::function<void()>& step) {
    if (++failures_ > maxFailures || connection_.isBroken()) {
        fail(reason);
    } else {
        wait(
            delay, [] { return false; }, [step](bool) { step(); });
    }
}

void Typist::wait(std::chrono::milliseconds timeout, std::function<bool()> condition,
                  std::function<void(bool)> next) {
    waiting_ = {std::move(condition), std::move(next)};
    waitingDeadline_.set(timeout, [this] { endWaiting(waiting_->condition()); });
    handleChange();
}

void Typist::handleChange() {
    if (waiting_ && waiting_->condition()) {
        endWaiting(true);
    }
}

void Typist::endWaiting(bool holds) {
    const auto next = std::move(waiting_->next);
    waiting_.reset();
    waitingDeadline_.clear();
    next(holds);
}

void Typist::probeTarget() {
    if (const xcb_window_t window = front_.window(); window != XCB_NONE) {
        isProbing_ = ping_.send(window).has_value();
        listen();
    }
}

void Typist::handleMessage(const xcb_client_message_event_t& message) {
    const auto answer = ping_.answerIn(message);
    if (!answer) {
        return;
    }
    if (mapPing_ && mapPing_->window == answer->window && mapPing_->serial <= answer->serial) {
        mapPing_.reset();
        handleChange();
    }
    if (std::exchange(isProbing_, false)) {
        listen();
    }
    unread_.handleAnswer(*answer);
}

// Answers to a ping come as messages on the root window.
void Typist::listen() {
    const bool awaitsAnswer = isBusy_ || isProbing_ || !unread_.isEmpty();
    connection_.selectRootEvents(
        XCB_EVENT_MASK_PROPERTY_CHANGE |
        (awaitsAnswer ? std::uint32_t{XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY} : 0U));
}

}  // namespace tarvik::linuxdesktop
