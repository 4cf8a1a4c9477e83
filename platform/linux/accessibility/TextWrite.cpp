// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/TextWrite.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/linux/accessibility/CallBatch.h"
#include "platform/linux/accessibility/ElementQueries.h"
#include "platform/linux/accessibility/TextBeforeCaret.h"
#include "platform/linux/accessibility/TextParts.h"
#include "platform/linux/accessibility/TextState.h"
#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

using atspi::State;
using platform::AXError;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

// A program that takes longer for the queries would leave no time to verify the insertion.
constexpr milliseconds queryTimeout{300};
// Some programs carry a change out shortly after they have confirmed it.
constexpr milliseconds settleTimeout{200};
constexpr milliseconds settlePollInterval{20};
// To find out what became of a pending write, once the program replies again.
constexpr milliseconds lateTimeout{500};
// LibreOffice lays out many pages at once. The main thread does not wait for that: its write is
// pending then.
constexpr std::chrono::seconds layoutTimeout{5};
constexpr const char* silence = "does not answer";

}  // namespace

TextWrite::TextWrite(MessageBus& bus, std::shared_ptr<AtspiElement> element, std::string text,
                     Handlers handlers)
    : bus_(bus),
      element_(std::move(element)),
      widget_(bus, *element_),
      text_(std::move(text)),
      handlers_(std::move(handlers)) {}

AXError TextWrite::run(SteadyTime deadline) {
    deadline_ = deadline;
    if (element_->application->isGone) {
        return platform::axErrorInvalidUIElement;
    }
    if (element_->isUnreliable()) {
        return platform::axErrorCannotComplete;
    }
    // A late undo would hit whatever is written before it.
    if (!element_->application->lateReplies.expired()) {
        return refuse(platform::axErrorCannotComplete, "still owes replies");
    }
    // Checked before anything is changed: whether a message can carry the text.
    if (text_.find('\0') != std::string::npos || !widget_.newInsertion(0, text_)) {
        return refuse(platform::axErrorIllegalArgument, "cannot be sent such a text");
    }
    AXError status = inspect();
    if (status == platform::axErrorSuccess && selectionEnd_ > selectionStart_) {
        status = deleteSelection();
    }
    return status == platform::axErrorSuccess ? insert() : status;
}

AXError TextWrite::inspect() {
    const SteadyTime deadline = std::min(deadline_, steady_clock::now() + queryTimeout);
    if (!queryCapabilities(deadline)) {
        return failWithoutReply();
    }
    if (!element_->isEditableText) {
        return refuse(platform::axErrorInvalidUIElement, "does not describe its field");
    }
    if (!*element_->isEditableText) {
        return platform::axErrorAttributeUnsupported;
    }
    if (element_->application->toolkit.empty()) {
        // The toolkit decides the unit of offsets; a wrong guess would corrupt the text.
        return refuse(platform::axErrorCannotComplete, "does not name its toolkit");
    }
    const auto state = TextState::query(bus_, *element_, deadline);
    if (!state) {
        return failWithoutReply();
    }
    if (!state->states || !state->count) {
        return refuse(platform::axErrorInvalidUIElement, "does not describe its text");
    }
    if (!state->states->contains(State::editable) || state->states->contains(State::readOnly)) {
        return platform::axErrorAttributeUnsupported;
    }
    caret_ = state->caret;
    count_ = state->count;
    selectionStart_ = state->selectionStart;
    selectionEnd_ = state->selectionEnd;
    offset_ = selectionEnd_ > selectionStart_ ? selectionStart_ : caret_.value_or(-1);
    countBefore_ = *count_ - (selectionEnd_ - selectionStart_);
    // Without a caret there is no offset for the insertion.
    return offset_ >= 0 && countBefore_ >= 0
               ? platform::axErrorSuccess
               : refuse(platform::axErrorNoValue, "does not say where the caret is");
}

bool TextWrite::queryCapabilities(SteadyTime deadline) {
    CallBatch queries(bus_, deadline);
    queryElement(bus_, element_, queries);
    if (element_->application->toolkit.empty()) {
        queries.add(bus_.newPropertyCall(element_->application->root(), atspi::applicationInterface,
                                         "ToolkitName"),
                    [this](sd_bus_message* reply) {
                        element_->application->toolkit = textPropertyIn(reply).value_or("");
                    });
    }
    return queries.await();
}

AXError TextWrite::deleteSelection() {
    isChanging_ = true;
    CallBatch calls(bus_, deadline_);
    const auto deletion = addDeletion(calls, bus_, widget_, selectionStart_, selectionEnd_);
    if (!calls.await()) {
        element_->application->lateReplies = deletion;
        return failWithoutReply();
    }
    count_ = deletion->count;
    const auto isDeleted = [this] { return count_ && *count_ <= countBefore_; };
    if (isDeleted()) {
        return platform::axErrorSuccess;
    }
    if (!deletion->isAccepted) {
        return refuse(platform::axErrorFailure, "does not delete the selection");
    }
    return waitUntil(isDeleted) ? platform::axErrorSuccess
                                : failAfterLie("does not delete what it says it deletes");
}

