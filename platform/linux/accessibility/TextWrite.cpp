#include "platform/linux/accessibility/TextWrite.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/linux/accessibility/CallBatch.h"
#include "platform/linux/accessibility/TextOrders.h"

namespace tarvik::linuxdesktop {

using accessible::State;
using platform::AXError;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

// A program that takes longer for harmless questions would leave no time to see the text arrive.
constexpr milliseconds patienceForQuestions{300};
// Some programs take a text over a little after they have said so.
constexpr milliseconds patienceForArrival{200};
constexpr milliseconds pauseBetweenLooks{20};

}  // namespace

TextWrite::TextWrite(MessageBus& bus, AtspiElement& element, const std::string& text,
                     std::function<void(const std::string&)> onTrouble)
    : bus_(bus),
      element_(element),
      widget_(bus, element),
      text_(text),
      onTrouble_(std::move(onTrouble)) {}

AXError TextWrite::run(MessageBus::Moment deadline) {
    deadline_ = deadline;
    if (element_.application->isGone) {
        return platform::axErrorInvalidUIElement;
    }
    if (element_.application->isUnreliable) {
        return platform::axErrorCannotComplete;
    }
    // A text that no message can carry is found out before anything has been changed.
    if (text_.find('\0') != std::string::npos || !widget_.newInsertion(0, text_)) {
        return platform::axErrorIllegalArgument;
    }
    AXError status = inspect();
    if (status == platform::axErrorSuccess && selectionEnd_ > selectionStart_) {
        status = deleteSelection();
    }
    return status == platform::axErrorSuccess ? insert() : status;
}

AXError TextWrite::inspect() {
    const MessageBus::Moment limit =
        std::min(deadline_, steady_clock::now() + patienceForQuestions);
    if (!askWhatItIs(limit)) {
        return giveUpOnSilence();
    }
    if (!element_.isEditableText) {
        return platform::axErrorInvalidUIElement;
    }
    if (!*element_.isEditableText) {
        return platform::axErrorAttributeUnsupported;
    }
    if (element_.application->toolkit.empty()) {
        // Not known what it counts a text in; a wrong guess would put rubbish into the text.
        return platform::axErrorCannotComplete;
    }
    if (!askForText(limit)) {
        return giveUpOnSilence();
    }
    if (!states_ || !count_) {
        return platform::axErrorInvalidUIElement;
    }
    if (!states_->contains(State::editable) || states_->contains(State::readOnly)) {
        return platform::axErrorAttributeUnsupported;
    }
    offset_ = selectionEnd_ > selectionStart_ ? selectionStart_ : caret_.value_or(-1);
    countBefore_ = *count_ - (selectionEnd_ - selectionStart_);
    // A text that does not hold the caret has no place to insert.
    return offset_ >= 0 && countBefore_ >= 0 ? platform::axErrorSuccess : platform::axErrorNoValue;
}

bool TextWrite::askWhatItIs(MessageBus::Moment limit) {
    CallBatch questions(bus_, limit);
    if (!element_.isEditableText) {
        questions.add(newAccessibleCall("GetInterfaces"), [this](sd_bus_message* answer) {
            element_.isEditableText = accessible::isEditableTextIn(answer);
        });
    }
    if (element_.application->toolkit.empty()) {
        questions.add(bus_.newPropertyCall(element_.application->root(),
                                           accessible::applicationInterface, "ToolkitName"),
                      [this](sd_bus_message* answer) {
                          element_.application->toolkit = textIn(answer).value_or("");
                      });
    }
    return questions.await();
}

bool TextWrite::askForText(MessageBus::Moment limit) {
    CallBatch questions(bus_, limit);
    questions.add(newAccessibleCall("GetState"),
                  [this](sd_bus_message* answer) { states_ = accessible::statesIn(answer); });
    askForSelection(questions);
    questions.add(widget_.newCaretOffset(),
                  [this](sd_bus_message* answer) { caret_ = integerIn(answer); });
    questions.add(widget_.newCharacterCount(),
                  [this](sd_bus_message* answer) { count_ = integerIn(answer); });
    return questions.await();
}

void TextWrite::askForSelection(CallBatch& questions) {
    // The program answers in the order of the calls. What it says about a selection counts only
    // when it says that there is one; otherwise some answer an error, some a stale range.
    questions.add(widget_.newSelectionCount(), [this](sd_bus_message* answer) {
        hasSelection_ = plainIntegerIn(answer).value_or(0) > 0;
    });
    questions.add(widget_.newSelection(), [this](sd_bus_message* answer) {
        std::int32_t start = 0;
        std::int32_t end = 0;
        if (hasSelection_ && sd_bus_message_read(answer, "ii", &start, &end) > 0) {
            selectionStart_ = std::min(start, end);
            selectionEnd_ = std::max(start, end);
        }
    });
}

