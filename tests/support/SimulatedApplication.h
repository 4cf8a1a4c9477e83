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
    /// Tells the delegate of the launch in the first turn, then lets virtual time run until
    /// terminate(). Fails (status 1) when nothing is left that could ever call it.
    int run() override;
    void terminate() override;
    void activate() override { journal_.add("activate"); }
    void activateIgnoringOtherApps() override { journal_.add("activateIgnoringOtherApps"); }

    /// The user opens the running application again; the delegate's answer.
    bool reopen(bool hasVisibleWindows);
    /// A shortcut of the desktop asks for `action`.
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
