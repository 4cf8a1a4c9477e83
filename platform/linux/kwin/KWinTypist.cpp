// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/KWinTypist.h"

#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// How long a window may take to come to the front.
constexpr auto targetTimeout = 5s;
constexpr auto activationInterval = 50ms;
constexpr auto commitTimeout = 2s;
// Between the pieces of one dictation the input method stays.
constexpr auto idleTimeout = 3s;

}  // namespace

KWinTypist::KWinTypist(WindowFocus& focus, FocusedField& field, EventLoop& loop, platform::Log& log)
    : focus_(focus),
      field_(field),
      log_(log),
      delay_(loop),
      answerDeadline_(loop),
      idleDeadline_(loop) {}

KWinTypist::~KWinTypist() {
    for (const Item& item : items_) {
        report("not delivered: the connection to KWin ends", item.text.characters.size());
        item.onTyped();
    }
}

void KWinTypist::type(TypedText text, std::int64_t window, std::function<void()> onTyped) {
    items_.push_back({std::move(text), window, std::move(onTyped)});
    if (!isBusy_) {
        beginNext();
    }
}

void KWinTypist::whenIdle(std::function<void()> onIdle) {
    onIdle_ = std::move(onIdle);
    if (!isBusy_) {
        beginNext();
    }
}

void KWinTypist::beginNext() {
    isBusy_ = !items_.empty();
    if (isBusy_) {
        idleDeadline_.clear();
        targetDeadline_ = std::chrono::steady_clock::now() + targetTimeout;
        findTarget();
        return;
    }
    idleDeadline_.set(idleTimeout, [this] { field_.giveBack(); });
    if (const auto onIdle = std::exchange(onIdle_, nullptr)) {
        onIdle();
    }
}

void KWinTypist::findTarget() {
    focus_.ask([this] { lookAtFocus(); });
}

bool KWinTypist::isInFront() const {
    const Item& item = items_.front();
    const WindowFocus::Window front = focus_.front();
    return !item.text.process || (front.process == *item.text.process &&
                                  front.number == focus_.windowOf(front.process, item.window));
}

void KWinTypist::lookAtFocus() {
    if (isInFront()) {
        awaitField();
    } else {
        activateTarget();
    }
}

void KWinTypist::activateTarget() {
    const platform::ProcessIdentifier process = *current().text.process;
    const std::int64_t window = focus_.windowOf(process, current().window);
    if (window == 0) {
        fail("process " + std::to_string(process) + " has no window");
    } else if (std::chrono::steady_clock::now() > targetDeadline_) {
        fail("the window of process " + std::to_string(process) + " does not come to the front");
    } else {
        hasActivated_ = true;
        focus_.activate(window);
        delay_.set(activationInterval, [this] { findTarget(); });
    }
}

void KWinTypist::awaitField() {
    field_.request([this](const std::string& refusal) {
        if (!refusal.empty()) {
            fail(refusal);
            return;
        }
        // The field may have come with another window.
        focus_.ask([this] {
            if (isInFront()) {
                commit();
            } else {
                activateTarget();
            }
        });
    });
}

void KWinTypist::commit() {
    target_ = focus_.front();
    answerDeadline_.set(commitTimeout, [this] {
        report("may be lost: KWin does not answer", current().text.characters.size());
        endText();
    });
    field_.commit(current().text.characters,
                  [this, changes = focus_.changeCount(), number = number_] {
                      if (isCurrent(number)) {
                          answerDeadline_.clear();
                          focus_.ask([this, changes] { checkFocus(changes); });
                      }
                  });
}

void KWinTypist::checkFocus(std::uint64_t changesBefore) {
    if (current().text.process &&
        (focus_.changeCount() != changesBefore || focus_.front().number != target_.number)) {
        report("may have gone to another window, since the keyboard did",
               current().text.characters.size());
    }
    endText();
}

void KWinTypist::endText() {
    if (std::exchange(hasActivated_, false)) {
        focus_.giveBack();
    }
    const auto onTyped = std::move(current().onTyped);
    items_.pop_front();
    ++number_;
    onTyped();
    beginNext();
}

void KWinTypist::fail(const std::string& reason) {
    report("not delivered: " + reason, current().text.characters.size());
    endText();
}

void KWinTypist::report(const std::string& problem, std::size_t characters) {
    log_.write("TarvikDictate: typed text " + problem + " (" + std::to_string(characters) +
               " characters)");
}

}  // namespace tarvik::linuxdesktop