AXError TextWrite::deleteSelection() {
    CallBatch calls(bus_, deadline_);
    const auto deletion = orderDeletion(calls, bus_, widget_, selectionStart_, selectionEnd_);
    if (!calls.await()) {
        return giveUpOnSilence();
    }
    count_ = deletion->count;
    const auto isDeleted = [this] { return count_ && *count_ <= countBefore_; };
    if (isDeleted()) {
        return platform::axErrorSuccess;
    }
    if (!deletion->isAccepted) {
        return platform::axErrorFailure;
    }
    return hasSettled(isDeleted) ? platform::axErrorSuccess
                                 : declareUnreliable("does not delete what it says it deletes");
}

AXError TextWrite::insert() {
    CallBatch calls(bus_, deadline_);
    insertion_ = orderInsertion(calls, bus_, widget_, offset_, countBefore_, text_);
    if (!calls.await()) {
        return giveUpOnSilence();
    }
    countBefore_ = insertion_->countBefore.value_or(countBefore_);
    count_ = insertion_->count;
    caret_ = insertion_->caret;
    const AXError status = judge();
    if (status == platform::axErrorSuccess) {
        moveCaret(offset_ + std::max(*count_ - countBefore_, countOfText()));
    } else {
        // What is typed now belongs where the selection was.
        moveCaret(offset_);
    }
    return status;
}

AXError TextWrite::judge() {
    if (hasArrived() || (insertion_->isAccepted && hasSettled([this] { return hasArrived(); }))) {
        return platform::axErrorSuccess;
    }
    if (insertion_->isAccepted && isCutOff()) {
        putBack();
        return platform::axErrorFailure;
    }
    const std::int64_t inserted = insertion_->inserted(countOfText());
    if (inserted == 0) {
        return insertion_->isAccepted ? declareUnreliable("does not insert what it says it inserts")
                                      : platform::axErrorFailure;
    }
    // Part of it arrived: a field with a greatest length, for one.
    deleteInserted(inserted);
    return platform::axErrorFailure;
}

// Qt's line edit takes the whole text anew, and cuts its end off at its greatest length.
bool TextWrite::isCutOff() {
    if (!count_ || !insertion_->behind ||
        widget_.countOf(*insertion_->behind) != countBefore_ - offset_) {
        return false;
    }
    std::optional<std::string> there;
    CallBatch look(bus_, deadline_);
    look.add(widget_.newReading(offset_, *count_),
             [&](sd_bus_message* answer) { there = plainTextIn(answer); });
    return look.await() && there && !there->ends_with(*insertion_->behind);
}

void TextWrite::putBack() {
    bus_.send(widget_.newDeletion(offset_, *count_));
    bus_.send(widget_.newInsertion(offset_, *insertion_->behind));
}

void TextWrite::takeBack() {
    deleteInserted(countOfText());
    moveCaret(offset_);
}

AXError TextWrite::giveUpOnSilence() {
    return bus_.isOpen() ? declareUnreliable("does not answer") : platform::axErrorAPIDisabled;
}

AXError TextWrite::declareUnreliable(const char* what) {
    element_.application->isUnreliable = true;
    const auto process = element_.application->process;
    onTrouble_("process " + (process ? std::to_string(*process) : element_.application->busName) +
               " " + what + "; its text will be typed");
    return platform::axErrorCannotComplete;
}

bool TextWrite::hasSettled(const std::function<bool()>& isRight) {
    const auto limit = std::min(deadline_, steady_clock::now() + patienceForArrival);
    while (steady_clock::now() < limit) {
        bus_.dispatchUntil([] { return false; },
                           std::min(limit, steady_clock::now() + pauseBetweenLooks));
        if (!readCount()) {
            return false;
        }
        if (isRight()) {
            return true;
        }
    }
    return false;
}

bool TextWrite::hasArrived() {
    if (!count_) {
        return false;
    }
    // More than expected is right too: the program has completed the text, or the user types.
    if (*count_ - countBefore_ >= countOfText()) {
        return true;
    }
    if (*count_ == countBefore_) {
        return false;
    }
    // The user may be deleting at the same time; then only the text itself can tell.
    bool isThere = false;
    CallBatch look(bus_, deadline_);
    look.add(widget_.newReading(offset_, offset_ + countOfText()),
             [&](sd_bus_message* answer) { isThere = plainTextIn(answer) == text_; });
    return look.await() && isThere && !isCutOff();
}

bool TextWrite::readCount() {
    CallBatch look(bus_, deadline_);
    look.add(widget_.newCharacterCount(),
             [this](sd_bus_message* answer) { count_ = integerIn(answer); });
    return look.await();
}

void TextWrite::deleteInserted(std::int64_t length) {
    bus_.send(widget_.newDeletion(offset_, offset_ + length));
}

void TextWrite::moveCaret(std::int64_t offset) {
    if (caret_ == offset) {
        return;
    }
    // Awaited, so that it does not come after what the user does next; but the text is right
    // whatever the answer is.
    CallBatch move(bus_, deadline_);
    move.add(widget_.newCaretMove(offset), [](sd_bus_message* /*answer*/) {});
    move.await();
}

BusMessage TextWrite::newAccessibleCall(const char* member) {
    return bus_.newCall(element_.object(), accessible::accessibleInterface, member);
}

}  // namespace tarvik::linuxdesktop