AXError TextWrite::insert() {
    CallBatch calls(bus_, deadline_);
    insertion_ = addInsertion(
        calls, widget_, offset_, countBefore_, text_,
        [self = shared_from_this()] { self->handlers_.defer([self] { self->settle(); }); });
    if (!calls.await()) {
        element_->application->lateReplies = insertion_;
        isPending_ = bus_.isOpen();
        element_->application->isUnresponsive = isPending_;
        return isPending_ ? platform::axErrorCannotComplete : platform::axErrorAPIDisabled;
    }
    const AXError status = verifyInsertion();
    if (status == platform::axErrorSuccess) {
        moveCaret(offset_ + std::max(count_.value_or(0) - countBefore_, lengthOfText()));
    } else {
        // The text will be typed, and belongs where the selection was.
        moveCaret(offset_);
    }
    return status;
}

// The caret stays wherever the user has moved it meanwhile.
void TextWrite::settle() {
    if (element_->application->isGone) {
        return;
    }
    deadline_ = steady_clock::now() + lateTimeout;
    const bool hasArrived = verifyInsertion() == platform::axErrorSuccess;
    if (hasArrived && caret_ == offset_) {
        moveCaret(offset_ + lengthOfText());
    }
    if (hasArrived) {
        // The program was slow and has done what it was told.
        element_->application->isUnresponsive = false;
    }
    if (handlers_.onSettled(hasArrived)) {
        return;
    }
    if (!element_->hasLied) {
        handlers_.onUnreliable(element_->application->reasonToType(refusal_ ? refusal_ : silence));
    }
    if (hasArrived && insertion_->isAccepted) {
        takeBack(lengthThatArrived());
    }
}

// The text that is read decides, also where the program has refused to insert it.
AXError TextWrite::verifyInsertion() {
    countBefore_ = insertion_->countBefore.value_or(countBefore_);
    count_ = insertion_->count;
    found_ = insertion_->found.value_or("");
    caret_ = insertion_->caret;
    const bool canChange = insertion_->isAccepted && !hasGrown();
    // Asked before the wait, which may take all the time that is left. A text that is not there yet
    // must not count as truncated.
    const bool isCut = canChange && hasBegun() && isTruncated();
    if (!isCut &&
        (isInserted() || (learnsUtf16Units() && isInserted()) || goesOnOnNextPage() ||
         (canChange && waitUntil([this] { return isInserted() || goesOnOnNextPage(); })))) {
        return platform::axErrorSuccess;
    }
    if (insertion_->isAccepted && element_->isParagraph() && !count_) {
        // The insertion has scrolled its paragraph out of view, where no paragraph can be read.
        return platform::axErrorSuccess;
    }
    if (isCut || (insertion_->isAccepted && isTruncated())) {
        restoreTail();
        return refuse(platform::axErrorFailure, "has no room for the whole text");
    }
    if (insertion_->insertedLength() == 0) {
        return insertion_->isAccepted ? failAfterLie("does not insert what it says it inserts")
                                      : refuse(platform::axErrorFailure, "does not take the text");
    }
    // Part of the text was inserted, for example into a field with a length limit. Or something
    // else was: the Java bridge garbles characters beyond U+FFFF.
    takeBack(lengthToTakeBack());
    return refuse(platform::axErrorFailure, "takes another text than it is sent");
}

// Keys may have come between the replies to a pending write. Only what looks like the text is
// deleted then.
std::int64_t TextWrite::lengthToTakeBack() {
    const std::int64_t inserted = insertion_->insertedLength();
    if (!isPending_) {
        return inserted;
    }
    readText(inserted);
    return text_.starts_with(found_) && !found_.empty()
               ? inserted
               : std::min(inserted, widget_.lengthOf(commonPrefix(text_, found_)));
}

// LibreOffice lets a paragraph be read as far as its page goes. The rest is on the next page, where
// the caret is then. The whole text may be there, and its first page may be out of view.
bool TextWrite::goesOnOnNextPage() {
    if (!element_->isParagraph() || !insertion_->isAccepted) {
        return false;
    }
    deadline_ = std::max(deadline_, steady_clock::now() + layoutTimeout);
    const std::int64_t shown = count_.value_or(offset_) - offset_;
    if (shown > 0 && (shown < lengthOfText() ? readText(shown) : found_ == text_) && hasBegun()) {
        return true;
    }
    // The same words may have stood before the caret already.
    const bool hasChanged = count_ != countBefore_ || caret_ != offset_;
    const auto focus = element_->application->focus.lock();
    return hasChanged && focus && standsBeforeCaret(bus_, *focus, text_, deadline_);
}

