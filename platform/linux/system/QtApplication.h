// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Application.h"
#include "platform/Clock.h"
#include "platform/linux/loop/Alarm.h"
#include "platform/linux/system/StartMessages.h"
#include "platform/linux/system/TerminationSignals.h"

namespace tarvik::linuxdesktop {

/// The process's QApplication. Main thread only.
///
/// SIGTERM, SIGINT and SIGHUP terminate the application as terminate() does. It is an accessory
/// whatever the policy says: closing the last window does not end it, and a task list shows its
/// open windows only.
class QtApplication final : public platform::Application {
  public:
    /// The arguments are those of main. The arguments and `clock` outlive the object.
    QtApplication(int& argumentCount, char** arguments, const platform::Clock& clock);
    ~QtApplication() override;

    /// Arranges one call of `onMet` when the condition is met, at once if it is met already. The
    /// call may come on any thread, and comes before the application is destroyed or not at all.
    using LaunchCondition = std::function<void(std::function<void()> onMet)>;
    /// Delays the launch until all conditions are met, but no longer than 0.5 s after run(). Called
    /// before run().
    void holdLaunchUntil(std::vector<LaunchCondition> conditions);
    /// Calls `onTerminate` inside the first terminate().
    void observeTermination(std::function<void()> onTerminate) {
        onTerminate_ = std::move(onTerminate);
    }

    /// Whether the application may end: it has been terminated, and the delegate is ready.
    bool hasEnded() const { return hasEnded_; }

    /// Requests of the user or the desktop. The delegate hears of a request in a later turn of the
    /// loop and after the launch; after terminate() not at all. `startupId` names the user's action
    /// to the display server; it may be empty.
    void reopen(const std::string& startupId);
    void perform(platform::ApplicationAction action, const std::string& startupId);

    void setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) override;
    void setActivationPolicy(platform::ActivationPolicy policy) override;
    int run() override;
    void terminate() override;
    void activate() override;
    void activateIgnoringOtherApps() override;

  private:
    using Request = std::function<void(platform::ApplicationDelegate&)>;

    void finishLaunching();
    void deliver(const std::string& startupId, Request request);
    void post(std::function<void()> block);

    const platform::Clock& clock_;
    std::optional<StartMessages> startMessages_{std::in_place};
    QApplication application_;
    TerminationSignals signals_;
    std::shared_ptr<platform::ApplicationDelegate> delegate_;
    std::function<void()> onTerminate_;
    std::vector<LaunchCondition> launchConditions_;
    std::atomic<std::size_t> unmetConditions_ = 0;
    Alarm launch_;
    bool hasLaunched_ = false;
    bool isTerminated_ = false;
    bool hasEnded_ = false;
    std::vector<std::function<void()>> requestsBeforeLaunch_;
};

}  // namespace tarvik::linuxdesktop
