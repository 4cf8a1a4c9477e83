#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/Application.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedTime.h"

namespace tarvik::simulated {

/// An application whose launch and reopening a test decides.
class SimulatedApplication final : public platform::Application {
  public:
    SimulatedApplication(SimulatedTime& time, Journal& journal) : time_(time), journal_(journal) {}

    void setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) override;
    void setActivationPolicy(platform::ActivationPolicy policy) override;
    /// Tells the delegate of `notification` in the first turn, then lets virtual time run until
    /// terminate(). Fails (status 1) when nothing is left that could ever call it.
    int run() override;
    void terminate() override;
    void activate() override { journal_.add("activate"); }
    void activateIgnoringOtherApps() override;

    /// Tells the delegate that the launch has finished, on the calling thread and without running
    /// the main queue.
    void launch(const platform::LaunchNotification& notification = {});
    /// The user opens the running application again; the delegate's answer.
    bool reopen(bool hasVisibleWindows);
    /// A shortcut of the desktop asks for `action`.
    void perform(platform::ApplicationAction action) {
        delegate_->applicationShouldPerform(action);
    }

    const std::shared_ptr<platform::ApplicationDelegate>& delegate() const { return delegate_; }
    void releaseDelegate() { delegate_.reset(); }
    std::optional<platform::ActivationPolicy> activationPolicy() const { return activationPolicy_; }
    bool isTerminated() const { return isTerminated_; }
    /// When the application was brought to the front.
    const std::vector<TimePoint>& activations() const { return activations_; }

    /// What run() tells the delegate.
    platform::LaunchNotification notification;

  private:
    SimulatedTime& time_;
    Journal& journal_;
    std::shared_ptr<platform::ApplicationDelegate> delegate_;
    std::optional<platform::ActivationPolicy> activationPolicy_;
    bool isTerminated_ = false;
    std::vector<TimePoint> activations_;
};

}  // namespace tarvik::simulated
