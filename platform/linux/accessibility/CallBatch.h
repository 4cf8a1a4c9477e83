#pragma once

#include <functional>
#include <memory>

#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// Calls that are sent one right after the other and awaited together: one round trip for all. It
/// belongs to the bus's thread; outside dispatch().
class CallBatch {
  public:
    /// `bus` outlives the batch. No call is waited for beyond `deadline`.
    CallBatch(MessageBus& bus, MessageBus::Moment deadline);
    /// Answers that come later are dropped, unless takeLateAnswers() was called.
    ~CallBatch();
    CallBatch(const CallBatch&) = delete;
    CallBatch& operator=(const CallBatch&) = delete;

    /// Before the calls: has the answers taken however late they come. When await() fails, each
    /// `onAnswer` is still called, in some later dispatch(), and `whenComplete` after the last of
    /// them, so both own what they use. Neither is called once the program has left the bus.
    void takeLateAnswers(std::function<void()> whenComplete);
    /// Sends a call. `onAnswer` is called inside await(), with an answer or with an error of the
    /// program's own.
    void add(BusMessage call, std::function<void(sd_bus_message*)> onAnswer);
    /// Waits for all answers; false when one did not come, at the deadline at the latest.
    bool await();

  private:
    struct Progress {
        int outstanding = 0;
        bool isSilent = false;
        bool isOver = false;
        std::function<void()> whenCompleteLate;
    };
    static void take(Progress& progress, sd_bus_message* answer,
                     const std::function<void(sd_bus_message*)>& onAnswer);

    MessageBus& bus_;
    MessageBus::Moment deadline_;
    std::shared_ptr<Progress> progress_ = std::make_shared<Progress>();
};

}  // namespace tarvik::linuxdesktop
