#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/Accessibility.h"
#include "platform/linux/accessibility/Accessible.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/MessageBus.h"

namespace tarvik::linuxdesktop {

class CallBatch;

/// One replacement of the selection of one widget. It belongs to the bus's thread; outside
/// dispatch().
///
/// Nothing that changes the text is sent to a program that has not just answered harmless
/// questions. A message that was sent cannot be called back, so when a program falls silent after
/// the text is on its way, the order to delete it again follows: whenever the program wakes up, it
/// is left as if nothing had happened, and the text can be typed without arriving twice.
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
    platform::AXError declareUnreliable(const char* what);
    bool hasSettled(const std::function<bool()>& isRight);
    bool hasArrived();
    bool readCount();
    void deleteInserted(std::int64_t length);
    void moveCaret(std::int64_t offset);

    BusMessage newAccessibleCall(const char* member);
    BusMessage newTextProperty(const char* name);
    BusMessage newInsertText(std::int64_t offset);
    BusMessage newRangeCall(const char* interface, const char* member, std::int64_t start,
                            std::int64_t end);
    /// In what the program measures a text that it is given, and in what it counts.
    std::int32_t lengthOfText() const;
    std::int64_t countOfText() const;
    bool isCountedInUnits() const;

    MessageBus& bus_;
    AtspiElement& element_;
    const BusObject object_;
    const std::string& text_;
    std::function<void(const std::string&)> onTrouble_;
    MessageBus::Moment deadline_;

    std::optional<accessible::States> states_;
    bool hasSelection_ = false;
    // Wider than what a program can send, so that no nonsense from it overflows.
    std::int64_t selectionStart_ = 0;
    std::int64_t selectionEnd_ = 0;
    /// Where the text goes.
    std::int64_t offset_ = -1;
    /// As the program told them last.
    std::optional<std::int64_t> caret_;
    std::optional<std::int64_t> count_;
    /// Without the selection, before the insertion.
    std::int64_t countBefore_ = 0;
    bool isAccepted_ = false;
};

}  // namespace tarvik::linuxdesktop
