#include "platform/macos/PendingCall.h"

#include <utility>

namespace tarvik::macdesktop {

PendingCall::PendingCall(platform::MainQueue& mainQueue, std::function<void()> handler)
    : mainQueue_(mainQueue), handler_(std::move(handler)) {}

void PendingCall::request(const std::shared_ptr<PendingCall>& call) {
    if (!call->isPending_.exchange(true)) {
        call->mainQueue_.async([call] { call->perform(); });
    }
}

void PendingCall::perform() {
    isPending_.store(false);
    // A copy: the handler may cancel.
    if (const std::function<void()> handler = handler_) {
        handler();
    }
}

void PendingCall::cancel() {
    handler_ = nullptr;
}

}  // namespace tarvik::macdesktop
