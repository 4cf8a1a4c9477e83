// SPDX-License-Identifier: MIT
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
struct InsertionReplies;

/// One replacement of the selection of one widget. Belongs to the bus's thread, outside handlers of
/// the bus. The operations block until their deadline at the most.
///
/// A call that changes the text follows only when the program has just replied to queries, because
/// a sent message cannot be called back. When the program does not reply to a change, late replies
/// are still handled, and undo what the change did: an inserted text is deleted again, and text
/// that was deleted although the user had typed over the selection is inserted again. So the same
/// text can be typed meanwhile without arriving twice, and no text of the user is lost. Until the
/// late replies are there, every further write into the program fails at once. Two cases may end
/// otherwise: a program that goes on after this process has ended, and one that handles
/// keys between two messages that it finds together.
class TextWrite {
  public:
    /// All outlive the write. `onUnreliable` gets a line for the log when the program does not
    /// reply, or when the widget lies.
    TextWrite(MessageBus& bus, AtspiElement& element, const std::string& text,
              std::function<void(const std::string&)> onUnreliable);

    /// Writes, and returns what Accessibility::setAttributeValue does, by `deadline`.
    platform::AXError run(SteadyTime deadline);
    /// Deletes the inserted text again; after a run() that succeeded.
    void undo();

  private:
    platform::AXError inspect();
    bool queryCapabilities(SteadyTime deadline);
    bool queryText(SteadyTime deadline);
    void addSelectionQueries(CallBatch& queries);
    platform::AXError deleteSelection();
    platform::AXError insert();
    platform::AXError verifyInsertion();
    bool learnsUtf16Units();
    bool hasGrown() const;
    bool isInserted();
    bool isTruncated();
    void restoreTail();
    platform::AXError failWithoutReply();
    platform::AXError failAfterLie(const char* reason);
    void reportUnreliable(const char* reason);
    bool waitUntil(const std::function<bool()>& condition);
    bool readText();
    void takeBack(std::int64_t length);
    void moveCaret(std::int64_t offset);

    BusMessage newAccessibleCall(const char* member);
    std::int64_t lengthOfText() const { return widget_.lengthOf(text_); }

    MessageBus& bus_;
    AtspiElement& element_;
    const AtspiText widget_;
    const std::string& text_;
    std::function<void(const std::string&)> onUnreliable_;
    SteadyTime deadline_;

    std::optional<atspi::StateSet> states_;
    bool hasSelection_ = false;
    std::int64_t selectionStart_ = 0;
    std::int64_t selectionEnd_ = 0;
    /// Where the text is inserted.
    std::int64_t offset_ = -1;
    /// As of the program's latest reply.
    std::optional<std::int64_t> caret_;
    std::optional<std::int64_t> count_;
    /// The text at the offset, as long as the inserted text. Empty where a program does not let its
    /// text be read.
    std::string found_;
    /// The count before the insertion, without the selection.
    std::int64_t countBefore_ = 0;
    /// Empty before the insertion is sent.
    std::shared_ptr<const InsertionReplies> insertion_;
};

}  // namespace tarvik::linuxdesktop
