// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/TextEdits.h"

#include <algorithm>
#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using OnReply = MessageBus::OnReply;

OnReply keep(const std::shared_ptr<void>& owner, bool& value) {
    return [owner, &value](sd_bus_message* reply) { value = booleanIn(reply).value_or(false); };
}

OnReply keep(const std::shared_ptr<void>& owner, std::optional<std::int64_t>& number) {
    return [owner, &number](sd_bus_message* reply) { number = integerPropertyIn(reply); };
}

OnReply keep(const std::shared_ptr<void>& owner, std::optional<std::string>& text) {
    return [owner, &text](sd_bus_message* reply) { text = textIn(reply); };
}

bool hitOtherText(const DeletionReplies& replies) {
    return !replies.hadSelection && replies.deleted && replies.countBefore && replies.count &&
           *replies.count < *replies.countBefore;
}

// As much of `text` as `found` begins with, in whole characters.
std::string commonPrefix(const std::string& text, const std::string& found) {
    auto end = std::mismatch(text.begin(), text.end(), found.begin(), found.end()).first;
    while (end != text.begin() && end != text.end() && (*end & 0xC0) == 0x80) {
        --end;
    }
    return {text.begin(), end};
}

// The length of the whole text where all of it is there, and 0 otherwise. LibreOffice counts UTF-16
// units, which an earlier insertion may not have shown: then `found` is the beginning of the text.
std::int64_t arrivedLength(const InsertionReplies& replies, const AtspiText& widget,
                           const std::string& text, bool isMasked) {
    const std::int64_t grown = replies.insertedLength();
    const std::int64_t length = widget.lengthOf(text);
    const std::int64_t units = AtspiText::utf16LengthOf(text);
    const std::string found = replies.found.value_or("");
    if (found == text || ((found.empty() || isMasked) && grown == length)) {
        return grown >= length ? length : 0;
    }
    // The beginning may end in the middle of a character of two units.
    const bool isBeginning = AtspiText::utf16LengthOf(commonPrefix(text, found)) >= length - 1;
    return units > length && grown == units && isBeginning ? units : 0;
}

}  // namespace

std::int64_t InsertionReplies::insertedLength() const {
    return isAccepted && countBefore && count ? std::max<std::int64_t>(*count - *countBefore, 0)
                                              : 0;
}

std::shared_ptr<const DeletionReplies> addDeletion(CallBatch& calls, MessageBus& bus,
                                                   const AtspiText& widget, std::int64_t start,
                                                   std::int64_t end) {
    const auto replies = std::make_shared<DeletionReplies>();
    calls.handleLateReplies([replies, bus = &bus, widget, start] {
        if (hitOtherText(*replies)) {
            bus->send(widget.newInsertion(start, *replies->deleted));
            bus->send(widget.newCaretMove(replies->caret.value_or(start)));
        }
    });
    calls.add(widget.newSelectionCount(), [replies](sd_bus_message* reply) {
        replies->hadSelection = integerIn(reply).value_or(0) > 0;
    });
    calls.add(widget.newCaretOffset(), keep(replies, replies->caret));
    calls.add(widget.newReading(start, end), keep(replies, replies->deleted));
    calls.add(widget.newCharacterCount(), keep(replies, replies->countBefore));
    calls.add(widget.newDeletion(start, end), keep(replies, replies->isAccepted));
    calls.add(widget.newCharacterCount(), keep(replies, replies->count));
    return replies;
}

std::shared_ptr<const InsertionReplies> addInsertion(CallBatch& calls, MessageBus& bus,
                                                     const AtspiText& widget, std::int64_t offset,
                                                     std::int64_t count, const std::string& text,
                                                     LateInsertion late) {
    const auto replies = std::make_shared<InsertionReplies>();
    calls.handleLateReplies([replies, bus = &bus, widget, offset, text, late = std::move(late)] {
        const std::int64_t arrived = arrivedLength(*replies, widget, text, late.isMasked);
        if (late.onSettled(arrived > 0)) {
            if (replies->caret == offset) {
                bus->send(widget.newCaretMove(offset + arrived));
            }
            return;
        }
        // Typed characters may have made the count grow too, but other text than `text` is found.
        const std::string inserted = commonPrefix(text, replies->found.value_or(""));
        const auto length =
            std::max(arrived, std::min(replies->insertedLength(), widget.lengthOf(inserted)));
        if (length > 0) {
            bus->send(widget.newDeletion(offset, offset + length));
        }
    });
    calls.add(widget.newCharacterCount(), keep(replies, replies->countBefore));
    calls.add(widget.newReading(offset, std::min(offset + maxTailLength, count)),
              keep(replies, replies->tail));
    calls.add(widget.newInsertion(offset, text), keep(replies, replies->isAccepted));
    calls.add(widget.newCharacterCount(), keep(replies, replies->count));
    calls.add(widget.newReading(offset, offset + widget.lengthOf(text)),
              keep(replies, replies->found));
    calls.add(widget.newCaretOffset(), keep(replies, replies->caret));
    return replies;
}

}  // namespace tarvik::linuxdesktop
