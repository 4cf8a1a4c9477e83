#include "platform/linux/accessibility/CallBatch.h"

#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

CallBatch::CallBatch(MessageBus& bus, MessageBus::Moment deadline)
    : bus_(bus), deadline_(deadline) {}

CallBatch::~CallBatch() {
    progress_->isOver = true;
}

void CallBatch::add(BusMessage call, std::function<void(sd_bus_message*)> onAnswer) {
    using namespace std::chrono;
    const auto patience = duration_cast<microseconds>(deadline_ - steady_clock::now());
    const bool isSent =
        bus_.call(std::move(call), patience,
                  [progress = progress_, onAnswer = std::move(onAnswer)](sd_bus_message* answer) {
                      --progress->outstanding;
                      if (progress->isOver) {
                          return;
                      }
                      if (isSilence(answer)) {
                          progress->isSilent = true;
                      } else {
                          onAnswer(answer);
                      }
                  });
    if (isSent) {
        ++progress_->outstanding;
    } else {
        progress_->isSilent = true;
    }
}

bool CallBatch::await() {
    const auto isAnswered = [this] { return progress_->outstanding == 0; };
    const auto isDecided = [&] { return progress_->isSilent || isAnswered(); };
    bus_.dispatchUntil(isDecided, deadline_);
    return isAnswered() && !progress_->isSilent;
}

}  // namespace tarvik::linuxdesktop
