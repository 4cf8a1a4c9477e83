// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// Makes the calls that read and change the text of one widget. Copies stand for the same text.
/// Belongs to the bus's thread.
///
/// Offsets and lengths are in the program's own unit: characters, or UTF-16 units with Qt and
/// LibreOffice. They are wider than the numbers of a message, so that no value from a program
/// overflows.
class AtspiText {
  public:
    /// `bus` outlives the object.
    AtspiText(MessageBus& bus, const AtspiElement& element);

    BusMessage newCharacterCount() const { return newProperty("CharacterCount"); }
    BusMessage newCaretOffset() const { return newProperty("CaretOffset"); }
    BusMessage newSelectionCount() const;
    /// A call for the range of the first selection.
    BusMessage newSelection() const;
    /// A call for the text from `start` to `end`.
    BusMessage newReading(std::int64_t start, std::int64_t end) const;
    /// Empty when no message can carry the text.
    BusMessage newInsertion(std::int64_t offset, const std::string& text) const;
    BusMessage newDeletion(std::int64_t start, std::int64_t end) const;
    BusMessage newCaretMove(std::int64_t offset) const;

    /// The length of `text` in the program's unit.
    std::int64_t lengthOf(const std::string& text) const;
    /// The length of `text` if the program counts UTF-16 units.
    static std::int64_t utf16LengthOf(const std::string& text);

  private:
    BusMessage newProperty(const char* name) const;
    BusMessage newRangeCall(const char* interface, const char* member, std::int64_t start,
                            std::int64_t end) const;
    bool isQt() const { return application_->toolkit == "Qt"; }

    MessageBus* bus_;
    std::shared_ptr<const AtspiApplication> application_;
    BusObject object_;
};

}  // namespace tarvik::linuxdesktop
