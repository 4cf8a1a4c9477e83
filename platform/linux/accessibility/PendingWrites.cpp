// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/PendingWrites.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "base/Weakly.h"

namespace tarvik::linuxdesktop {

using platform::ProcessIdentifier;

std::size_t PendingWrites::Queue::heldUnits() const {
    std::size_t units = arrivedUnits;
    for (const Write& write : writes) {
        units += write.units;
    }
    return units;
}

std::size_t PendingWrites::Queue::giveUp() const {
    const Write& first = writes.front();
    return arrivedUnits + (first.reply->giveUp() ? first.units : 0);
}

PendingWrites::PendingWrites(platform::MainQueue& mainQueue, Typing typing,
                             std::chrono::milliseconds timeout)
    : mainQueue_(mainQueue), typing_(std::move(typing)), timeout_(timeout) {}

PendingWrites::~PendingWrites() {
    for (const auto& [process, queue] : queues_) {
        typing_.release(process, queue.giveUp());
    }
}

bool PendingWrites::isPending(ProcessIdentifier process) {
    advance(process);
    return queues_.contains(process);
}

platform::AXError PendingWrites::add(ProcessIdentifier process,
                                     const std::shared_ptr<WriteReply>& reply,
                                     const std::string& text) {
    if (!typing_.hold(process)) {
        return reply->giveUp() ? platform::axErrorSuccess : platform::axErrorCannotComplete;
    }
    append(process, {++lastNumber_, nullptr, text, utf16FromUtf8(text).size(), {}, reply});
    whenSettled(process, *reply);
    return platform::axErrorCannotComplete;
}

bool PendingWrites::begin(ProcessIdentifier process, const platform::AXUIElementRef& element,
                          const std::string& text, Start start) {
    if (!typing_.hold(process)) {
        return false;
    }
    const auto reply = start(text);
    append(process,
           {++lastNumber_, element, text, utf16FromUtf8(text).size(), std::move(start), reply});
    whenSettled(process, *reply);
    return true;
}

void PendingWrites::queue(ProcessIdentifier process, const platform::AXUIElementRef& element,
                          const std::string& text, Start start) {
    Queue& queue = queues_.at(process);
    // Text that was posted without a write stays in front of this text, and is typed.
    if (typing_.hold(process) != queue.heldUnits()) {
        return;
    }
    const std::size_t units = utf16FromUtf8(text).size();
    Write& last = queue.writes.back();
    if (!last.reply && last.element == element) {
        last.text += text;
        last.units += units;
    } else {
        append(process, {++lastNumber_, element, text, units, std::move(start), nullptr});
    }
}

void PendingWrites::append(ProcessIdentifier process, Write write) {
    mainQueue_.asyncAfter(std::chrono::duration_cast<Seconds>(timeout_),
                          weakly(*this, [process, number = write.number](PendingWrites& self) {
                              self.expire(process, number);
                          }));
    queues_[process].writes.push_back(std::move(write));
}

// The caller of add() posts the text before a block of the main queue can run.
void PendingWrites::whenSettled(ProcessIdentifier process, WriteReply& reply) {
    reply.whenSettled(
        [&mainQueue = mainQueue_, advance = weakly(*this, [process](PendingWrites& self) {
                                      self.advance(process);
                                  })] { mainQueue.async(advance); });
}

void PendingWrites::advance(ProcessIdentifier process) {
    const auto found = queues_.find(process);
    if (found == queues_.end()) {
        return;
    }
    Queue& queue = found->second;
    while (const auto hasArrived = queue.writes.front().reply->outcome()) {
        if (*hasArrived) {
            queue.arrivedUnits += queue.writes.front().units;
            queue.writes.pop_front();
        }
        if (!*hasArrived || queue.writes.empty()) {
            end(process, queue.arrivedUnits);
            return;
        }
        Write& next = queue.writes.front();
        next.reply = next.start(next.text);
        whenSettled(process, *next.reply);
    }
}

void PendingWrites::expire(ProcessIdentifier process, std::uint64_t number) {
    advance(process);
    const auto found = queues_.find(process);
    if (found != queues_.end() &&
        std::ranges::any_of(found->second.writes,
                            [&](const Write& write) { return write.number == number; })) {
        end(process, found->second.giveUp());
    }
}

void PendingWrites::end(ProcessIdentifier process, std::size_t arrivedUnits) {
    queues_.erase(process);
    typing_.release(process, arrivedUnits);
}

}  // namespace tarvik::linuxdesktop
