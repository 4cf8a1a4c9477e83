#include "platform/linux/accessibility/TextWrite.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

#include "platform/linux/accessibility/CallBatch.h"

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
// Fields that are bounded are shorter, and a longer text would be read with every piece.
constexpr std::int64_t longestBehind = 1000;

bool isYes(sd_bus_message* answer) {
    int yes = 0;
    return sd_bus_message_read(answer, "b", &yes) > 0 && yes != 0;
}

bool isSelectionIn(sd_bus_message* answer) {
    std::int32_t selections = 0;
    return sd_bus_message_read(answer, "i", &selections) > 0 && selections > 0;
}

// What a program has answered around the deletion of its selection. The calls follow each other
// closely, so they tell what the deletion itself did.
struct Deletion {
    bool hadSelection = false;
    std::optional<std::int64_t> caret;
    std::optional<std::string> deleted;
    std::optional<std::int64_t> countBefore;
    std::optional<std::int64_t> count;
    bool isAccepted = false;

    bool isOfSomethingElse() const {
        return !hadSelection && deleted && countBefore && count && *count < *countBefore;
    }
};

// As much of `text` as `found` begins with, in whole characters.
std::string commonBeginning(const std::string& text, const std::string& found) {
    auto end = std::mismatch(text.begin(), text.end(), found.begin(), found.end()).first;
    while (end != text.begin() && end != text.end() && (*end & 0xC0) == 0x80) {
        --end;
    }
    return {text.begin(), end};
}

// The same around the insertion of a text.
struct Insertion {
    std::optional<std::int64_t> countBefore;
    std::optional<std::string> behind;
    std::optional<std::int64_t> count;
    std::optional<std::string> found;
    std::optional<std::int64_t> caret;
    bool isAccepted = false;

    std::int64_t inserted(std::int64_t most) const {
        return isAccepted && countBefore && count
                   ? std::clamp<std::int64_t>(*count - *countBefore, 0, most)
                   : 0;
    }
};

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
    questions.add(widget_.newSelectionCount(),
                  [this](sd_bus_message* answer) { hasSelection_ = isSelectionIn(answer); });
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
    const auto deletion = std::make_shared<Deletion>();
    CallBatch calls(bus_, deadline_);
    calls.takeLateAnswers([deletion, bus = &bus_, widget = widget_, start = selectionStart_] {
        if (deletion->isOfSomethingElse()) {
            bus->send(widget.newInsertion(start, *deletion->deleted));
            bus->send(widget.newCaretMove(deletion->caret.value_or(start)));
        }
    });
    calls.add(widget_.newSelectionCount(), [deletion](sd_bus_message* answer) {
        deletion->hadSelection = isSelectionIn(answer);
    });
    calls.add(widget_.newCaretOffset(),
              [deletion](sd_bus_message* answer) { deletion->caret = integerIn(answer); });
    calls.add(widget_.newReading(selectionStart_, selectionEnd_),
              [deletion](sd_bus_message* answer) { deletion->deleted = plainTextIn(answer); });
    calls.add(widget_.newCharacterCount(),
              [deletion](sd_bus_message* answer) { deletion->countBefore = integerIn(answer); });
    calls.add(widget_.newDeletion(selectionStart_, selectionEnd_),
              [deletion](sd_bus_message* answer) { deletion->isAccepted = isYes(answer); });
    calls.add(widget_.newCharacterCount(),
              [deletion](sd_bus_message* answer) { deletion->count = integerIn(answer); });
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
    const auto insertion = std::make_shared<Insertion>();
    CallBatch calls(bus_, deadline_);
    calls.takeLateAnswers(
        [insertion, bus = &bus_, widget = widget_, offset = offset_, text = text_] {
            // The count may have grown by typed characters too, but they are not what stands here.
            const std::string there = commonBeginning(text, insertion->found.value_or(""));
            if (const auto inserted = insertion->inserted(widget.countOf(there)); inserted > 0) {
                bus->send(widget.newDeletion(offset, offset + inserted));
            }
        });
    calls.add(widget_.newCharacterCount(),
              [insertion](sd_bus_message* answer) { insertion->countBefore = integerIn(answer); });
    calls.add(widget_.newReading(offset_, std::min(offset_ + longestBehind, countBefore_)),
              [insertion](sd_bus_message* answer) { insertion->behind = plainTextIn(answer); });
    calls.add(widget_.newInsertion(offset_, text_),
              [insertion](sd_bus_message* answer) { insertion->isAccepted = isYes(answer); });
    calls.add(widget_.newCharacterCount(),
              [insertion](sd_bus_message* answer) { insertion->count = integerIn(answer); });
    calls.add(widget_.newReading(offset_, offset_ + countOfText()),
              [insertion](sd_bus_message* answer) { insertion->found = plainTextIn(answer); });
    calls.add(widget_.newCaretOffset(),
              [insertion](sd_bus_message* answer) { insertion->caret = integerIn(answer); });
    if (!calls.await()) {
        return giveUpOnSilence();
    }
    countBefore_ = insertion->countBefore.value_or(countBefore_);
    behind_ = insertion->behind;
    count_ = insertion->count;
    caret_ = insertion->caret;
    isAccepted_ = insertion->isAccepted;
    inserted_ = insertion->inserted(countOfText());
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
    if (hasArrived() || (isAccepted_ && hasSettled([this] { return hasArrived(); }))) {
        return platform::axErrorSuccess;
    }
    if (isAccepted_ && isCutOff()) {
        putBack();
        return platform::axErrorFailure;
    }
    if (inserted_ == 0) {
        return isAccepted_ ? declareUnreliable("does not insert what it says it inserts")
                           : platform::axErrorFailure;
    }
    // Part of it arrived: a field with a greatest length, for one.
    deleteInserted(inserted_);
    return platform::axErrorFailure;
}

// Qt's line edit takes the whole text anew, and cuts its end off at its greatest length.
bool TextWrite::isCutOff() {
    if (!count_ || !behind_ || widget_.countOf(*behind_) != countBefore_ - offset_) {
        return false;
    }
    std::optional<std::string> there;
    CallBatch look(bus_, deadline_);
    look.add(widget_.newReading(offset_, *count_),
             [&](sd_bus_message* answer) { there = plainTextIn(answer); });
    return look.await() && there && !there->ends_with(*behind_);
}

void TextWrite::putBack() {
    bus_.send(widget_.newDeletion(offset_, *count_));
    bus_.send(widget_.newInsertion(offset_, *behind_));
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
