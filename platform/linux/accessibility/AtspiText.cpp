// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AtspiText.h"

#include <algorithm>

#include "base/Text.h"
#include "platform/linux/accessibility/AtspiProtocol.h"

namespace tarvik::linuxdesktop {

using atspi::editableTextInterface;
using atspi::textInterface;

AtspiText::AtspiText(MessageBus& bus, const AtspiElement& element)
    : bus_(&bus), application_(element.application), object_(element.object()) {}

BusMessage AtspiText::newSelectionCount() const {
    return bus_->newCall(object_, textInterface, "GetNSelections");
}

BusMessage AtspiText::newSelection() const {
    return bus_->newCall(object_, textInterface, "GetSelection", "i", 0);
}

BusMessage AtspiText::newReading(std::int64_t start, std::int64_t end) const {
    return newRangeCall(textInterface, "GetText", start, end);
}

BusMessage AtspiText::newInsertion(std::int64_t offset, const std::string& text) const {
    // LibreOffice counts bytes here, as GTK does.
    const auto length = isQt() ? lengthOf(text) : static_cast<std::int64_t>(text.size());
    return bus_->newCall(object_, editableTextInterface, "InsertText", "isi",
                         static_cast<std::int32_t>(offset), text.c_str(),
                         static_cast<std::int32_t>(length));
}

BusMessage AtspiText::newDeletion(std::int64_t start, std::int64_t end) const {
    return newRangeCall(editableTextInterface, "DeleteText", start, end);
}

BusMessage AtspiText::newCaretMove(std::int64_t offset) const {
    return bus_->newCall(object_, textInterface, "SetCaretOffset", "i",
                         static_cast<std::int32_t>(offset));
}

std::int64_t AtspiText::lengthOf(const std::string& text) const {
    if (isQt() || application_->isKnownToCountUtf16Units) {
        return utf16LengthOf(text);
    }
    return std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; });
}

std::int64_t AtspiText::utf16LengthOf(const std::string& text) {
    return static_cast<std::int64_t>(utf16FromUtf8(text).size());
}

BusMessage AtspiText::newProperty(const char* name) const {
    return bus_->newPropertyCall(object_, textInterface, name);
}

BusMessage AtspiText::newRangeCall(const char* interface, const char* member, std::int64_t start,
                                   std::int64_t end) const {
    return bus_->newCall(object_, interface, member, "ii", static_cast<std::int32_t>(start),
                         static_cast<std::int32_t>(end));
}

}  // namespace tarvik::linuxdesktop
