// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// Tells when IBus has answered the programs that ask about keys. A program asks about each key,
/// and looks the key up when IBus has answered. Which key it is stays unread. Loop thread only; no
/// operation waits.
class IbusAnswers {
  public:
    /// `loop` outlives the object.
    explicit IbusAnswers(EventLoop& loop) : loop_(loop), end_(loop) {}
    IbusAnswers(const IbusAnswers&) = delete;
    IbusAnswers& operator=(const IbusAnswers&) = delete;

    /// Begins to listen where the object does not listen; false where nobody can be listened to.
    /// Calls `onReady` once, when every later question will be noticed, or IBus is gone.
    bool listen(std::function<void()> onReady);
    /// Listens for a short time more, so that the next text finds the connection.
    void stop();
    /// Whether every question is noticed.
    bool isReady() const { return isReady_; }

    /// How many questions have come.
    std::uint64_t questionCount() const { return questionCount_; }
    /// When IBus has given its last answer.
    SteadyTime lastAnswer() const { return lastAnswer_; }
    /// Calls `onAnswered` once, when IBus has noticed and answered every question that was sent
    /// before this call, or is gone.
    void whenAnswered(std::function<void()> onAnswered);

  private:
    /// The name of the program on the bus, and the number of its message.
    using Question = std::pair<std::string, std::uint64_t>;
    struct Waiting {
        std::set<Question> questions;
        std::function<void()> onAnswered;
    };

    void fence(std::function<void()> onPassed);
    bool handle(sd_bus_message* message);
    void handleAnswer(const std::function<bool(const Question&)>& isAnswered);
    void end();

    EventLoop& loop_;
    std::unique_ptr<MessageBus> bus_;
    bool isReady_ = false;
    std::set<Question> questions_;
    std::uint64_t questionCount_ = 0;
    SteadyTime lastAnswer_;
    // Those whose fence is not passed have no questions yet.
    std::list<std::function<void()>> fenced_;
    std::list<Waiting> waiting_;
    Deadline end_;
};

}  // namespace tarvik::linuxdesktop
