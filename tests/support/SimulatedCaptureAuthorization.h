// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "platform/CaptureAuthorization.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// A microphone permission that a test grants or denies, at any time and on any thread.
class SimulatedCaptureAuthorization final : public platform::CaptureAuthorization {
  public:
    explicit SimulatedCaptureAuthorization(Journal& journal) : journal_(journal) {}

    int authorizationStatusForAudio() override {
        journal_.add("authorizationStatusForAudio");
        return status;
    }

    void requestAccessForAudio(std::function<void(bool granted)> handler) override {
        journal_.add("requestAccessForAudio");
        ++requests;
        if (isAnswerHeld) {
            handlers_.push_back(std::move(handler));
        } else {
            handler(status == static_cast<int>(platform::AuthorizationStatus::authorized));
        }
    }

    /// Answers the oldest waiting request, on the calling thread.
    void answer(bool granted) {
        std::function<void(bool)> handler = std::move(handlers_.front());
        handlers_.erase(handlers_.begin());
        handler(granted);
    }

    int status = static_cast<int>(platform::AuthorizationStatus::authorized);
    /// Whether a request waits for answer(). Otherwise the handler is called inside the request,
    /// with whether the status is authorised.
    bool isAnswerHeld = false;
    int requests = 0;

  private:
    Journal& journal_;
    std::vector<std::function<void(bool)>> handlers_;
};

}  // namespace tarvik::simulated
