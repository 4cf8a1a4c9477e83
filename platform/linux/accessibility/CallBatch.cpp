// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/CallBatch.h"

#include <chrono>
#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

CallBatch::CallBatch(MessageBus& bus, SteadyTime deadline) : bus_(bus), deadline_(deadline) {}

CallBatch::~CallBatch() {
    progress_->isOver = true;
}

void CallBatch::handleLateReplies(std::function<void()> onComplete) {
    progress_->onLateCompletion = std::move(onComplete);
}

void CallBatch::add(BusMessage call, MessageBus::OnReply onReply) {
    using namespace std::chrono;
    const auto timeout = progress_->onLateCompletion
                             ? MessageBus::noTimeout
                             : duration_cast<microseconds>(deadline_ - steady_clock::now());
    const bool isSent =
        bus_.call(std::move(call), timeout,
                  [progress = progress_, onReply = std::move(onReply)](sd_bus_message* reply) {
                      handle(*progress, reply, onReply);
                  });
    if (isSent) {
        ++progress_->pending;
    } else {
        progress_->hasFailed = true;
    }
}

void CallBatch::handle(Progress& progress, sd_bus_message* reply,
                       const MessageBus::OnReply& onReply) {
    --progress.pending;
    progress.hasFailed = progress.hasFailed || isNoReply(reply);
    if (progress.hasFailed || (progress.isOver && !progress.onLateCompletion)) {
        return;
    }
    onReply(reply);
    if (progress.isOver && progress.pending == 0) {
        progress.onLateCompletion();
    }
}

bool CallBatch::await() {
    const auto isDecided = [this] { return progress_->hasFailed || progress_->pending == 0; };
    bus_.dispatchUntil(isDecided, deadline_);
    return progress_->pending == 0 && !progress_->hasFailed;
}

}  // namespace tarvik::linuxdesktop