// The text was counted in characters, so only its beginning was read back.
bool TextWrite::learnsUtf16Units() {
    const std::int64_t units = AtspiText::utf16LengthOf(text_);
    if (!insertion_->isAccepted || !count_ || *count_ - countBefore_ != units ||
        lengthOfText() == units) {
        return false;
    }
    element_->application->isKnownToCountUtf16Units = true;
    if (readText(lengthOfText()) && found_ == text_) {
        return true;
    }
    element_->application->isKnownToCountUtf16Units = false;
    return false;
}

// Whether the replies show at least the beginning of the text.
bool TextWrite::hasBegun() const {
    return !found_.empty() && text_.starts_with(found_) && insertion_->tail &&
           !insertion_->tail->starts_with(found_);
}

// Qt's line edit sets its whole text anew, and truncates it at its length limit. Whatever the user
// has typed meanwhile is no truncation, and a paragraph has no limit. The program's unit may not be
// known yet.
bool TextWrite::isTruncated() {
    const std::string tail = insertion_->tail.value_or("");
    const std::int64_t length = countBefore_ - offset_;
    const bool isWhole =
        widget_.lengthOf(tail) == length || AtspiText::utf16LengthOf(tail) == length;
    if (!count_ || tail.empty() || !isWhole || element_->isParagraph()) {
        return false;
    }
    std::optional<std::string> after;
    CallBatch query(bus_, deadline_);
    query.add(widget_.newReading(offset_, *count_),
              [&](sd_bus_message* reply) { after = textIn(reply); });
    return query.await() && after && isCutFrom(*after, text_ + tail);
}

void TextWrite::restoreTail() {
    takeBack(*count_ - offset_);
    bus_.send(widget_.newInsertion(offset_, *insertion_->tail));
}

void TextWrite::undo() {
    if (insertion_->isAccepted) {
        takeBack(lengthThatArrived());
        moveCaret(offset_);
    }
}

// A text that cannot be read does not show that its program counts UTF-16 units.
std::int64_t TextWrite::lengthThatArrived() const {
    const std::int64_t units = AtspiText::utf16LengthOf(text_);
    return count_ && *count_ - countBefore_ == units ? units : lengthOfText();
}

void TextWrite::reportSilence() {
    handlers_.onUnreliable(element_->application->reasonToType(silence));
}

// For a program that has ended the bus answers, with errors.
AXError TextWrite::refuse(AXError status, const char* reason) {
    if (!element_->application->isGone) {
        refusal_ = reason;
    }
    return status;
}

AXError TextWrite::failWithoutReply() {
    if (!bus_.isOpen()) {
        return platform::axErrorAPIDisabled;
    }
    element_->application->isUnresponsive = true;
    hasNotBegun_ = !isChanging_;
    if (isChanging_) {
        reportSilence();
    }
    return platform::axErrorCannotComplete;
}

AXError TextWrite::failAfterLie(const char* reason) {
    element_->hasLied = true;
    handlers_.onUnreliable(element_->application->reasonToType(reason));
    return platform::axErrorCannotComplete;
}

bool TextWrite::waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::min(deadline_, steady_clock::now() + settleTimeout);
    while (steady_clock::now() < deadline) {
        bus_.dispatchUntil([] { return false; },
                           std::min(deadline, steady_clock::now() + settlePollInterval));
        if (!readText(lengthOfText())) {
            return false;
        }
        if (condition()) {
            return true;
        }
    }
    return false;
}

bool TextWrite::hasGrown() const {
    // More than expected is right too: the program completes the text, or the user types.
    return count_ && *count_ - countBefore_ >= lengthOfText();
}

bool TextWrite::isInserted() {
    if (!count_ || *count_ == countBefore_) {
        return false;
    }
    // The single-line field of GTK 4 replies with an empty text, and a password field with bullets.
    // There only the count can tell.
    if (found_.empty() || element_->isPasswordField()) {
        return hasGrown();
    }
    // The user may be deleting at the same time, so fewer characters can be right.
    return found_ == text_ && (hasGrown() || !isTruncated());
}

bool TextWrite::readText(std::int64_t length) {
    CallBatch query(bus_, deadline_);
    query.add(widget_.newCharacterCount(),
              [this](sd_bus_message* reply) { count_ = integerPropertyIn(reply); });
    query.add(widget_.newReading(offset_, offset_ + length),
              [this](sd_bus_message* reply) { found_ = textIn(reply).value_or(""); });
    return query.await();
}

void TextWrite::takeBack(std::int64_t length) {
    // Awaited, so that the text which is typed instead does not arrive before the deletion.
    awaitReply(widget_.newDeletion(offset_, offset_ + length));
}

void TextWrite::moveCaret(std::int64_t offset) {
    // A caret of -1 is in another widget, behind a text that goes on there.
    if (caret_ != offset && caret_ != -1) {
        // Awaited, so that the caret does not move after the user's next action. The text is right
        // whatever the reply is.
        awaitReply(widget_.newCaretMove(offset));
    }
}

void TextWrite::awaitReply(BusMessage call) {
    CallBatch calls(bus_, deadline_);
    calls.add(std::move(call), [](sd_bus_message* /*reply*/) {});
    calls.await();
}

}  // namespace tarvik::linuxdesktop
