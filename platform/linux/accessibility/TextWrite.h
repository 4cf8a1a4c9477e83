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

/// Gets whether the text of a pending write has arrived. Returns whether the text is still wanted.
using OnSettled = std::function<bool(bool hasArrived)>;
/// Runs a task on the bus's thread, later and outside handlers of the bus.
using Defer = std::function<void(std::function<void()> task)>;

/// One replacement of the selection of one widget. Belongs to the bus's thread, outside handlers of
/// the bus. The operations block until their deadline at the most.
///
/// A call that changes the text follows only when the program has just replied to queries, because
/// a sent message cannot be called back. When the program does not reply to an insertion in time,
/// the write is pending. The late replies settle a pending write by the rule of every write: the
/// text has arrived if it is read where it was inserted, now or 0.2 s later. A text that has not
/// arrived whole, or is not wanted any more, is deleted again. Late replies to a deletion
/// undo the deletion where the user had typed over the selection meanwhile. So no text arrives
/// twice, and no text of the user is lost. Until the late replies are there, every further write
/// into the program fails at once. Two cases may end otherwise: a program that goes on after this
/// process has ended, and one that handles keys between two messages that it finds together.
class TextWrite : public std::enable_shared_from_this<TextWrite> {
  public:
    /// What the write reports, and what it uses.
    struct Handlers {
        /// Gets a line for the log when the program does not reply, or when the widget lies.
        std::function<void(const std::string&)> onUnreliable;
        /// Called when a pending write is settled. A write whose program leaves the bus destroys
        /// the handler without a call.
        OnSettled onSettled;
        Defer defer;
    };

    /// `bus` outlives the write, or the element's program is gone by then. A shared_ptr holds the
    /// write.
    TextWrite(MessageBus& bus, std::shared_ptr<AtspiElement> element, std::string text,
              Handlers handlers);

    /// Writes, and returns what Accessibility::setAttributeValue does, by `deadline`.
    platform::AXError run(SteadyTime deadline);
    /// Whether the program has been told to insert the text and has not replied; after run().
    bool isPending() const { return isPending_; }
    /// Whether the program has not even replied to queries, and nothing was changed; after run().
    /// Nobody has been told of that silence yet.
    bool hasNotBegun() const { return hasNotBegun_; }
    /// Why the program has not taken the text, where no line of the log has said so; after run().
    /// Null where the text was taken, for a program that has ended, and for a widget that shows
    /// text which cannot be changed.
    const char* refusal() const { return refusal_; }
    /// Writes the line which says that the program does not reply.
    void reportSilence();
    /// Deletes the inserted text again; after a run() that succeeded.
    void undo();

  private:
    platform::AXError inspect();
    bool queryCapabilities(SteadyTime deadline);
    platform::AXError deleteSelection();
    platform::AXError insert();
    void settle();
    platform::AXError verifyInsertion();
    bool goesOnOnNextPage();
    bool learnsUtf16Units();
    bool hasGrown() const;
    bool isInserted();
    bool hasBegun() const;
    bool isTruncated();
    void restoreTail();
    platform::AXError refuse(platform::AXError status, const char* reason);
    platform::AXError failWithoutReply();
    platform::AXError failAfterLie(const char* reason);
    bool waitUntil(const std::function<bool()>& condition);
    bool readText(std::int64_t length);
    void takeBack(std::int64_t length);
    std::int64_t lengthToTakeBack();
    std::int64_t lengthThatArrived() const;
    void moveCaret(std::int64_t offset);
    void awaitReply(BusMessage call);

    std::int64_t lengthOfText() const { return widget_.lengthOf(text_); }

    MessageBus& bus_;
    const std::shared_ptr<AtspiElement> element_;
    const AtspiText widget_;
    const std::string text_;
    const Handlers handlers_;
    bool isPending_ = false;
    bool hasNotBegun_ = false;
    bool isChanging_ = false;
    const char* refusal_ = nullptr;
    SteadyTime deadline_;

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
