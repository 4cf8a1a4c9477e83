// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "base/Time.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// The application's name and object on the session bus.
constexpr const char* instanceName = "com.tarvik.dictate";
constexpr const char* instancePath = "/com/tarvik/dictate";
constexpr const char* instanceInterface = "org.freedesktop.Application";

/// The outcome of asking to be the one instance of the application in this session.
struct InstanceClaim {
    enum class Role {
        /// This process is the instance; `bus` owns the name and is driven by no loop yet.
        first,
        /// No session bus can tell; `reason` says why.
        unknown,
        /// The session bus has not answered in time; `reason` says so.
        unanswered,
        /// Another process is the instance, and has been told of this start.
        second,
        /// Another process is the instance, and could not be told; `reason` says why.
        refused
    };

    Role role = Role::unknown;
    std::unique_ptr<MessageBus> bus;
    std::string reason;
};

/// How the display server knows the user's action that started this process; empty where unknown.
struct StartupIds {
    std::string startupId;
    std::string activationToken;
};

/// Asks the session bus for the name. An owner of the name is asked to come forward; this process
/// takes the place of an owner that ends instead of replying.
///
/// Blocks, for the bus and then for the owner, up to `timeout` each. Called on the main thread
/// before there is anything that could be kept waiting.
InstanceClaim claimInstance(const StartupIds& ids, Seconds timeout);

/// A call that asks a bus for the application's name, without queueing for the name.
BusMessage newNameRequest(MessageBus& bus);
/// Whether a reply to that call says that this process has the name.
bool isNameOwner(sd_bus_message* reply);

}  // namespace tarvik::linuxdesktop
