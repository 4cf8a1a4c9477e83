// SPDX-License-Identifier: MIT

#include "platform/linux/LinuxPlatform.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/system/CommandLine.h"
#include "platform/linux/system/CoreDumps.h"
#include "platform/linux/system/HeapLimits.h"
#include "platform/linux/system/StandardDescriptors.h"

namespace tarvik::linuxdesktop {

namespace {

// Longer than the delegate takes to get ready.
constexpr Seconds terminationTimeout(3);

}  // namespace

LinuxPlatform::LinuxPlatform(int& argumentCount, char** arguments, InstanceClaim claim)
    : application_(argumentCount, arguments, clock_),
      mainQueue_(clock_),
      timers_(clock_),
      userDefaults_(FileUserDefaults::standardPath(), log_),
      loginItem_(bundle_.bundlePath()),
      accessibilityWorker_(std::make_shared<AccessibilityWorker>(log_)),
      input_(mainQueue_, log_, {accessibilityWorker_, &accessibilityWorker_->state()}),
      accessibility_(
          accessibilityWorker_, mainQueue_,
          {[this] { return input_.frontmostProcess(); },
           [this] { return input_.canType() && !input_.canTakeOverHotKeys(); },
           [this](platform::ProcessIdentifier process) { return input_.isTypingInto(process); },
           {[this](platform::ProcessIdentifier process) { return input_.holdTyping(process); },
            [this](platform::ProcessIdentifier process, std::size_t units) {
                input_.releaseTyping(process, units);
            }}}),
      audio_(mainQueue_, log_),
      webSockets_(log_, webSocketOptions()),
      // The core asks the workspace for the process in front where a recording begins.
      workspace_([this] { return input_.chooseTarget(); },
                 [this](SettingsPanel panel) {
                     if (panel == SettingsPanel::microphone) {
                         return audio_.authorizationStatusForAudio() !=
                                static_cast<int>(platform::AuthorizationStatus::authorized);
                     }
                     // The page would not give a hotkey.
                     if (input_.canTakeOverHotKeys()) {
                         input_.takeOverHotKeys();
                         return false;
                     }
                     return !accessibility_.isProcessTrusted();
                 },
                 taskLauncher_, clock_, log_),
      userInterface_(clock_, log_) {
    // Whoever asks during the launch is told what is the case, not that nothing is known yet.
    application_.holdLaunchUntil(
        {[this](std::function<void()> whenKnown) { audio_.whenFirstKnown(std::move(whenKnown)); },
         [this](std::function<void()> whenKnown) {
             accessibility_.whenFirstKnown(std::move(whenKnown));
         }});
    serve(std::move(claim));
}

WebSocketOptions LinuxPlatform::webSocketOptions() {
    WebSocketOptions options;
    options.authority = userDefaults_.stringForKey("deepgramAuthority").value_or("");
    options.onKeyAnswer = [this](bool isKeyAccepted) {
        mainQueue_.async([this, isKeyAccepted] { userInterface_.showKeyAnswer(isKeyAccepted); });
    };
    return options;
}

void LinuxPlatform::serve(InstanceClaim claim) {
    if (!claim.bus) {
        log_.write("TarvikDictate: a second start goes unnoticed, there is no session bus: " +
                   claim.reason);
    }
    // A session without a bus has none later either, and a search for one would wake up for ever.
    if (claim.role == InstanceClaim::Role::unknown) {
        return;
    }
    applicationObject_.emplace(
        std::move(claim.bus), clock_, log_,
        ApplicationObject::Handlers{
            [this](const std::string& startupId) { application_.reopen(startupId); },
            [this](platform::ApplicationAction action, const std::string& startupId) {
                application_.perform(action, startupId);
            }});
    application_.observeTermination([this] { applicationObject_->resign(); });
}

// A recording that runs is stopped as by a signal, so that the service hears of the end and the
// seconds count.
void LinuxPlatform::endWithoutDisplay() {
    log_.write("TarvikDictate: the display is gone, and the application ends");
    application_.terminate();
    mainQueue_.runUntil([this] { return application_.hasEnded(); }, terminationTimeout);
    userDefaults_.finish();
    log_.finish();
}

LinuxPlatform::~LinuxPlatform() {
    releaseSharedInstances();
    application_.setDelegate(nullptr);
    mainQueue_.discardBlocks();
}

}  // namespace tarvik::linuxdesktop

namespace tarvik::platform {

namespace {

constexpr Seconds instanceTimeout(2);

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// Ends the process where the command line asks for anything but a start.
void answerCommandLine(int argumentCount, char** arguments) {
    const std::vector<std::string_view> after(arguments + (argumentCount > 0 ? 1 : 0),
                                              arguments + argumentCount);
    if (const auto answer = linuxdesktop::answerToArguments(after)) {
        std::fputs(answer->text.c_str(), answer->status == EXIT_SUCCESS ? stdout : stderr);
        std::exit(answer->status);
    }
}

}  // namespace

std::unique_ptr<Platform> makePlatform(int& argumentCount, char** arguments) {
    using linuxdesktop::InstanceClaim;
    linuxdesktop::openStandardDescriptors();
    answerCommandLine(argumentCount, arguments);
    linuxdesktop::preventCoreDumps();
    linuxdesktop::limitHeap();
    // Qt takes these out of the environment when it starts.
    InstanceClaim claim = linuxdesktop::claimInstance(
        {variable("DESKTOP_STARTUP_ID"), variable("XDG_ACTIVATION_TOKEN")}, instanceTimeout);
    if (claim.role == InstanceClaim::Role::second) {
        std::fputs("TarvikDictate: it runs already and comes forward\n", stderr);
        std::exit(EXIT_SUCCESS);
    }
    if (claim.role == InstanceClaim::Role::refused) {
        std::fprintf(stderr, "TarvikDictate: it runs already and does not come forward: %s\n",
                     claim.reason.c_str());
        std::exit(EXIT_FAILURE);
    }
    return std::make_unique<linuxdesktop::LinuxPlatform>(argumentCount, arguments,
                                                         std::move(claim));
}

}  // namespace tarvik::platform
