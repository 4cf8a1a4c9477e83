// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/LoginItemService.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// A login item whose registration a test can make fail.
class SimulatedLoginItem final : public platform::LoginItemService {
  public:
    explicit SimulatedLoginItem(Journal& journal) : journal_(journal) {}

    platform::LoginItemStatus status() override { return currentStatus; }

    std::optional<Error> registerItem() override {
        journal_.add("registerItem");
        ++registrations;
        if (!registerFailure) {
            currentStatus = platform::LoginItemStatus::enabled;
        }
        return registerFailure;
    }
    std::optional<Error> unregisterItem() override {
        journal_.add("unregisterItem");
        ++unregistrations;
        if (!unregisterFailure) {
            currentStatus = platform::LoginItemStatus::notRegistered;
        }
        return unregisterFailure;
    }

    platform::LoginItemStatus currentStatus = platform::LoginItemStatus::notRegistered;
    std::optional<Error> registerFailure;
    std::optional<Error> unregisterFailure;
    int registrations = 0;
    int unregistrations = 0;

  private:
    Journal& journal_;
};

}  // namespace tarvik::simulated
