#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Accessibility.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/accessibility/AtspiText.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

class CallBatch;
struct InsertionAnswers;

/// One replacement of the selection of one widget. It belongs to the bus's thread; outside
/// dispatch().
///
/// Nothing that changes the text is sent to a program that has not just answered harmless
/// questions. A message that was sent cannot be called back. So when a program falls silent over an
/// order, its answers are taken whenever they come, and set right what the order did after all:
/// exactly what was inserted is deleted again, and what was deleted although the selection had been
/// typed over by then is put back. The text can be typed meanwhile without arriving twice, and
/// nothing of the user's is lost. A program that wakes up after this one has ended, or reads keys
/// between two messages that it finds together, may do otherwise.
class TextWrite {
  public:
    /// All outlives the write; `onTrouble` gets a line for the log, for what the user should hear
    /// of.
    TextWrite(MessageBus& bus, AtspiElement& element, const std::string& text,
              std::function<void(const std::string&)> onTrouble);

    /// Writes, and answers as Accessibility::setAttributeValue does, by `deadline`.
    platform::AXError run(MessageBus::Moment deadline);
    /// Orders what has been inserted to be deleted again.
    void takeBack();

  private:
    platform::AXError inspect();
    bool askWhatItIs(MessageBus::Moment limit);
    bool askForText(MessageBus::Moment limit);
    void askForSelection(CallBatch& questions);
    platform::AXError deleteSelection();
    platform::AXError insert();
    platform::AXError judge();
    bool isCutOff();
    void putBack();
    platform::AXError giveUpOnSilence();
    platform::AXError declareUnreliable(const char* what);
    bool hasSettled(const std::function<bool()>& isRight);
    bool hasArrived();
    bool readCount();
    void deleteInserted(std::int64_t length);
    void moveCaret(std::int64_t offset);

    BusMessage newAccessibleCall(const char* member);
    std::int64_t countOfText() const { return widget_.countOf(text_); }

    MessageBus& bus_;
    AtspiElement& element_;
    const AtspiText widget_;
    const std::string& text_;
    std::function<void(const std::string&)> onTrouble_;
    MessageBus::Moment deadline_;

    std::optional<accessible::States> states_;
    bool hasSelection_ = false;
    std::int64_t selectionStart_ = 0;
    std::int64_t selectionEnd_ = 0;
    /// Where the text goes.
    std::int64_t offset_ = -1;
    /// As the program told them last.
    std::optional<std::int64_t> caret_;
    std::optional<std::int64_t> count_;
    /// Without the selection, before the insertion.
    std::int64_t countBefore_ = 0;
    /// Once it has been ordered.
    std::shared_ptr<const InsertionAnswers> insertion_;
};

}  // namespace tarvik::linuxdesktop
