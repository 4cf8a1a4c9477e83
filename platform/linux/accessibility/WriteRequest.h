// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/TextWrite.h"
#include "platform/linux/accessibility/WriteReply.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// A text that the main thread wants to have written, up to its outcome. A program that does not
/// even reply to queries is told nothing; it gets the text when it replies within 5 s. A program
/// that replies and falls silent again is tried again for 5 s. The log says once in a recording why
/// a text of an element is typed. Belongs to the bus's thread.
class WriteRequest : public std::enable_shared_from_this<WriteRequest> {
  public:
    /// `bus` outlives the request, or the element's program is gone by then. `onUnreliable` gets
    /// lines for the log. `reply` is the main thread's. A shared_ptr holds the request.
    WriteRequest(MessageBus& bus, std::shared_ptr<AtspiElement> element, std::string text,
                 std::function<void(const std::string&)> onUnreliable, Defer defer,
                 std::shared_ptr<WriteReply> reply);
    /// A write without an outcome by then has not arrived: its program has left the bus, or was
    /// told nothing.
    ~WriteRequest();
    WriteRequest(const WriteRequest&) = delete;
    WriteRequest& operator=(const WriteRequest&) = delete;

    /// Writes. The reply has its status by `deadline`.
    void run(SteadyTime deadline);

  private:
    struct Attempt {
        std::shared_ptr<TextWrite> write;
        platform::AXError status;
    };
    /// Writes where the caret of the element's text is.
    Attempt attempt(SteadyTime deadline);
    /// The widget that has the caret, where that is another widget of the same document. Blocks
    /// until `deadline` at the most.
    std::shared_ptr<AtspiElement> focusInTheSameText(SteadyTime deadline);
    /// The widget that has the focus, where that is inside the element. Blocks until `deadline` at
    /// the most, and only for the first write since the focus has moved.
    std::shared_ptr<AtspiElement> focusInside(SteadyTime deadline);
    /// Whether the element is around `inner`, at whatever depth; empty without a reply by
    /// `deadline`. Blocks until then at the most.
    std::optional<bool> isInsideElement(BusObject inner, SteadyTime deadline);
    std::shared_ptr<TextWrite> newWrite(std::shared_ptr<AtspiElement> element);
    void awaitProgram();
    void runAgain();
    /// Writes the line which says why the text of the attempt will be typed.
    void report(const TextWrite& write);

    MessageBus& bus_;
    const std::shared_ptr<AtspiElement> element_;
    const std::string text_;
    const std::function<void(const std::string&)> onUnreliable_;
    const Defer defer_;
    const std::shared_ptr<WriteReply> reply_;
    /// The end of the time in which a program that falls silent is tried again; set by run().
    SteadyTime lastAttempt_;
};

}  // namespace tarvik::linuxdesktop
