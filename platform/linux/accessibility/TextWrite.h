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
#include "platform/linux/accessibility/TextEdits.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

class CallBatch;

/// One replacement of the selection of one widget. Belongs to the bus's thread, outside handlers of
/// the bus. The operations block until their deadline at the most.
///
/// A call that changes the text follows only when the program has just replied to queries, because
/// a sent message cannot be called back. When the program does not reply to an insertion in time,
/// the write is pending, and the late replies settle the write: the inserted text stays if the
/// whole text is there and still wanted, and is deleted again otherwise. Late replies to a deletion
/// undo the deletion where the user had typed over the selection meanwhile. So no text arrives
/// twice, and no text of the user is lost. Until the late replies are there, every further write
/// into the program fails at once. Two cases may end otherwise: a program that goes on after this
/// process has ended, and one that handles keys between two messages that it finds together.
class TextWrite {
  public:
    /// All outlive the write. `onUnreliable` gets a line for the log when the program does not
    /// reply, or when the widget lies. `onSettled` hears of a pending write whether the text has
    /// arrived, and answers whether the text is still wanted. A write whose program leaves the bus
    /// destroys `onSettled` without a call.
    TextWrite(MessageBus& bus, AtspiElement& element, const std::string& text,
              std::function<void(const std::string&)> onUnreliable, OnSettled onSettled);

    /// Writes, and returns what Accessibility::setAttributeValue does, by `deadline`.
    platform::AXError run(SteadyTime deadline);
    /// Whether the program has been told to insert the text and has not replied; after run().
    bool isPending() const { return isPending_; }
    /// Deletes the inserted text again; after a run() that succeeded.
    void undo();

  private:
    platform::AXError inspect();
    bool queryCapabilities(SteadyTime deadline);
    bool queryText(SteadyTime deadline);
    void addSelectionQueries(CallBatch& queries);
    platform::AXError deleteSelection();
    platform::AXError insert();
    LateInsertion lateInsertion();
    platform::AXError verifyInsertion();
    bool learnsUtf16Units();
    bool hasGrown() const;
    bool isInserted();
    bool hasBegun() const;
    bool isTruncated();
    void restoreTail();
    platform::AXError failWithoutReply();
    platform::AXError failAfterLie(const char* reason);
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
    OnSettled onSettled_;
    bool isPending_ = false;
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
