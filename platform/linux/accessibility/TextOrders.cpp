#include "platform/linux/accessibility/TextOrders.h"

#include <algorithm>
#include <functional>

namespace tarvik::linuxdesktop {

namespace {

using OnAnswer = std::function<void(sd_bus_message*)>;

bool isYes(sd_bus_message* answer) {
    int yes = 0;
    return sd_bus_message_read(answer, "b", &yes) > 0 && yes != 0;
}

OnAnswer keep(const std::shared_ptr<void>& owner, bool& yes) {
    return [owner, &yes](sd_bus_message* answer) { yes = isYes(answer); };
}

OnAnswer keep(const std::shared_ptr<void>& owner, std::optional<std::int64_t>& number) {
    return [owner, &number](sd_bus_message* answer) { number = integerIn(answer); };
}

OnAnswer keep(const std::shared_ptr<void>& owner, std::optional<std::string>& text) {
    return [owner, &text](sd_bus_message* answer) { text = plainTextIn(answer); };
}

bool hitSomethingElse(const DeletionAnswers& answers) {
    return !answers.hadSelection && answers.deleted && answers.countBefore && answers.count &&
           *answers.count < *answers.countBefore;
}

// As much of `text` as `found` begins with, in whole characters.
std::string commonBeginning(const std::string& text, const std::string& found) {
    auto end = std::mismatch(text.begin(), text.end(), found.begin(), found.end()).first;
    while (end != text.begin() && end != text.end() && (*end & 0xC0) == 0x80) {
        --end;
    }
    return {text.begin(), end};
}

}  // namespace

std::int64_t InsertionAnswers::inserted(std::int64_t most) const {
    return isAccepted && countBefore && count
               ? std::clamp<std::int64_t>(*count - *countBefore, 0, most)
               : 0;
}

std::shared_ptr<const DeletionAnswers> orderDeletion(CallBatch& calls, MessageBus& bus,
                                                     const AtspiText& widget, std::int64_t start,
                                                     std::int64_t end) {
    const auto answers = std::make_shared<DeletionAnswers>();
    calls.takeLateAnswers([answers, bus = &bus, widget, start] {
        if (hitSomethingElse(*answers)) {
            bus->send(widget.newInsertion(start, *answers->deleted));
            bus->send(widget.newCaretMove(answers->caret.value_or(start)));
        }
    });
    calls.add(widget.newSelectionCount(), [answers](sd_bus_message* answer) {
        answers->hadSelection = plainIntegerIn(answer).value_or(0) > 0;
    });
    calls.add(widget.newCaretOffset(), keep(answers, answers->caret));
    calls.add(widget.newReading(start, end), keep(answers, answers->deleted));
    calls.add(widget.newCharacterCount(), keep(answers, answers->countBefore));
    calls.add(widget.newDeletion(start, end), keep(answers, answers->isAccepted));
    calls.add(widget.newCharacterCount(), keep(answers, answers->count));
    return answers;
}

std::shared_ptr<const InsertionAnswers> orderInsertion(CallBatch& calls, MessageBus& bus,
                                                       const AtspiText& widget, std::int64_t offset,
                                                       std::int64_t count,
                                                       const std::string& text) {
    const auto answers = std::make_shared<InsertionAnswers>();
    calls.takeLateAnswers([answers, bus = &bus, widget, offset, text] {
        // The count may have grown by typed characters too, but they are not what stands here.
        const std::string there = commonBeginning(text, answers->found.value_or(""));
        if (const auto inserted = answers->inserted(widget.countOf(there)); inserted > 0) {
            bus->send(widget.newDeletion(offset, offset + inserted));
        }
    });
    calls.add(widget.newCharacterCount(), keep(answers, answers->countBefore));
    calls.add(widget.newReading(offset, std::min(offset + longestBehind, count)),
              keep(answers, answers->behind));
    calls.add(widget.newInsertion(offset, text), keep(answers, answers->isAccepted));
    calls.add(widget.newCharacterCount(), keep(answers, answers->count));
    calls.add(widget.newReading(offset, offset + widget.countOf(text)),
              keep(answers, answers->found));
    calls.add(widget.newCaretOffset(), keep(answers, answers->caret));
    return answers;
}

}  // namespace tarvik::linuxdesktop
