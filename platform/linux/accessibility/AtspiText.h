#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// What can be asked of the text of one widget, and what can be done to it. Copies stand for the
/// same text. It belongs to the bus's thread.
///
/// Offsets and counts are the program's own: characters, or UTF-16 units with Qt. They are wider
/// than what a message holds, so that no nonsense from a program overflows.
class AtspiText {
  public:
    /// `bus` outlives the object.
    AtspiText(MessageBus& bus, const AtspiElement& element);

    BusMessage newCharacterCount() const { return newProperty("CharacterCount"); }
    BusMessage newCaretOffset() const { return newProperty("CaretOffset"); }
    BusMessage newSelectionCount() const;
    /// Asks for the range of the first selection.
    BusMessage newSelection() const;
    BusMessage newReading(std::int64_t start, std::int64_t end) const;
    /// Empty when no message can carry the text.
    BusMessage newInsertion(std::int64_t offset, const std::string& text) const;
    BusMessage newDeletion(std::int64_t start, std::int64_t end) const;
    BusMessage newCaretMove(std::int64_t offset) const;

    /// How much the count of characters grows by `text`.
    std::int64_t countOf(const std::string& text) const;

  private:
    BusMessage newProperty(const char* name) const;
    BusMessage newRangeCall(const char* interface, const char* member, std::int64_t start,
                            std::int64_t end) const;
    bool isCountedInUnits() const;

    MessageBus* bus_;
    std::shared_ptr<const AtspiApplication> application_;
    BusObject object_;
};

}  // namespace tarvik::linuxdesktop
