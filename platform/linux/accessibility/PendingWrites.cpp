// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/PendingWrites.h"

#include <utility>

#include "base/Text.h"
#include "base/Weakly.h"

namespace tarvik::linuxdesktop {

using platform::ProcessIdentifier;

PendingWrites::PendingWrites(platform::MainQueue& mainQueue, Typing typing,
                             std::chrono::milliseconds timeout)
    : mainQueue_(mainQueue), typing_(std::move(typing)), timeout_(timeout) {}

PendingWrites::~PendingWrites() {
    for (const auto& [process, pending] : pending_) {
        typing_.release(process, pending.reply->giveUp() ? pending.units : 0);
    }
}

bool PendingWrites::settle(ProcessIdentifier process, SteadyTime deadline) {
    const auto found = pending_.find(process);
    if (found != pending_.end() && !std::exchange(found->second.wasAwaited, true)) {
        found->second.reply->awaitOutcome(deadline);
    }
    finishIfSettled(process);
    return !pending_.contains(process);
}

platform::AXError PendingWrites::add(ProcessIdentifier process, std::shared_ptr<WriteReply> reply,
                                     const std::string& text) {
    if (!typing_.hold(process)) {
        return reply->giveUp() ? platform::axErrorSuccess : platform::axErrorCannotComplete;
    }
    pending_[process] = {reply, utf16FromUtf8(text).size(), false};
    // The caller posts the text before a block of the main queue can run.
    const auto settleNow =
        weakly(*this, [process](PendingWrites& self) { self.finishIfSettled(process); });
    reply->whenSettled([&mainQueue = mainQueue_, settleNow] { mainQueue.async(settleNow); });
    mainQueue_.asyncAfter(std::chrono::duration_cast<Seconds>(timeout_),
                          weakly(*this, [process, reply](PendingWrites& self) {
                              self.finish(process, reply, reply->giveUp());
                          }));
    return platform::axErrorCannotComplete;
}

void PendingWrites::finishIfSettled(ProcessIdentifier process) {
    const auto found = pending_.find(process);
    if (found == pending_.end()) {
        return;
    }
    const auto reply = found->second.reply;
    if (const auto hasArrived = reply->awaitOutcome(SteadyTime())) {
        finish(process, reply, *hasArrived);
    }
}

void PendingWrites::finish(ProcessIdentifier process, const std::shared_ptr<WriteReply>& reply,
                           bool hasArrived) {
    const auto found = pending_.find(process);
    if (found == pending_.end() || found->second.reply != reply) {
        return;
    }
    const std::size_t units = found->second.units;
    pending_.erase(found);
    typing_.release(process, hasArrived ? units : 0);
}

}  // namespace tarvik::linuxdesktop
