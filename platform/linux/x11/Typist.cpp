// SPDX-License-Identifier: MIT

#include "platform/linux/x11/Typist.h"

#include <algorithm>
#include <utility>

#include "platform/linux/x11/TypingRound.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

// For a program to come to the front or to read what was typed there.
constexpr auto targetTimeout = 300ms;
// No event tells of a window that is gone before it got the focus back.
constexpr auto returnInterval = 1s;
// Nothing tells when another program lets go of the keyboard.
constexpr auto keyboardInterval = 50ms;
// The end of the program waits no longer than a second in all.
constexpr auto lookUpTimeoutAtEnd = 700ms;
// Keys may be needed again for the next piece of a dictation.
constexpr milliseconds restoreDelay = 700ms;
constexpr int maxFailures = 12;
// The server listens to this client alone during a burst, so bursts are short.
constexpr std::size_t maxBurstLength = 40;

}  // namespace

Typist::Typist(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front, HotKeys& hotKeys,
               PollLoop& loop, platform::Log& log, OnLift onLift,
               std::chrono::milliseconds maxKeyboardWait)
    : connection_(connection),
      keyboard_(keyboard),
      front_(front),
      log_(log),
      maxKeyboardWait_(maxKeyboardWait),
      burst_(connection, keyboard, front, hotKeys, std::move(onLift)),
      ping_(connection),
      answers_(loop),
      unread_(connection, loop, ping_, answers_,
              {[this] {
                   listen();
                   scheduleRestore();
                   handleChange();
               },
               [this](xcb_window_t window, std::size_t characters) {
                   reportLoss("its program has not answered for 30 s",
                              characters + TypingQueue::drop(queue_.takeWaitingFor(window)));
               },
               [this](std::size_t characters) {
                   reportLoss("its window was closed before its program had read it", characters);
               }}),
      targetWindow_(connection, front, loop, [this] { handleChange(); }),
      wait_(loop),
      pacing_(keyboard, answers_, unread_, wait_),
      restoreDeadline_(loop) {}

