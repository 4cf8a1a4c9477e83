// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/bus/MessageBus.h"

/// The AT-SPI protocol: its names, its numbers and the readers of its replies.
namespace tarvik::linuxdesktop::atspi {

inline constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
inline constexpr const char* applicationInterface = "org.a11y.atspi.Application";
inline constexpr const char* registryInterface = "org.a11y.atspi.Registry";
inline constexpr const char* textInterface = "org.a11y.atspi.Text";
inline constexpr const char* editableTextInterface = "org.a11y.atspi.EditableText";

/// Where every program keeps its root object.
inline constexpr const char* rootPath = "/org/a11y/atspi/accessible/root";

/// The registry, which knows the programs and who listens to their events.
inline const BusObject registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/registry"};

/// The states of a widget that matter here, with their numbers in the protocol.
enum class State : unsigned {
    active = 1,
    editable = 7,
    focused = 12,
    showing = 25,
    visible = 30,
    managesDescendants = 31,
    readOnly = 43,
};

/// The kind of relation that leads from a part of a document to the part before, with its number in
/// the protocol.
inline constexpr std::uint32_t flowsFromRelation = 11;

/// Roles with their numbers in the protocol: a field that hides its text, and the parts of a
/// document that are broken into pages.
inline constexpr std::uint32_t passwordTextRole = 40;
inline constexpr std::uint32_t paragraphRole = 73;
inline constexpr std::uint32_t headingRole = 83;

class StateSet {
  public:
    explicit StateSet(std::uint64_t bits) : bits_(bits) {}
    bool contains(State state) const { return (bits_ >> static_cast<unsigned>(state) & 1U) != 0; }

  private:
    std::uint64_t bits_;
};

/// The content of a reply to GetState; empty for an error or another type.
std::optional<StateSet> stateSetIn(sd_bus_message* reply);
/// The content of a reply to GetChildren; empty for an error or another type.
std::optional<std::vector<BusObject>> childrenIn(sd_bus_message* reply);
/// The object that a property of a widget names; empty for an error or another type.
std::optional<BusObject> objectPropertyIn(sd_bus_message* reply);
/// The first object to which a reply to GetRelationSet has a relation of this kind.
std::optional<BusObject> relatedObjectIn(sd_bus_message* reply, std::uint32_t relation);
/// Whether a reply to GetInterfaces names EditableText; empty for an error or another type.
std::optional<bool> hasEditableTextIn(sd_bus_message* reply);

}  // namespace tarvik::linuxdesktop::atspi
