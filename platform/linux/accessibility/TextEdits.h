// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/accessibility/AtspiText.h"
#include "platform/linux/accessibility/CallBatch.h"
#include "platform/linux/bus/MessageBus.h"

// The two calls that change a text, each between queries of the text. The calls follow each other
// closely, so the replies around a change tell what the change itself did. A program that hangs may
// carry a change out late; the late replies decide what becomes of the change. All belongs to
// the bus's thread. Offsets and lengths are in the unit of AtspiText.
namespace tarvik::linuxdesktop {

/// The replies around the deletion of a selection. An empty one is an error.
struct DeletionReplies {
    bool hadSelection = false;
    std::optional<std::int64_t> caret;
    std::optional<std::string> deleted;
    std::optional<std::int64_t> countBefore;
    std::optional<std::int64_t> count;
    bool isAccepted = false;
};

/// Adds the deletion of the selection from `start` to `end` to `calls`, before any other call. Late
/// replies may show that the selection was typed over and that the deletion hit other text; that
/// text is inserted again. `bus` outlives the replies.
std::shared_ptr<const DeletionReplies> addDeletion(CallBatch& calls, MessageBus& bus,
                                                   const AtspiText& widget, std::int64_t start,
                                                   std::int64_t end);

/// The replies around the insertion of a text. An empty one is an error.
struct InsertionReplies {
    std::optional<std::int64_t> countBefore;
    /// The text that followed the offset of the insertion, up to maxTailLength.
    std::optional<std::string> tail;
    bool isAccepted = false;
    std::optional<std::int64_t> count;
    /// The text at the offset after the insertion, as long as the inserted text.
    std::optional<std::string> found;
    std::optional<std::int64_t> caret;

    /// How much the insertion itself added.
    std::int64_t insertedLength() const;
};

/// Fields with a length limit are shorter. A larger tail would be read with every piece of text.
inline constexpr std::int64_t maxTailLength = 1000;

/// Adds the insertion of `text` at `offset`, in a text of `count`, to `calls`, before any other
/// call. When the replies come late, `onLateReplies` is called in a handler of the bus.
std::shared_ptr<const InsertionReplies> addInsertion(CallBatch& calls, const AtspiText& widget,
                                                     std::int64_t offset, std::int64_t count,
                                                     const std::string& text,
                                                     std::function<void()> onLateReplies);

}  // namespace tarvik::linuxdesktop
