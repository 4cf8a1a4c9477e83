// SPDX-License-Identifier: MIT

#include "platform/linux/DesktopInput.h"

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/linux/CombinedMeans.h"
#include "platform/linux/accessibility/AtspiFront.h"
#ifdef TARVIK_HAS_GNOME
#include "platform/linux/gnome/GnomeInput.h"
#endif
#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/LinuxEventManager.h"
#include "platform/linux/input/LinuxKeyboardEvents.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/input/XHoldListener.h"
#include "platform/linux/input/XProgramHost.h"
#include "platform/linux/portal/PortalInput.h"
#ifdef TARVIK_HAS_WAYLAND
#include "platform/linux/kwin/KWinInput.h"
#include "platform/linux/sway/SwayInput.h"
#include "platform/linux/wayland/WaylandInput.h"
#endif
#ifdef TARVIK_HAS_X11
#include "platform/linux/x11/X11Input.h"
#include "platform/linux/x11/XwaylandInput.h"
#endif

namespace tarvik::linuxdesktop {

namespace {

/// What the means are opened with, and what those of one technology share.
struct Session {
    platform::MainQueue& mainQueue;
    platform::Log& log;
    std::weak_ptr<HotKeyListener> listener;
    OnLift onLift;
    std::shared_ptr<const AccessibilityState> accessibility;
#ifdef TARVIK_HAS_GNOME
    std::shared_ptr<GnomeInput> gnome = {};
#endif
#ifdef TARVIK_HAS_WAYLAND
    std::shared_ptr<SwayInput> sway = {};
    std::shared_ptr<KWinInput> kwin = {};
    std::shared_ptr<WaylandInput> wayland = {};
#endif
#ifdef TARVIK_HAS_X11
    std::shared_ptr<X11Input> x11 = {};
#endif
};

/// A means that serves the session, or none, and the reason for either.
template <typename Means>
struct Opened {
    std::shared_ptr<Means> means;
    std::string reason;
    /// Whether the session may be that of another means in the table. The session has not told.
    bool isUndecided = false;
};

template <typename Means>
struct Choice {
    const char* name;
    Opened<Means> (*open)(Session&);
};

#ifdef TARVIK_HAS_WAYLAND
template <typename Means>
Opened<Means> openSway(Session& session) {
    if (!session.sway) {
        session.sway =
            std::make_shared<SwayInput>(session.mainQueue, session.log, session.listener);
    }
    const auto refusal = std::is_same_v<Means, TypingMeans> ? session.sway->typingRefusal()
                                                            : session.sway->refusal();
    if (refusal) {
        return {nullptr, *refusal};
    }
    return {session.sway, session.sway->isAvailable()
                              ? "Sway offers it"
                              : "Sway has not answered yet, and is used once it does"};
}

template <typename Means>
Opened<Means> openKWin(Session& session) {
    if (!session.kwin) {
        session.kwin =
            std::make_shared<KWinInput>(session.mainQueue, session.log, session.listener);
    }
    const auto refusal =
        std::is_same_v<Means, HotKeyMeans> ? session.kwin->refusal() : session.kwin->frontRefusal();
    if (refusal) {
        return {nullptr, *refusal};
    }
    const bool isUndecided = session.kwin->isUndecided();
    return {session.kwin,
            isUndecided ? "KWin has not answered yet, and is used once it does" : "KWin offers it",
            isUndecided};
}

WaylandInput::FrontSince frontSinceByAccessibility(const Session& session) {
    if (!session.accessibility) {
        return {};
    }
    return [front = std::make_shared<const AtspiFront>(session.accessibility)](
               std::chrono::steady_clock::time_point time) {
        return front->frontmostProcessSince(time);
    };
}

std::optional<std::string> refusalOfWayland(Session& session) {
    if (!session.wayland) {
        session.wayland = std::make_shared<WaylandInput>(session.mainQueue, session.log,
                                                         frontSinceByAccessibility(session));
    }
    return session.wayland->refusal();
}

Opened<HotKeyMeans> refuseWaylandHotKeys(Session& session) {
    return {nullptr, refusalOfWayland(session).value_or(
                         "the compositor offers none, but its own bindings can call the actions "
                         "press and release")};
}

template <typename Means>
Opened<Means> openWayland(Session& session) {
    if (const auto refusal = refusalOfWayland(session)) {
        return {nullptr, *refusal};
    }
    return {session.wayland, session.wayland->isAvailable()
                                 ? "the compositor offers it"
                                 : "the compositor has not answered yet, and is used once it does"};
}
#endif

#ifdef TARVIK_HAS_GNOME
/// Which process has the keyboard, in a session where only accessibility tells.
GnomeInput::Front frontByAccessibility(const Session& session) {
    if (!session.accessibility) {
        return {};
    }
    return [front = std::make_shared<const AtspiFront>(session.accessibility)] {
        return front->frontmostProcess();
    };
}

template <typename Means>
Opened<Means> openGnome(Session& session) {
    if (!session.gnome) {
        session.gnome = std::make_shared<GnomeInput>(
            session.mainQueue, session.log, session.listener, frontByAccessibility(session));
    }
    const auto refusal = std::is_same_v<Means, TypingMeans> ? session.gnome->typingRefusal()
                                                            : session.gnome->refusal();
    if (refusal) {
        return {nullptr, *refusal};
    }
    const bool hasAnswered = session.gnome->isAvailable();
    // Hotkeys of the portal as well would be heard twice in GNOME.
    return {session.gnome,
            hasAnswered ? "GNOME Shell offers it"
                        : "GNOME Shell has not answered yet, and is used once it does",
            !hasAnswered && std::is_same_v<Means, TypingMeans>};
}
#endif

Opened<HotKeyMeans> openPortal(Session& session) {
    auto portal = std::make_shared<PortalInput>(session.mainQueue, session.log, session.listener);
    if (const auto& refusal = portal->refusal()) {
        return {nullptr, *refusal};
    }
    const char* reason = portal->hasAnswered()
                             ? "the portal offers it"
                             : "the portal has not answered yet, and is used once it does";
    return {std::move(portal), reason};
}

#ifdef TARVIK_HAS_X11
template <typename Means>
Opened<Means> openX11(Session& session) {
#ifdef TARVIK_HAS_WAYLAND
    if (session.kwin && session.kwin->isUndecided()) {
        return {nullptr, "the question would start the X server of the Wayland session"};
    }
#endif
    if (!session.x11) {
        session.x11 =
            X11Input::openSession(session.mainQueue, session.log, session.listener, session.onLift);
    }
    if (const auto refusal = session.x11->refusal()) {
        return {nullptr, *refusal};
    }
    return {session.x11, session.x11->isAvailable()
                             ? "the X server offers it"
                             : "the X server has not answered yet, and is used once it does"};
}
#endif

Opened<FrontMeans> openAtspi(Session& session) {
    if (!session.accessibility) {
        return {nullptr, "no accessibility service runs"};
    }
    return {std::make_shared<AtspiFront>(session.accessibility),
            session.accessibility->isConnected
                ? "programs report their active windows"
                : "programs do not report their windows yet, and it is used once they do"};
}

// Tried in this order. A technology that was left out of the build is in no table. What Wayland
// compositors offer stands before X11, since the question to X11 would start a compositor's X
// server. What one compositor has stands before what any compositor may offer, and before the
// portal for shortcuts: some portals report shortcuts that are never heard, or never tell of a
// release.

const std::vector<Choice<HotKeyMeans>> hotKeyChoices{
#ifdef TARVIK_HAS_WAYLAND
    {"Sway", &openSway<HotKeyMeans>},
    {"KGlobalAccel", &openKWin<HotKeyMeans>},
#endif
#ifdef TARVIK_HAS_GNOME
    {"custom shortcuts of GNOME", &openGnome<HotKeyMeans>},
#endif
    {"the portal", &openPortal},
#ifdef TARVIK_HAS_WAYLAND
    {"Wayland", &refuseWaylandHotKeys},
#endif
#ifdef TARVIK_HAS_X11
    {"XInput 2", &openX11<HotKeyMeans>},
#endif
};

const std::vector<Choice<TypingMeans>> typingChoices{
#ifdef TARVIK_HAS_WAYLAND
    {"a virtual keyboard in Sway", &openSway<TypingMeans>},
    {"KWin's input method", &openKWin<TypingMeans>},
#endif
#ifdef TARVIK_HAS_GNOME
    {"an engine of IBus in GNOME", &openGnome<TypingMeans>},
#endif
#ifdef TARVIK_HAS_WAYLAND
    {"a virtual keyboard in Wayland", &openWayland<TypingMeans>},
#endif
#ifdef TARVIK_HAS_X11
    {"XTEST", &openX11<TypingMeans>},
#endif
};

const std::vector<Choice<FrontMeans>> frontChoices{
#ifdef TARVIK_HAS_WAYLAND
    {"Sway", &openSway<FrontMeans>},
    {"KWin", &openKWin<FrontMeans>},
    {"Wayland and AT-SPI", &openWayland<FrontMeans>},
#endif
#ifdef TARVIK_HAS_X11
    {"the X server", &openX11<FrontMeans>},
#endif
    {"AT-SPI", &openAtspi},
};

/// The first means that serves the session, together with those before it that are undecided; none
/// when none does.
template <typename Means>
std::shared_ptr<Means> choose(const char* service, const std::vector<Choice<Means>>& choices,
                              Session& session) {
    std::vector<std::shared_ptr<Means>> chosen;
    for (const Choice<Means>& choice : choices) {
        const Opened<Means> opened = choice.open(session);
        session.log.write(std::string("TarvikDictate: ") + service +
                          (opened.means ? " by " : " not by ") + choice.name + ": " +
                          opened.reason);
        if (opened.means) {
            chosen.push_back(opened.means);
            if (!opened.isUndecided) {
                break;
            }
        }
    }
    if (chosen.empty()) {
        session.log.write(std::string("TarvikDictate: nothing in this session serves ") + service);
        return nullptr;
    }
    return chosen.size() == 1 ? chosen.front() : combined(chosen);
}

}  // namespace

DesktopInput::DesktopInput(platform::MainQueue& mainQueue, platform::Log& log,
                           std::shared_ptr<const AccessibilityState> accessibility)
    : eventManager_(std::make_shared<LinuxEventManager>(log)) {
    // Set below, before anything is typed. A means that types ends before the hotkeys do.
    const auto lifted = std::make_shared<HotKeyMeans*>(nullptr);
    Session session{mainQueue, log, eventManager_,
                    [lifted](std::uint32_t modifiers) {
                        if (*lifted != nullptr) {
                            (*lifted)->expectLift(modifiers);
                        }
                    },
                    std::move(accessibility)};
    hotKeys_ = choose("hotkeys", hotKeyChoices, session);
    *lifted = hotKeys_.get();
    typing_ = choose("typing", typingChoices, session);
    front_ = choose("the front window", frontChoices, session);
    if (session.accessibility) {
        reports_ = std::make_shared<AtspiFront>(session.accessibility);
    }
#ifdef TARVIK_HAS_X11
    if (typing_ && !typing_->servesXPrograms()) {
        // A means of the session may need the X server's help, or help it.
        const auto host = std::dynamic_pointer_cast<XProgramHost>(typing_);
        const auto both =
            std::make_shared<XwaylandInput>(mainQueue, log, typing_, front_, host,
                                            std::dynamic_pointer_cast<XHoldListener>(hotKeys_));
        if (host) {
            // The first hotkey in an X program would come too late for a key beside Alt.
            host->setXProgramObserver([&mainQueue, observer = std::weak_ptr(both)] {
                mainQueue.async([observer] {
                    if (const auto input = observer.lock()) {
                        input->connect();
                    }
                });
            });
        }
        typing_ = both;
        front_ = both;
    }
#endif
    eventManager_->setMeans(hotKeys_.get());
    keyboardEvents_ = std::make_shared<LinuxKeyboardEvents>(typing_.get(), mainQueue, log);
}

DesktopInput::~DesktopInput() = default;

bool DesktopInput::canTakeOverHotKeys() const {
    return hotKeys_ && hotKeys_->canTakeOver();
}

void DesktopInput::takeOverHotKeys() {
    if (hotKeys_) {
        hotKeys_->takeOver();
    }
}

platform::EventManager& DesktopInput::eventManager() {
    return *eventManager_;
}

platform::KeyboardEvents& DesktopInput::keyboardEvents() {
    return *keyboardEvents_;
}

std::optional<platform::ProcessIdentifier> DesktopInput::frontmostProcess() const {
    const auto process = front_ ? front_->frontmostProcess() : std::nullopt;
    const bool isKnown = process || !reports_ || (front_ && front_->followsReports());
    return isKnown ? process : reports_->frontmostProcess();
}

std::optional<platform::ProcessIdentifier> DesktopInput::chooseTarget() {
    return front_ ? front_->chooseTarget() : std::nullopt;
}

bool DesktopInput::canType() const {
    return typing_ && typing_->isAvailable();
}

bool DesktopInput::isTypingInto(platform::ProcessIdentifier process) const {
    return keyboardEvents_->isTypingInto(process) || (front_ && front_->isElsewhere(process));
}

std::optional<std::size_t> DesktopInput::holdTyping(platform::ProcessIdentifier process) {
    return keyboardEvents_->hold(process);
}

void DesktopInput::releaseTyping(platform::ProcessIdentifier process, std::size_t units) {
    keyboardEvents_->release(process, units);
}

}  // namespace tarvik::linuxdesktop
