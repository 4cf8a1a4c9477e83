#include "platform/linux/system/InstanceClaim.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using std::chrono::steady_clock;
using Moment = steady_clock::time_point;

// Replies of the bus to a request for a name.
constexpr std::uint32_t isOwner = 1;
constexpr std::uint32_t isOwnedByAnother = 3;
constexpr std::uint32_t doNotQueue = 4;

Moment after(Seconds interval) {
    return steady_clock::now() + std::chrono::duration_cast<steady_clock::duration>(interval);
}

// A bus for one question after the other, each of which waits for its answer.
class Asker {
  public:
    explicit Asker(sd_bus* bus) : bus_(bus) {}

    BusMessage newCall(const char* service, const char* path, const char* interface,
                       const char* member) {
        sd_bus_message* message = nullptr;
        sd_bus_message_new_method_call(bus_, &message, service, path, interface, member);
        return BusMessage(message);
    }

    /// The answer, or an error message in its place; empty when none comes before `deadline`.
    BusMessage ask(const BusMessage& question, Moment deadline) {
        BusMessage answer;
        sd_bus_slot* slot = nullptr;
        if (!question ||
            sd_bus_call_async(bus_, &slot, question.get(), keepAnswer, &answer, UINT64_MAX) < 0) {
            return nullptr;
        }
        int result = 0;
        while (!answer && result >= 0 && steady_clock::now() < deadline) {
            result = sd_bus_process(bus_, nullptr);
            if (result == 0) {
                waitUntil(deadline);
            }
        }
        sd_bus_slot_unref(slot);
        return answer;
    }

  private:
    static int keepAnswer(sd_bus_message* answer, void* kept, sd_bus_error*) {
        static_cast<BusMessage*>(kept)->reset(sd_bus_message_ref(answer));
        return 1;
    }

    void waitUntil(Moment deadline) {
        using namespace std::chrono;
        std::uint64_t due = UINT64_MAX;
        sd_bus_get_timeout(bus_, &due);
        auto left = std::max(deadline - steady_clock::now(), steady_clock::duration::zero());
        if (due != UINT64_MAX) {
            const auto untilDue = Moment(microseconds(due)) - steady_clock::now();
            left = std::clamp(untilDue, steady_clock::duration::zero(), left);
        }
        const auto whole = duration_cast<seconds>(left);
        const timespec limit{whole.count(), duration_cast<nanoseconds>(left - whole).count()};
        pollfd waited{sd_bus_get_fd(bus_), static_cast<short>(std::max(sd_bus_get_events(bus_), 0)),
                      0};
        ppoll(&waited, 1, &limit, nullptr);
    }

    sd_bus* bus_;
};

std::string troubleIn(const BusMessage& answer) {
    if (!answer) {
        return "it does not answer";
    }
    const sd_bus_error* error = sd_bus_message_get_error(answer.get());
    return error != nullptr && error->message != nullptr ? error->message : "a strange answer";
}

// What the bus says when whoever was asked is gone, before or after it took the question.
bool saysOwnerIsGone(const BusMessage& answer) {
    return answer &&
           (sd_bus_message_is_method_error(answer.get(), SD_BUS_ERROR_NO_REPLY) > 0 ||
            sd_bus_message_is_method_error(answer.get(), SD_BUS_ERROR_SERVICE_UNKNOWN) > 0 ||
            sd_bus_message_is_method_error(answer.get(), SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0);
}

BusMessage requestName(Asker& asker, Moment deadline) {
    BusMessage request = asker.newCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus", "RequestName");
    sd_bus_message_append(request.get(), "su", instanceName, doNotQueue);
    return asker.ask(request, deadline);
}

// Ids are ASCII; anything else could not even be sent.
bool isPlain(const std::string& id) {
    return !id.empty() &&
           std::all_of(id.begin(), id.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

BusMessage bringForward(Asker& asker, const StartupIds& ids, Moment deadline) {
    BusMessage request = asker.newCall(instanceName, instancePath, instanceInterface, "Activate");
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
    return asker.ask(request, deadline);
}

}  // namespace

InstanceClaim claimInstance(const StartupIds& ids, Seconds patience) {
    sd_bus* opened = nullptr;
    if (const int result = sd_bus_open_user(&opened); result < 0) {
        return {InstanceClaim::Role::unknown, nullptr, std::strerror(-result)};
    }
    BusHandle bus(opened);
    Asker asker(bus.get());
    Moment deadline = after(patience);
    bool isOwnerAsked = false;
    while (true) {
        BusMessage answer = requestName(asker, deadline);
        std::uint32_t role = 0;
        if (answer) {
            sd_bus_message_read(answer.get(), "u", &role);
        }
        if (role == isOwner) {
            return {InstanceClaim::Role::first, std::move(bus), {}};
        }
        if (role != isOwnedByAnother) {
            return {InstanceClaim::Role::unknown, nullptr, troubleIn(answer)};
        }
        if (!std::exchange(isOwnerAsked, true)) {
            deadline = after(patience);
        }
        answer = bringForward(asker, ids, deadline);
        if (answer && sd_bus_message_is_method_error(answer.get(), nullptr) == 0) {
            return {InstanceClaim::Role::second, nullptr, {}};
        }
        if (!saysOwnerIsGone(answer) || steady_clock::now() >= deadline) {
            return {InstanceClaim::Role::refused, nullptr, troubleIn(answer)};
        }
    }
}

}  // namespace tarvik::linuxdesktop
