// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// Calls that are sent one right after the other and awaited together, in one round trip. Belongs
/// to the bus's thread, outside handlers of the bus.
class CallBatch {
  public:
    /// `bus` outlives the batch. No call is awaited beyond `deadline`.
    CallBatch(MessageBus& bus, SteadyTime deadline);
    /// Later replies are dropped, unless handleLateReplies() was called.
    ~CallBatch();
    CallBatch(const CallBatch&) = delete;
    CallBatch& operator=(const CallBatch&) = delete;

    /// Gives the calls that follow no timeout, so that a late reply is handled too.
    /// When await() has failed, a later turn of the loop still calls each `onReply`, and
    /// `onComplete` after the last one. Both own what they use. Neither is called once the program
    /// has left the bus.
    void handleLateReplies(std::function<void()> onComplete);
    /// Sends a call. `onReply` is called inside await(), with the reply or with an error of the
    /// program's own.
    void add(BusMessage call, MessageBus::OnReply onReply);
    /// Blocks until every reply is there. False when one is missing at the deadline, or will never
    /// come.
    bool await();

  private:
    struct Progress {
        int pending = 0;
        bool hasFailed = false;
        bool isOver = false;
        std::function<void()> onLateCompletion;
    };
    static void handle(Progress& progress, sd_bus_message* reply,
                       const MessageBus::OnReply& onReply);

    MessageBus& bus_;
    SteadyTime deadline_;
    std::shared_ptr<Progress> progress_ = std::make_shared<Progress>();
};

}  // namespace tarvik::linuxdesktop
