#include "platform/linux/bus/MessageBus.h"

#include <poll.h>

#include <algorithm>
#include <ctime>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using Handler = std::function<void(sd_bus_message*)>;

int runHandler(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
    (*static_cast<Handler*>(data))(message);
    return 0;
}

// The library's callbacks carry one pointer: the handler, which the slot destroys with itself.
void handOver(sd_bus_slot* slot, std::unique_ptr<Handler> handler) {
    sd_bus_slot_set_destroy_callback(slot, [](void* data) { delete static_cast<Handler*>(data); });
    static_cast<void>(handler.release());
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
}

timespec untilMoment(MessageBus::Moment moment) {
    using namespace std::chrono;
    const auto left = std::max(moment - steady_clock::now(), steady_clock::duration::zero());
    const auto whole = duration_cast<seconds>(left);
    return {whole.count(), duration_cast<nanoseconds>(left - whole).count()};
}

}  // namespace

std::unique_ptr<MessageBus> MessageBus::openSession() {
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        return nullptr;
    }
    return std::unique_ptr<MessageBus>(new MessageBus(bus));
}

std::unique_ptr<MessageBus> MessageBus::open(const std::string& address) {
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0) {
        return nullptr;
    }
    std::unique_ptr<MessageBus> opened(new MessageBus(bus));
    if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0) {
        return nullptr;
    }
    return opened;
}

void MessageBus::observe(const std::string& rule, OnSignal handler) {
    auto kept = std::make_unique<Handler>(std::move(handler));
    sd_bus_slot* slot = nullptr;
    // The bus refuses a rule only when the connection is lost, and then dispatch() says so.
    if (sd_bus_add_match_async(bus_.get(), &slot, rule.c_str(), runHandler, nullptr, kept.get()) >=
        0) {
        handOver(slot, std::move(kept));
    }
}

BusMessage MessageBus::newCall(const BusObject& target, const char* interface, const char* member) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(bus_.get(), &message, target.owner.c_str(), target.path.c_str(),
                                   interface, member);
    return BusMessage(message);
}

bool MessageBus::call(BusMessage message, std::chrono::microseconds patience, OnAnswer onAnswer) {
    auto handler = std::make_unique<Handler>(std::move(onAnswer));
    sd_bus_slot* slot = nullptr;
    // Zero would mean the library's own patience.
    const std::uint64_t limit =
        patience == noTimeout
            ? UINT64_MAX
            : static_cast<std::uint64_t>(std::max<std::int64_t>(patience.count(), 1));
    if (!message ||
        sd_bus_call_async(bus_.get(), &slot, message.get(), runHandler, handler.get(), limit) < 0) {
        return false;
    }
    handOver(slot, std::move(handler));
    return true;
}

void MessageBus::send(BusMessage message) {
    if (message) {
        sd_bus_message_set_expect_reply(message.get(), 0);
        sd_bus_send(bus_.get(), message.get(), nullptr);
    }
}

bool MessageBus::isOpen() const {
    return sd_bus_is_open(bus_.get()) > 0;
}

bool MessageBus::dispatch() {
    int result = 1;
    while (result > 0) {
        result = sd_bus_process(bus_.get(), nullptr);
    }
    return result == 0;
}

bool MessageBus::dispatchUntil(const std::function<bool()>& condition, Moment deadline) {
    while (!condition()) {
        const int result = sd_bus_process(bus_.get(), nullptr);
        if (result < 0 || std::chrono::steady_clock::now() >= deadline) {
            return condition();
        }
        if (result == 0) {
            pollfd waited{fileDescriptor(), events(), 0};
            const timespec limit = untilMoment(std::min(moment().value_or(deadline), deadline));
            ppoll(&waited, 1, &limit, nullptr);
        }
    }
    return true;
}

int MessageBus::fileDescriptor() const {
    return sd_bus_get_fd(bus_.get());
}

short MessageBus::events() const {
    // A lost connection wants no events; the descriptor's hang-up still wakes the loop.
    return static_cast<short>(std::max(sd_bus_get_events(bus_.get()), 0));
}

std::optional<MessageBus::Moment> MessageBus::moment() const {
    std::uint64_t microseconds = UINT64_MAX;
    if (sd_bus_get_timeout(bus_.get(), &microseconds) < 0 || microseconds == UINT64_MAX) {
        return std::nullopt;
    }
    return Moment(std::chrono::microseconds(microseconds));
}

std::optional<std::string> plainTextIn(sd_bus_message* answer) {
    const char* text = nullptr;
    if (sd_bus_message_read(answer, "s", &text) <= 0) {
        return std::nullopt;
    }
    return text;
}

std::optional<std::int32_t> plainIntegerIn(sd_bus_message* answer) {
    std::int32_t value = 0;
    if (sd_bus_message_read(answer, "i", &value) <= 0) {
        return std::nullopt;
    }
    return value;
}

bool isSilence(sd_bus_message* answer) {
    return sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NO_REPLY) > 0;
}

std::optional<std::int32_t> integerIn(sd_bus_message* answer) {
    std::int32_t value = 0;
    if (sd_bus_message_read(answer, "v", "i", &value) <= 0) {
        return std::nullopt;
    }
    return value;
}

std::optional<bool> truthIn(sd_bus_message* answer) {
    int value = 0;
    if (sd_bus_message_read(answer, "v", "b", &value) <= 0) {
        return std::nullopt;
    }
    return value != 0;
}

std::optional<std::string> textIn(sd_bus_message* answer) {
    const char* value = nullptr;
    if (sd_bus_message_read(answer, "v", "s", &value) <= 0) {
        return std::nullopt;
    }
    return value;
}

}  // namespace tarvik::linuxdesktop
