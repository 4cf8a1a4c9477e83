// SPDX-License-Identifier: MIT

#include "platform/linux/system/InstanceClaim.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using std::chrono::steady_clock;

// Replies of the bus to a request for a name.
constexpr std::uint32_t isOwner = 1;
constexpr std::uint32_t isOwnedByAnother = 3;
constexpr std::uint32_t doNotQueue = 4;

SteadyTime after(Seconds interval) {
    return steady_clock::now() + std::chrono::duration_cast<steady_clock::duration>(interval);
}

// The reply, or an error message in its place; empty when neither comes before `deadline`.
BusMessage callAndWait(MessageBus& bus, BusMessage message, SteadyTime deadline) {
    const auto kept = std::make_shared<BusMessage>();
    const bool isSent =
        bus.call(std::move(message), MessageBus::noTimeout,
                 [kept](sd_bus_message* reply) { kept->reset(sd_bus_message_ref(reply)); });
    if (isSent) {
        bus.dispatchUntil([&] { return *kept != nullptr; }, deadline);
    }
    return std::move(*kept);
}

std::string reasonIn(const BusMessage& reply) {
    if (!reply) {
        return "it does not answer";
    }
    const sd_bus_error* error = sd_bus_message_get_error(reply.get());
    return error != nullptr && error->message != nullptr ? error->message : "a strange answer";
}

// What the bus says when the receiver of a call is gone, before or after it took the call.
bool saysOwnerIsGone(const BusMessage& reply) {
    return reply &&
           (isNoReply(reply.get()) ||
            sd_bus_message_is_method_error(reply.get(), SD_BUS_ERROR_SERVICE_UNKNOWN) > 0 ||
            sd_bus_message_is_method_error(reply.get(), SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0);
}

// Ids are ASCII; anything else could not even be sent.
bool isPlain(const std::string& id) {
    return !id.empty() &&
           std::all_of(id.begin(), id.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

BusMessage bringForward(MessageBus& bus, const StartupIds& ids, SteadyTime deadline) {
    BusMessage request = bus.newCall({instanceName, instancePath}, instanceInterface, "Activate");
    // Only a process that runs already is meant.
    sd_bus_message_set_auto_start(request.get(), 0);
    sd_bus_message_open_container(request.get(), SD_BUS_TYPE_ARRAY, "{sv}");
    for (const auto& [key, value] : {std::pair("desktop-startup-id", &ids.startupId),
                                     std::pair("activation-token", &ids.activationToken)}) {
        if (isPlain(*value)) {
            sd_bus_message_append(request.get(), "{sv}", key, "s", value->c_str());
        }
    }
    sd_bus_message_close_container(request.get());
    return callAndWait(bus, std::move(request), deadline);
}

}  // namespace

BusMessage newNameRequest(MessageBus& bus) {
    return bus.newCall({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
                       "RequestName", "su", instanceName, doNotQueue);
}

bool isNameOwner(sd_bus_message* reply) {
    return unsignedIn(reply) == isOwner;
}

InstanceClaim claimInstance(const StartupIds& ids, Seconds timeout) {
    auto opened = MessageBus::openSession();
    if (!opened) {
        return {InstanceClaim::Role::unknown, nullptr, opened.error().localizedDescription};
    }
    std::unique_ptr<MessageBus> bus = std::move(opened).value();
    SteadyTime deadline = after(timeout);
    bool isOwnerAsked = false;
    while (true) {
        BusMessage reply = callAndWait(*bus, newNameRequest(*bus), deadline);
        const auto role = reply ? unsignedIn(reply.get()) : std::nullopt;
        if (role == isOwner) {
            return {InstanceClaim::Role::first, std::move(bus), {}};
        }
        if (role != isOwnedByAnother) {
            return {reply ? InstanceClaim::Role::unknown : InstanceClaim::Role::unanswered, nullptr,
                    reasonIn(reply)};
        }
        if (!std::exchange(isOwnerAsked, true)) {
            deadline = after(timeout);
        }
        reply = bringForward(*bus, ids, deadline);
        if (reply && !isError(reply.get())) {
            return {InstanceClaim::Role::second, nullptr, {}};
        }
        if (!saysOwnerIsGone(reply) || steady_clock::now() >= deadline) {
            return {InstanceClaim::Role::refused, nullptr, reasonIn(reply)};
        }
    }
}

}  // namespace tarvik::linuxdesktop
