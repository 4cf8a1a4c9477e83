#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/AccessibilityState.h"
#include "platform/linux/accessibility/AtspiRegistry.h"
#include "platform/linux/accessibility/AtspiSession.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// The connections to the session bus and the accessibility bus, kept up. It belongs to the
/// worker's thread; nothing it does waits.
///
/// A bus that comes back says so, except for the session bus itself: that one is looked for when
/// something is asked of it again.
class AtspiDesktop {
  public:
    /// Both outlive the desktop, which writes the one and keeps the other true.
    AtspiDesktop(platform::Log& log, AccessibilityState& state);
    ~AtspiDesktop();
    AtspiDesktop(const AtspiDesktop&) = delete;
    AtspiDesktop& operator=(const AtspiDesktop&) = delete;

    /// The connections that a loop waits for.
    std::vector<MessageBus*> buses();
    /// Handles everything that has come.
    void dispatch();

    /// Looks again for what is missing.
    void connect();
    /// Calls `handler`, inside dispatch(), once it is known whether accessibility is switched on
    /// and its bus answers, or that something is missing for it.
    void whenFirstKnown(std::function<void()> handler);
    /// Switches accessibility on for the whole desktop.
    void enable();
    /// Asks the programs of a process what has the focus.
    void scan(platform::ProcessIdentifier process);
    /// The accessibility bus, while programs report to it.
    MessageBus* accessibilityBus();

  private:
    AtspiSession::Handlers sessionHandlers();
    void joinRegistry(const std::string& address);
    void leaveRegistry();
    void complain(const std::string& trouble);
    void announceWhatIsKnown();

    platform::Log& log_;
    AccessibilityState& state_;
    std::unique_ptr<AtspiSession> session_;
    std::unique_ptr<AtspiRegistry> registry_;
    std::string address_;
    /// An address that came while the accessibility bus may have been at work.
    std::optional<std::string> newAddress_;
    /// It has worked since it was last started without being asked for: starting it again without
    /// this could go on for ever.
    bool isWorthStarting_ = false;
    /// The log says already that something is missing.
    bool isInTrouble_ = false;
    /// The desktop has told where its switch stands.
    bool knowsSwitch_ = false;
    std::vector<std::function<void()>> awaitingFirst_;
};

}  // namespace tarvik::linuxdesktop
