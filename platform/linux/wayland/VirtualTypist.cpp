// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/VirtualTypist.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/linux/input/SocketBacklog.h"
#include "platform/linux/wayland/NarrowKeys.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// How many characters are sent before the focus is asked for again.
constexpr std::size_t burstLength = 200;
// How long a target may take to come to the front, or to read a burst.
constexpr auto targetTimeout = 30s;
constexpr auto activationInterval = 50ms;
// A compositor or a program may take the first keys by the old map. An X server reads the new one
// from a file, and its programs then read it from the X server.
constexpr auto keymapDelay = 20ms;
constexpr auto x11KeymapDelay = 200ms;
constexpr auto maxReadingDelay = 50ms;
// For programs of which nobody tells whether they have read their events.
constexpr auto unobservedDelay = 200ms;
// A busy program may take longer to read its last keys. Until then the user's own keys go there.
constexpr auto borrowedFocusTimeout = 500ms;
// In bytes, with what the kernel adds. A socket takes some 200,000.
constexpr std::uint32_t maxBacklog = 32'000;

bool isWide(char32_t character) {
    constexpr char32_t lastNarrow = 0xFFFF;
    return character > lastNarrow;
}

}  // namespace

VirtualTypist::VirtualTypist(WaylandConnection& connection, WindowFocus& focus, EventLoop& loop,
                             platform::Log& log)
    : connection_(connection),
      focus_(focus),
      log_(log),
      server_(addressOfServer(connection.descriptor())),
      loop_(loop),
      keyboard_(connection),
      delay_(loop) {
    keyboard_.setKeymap(keymap_.text());
    keyboard_.setModifiers(0);
}

VirtualTypist::~VirtualTypist() {
    for (const Item& item : items_) {
        if (const std::size_t left = item.text.characters.size() - item.position; left > 0) {
            report("not delivered: the connection to the compositor ends", left);
        }
        item.onTyped();
    }
}

void VirtualTypist::type(TypedText text, std::int64_t window, std::function<void()> onTyped) {
    items_.push_back({std::move(text), window, std::move(onTyped)});
    if (!isBusy_) {
        beginNext();
    }
}

void VirtualTypist::lendKeyboard(std::uint32_t xNumber) {
    const auto found = findBorrower(xNumber);
    if (found == items_.end()) {
        items_.push_back({{}, 0, [] {}, 0, xNumber});
        if (!isBusy_) {
            beginNext();
        }
    } else if (found == items_.begin()) {
        lend();
    }
}

// The window in front is known from before the loan, so that it is asked for again.
void VirtualTypist::giveKeyboardBack(std::uint32_t xNumber) {
    const auto found = findBorrower(xNumber);
    if (found == items_.end()) {
        return;
    }
    if (found != items_.begin()) {
        items_.erase(found);
        return;
    }
    found->isOver = true;
    focus_.ask([this] {
        if (isBusy_ && current().isOver) {
            endLoan();
        }
    });
}

std::deque<VirtualTypist::Item>::iterator VirtualTypist::findBorrower(std::uint32_t xNumber) {
    return std::ranges::find_if(
        items_, [xNumber](const Item& item) { return item.borrower == xNumber && !item.isOver; });
}

void VirtualTypist::whenIdle(std::function<void()> onIdle) {
    onIdle_ = std::move(onIdle);
    if (!isBusy_) {
        beginNext();
    }
}

void VirtualTypist::accompanyAlt() {
    keyboard_.setModifiers(TextKeymap::altModifier);
    tap(TextKeymap::neutralStroke());
    keyboard_.setModifiers(0);
    modifiers_ = 0;
}

void VirtualTypist::beginNext() {
    isBusy_ = !items_.empty();
    if (isBusy_) {
        targetDeadline_ = std::chrono::steady_clock::now() + targetTimeout;
        current().borrower != 0 ? lend() : findTarget();
    } else if (const auto onIdle = std::exchange(onIdle_, nullptr)) {
        onIdle();
    }
}

// The X server knows when the window has the keyboard, and its texts are typed by another thread.
void VirtualTypist::lend() {
    wait(targetTimeout, &VirtualTypist::endText);
    focus_.ask([this, borrower = current().borrower] {
        if (!isBusy_ || current().borrower != borrower || current().isOver) {
            return;
        }
        if (const std::int64_t window = focus_.windowOfX(borrower); window != 0) {
            hasActivated_ = true;
            focus_.activate(window);
        } else {
            endLoan();
        }
    });
}

void VirtualTypist::endLoan() {
    delay_.clear();
    endText();
}

void VirtualTypist::findTarget() {
    focus_.ask([this] { lookAtFocus(); });
}

bool VirtualTypist::isInFront() const {
    const Item& item = items_.front();
    const std::int64_t front = focus_.front().number;
    return !item.hasTarget() ||
           (front != 0 && front == focus_.windowOf(item.text.process, item.window));
}

void VirtualTypist::lookAtFocus() {
    if (!isInFront()) {
        activateTarget();
        return;
    }
    target_ = focus_.front();
    if (charactersLeft().empty()) {
        endText();
    } else if (needsInputMethod()) {
        beginInputMethod();
    } else {
        prepareKeymap();
    }
}

bool VirtualTypist::needsInputMethod() const {
    return !target_.isX11 && std::ranges::any_of(charactersLeft(), isWide) &&
           hasNarrowKeys(target_.process);
}

void VirtualTypist::beginInputMethod() {
    if (const std::string refusal = InputMethod::refusal(connection_); !refusal.empty()) {
        commitByInputMethod(refusal);
        return;
    }
    inputMethod_.emplace(connection_, loop_, [this](const std::string& refusal) {
        // A text field may have come to the front that is not the target's.
        focus_.ask([this, refusal] { commitByInputMethod(refusal); });
    });
}

