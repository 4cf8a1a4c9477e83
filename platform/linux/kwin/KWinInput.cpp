// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/KWinInput.h"

#include <chrono>
#include <utility>

#include "platform/linux/input/SessionKind.h"
#include "platform/linux/kwin/KWinSession.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto windowsTimeout = 1s;
constexpr auto shutdownTimeout = 1300ms;

}  // namespace

KWinInput::KWinInput(platform::MainQueue& mainQueue, platform::Log& log,
                     std::weak_ptr<HotKeyListener> listener)
    : desktopFile_(log, {"com.tarvik.dictate.kwin",
                         "X-KDE-Wayland-Interfaces=org_kde_plasma_window_management,"
                         "org_kde_kwin_fake_input\n",
                         "KWin", "no desktop file lets KWin show its windows to"}),
      thread_(
          mainQueue, log, std::move(listener),
          {"no thread can speak to KWin", "KDE does not answer", "KWin is back",
           "KWin does not answer", MessageBus::sessionSocket(), shutdownTimeout,
           [this, &log](EventLoop& loop, const InputSession::Events& events) {
               return KWinSession::open(
                   loop, log, desktopFile_, events,
                   {[this](WindowFocus::Window front) { target_.setFront(front); },
                    [this](const std::string& windowsRefusal) { handleWindows(windowsRefusal); }},
                   [this](bool canTakeOver) { canTakeOver_ = canTakeOver; });
           }}) {
    if (thread_.isConnected()) {
        windowsKnown_.get_future().wait_for(windowsTimeout);
    } else {
        isSilent_ = !thread_.refusal();
    }
}

std::optional<std::string> KWinInput::refusal() const {
    return isSilent_ && !isUndecided() ? "the session bus does not answer" : thread_.refusal();
}

bool KWinInput::isUndecided() const {
    return isSilent_ && isWaylandSession();
}

std::optional<std::string> KWinInput::frontRefusal() const {
    const auto reason = refusal();
    const std::lock_guard lock(mutex_);
    return reason ? reason : frontRefusal_;
}

void KWinInput::handleWindows(const std::string& refusal) {
    {
        const std::lock_guard lock(mutex_);
        frontRefusal_ = refusal.empty() ? std::nullopt : std::optional(refusal);
    }
    if (!std::exchange(areWindowsKnown_, true)) {
        windowsKnown_.set_value();
    }
}

void KWinInput::takeOver() {
    thread_.post([](InputSession& session) {
        // No other kind of session is opened here.
        static_cast<KWinSession&>(session).hotKeys()->takeOver();
    });
}

void KWinInput::type(TypedText text, std::function<void()> onDone) {
    const std::int64_t window = target_.windowFor(text.process);
    thread_.type(std::move(text), window, std::move(onDone));
}

}  // namespace tarvik::linuxdesktop
