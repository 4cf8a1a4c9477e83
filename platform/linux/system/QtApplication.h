#pragma once

#include <QApplication>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Application.h"
#include "platform/Clock.h"
#include "platform/linux/loop/Alarm.h"
#include "platform/linux/system/TerminationSignals.h"

namespace tarvik::linuxdesktop {

/// The process's QApplication. Main thread only.
///
/// SIGTERM, SIGINT and SIGHUP terminate it. It is an accessory whatever the policy says: it has no
/// window of its own, closing the last one does not end it, and only its windows appear in a task
/// list.
class QtApplication final : public platform::Application {
  public:
    /// The arguments are those of main; they and `clock` outlive the object.
    QtApplication(int& argumentCount, char** arguments, const platform::Clock& clock);

    /// Arranges that the function it gets is called once something is known, at once if it is
    /// already; on any thread, and not after the application is gone.
    using Knowledge = std::function<void(std::function<void()> whenKnown)>;
    /// Has the delegate hear of the launch only when all of this is known, but no later than 0.5 s
    /// after run(). Before run().
    void holdLaunchUntil(std::vector<Knowledge> awaited);
    /// Calls `handler` inside terminate(), the first time.
    void observeTermination(std::function<void()> handler) { onTerminate_ = std::move(handler); }

    /// The user started the application again, or the desktop asks for something: the delegate
    /// hears of it in a later turn, after the launch, and not at all once it is terminated.
    /// `startupId` names the user's action to the display server; it may be empty.
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
    void ask(const std::string& startupId, Request request);
    void post(std::function<void()> block);

    const platform::Clock& clock_;
    QApplication application_;
    TerminationSignals signals_;
    std::shared_ptr<platform::ApplicationDelegate> delegate_;
    std::function<void()> onTerminate_;
    std::vector<Knowledge> awaited_;
    std::atomic<std::size_t> unknown_ = 0;
    Alarm launch_;
    bool hasLaunched_ = false;
    bool isTerminated_ = false;
    /// What was asked before the launch had finished.
    std::vector<std::function<void()>> early_;
};

}  // namespace tarvik::linuxdesktop