void VirtualTypist::commitByInputMethod(const std::string& refusal) {
    if (!isInFront()) {
        inputMethod_.reset();
        findTarget();
    } else if (refusal.empty() && inputMethod_->isActive()) {
        inputMethod_->commit(charactersLeft());
        verifyBurst(charactersLeft().size());
    } else {
        inputMethod_.reset();
        leaveOutWideCharacters(refusal.empty() ? "its text field listens no more" : refusal);
        lookAtFocus();
    }
}

void VirtualTypist::leaveOutWideCharacters(const std::string& reason) {
    std::u32string& characters = current().text.characters;
    const auto left = characters.begin() + static_cast<std::ptrdiff_t>(current().position);
    const auto end = std::remove_if(left, characters.end(), isWide);
    const auto count = static_cast<std::size_t>(characters.end() - end);
    characters.erase(end, characters.end());
    report("not delivered: the program would make other characters of these, and " + reason, count);
}

void VirtualTypist::activateTarget() {
    const auto process = current().text.process;
    const std::int64_t window = focus_.windowOf(process, current().window);
    if (window == 0) {
        fail(process ? "process " + std::to_string(*process) + " has no window"
                     : "the window is gone");
    } else if (isLate()) {
        fail(std::string("the window ") +
             (process ? "of process " + std::to_string(*process) + " " : "") +
             "does not come to the front");
    } else {
        hasActivated_ = true;
        focus_.activate(window);
        focus_.ask([this] {
            if (isInFront()) {
                lookAtFocus();
            } else {
                wait(activationInterval, &VirtualTypist::findTarget);
            }
        });
    }
}

void VirtualTypist::prepareKeymap() {
    const std::u32string_view left = charactersLeft();
    if (!keymap_.cover(left.substr(0, TextKeymap::fittingLength(left)))) {
        sendBurst();
    } else if (keyboard_.setKeymap(keymap_.text())) {
        // Programs get the map of the keyboard that was used last.
        tap(TextKeymap::neutralStroke());
        wait(target_.isX11 ? x11KeymapDelay : keymapDelay, &VirtualTypist::findTarget);
    } else {
        fail("no memory for a keyboard map");
    }
}

std::u32string_view VirtualTypist::charactersLeft() const {
    const Item& item = items_.front();
    return std::u32string_view(item.text.characters).substr(item.position);
}

void VirtualTypist::tap(TextKeymap::Stroke stroke) {
    keyboard_.key(stroke.key, true);
    keyboard_.key(stroke.key, false);
}

void VirtualTypist::sendBurst() {
    const std::u32string_view left = charactersLeft();
    const std::size_t length = std::min(burstLength, TextKeymap::fittingLength(left));
    for (const char32_t character : left.substr(0, length)) {
        const TextKeymap::Stroke stroke = keymap_.strokeOf(character);
        if (stroke.modifiers != modifiers_) {
            modifiers_ = stroke.modifiers;
            keyboard_.setModifiers(modifiers_);
        }
        tap(stroke);
    }
    if (std::exchange(modifiers_, 0) != 0) {
        keyboard_.setModifiers(0);
    }
    verifyBurst(length);
}

void VirtualTypist::verifyBurst(std::size_t length) {
    connection_.sync([this, changes = focus_.changeCount(), length] {
        focus_.ask([this, changes, length] { checkBurst(changes, length); });
    });
}

void VirtualTypist::checkBurst(std::uint64_t changesBefore, std::size_t length) {
    inputMethod_.reset();
    if (current().hasTarget() &&
        (focus_.changeCount() != changesBefore || focus_.front().number != target_.number)) {
        report("may have gone to another window, since the keyboard did", length);
    }
    current().position += length;
    burstTime_ = std::chrono::steady_clock::now();
    // A slow program has the whole time for each burst.
    targetDeadline_ = burstTime_ + targetTimeout;
    readingDelay_ = 1ms;
    awaitReading();
}

void VirtualTypist::awaitReading() {
    const bool isWhole = current().position == current().text.characters.size();
    const auto backlog = target_.isX11 ? std::nullopt : backlogOf(target_.process, server_);
    if (!backlog) {
        wait(unobservedDelay, isWhole ? &VirtualTypist::endText : &VirtualTypist::findTarget);
    } else if (backlog->toProgram <= (isWhole ? 0 : maxBacklog)) {
        isWhole ? endText() : findTarget();
    } else if (isLate()) {
        isWhole ? endText() : fail("process " + std::to_string(target_.process) + " reads nothing");
    } else {
        if (isWhole && std::chrono::steady_clock::now() > burstTime_ + borrowedFocusTimeout) {
            returnFocus();
        }
        wait(readingDelay_, &VirtualTypist::awaitReading);
        readingDelay_ = std::min<std::chrono::milliseconds>(2 * readingDelay_, maxReadingDelay);
    }
}

void VirtualTypist::returnFocus() {
    if (std::exchange(hasActivated_, false)) {
        focus_.giveBack();
    }
}

void VirtualTypist::endText() {
    returnFocus();
    const auto onTyped = std::move(current().onTyped);
    items_.pop_front();
    onTyped();
    beginNext();
}

void VirtualTypist::fail(const std::string& reason) {
    report("not delivered: " + reason, current().text.characters.size() - current().position);
    endText();
}

void VirtualTypist::report(const std::string& problem, std::size_t characters) {
    log_.write("TarvikDictate: typed text " + problem + " (" + std::to_string(characters) +
               " characters)");
}

void VirtualTypist::wait(std::chrono::milliseconds delay, void (VirtualTypist::*step)()) {
    delay_.set(delay, [this, step] { (this->*step)(); });
}

}  // namespace tarvik::linuxdesktop
