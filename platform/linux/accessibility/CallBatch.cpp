#include "platform/linux/accessibility/CallBatch.h"

#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

CallBatch::CallBatch(MessageBus& bus, MessageBus::Moment deadline)
    : bus_(bus), deadline_(deadline) {}

CallBatch::~CallBatch() {
    progress_->isOver = true;
}

void CallBatch::takeLateAnswers(std::function<void()> whenComplete) {
    progress_->whenCompleteLate = std::move(whenComplete);
}

void CallBatch::add(BusMessage call, std::function<void(sd_bus_message*)> onAnswer) {
    using namespace std::chrono;
    const auto patience = progress_->whenCompleteLate
                              ? MessageBus::noTimeout
                              : duration_cast<microseconds>(deadline_ - steady_clock::now());
    const bool isSent =
        bus_.call(std::move(call), patience,
                  [progress = progress_, onAnswer = std::move(onAnswer)](sd_bus_message* answer) {
                      take(*progress, answer, onAnswer);
                  });
    if (isSent) {
        ++progress_->outstanding;
    } else {
        progress_->isSilent = true;
    }
}

void CallBatch::take(Progress& progress, sd_bus_message* answer,
                     const std::function<void(sd_bus_message*)>& onAnswer) {
    --progress.outstanding;
    progress.isSilent = progress.isSilent || isSilence(answer);
    if (progress.isSilent || (progress.isOver && !progress.whenCompleteLate)) {
        return;
    }
    onAnswer(answer);
    if (progress.isOver && progress.outstanding == 0) {
        progress.whenCompleteLate();
    }
}

bool CallBatch::await() {
    const auto isAnswered = [this] { return progress_->outstanding == 0; };
    const auto isDecided = [&] { return progress_->isSilent || isAnswered(); };
    bus_.dispatchUntil(isDecided, deadline_);
    return isAnswered() && !progress_->isSilent;
}

}  // namespace tarvik::linuxdesktop
