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

std::shared_ptr<const InsertionReplies> addInsertion(CallBatch& calls, const AtspiText& widget,
                                                     std::int64_t offset, std::int64_t count,
                                                     const std::string& text,
                                                     std::function<void()> onLateReplies) {
    const auto replies = std::make_shared<InsertionReplies>();
    calls.handleLateReplies(std::move(onLateReplies));
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