Typist::~Typist() {
    if (item_) {
        queue_.putBack(std::move(*item_));
    }
    for (const TypingQueue::Item& item : queue_.items()) {
        if (const auto lost = item.text.characters.size() - item.position; lost > 0) {
            reportLoss("the connection to the X server ends", lost);
        }
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

void Typist::type(TypedText text, xcb_window_t window, std::function<void()> onTyped) {
    queue_.push(std::move(text), window, std::move(onTyped));
    if (isBusy_) {
        handleChange();
        return;
    }
    isBusy_ = true;
    restoreDeadline_.clear();
    listen();
    beginNext();
}

void Typist::whenIdle(std::function<void()> action) {
    whenIdle_ = std::move(action);
    if (!isBusy_) {
        isBusy_ = true;
        endTyping();
    }
}

void Typist::beginNext() {
    const auto isReady = [this](xcb_window_t window) { return this->isReady(window); };
    item_ = queue_.take(isReady);
    failures_ = 0;
    target_ = XCB_NONE;
    if (item_) {
        reachTarget();
    } else if (queue_.isEmpty()) {
        endTyping();
    } else {
        wait_.begin(
            UnreadKeys::maxTimeout, [this, isReady] { return queue_.hasNext(isReady); },
            [this](bool) { beginNext(); });
    }
}

// Remapped keys yield nothing any more after the end, so the targets get time to look them up.
void Typist::endTyping() {
    const auto isRead = [this] { return !unread_.anyWindow(); };
    if (whenIdle_ && keyboard_.hasRemappedKeys() && !isRead()) {
        wait_.begin(lookUpTimeoutAtEnd, isRead, [this](bool) {
            unread_.clear();
            beginNext();
        });
        return;
    }
    isBusy_ = false;
    pacing_.endTyping();
    keyboardTaken_.reset();
    listen();
    scheduleRestore();
    if (const auto action = std::exchange(whenIdle_, nullptr)) {
        action();
    }
}

// A key that is restored too early yields nothing to a target that looks the key up late. Programs
// look a key up once more when their input method has answered, which nothing tells.
void Typist::scheduleRestore() {
    if (!isBusy_ && unread_.isEmpty() && keyboard_.hasRemappedKeys()) {
        const milliseconds delay =
            keyboard_.hasInputMethod() ? UnreadKeys::maxTimeout : restoreDelay;
        restoreDeadline_.set(delay, [this] { keyboard_.restore(); });
    }
}

void Typist::reachTarget() {
    using Place = TargetWindow::Place;
    const auto process = current().process;
    behind_ = XCB_NONE;
    inFront_ = XCB_NONE;
    // Until then the window manager names a window in front that may not have the focus. A window
    // that took the focus for a text would give it back to that one, for good: the server ignores a
    // window manager that sets the focus by the time of an earlier request.
    if (process && targetWindow_.isFocusOnItsWayBack()) {
        wait_.begin(
            returnInterval, [this] { return !targetWindow_.isFocusOnItsWayBack(); },
            [this](bool) { reachTarget(); });
        return;
    }
    const auto target = process ? targetWindow_.find(*process, item_->window)
                                : TargetWindow::Target{Place::inFront};
    switch (target.place) {
        case Place::behind:
            behind_ = target.window;
            [[fallthrough]];
        case Place::inFront:
            inFront_ = target.window;
            planRound();
            break;
        case Place::hidden:
            bringToFront(target.window);
            break;
        case Place::late:
            failForProcess("did not come to the front");
            break;
        case Place::missing:
            failForProcess("has no window");
            break;
        case Place::ended:
            failForProcess("has ended");
            break;
    }
}

void Typist::bringToFront(xcb_window_t window) {
    targetWindow_.bringToFront(window);
    wait_.begin(
        targetTimeout, [this, window] { return front_.isInFront(*current().process, window); },
        [this, window](bool isInFront) {
            if (isInFront) {
                reachTarget();
            } else {
                targetWindow_.await(*current().process);
                letOthersPass(window);
            }
        });
}

// The keys follow the change of the map at once. A program gets the announcement of the change
// before the keys, and reads the map then or later.
void Typist::planRound() {
    target_ = behind_ != XCB_NONE ? behind_ : front_.window();
    keyboard_.refresh();
    if (pacing_.awaitIbus([this] { reachTarget(); })) {
        return;
    }
    const TypingRound round = nextRound(keyboard_, burst_.readState(), current().characters,
                                        item_->position, unread_.characters());
    const bool isLast = round.end == current().characters.size();
    if (!isRead(target_) && (!isLast || !round.lacking.empty())) {
        waitFor(target_);
        return;
    }
    if (const auto other = unread_.windowTypedInto(targetTimeout);
        other && !round.lacking.empty()) {
        wait_.begin(
            targetTimeout, [this, other] { return isRead(*other); },
            [this](bool) { reachTarget(); });
        return;
    }
    if (round.end > item_->position) {
        roundEnd_ = round.end;
        keyboard_.remapKeys(round.lacking, round.kept, round.unusable);
        typeRound();
    } else if (const auto window = unread_.anyWindow()) {
        waitFor(*window);
    } else {
        fail("the keyboard has no spare key");
    }
}

// Other texts go first meanwhile, unless the keys have gone to no window. A target that has been
// brought to the front for its text has a short time to read.
void Typist::waitFor(xcb_window_t window) {
    if (!targetWindow_.isBroughtToFront() && window != XCB_NONE) {
        letOthersPass(window);
        return;
    }
    wait_.begin(
        targetTimeout, [this, window] { return isRead(window); },
        [this, window](bool hasRead) {
            if (hasRead) {
                reachTarget();
                return;
            }
            if (targetWindow_.isBroughtToFront()) {
                targetWindow_.giveFocusBack();
            }
            waitFor(window);
        });
}

void Typist::letOthersPass(xcb_window_t waitsFor) {
    item_->waitsFor = waitsFor;
    queue_.putBack(*std::exchange(item_, std::nullopt));
    beginNext();
}

void Typist::typeRound() {
    const TypedText& text = current();
    const bool areKeptApart = pacing_.areKeptApart(target_);
    const std::size_t burstLength = areKeptApart ? 1 : maxBurstLength;
    while (item_->position < roundEnd_) {
        if (pacing_.isDue(target_)) {
            pacing_.await(target_,
                          [this](bool isOver) { isOver ? typeRound() : waitFor(target_); });
            return;
        }
        const auto burst =
            std::u32string_view(text.characters)
                .substr(item_->position, std::min(burstLength, roundEnd_ - item_->position));
        const auto [outcome, typed] = burst_.type(burst, text.process, inFront_, behind_);
        if (typed > 0) {
            item_->position += typed;
            failures_ = 0;
            keyboardTaken_.reset();
            unread_.add(target_, burst.substr(0, typed), pacing_.method());
            listen();
            if (areKeptApart) {
                pacing_.handleKey(target_);
            }
        }
        switch (outcome) {
            case KeyBurst::Outcome::done:
                break;
            case KeyBurst::Outcome::notInFront:
                tryAgain("its process does not stay in front", [this] { reachTarget(); });
                return;
            case KeyBurst::Outcome::keyboardTaken:
                waitForKeyboard();
                return;
            case KeyBurst::Outcome::keysChanged:
                tryAgain("the keyboard map does not stay the same", [this] { planRound(); });
                return;
        }
    }
    endRound();
}

// Each text has the whole time, but all of them wait at once.
void Typist::waitForKeyboard() {
    const auto now = std::chrono::steady_clock::now();
    keyboardTaken_ = keyboardTaken_.value_or(now);
    if (now >= std::max(*keyboardTaken_, item_->posted) + maxKeyboardWait_ ||
        connection_.isBroken()) {
        fail("another program has taken the keyboard");
        return;
    }
    wait_.pause(keyboardInterval, [this] { reachTarget(); });
}

void Typist::endRound() {
    if (item_->position < current().characters.size()) {
        planRound();
    } else if (targetWindow_.isBroughtToFront()) {
        // Until then the user's own keys go to the wrong window.
        wait_.begin(
            targetTimeout, [this] { return isRead(targetWindow_.broughtToFront()); },
            [this](bool) { endText(); });
    } else {
        endText();
    }
}

void Typist::endText() {
    if (targetWindow_.isBroughtToFront()) {
        targetWindow_.giveFocusBack();
    }
    for (auto& onTyped : item_->onTyped) {
        unread_.whenRead(target_, std::move(onTyped));
    }
    beginNext();
}

void Typist::fail(const std::string& reason) {
    reportLoss(reason, current().characters.size() - item_->position);
    endText();
}

void Typist::reportLoss(const std::string& reason, std::size_t characters) {
    log_.write("TarvikDictate: typed text not delivered: " + reason + " (" +
               std::to_string(characters) + " characters)");
}

void Typist::tryAgain(const std::string& reason, const std::function<void()>& step) {
    if (++failures_ > maxFailures || connection_.isBroken()) {
        fail(reason);
    } else {
        wait_.pause(0ms, step);
    }
}

void Typist::probeTarget() {
    if (const xcb_window_t window = front_.window(); window != XCB_NONE) {
        unread_.add(window, {});
        listen();
    }
}

// Answers to a ping come as messages on the root window, which some toolkits send to those who
// listen to the root window itself, and others to those who listen to the windows in it.
void Typist::listen() {
    const bool awaitsAnswer = isBusy_ || unread_.anyWindow();
    if (!awaitsAnswer) {
        answers_.stop();
    }
    connection_.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE |
                                 (awaitsAnswer ? std::uint32_t{XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                                               XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY}
                                               : 0U));
}

}  // namespace tarvik::linuxdesktop
