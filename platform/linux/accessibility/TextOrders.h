#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/accessibility/AtspiText.h"
#include "platform/linux/accessibility/CallBatch.h"
#include "platform/linux/bus/MessageBus.h"

// The two orders that change a text, each between questions about it. The calls follow each other
// closely, so what is answered around an order tells what the order itself did, and an order that a
// silent program carries out late is set right as soon as its answers come. All belongs to the
// bus's thread; offsets and counts are the program's own, as AtspiText has them.
namespace tarvik::linuxdesktop {

/// What a program has answered around the deletion of its selection. Empty is no answer.
struct DeletionAnswers {
    bool hadSelection = false;
    std::optional<std::int64_t> caret;
    std::optional<std::string> deleted;
    std::optional<std::int64_t> countBefore;
    std::optional<std::int64_t> count;
    bool isAccepted = false;
};

/// Adds the deletion of the selection from `start` to `end` to `calls`, before any other call. When
/// its answers come late and it hit something else, because the selection had been typed over, that
/// is put back. `bus` outlives the answers.
std::shared_ptr<const DeletionAnswers> orderDeletion(CallBatch& calls, MessageBus& bus,
                                                     const AtspiText& widget, std::int64_t start,
                                                     std::int64_t end);

/// What a program has answered around the insertion of a text. Empty is no answer.
struct InsertionAnswers {
    std::optional<std::int64_t> countBefore;
    /// What stood behind the place of the insertion, at most longestBehind of it.
    std::optional<std::string> behind;
    bool isAccepted = false;
    std::optional<std::int64_t> count;
    /// What stands at the place now, as much of it as the text is long.
    std::optional<std::string> found;
    std::optional<std::int64_t> caret;

    /// How much the insertion itself added, `most` at the most.
    std::int64_t inserted(std::int64_t most) const;
};

/// Fields of a bounded length are shorter, and a longer text would be read with every piece.
inline constexpr std::int64_t longestBehind = 1000;

/// Adds the insertion of `text` at `offset`, in a text of `count`, to `calls`, before any other
/// call. When its answers come late, what it inserted is deleted again. `bus` outlives the answers.
std::shared_ptr<const InsertionAnswers> orderInsertion(CallBatch& calls, MessageBus& bus,
                                                       const AtspiText& widget, std::int64_t offset,
                                                       std::int64_t count, const std::string& text);

}  // namespace tarvik::linuxdesktop
