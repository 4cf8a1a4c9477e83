// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/Application.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedTime.h"

namespace tarvik::simulated {

/// An application that a test reopens and ends.
class SimulatedApplication final : public platform::Application {
  public:
    SimulatedApplication(SimulatedTime& time, Journal& journal) : time_(time), journal_(journal) {}

    void setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) override;
    void setActivationPolicy(platform::ActivationPolicy policy) override;
    /// Notifies the delegate of the launch in the first turn. Then advances virtual time until
    /// terminate(). Returns status 1 when nothing is left to run that could call terminate().
    int run() override;
    void terminate() override;
    void activate() override { journal_.add("activate"); }
    void activateIgnoringOtherApps() override { journal_.add("activateIgnoringOtherApps"); }

    /// The user opens the running application again. Returns the delegate's result.
    bool reopen(bool hasVisibleWindows);
    /// A shortcut of the desktop requests `action`.
    void perform(platform::ApplicationAction action) {
        delegate_->applicationShouldPerform(action);
    }

    void releaseDelegate() { delegate_.reset(); }
    bool isTerminated() const { return isTerminated_; }

  private:
    SimulatedTime& time_;
    Journal& journal_;
    std::shared_ptr<platform::ApplicationDelegate> delegate_;
    bool isTerminated_ = false;
};

}  // namespace tarvik::simulated
