#pragma once

#include <string>

#include "base/Time.h"
#include "platform/linux/bus/BusHandles.h"

namespace tarvik::linuxdesktop {

/// The application's name and object on the session bus.
constexpr const char* instanceName = "com.tarvik.dictate";
constexpr const char* instancePath = "/com/tarvik/dictate";
constexpr const char* instanceInterface = "org.freedesktop.Application";

/// The result of the claim to be the one instance of the application in this session.
struct InstanceClaim {
    enum class Role {
        /// This process is the one instance; `bus` owns the name.
        first,
        /// No session bus has decided; `trouble` is the reason.
        unknown,
        /// Another process is the one instance, and has been told of this start.
        second,
        /// Another process is the one instance, and could not be told; `trouble` is the reason.
        refused
    };

    Role role = Role::unknown;
    BusHandle bus;
    std::string trouble;
};

/// The names of the user's action that started this process; empty where unknown. X11 uses the
/// startup id, Wayland the activation token.
struct StartupIds {
    std::string startupId;
    std::string activationToken;
};

/// Claims the name on the session bus. An owner of the name is asked to come forward; an owner that
/// ends instead of answering is replaced by this process.
///
/// Waits for the bus and then for the owner, up to `patience` each. Called before the application
/// has anything that could be kept waiting.
InstanceClaim claimInstance(const StartupIds& ids, Seconds patience);

}  // namespace tarvik::linuxdesktop
