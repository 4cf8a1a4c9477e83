#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/bus/MessageBus.h"

/// The names of the AT-SPI protocol, and its answers read.
namespace tarvik::linuxdesktop::accessible {

inline constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
inline constexpr const char* applicationInterface = "org.a11y.atspi.Application";
inline constexpr const char* textInterface = "org.a11y.atspi.Text";
inline constexpr const char* editableTextInterface = "org.a11y.atspi.EditableText";

/// The numbers of states.
enum class State : unsigned {
    active = 1,
    editable = 7,
    focused = 12,
    showing = 25,
    visible = 30,
    managesDescendants = 31,
    readOnly = 43,
};

/// The states of a widget.
class States {
  public:
    explicit States(std::uint64_t bits) : bits_(bits) {}
    bool contains(State state) const { return (bits_ >> static_cast<unsigned>(state) & 1U) != 0; }

  private:
    std::uint64_t bits_;
};

/// The answers of GetState and GetChildren; empty for an error or another type.
std::optional<States> statesIn(sd_bus_message* answer);
std::optional<std::vector<BusObject>> childrenIn(sd_bus_message* answer);
/// Whether the answer of GetInterfaces names the changing of text; empty as above.
std::optional<bool> isEditableTextIn(sd_bus_message* answer);

}  // namespace tarvik::linuxdesktop::accessible
