#pragma once

#include <string>

#include "base/Time.h"
#include "platform/linux/bus/BusHandles.h"

namespace tarvik::linuxdesktop {

/// The application's name and object on the session bus.
constexpr const char* instanceName = "com.tarvik.dictate";
constexpr const char* instancePath = "/com/tarvik/dictate";
constexpr const char* instanceInterface = "org.freedesktop.Application";

/// What came of asking to be the one instance of the application in this session.
struct InstanceClaim {
    enum class Role {
        /// This process is the one; `bus` owns the name.
        first,
        /// No session bus can tell; `trouble` says why.
        unknown,
        /// Another process is, and has been told of this start.
        second,
        /// Another process is, and could not be told; `trouble` says why.
        refused
    };

    Role role = Role::unknown;
    BusHandle bus;
    std::string trouble;
};

/// How the display server knows the user's action that started this process; empty where unknown.
struct StartupIds {
    std::string startupId;
    std::string activationToken;
};

/// Asks the session bus for the name and, where another process owns it, asks that process to come
/// forward; where that one ends instead of answering, this process takes its place.
///
/// Waits for the bus and then for the owner, `patience` each: it is for the time before there is
/// anything that could be kept waiting.
InstanceClaim claimInstance(const StartupIds& ids, Seconds patience);

}  // namespace tarvik::linuxdesktop
