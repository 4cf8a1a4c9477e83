#include "platform/linux/x11/Typist.h"

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// How long a program may take to come to the front or to read what was typed there, or another one
// to let go of the keyboard.
constexpr auto patience = 300ms;
// A program needs this long to look at a changed keyboard map if it cannot tell that it has.
constexpr auto settling = 20ms;
// A program that does not tell has looked up its keys by then; one that tells may be busy.
constexpr auto consumption = 200ms;
constexpr auto longestConsumption = 1s;
// Whoever waits for the end waits no longer than a second in all.
constexpr auto lastConsumption = 700ms;
// Keys may be needed again for the next piece of a dictation.
constexpr auto lending = 700ms;
constexpr int mostFailures = 12;
// The server listens to us alone for the length of a burst, so it is kept short.
constexpr std::size_t burstLength = 40;

}  // namespace

Typist::Typist(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front, HotKeys& hotKeys,
               PollLoop& loop, platform::Log& log)
    : connection_(connection),
      keyboard_(keyboard),
      front_(front),
      log_(log),
      burst_(connection, keyboard, front, hotKeys),
      ping_(connection),
      waitingDeadline_(loop),
      consumedDeadline_(loop),
      restoreDeadline_(loop) {}

Typist::~Typist() {
    for (const TypedText& text : texts_) {
        const std::size_t typed = &text == &texts_.front() ? position_ : 0;
        reportLoss("the connection to the X server ends", text.characters.size() - typed);
    }
    keyboard_.restore();
    // A socket that is closed with unread events in it may take unread requests along.
    connection_.synchronise();
    if (const auto action = std::exchange(whenIdle_, nullptr)) {
        action();
    }
}

void Typist::type(TypedText text) {
    if (text.characters.empty()) {
        return;
    }
    const std::size_t started = isBusy_ ? 1 : 0;
    if (texts_.size() > started && texts_.back().process == text.process) {
        texts_.back().characters += text.characters;
    } else {
        texts_.push_back(std::move(text));
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
    if (texts_.empty()) {
        endTyping();
    } else {
        position_ = 0;
        failures_ = 0;
        reachTarget();
    }
}

// The keys that are lent yield nothing any more after the end.
void Typist::endTyping() {
    if (whenIdle_ && keyboard_.lendsKeys() && !isConsumed_) {
        wait(
            lastConsumption, [this] { return isConsumed_; },
            [this](bool) {
                setConsumed();
                beginNext();
            });
        return;
    }
    isBusy_ = false;
    listen();
    if (keyboard_.lendsKeys()) {
        restoreDeadline_.set(lending, [this] { keyboard_.restore(); });
    }
    if (const auto action = std::exchange(whenIdle_, nullptr)) {
        action();
    }
}

void Typist::reachTarget() {
    const auto process = texts_.front().process;
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
        patience, [this] { return front_.isInFront(*texts_.front().process); },
        [this](bool isInFront) {
            if (isInFront) {
                planRound();
            } else {
                failForProcess("did not come to the front");
            }
        });
}

// As many characters as there are keys for. A key that was lent for another character is taken only
// after its reader has looked it up: programs look keys up in the map of that moment.
void Typist::planRound() {
    const xcb_window_t front = front_.window();
    if (front != target_ && !isConsumed_ && keyboard_.lendsKeys()) {
        // The answer of this window would say nothing of what the one before has read.
        wait(
            longestConsumption, [this] { return isConsumed_; }, [this](bool) { planRound(); });
        return;
    }
    target_ = front;
    keyboard_.refresh();
    const KeyboardState state = KeyboardState::read(connection_);
    const std::u32string& characters = texts_.front().characters;
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
        if (!isConsumed_) {
            wait(
                longestConsumption, [this] { return isConsumed_; }, [this](bool) { planRound(); });
            return;
        }
        keyboard_.reclaimKeys({});
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
        keyboard_.lendKeys(lacking);
        waitUntilRead();
    }
}

// A program may look at a changed map late, and would then read the keys with the old one. One that
// does not answer in time gets them all the same, and perhaps wrong: a program that hangs must not
// hold up every other text.
void Typist::waitUntilRead() {
    if (ping_.ask(target_)) {
        wait(
            patience, [this] { return ping_.isAnswered(); }, [this](bool) { typeRound(); });
    } else {
        wait(
            settling, [] { return false; }, [this](bool) { typeRound(); });
    }
}

void Typist::typeRound() {
    const TypedText& text = texts_.front();
    while (position_ < roundEnd_) {
        const std::size_t length = std::min(burstLength, roundEnd_ - position_);
        switch (burst_.type(std::u32string_view(text.characters).substr(position_, length),
                            text.process)) {
            case KeyBurst::Outcome::done:
                position_ += length;
                failures_ = 0;
                awaitConsumption();
                break;
            case KeyBurst::Outcome::notInFront:
                tryAgain(0ms, "its process does not stay in front", [this] { reachTarget(); });
                return;
            case KeyBurst::Outcome::keyboardTaken:
                tryAgain(patience / mostFailures, "another program has taken the keyboard",
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
    if (position_ < texts_.front().characters.size()) {
        planRound();
    } else if (broughtToFront_ != XCB_NONE) {
        // What the user types meanwhile goes to the wrong window.
        wait(
            patience, [this] { return isConsumed_; }, [this](bool) { giveFocusBack(); });
    } else {
        endText();
    }
}

// Unless the user has gone somewhere else meanwhile.
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
    texts_.pop_front();
    beginNext();
}

void Typist::fail(const std::string& reason) {
    reportLoss(reason, texts_.front().characters.size() - position_);
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
    fail("process " + std::to_string(*texts_.front().process) + " " + reason);
}

void Typist::tryAgain(std::chrono::milliseconds delay, const std::string& reason,
                      const std::function<void()>& step) {
    if (++failures_ > mostFailures || connection_.isBroken()) {
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
    noticeChange();
}

void Typist::noticeChange() {
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

void Typist::noticeMessage(const xcb_client_message_event_t& message) {
    if (ping_.noticeMessage(message)) {
        setConsumed();
    }
}

// After every burst: whatever comes next, a round may end here.
void Typist::awaitConsumption() {
    isConsumed_ = false;
    const bool tells = ping_.ask(target_);
    consumedDeadline_.set(tells ? longestConsumption : consumption, [this] { setConsumed(); });
}

void Typist::setConsumed() {
    consumedDeadline_.clear();
    isConsumed_ = true;
    listen();
    noticeChange();
}

// Answers to a ping come as messages on the root window.
void Typist::listen() {
    const bool awaitsAnswer = isBusy_ || !isConsumed_;
    connection_.selectRootEvents(
        XCB_EVENT_MASK_PROPERTY_CHANGE |
        (awaitsAnswer ? std::uint32_t{XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY} : 0U));
}

}  // namespace tarvik::linuxdesktop
