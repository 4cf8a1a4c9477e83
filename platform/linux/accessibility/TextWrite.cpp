#include "platform/linux/accessibility/TextWrite.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/Text.h"
#include "platform/linux/accessibility/CallBatch.h"

namespace tarvik::linuxdesktop {

using accessible::editableTextInterface;
using accessible::State;
using accessible::textInterface;
using platform::AXError;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

// A program that takes longer for harmless questions would leave no time to see the text arrive.
constexpr milliseconds patienceForQuestions{300};
// Some programs take a text over a little after they have said so.
constexpr milliseconds patienceForArrival{200};
constexpr milliseconds pauseBetweenLooks{20};

bool isYes(sd_bus_message* answer) {
    int yes = 0;
    return sd_bus_message_read(answer, "b", &yes) > 0 && yes != 0;
}

}  // namespace

TextWrite::TextWrite(MessageBus& bus, AtspiElement& element, const std::string& text,
                     std::function<void(const std::string&)> onTrouble)
    : bus_(bus),
      element_(element),
      object_(element.object()),
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
    if (text_.find('\0') != std::string::npos || !newInsertText(0)) {
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
        return declareUnreliable("does not answer");
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
        return declareUnreliable("does not answer");
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
    questions.add(newTextProperty("CaretOffset"),
                  [this](sd_bus_message* answer) { caret_ = integerIn(answer); });
    questions.add(newTextProperty("CharacterCount"),
                  [this](sd_bus_message* answer) { count_ = integerIn(answer); });
    return questions.await();
}

void TextWrite::askForSelection(CallBatch& questions) {
    // The program answers in the order of the calls. What it says about a selection counts only
    // when it says that there is one; otherwise some answer an error, some a stale range.
    questions.add(bus_.newCall(object_, textInterface, "GetNSelections"),
                  [this](sd_bus_message* answer) {
                      std::int32_t selections = 0;
                      sd_bus_message_read(answer, "i", &selections);
                      hasSelection_ = selections > 0;
                  });
    questions.add(bus_.newCall(object_, textInterface, "GetSelection", "i", 0),
                  [this](sd_bus_message* answer) {
                      std::int32_t start = 0;
                      std::int32_t end = 0;
                      if (hasSelection_ && sd_bus_message_read(answer, "ii", &start, &end) > 0) {
                          selectionStart_ = std::min(start, end);
                          selectionEnd_ = std::max(start, end);
                      }
                  });
}

AXError TextWrite::deleteSelection() {
    CallBatch deletion(bus_, deadline_);
    deletion.add(newRangeCall(editableTextInterface, "DeleteText", selectionStart_, selectionEnd_),
                 [this](sd_bus_message* answer) { isAccepted_ = isYes(answer); });
    deletion.add(newTextProperty("CharacterCount"),
                 [this](sd_bus_message* answer) { count_ = integerIn(answer); });
    if (!deletion.await()) {
        return declareUnreliable("does not answer");
    }
    const auto isDeleted = [this] { return count_ && *count_ <= countBefore_; };
    if (isDeleted()) {
        return platform::axErrorSuccess;
    }
    if (!isAccepted_) {
        return platform::axErrorFailure;
    }
    return hasSettled(isDeleted) ? platform::axErrorSuccess
                                 : declareUnreliable("does not delete what it says it deletes");
}

AXError TextWrite::insert() {
    CallBatch insertion(bus_, deadline_);
    insertion.add(newInsertText(offset_),
                  [this](sd_bus_message* answer) { isAccepted_ = isYes(answer); });
    insertion.add(newTextProperty("CharacterCount"),
                  [this](sd_bus_message* answer) { count_ = integerIn(answer); });
    insertion.add(newTextProperty("CaretOffset"),
                  [this](sd_bus_message* answer) { caret_ = integerIn(answer); });
    if (!insertion.await()) {
        deleteInserted(countOfText());
        return declareUnreliable("does not answer");
    }
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
    if (!count_ || *count_ == countBefore_) {
        return isAccepted_ ? declareUnreliable("does not insert what it says it inserts")
                           : platform::axErrorFailure;
    }
    // Part of it arrived: a field with a greatest length, for one.
    deleteInserted(std::max<std::int64_t>(*count_ - countBefore_, 0));
    return platform::axErrorFailure;
}

void TextWrite::takeBack() {
    deleteInserted(count_ ? std::max<std::int64_t>(*count_ - countBefore_, 0) : countOfText());
    moveCaret(offset_);
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
    look.add(newRangeCall(textInterface, "GetText", offset_, offset_ + countOfText()),
             [&](sd_bus_message* answer) {
                 const char* found = nullptr;
                 isThere = sd_bus_message_read(answer, "s", &found) > 0 && found == text_;
             });
    return look.await() && isThere;
}

bool TextWrite::readCount() {
    CallBatch look(bus_, deadline_);
    look.add(newTextProperty("CharacterCount"),
             [this](sd_bus_message* answer) { count_ = integerIn(answer); });
    return look.await();
}

void TextWrite::deleteInserted(std::int64_t length) {
    if (length > 0) {
        bus_.send(newRangeCall(editableTextInterface, "DeleteText", offset_, offset_ + length));
    }
}

void TextWrite::moveCaret(std::int64_t offset) {
    if (caret_ == offset) {
        return;
    }
    // Awaited, so that it does not come after what the user does next; but the text is right
    // whatever the answer is.
    CallBatch move(bus_, deadline_);
    move.add(bus_.newCall(object_, textInterface, "SetCaretOffset", "i",
                          static_cast<std::int32_t>(offset)),
             [](sd_bus_message* /*answer*/) {});
    move.await();
}

BusMessage TextWrite::newAccessibleCall(const char* member) {
    return bus_.newCall(object_, accessible::accessibleInterface, member);
}

BusMessage TextWrite::newTextProperty(const char* name) {
    return bus_.newPropertyCall(object_, textInterface, name);
}

BusMessage TextWrite::newInsertText(std::int64_t offset) {
    return bus_.newCall(object_, editableTextInterface, "InsertText", "isi",
                        static_cast<std::int32_t>(offset), text_.c_str(), lengthOfText());
}

BusMessage TextWrite::newRangeCall(const char* interface, const char* member, std::int64_t start,
                                   std::int64_t end) {
    return bus_.newCall(object_, interface, member, "ii", static_cast<std::int32_t>(start),
                        static_cast<std::int32_t>(end));
}

bool TextWrite::isCountedInUnits() const {
    return element_.application->toolkit == "Qt";
}

std::int32_t TextWrite::lengthOfText() const {
    return static_cast<std::int32_t>(isCountedInUnits() ? countOfText()
                                                        : static_cast<std::int64_t>(text_.size()));
}

std::int64_t TextWrite::countOfText() const {
    if (isCountedInUnits()) {
        return static_cast<std::int64_t>(utf16FromUtf8(text_).size());
    }
    return std::count_if(text_.begin(), text_.end(),
                         [](char byte) { return (byte & 0xC0) != 0x80; });
}

}  // namespace tarvik::linuxdesktop
