#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/FocusSnapshot.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// Follows the focus in all programs of an accessibility bus. It belongs to the bus's thread.
class FocusTracker {
  public:
    using OnChange = std::function<void(std::shared_ptr<const FocusSnapshot>)>;

    /// Listens from now on. `bus` outlives the tracker and is not dispatched after it is gone;
    /// `onChange` is called inside dispatch() whenever something has changed.
    FocusTracker(MessageBus& bus, OnChange onChange);
    /// All programs have left.
    ~FocusTracker();
    FocusTracker(const FocusTracker&) = delete;
    FocusTracker& operator=(const FocusTracker&) = delete;

    /// Asks every program for its active window and the focus there: nobody tells what was so
    /// before one listened.
    void scan();
    /// Asks the programs of one process.
    void scan(platform::ProcessIdentifier process);

  private:
    struct Program {
        std::shared_ptr<AtspiApplication> application;
        std::shared_ptr<AtspiElement> focus;
        /// Grows with each piece of news, so that answers to older questions are recognised.
        std::uint64_t news = 0;
        std::string activeWindow;
    };

    void onStateChanged(sd_bus_message* signal);
    void onActivated(const BusObject& window);
    void onDeactivated(const BusObject& window);
    void onJoined(sd_bus_message* signal);
    void onLeft(const std::string& busName);
    /// The program of that name, which is got to know if it is new.
    Program& program(const std::string& busName);
    void scanProgram(const std::string& busName);
    void examineWindow(const BusObject& window);
    void setFocus(Program& program, const std::string& path);
    void checkFocus(const BusObject& window, bool isSameWindow);
    void searchFocus(const BusObject& window, bool isSameWindow);
    void publish();

    MessageBus& bus_;
    OnChange onChange_;
    std::map<std::string, Program> programs_;
    std::optional<BusObject> activeWindow_;
    std::uint64_t news_ = 0;
};

}  // namespace tarvik::linuxdesktop
