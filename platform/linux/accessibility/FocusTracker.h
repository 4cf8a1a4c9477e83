// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/accessibility/FocusSnapshot.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// Tracks the focus in all programs of an accessibility bus. Belongs to the bus's thread; nothing
/// blocks.
class FocusTracker {
  public:
    using OnChange = std::function<void(std::shared_ptr<const FocusSnapshot>)>;

    /// Observes the programs from now on. `onChange` is called in handlers of `bus`, after every
    /// change. `bus` outlives the tracker and runs no handler after the tracker is gone.
    FocusTracker(MessageBus& bus, OnChange onChange);
    /// Marks all programs as gone.
    ~FocusTracker();
    FocusTracker(const FocusTracker&) = delete;
    FocusTracker& operator=(const FocusTracker&) = delete;

    /// Asks every program for its active window and the focus in that window. Events tell of
    /// changes only.
    void scan();
    /// Asks the programs of one process.
    void scan(platform::ProcessIdentifier process);

  private:
    struct Program {
        std::shared_ptr<AtspiApplication> application;
        std::shared_ptr<AtspiElement> focus;
        /// The widget that had the focus before; empty once the focus has fallen back to it.
        std::shared_ptr<AtspiElement> previousFocus;
        /// The widget has reported the loss of the focus, and no query has refuted the report.
        /// Stays true when no widget has the focus any more.
        bool isLossReported = false;
        /// The tracker's sequence number at the program's latest focus event. A reply to an older
        /// query is outdated.
        std::uint64_t sequence = 0;
        std::string activeWindow;
    };

    void onStateChanged(sd_bus_message* signal);
    void onActivated(const BusObject& window);
    void onDeactivated(const BusObject& window);
    void onProgramAdded(sd_bus_message* signal);
    void onProgramGone(const std::string& busName);
    /// The program of that name, which is added if it is new.
    Program& program(const std::string& busName);
    /// Asks a program that may not know its listeners yet, once it knows them.
    void scanNewProgram(const std::string& busName);
    void scanProgram(const std::string& busName);
    void examineWindow(const BusObject& window);
    void examineOtherActiveWindow();
    void setFocus(Program& program, const std::string& path);
    void checkFocus(const BusObject& window, bool isSameWindow);
    /// Asks a program whether its widget has the focus that was reported. A widget without the
    /// focus in an active window gives way to the previous widget, if the previous widget has the
    /// focus. During a key grab the window is inactive too.
    void confirmFocus(const std::string& busName);
    /// Asks an object for its states. `onStates` gets nothing from an object that is gone, and is
    /// not called without a reply.
    void queryStates(const BusObject& object,
                     std::function<void(const std::optional<atspi::StateSet>&)> onStates);
    void rejectFocus(Program& program);
    /// Whether this is still the widget and the latest event that a query was about.
    bool isCurrent(const AtspiElement& focus, std::uint64_t sequence) const;
    void searchFocus(const BusObject& window, bool isSameWindow);
    void publish();

    MessageBus& bus_;
    OnChange onChange_;
    std::map<std::string, Program> programs_;
    std::optional<BusObject> activeWindow_;
    std::chrono::steady_clock::time_point activeSince_;
    /// A window that counts as active beside activeWindow_: it was active before, or a query has
    /// found it active. One of the two programs is late with its events. Examined again when
    /// activeWindow_ ends.
    std::optional<BusObject> otherActiveWindow_;
    std::uint64_t sequence_ = 0;
};

}  // namespace tarvik::linuxdesktop
