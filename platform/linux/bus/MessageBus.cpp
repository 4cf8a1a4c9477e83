// SPDX-License-Identifier: MIT

#include "platform/linux/bus/MessageBus.h"

#include <poll.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using Handler = std::function<void(sd_bus_message*)>;

struct SignalHandlers {
    MessageBus::OnSignal onSignal;
    std::function<void()> onObserving;
};

// The library's callbacks carry one pointer: the handler, which the slot destroys with itself.
template <typename Kept>
void handOver(sd_bus_slot* slot, std::unique_ptr<Kept> kept) {
    sd_bus_slot_set_destroy_callback(slot, [](void* data) { delete static_cast<Kept*>(data); });
    static_cast<void>(kept.release());
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
}

Error errorOf(int number) {
    return {number, std::strerror(number)};
}

timespec timeUntil(SteadyTime time) {
    using namespace std::chrono;
    const auto left = std::max(time - steady_clock::now(), steady_clock::duration::zero());
    const auto whole = duration_cast<seconds>(left);
    return {whole.count(), duration_cast<nanoseconds>(left - whole).count()};
}

}  // namespace

Result<std::unique_ptr<MessageBus>> MessageBus::openSession() {
    sd_bus* opened = nullptr;
    if (const int result = sd_bus_open_user(&opened); result < 0) {
        return errorOf(-result);
    }
    return std::unique_ptr<MessageBus>(new MessageBus(BusHandle(opened)));
}

std::filesystem::path MessageBus::sessionSocket() {
    constexpr std::string_view beginning = "unix:path=";
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr) {
        const std::string_view text = address;
        return text.starts_with(beginning)
                   ? text.substr(beginning.size(), text.find_first_of(",;") - beginning.size())
                   : "";
    }
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr ? std::filesystem::path(folder) / "bus" : "";
}

Result<std::unique_ptr<MessageBus>> MessageBus::openSystem() {
    sd_bus* opened = nullptr;
    if (const int result = sd_bus_open_system(&opened); result < 0) {
        return errorOf(-result);
    }
    return std::unique_ptr<MessageBus>(new MessageBus(BusHandle(opened)));
}

Result<std::unique_ptr<MessageBus>> MessageBus::open(const std::string& address) {
    return open(address, true);
}

Result<std::unique_ptr<MessageBus>> MessageBus::openPeer(const std::string& address) {
    return open(address, false);
}

Result<std::unique_ptr<MessageBus>> MessageBus::open(const std::string& address, bool isBus) {
    sd_bus* made = nullptr;
    int result = sd_bus_new(&made);
    BusHandle bus(made);
    if (result >= 0) {
        result = sd_bus_set_address(made, address.c_str());
    }
    if (result >= 0) {
        result = sd_bus_set_bus_client(made, isBus ? 1 : 0);
    }
    if (result >= 0) {
        result = sd_bus_start(made);
    }
    if (result < 0) {
        return errorOf(-result);
    }
    return std::unique_ptr<MessageBus>(new MessageBus(std::move(bus)));
}

void MessageBus::attach(EventLoop& loop, OnLost onLost) {
    onLost_ = std::move(onLost);
    watch_ = loop.watch(sd_bus_get_fd(bus_.get()), 0, [this] { dispatch(); });
    timeout_ = std::make_unique<Deadline>(loop);
    updateWatch();
}

void MessageBus::observe(const std::string& rule, OnSignal onSignal,
                         std::function<void()> onObserving) {
    auto handlers = std::make_unique<SignalHandlers>(
        SignalHandlers{std::move(onSignal), std::move(onObserving)});
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_match_async(
        bus_.get(), &slot, rule.c_str(),
        [](sd_bus_message* signal, void* data, sd_bus_error*) {
            static_cast<SignalHandlers*>(data)->onSignal(signal);
            return 0;
        },
        // By default a refusal would end the connection.
        [](sd_bus_message* reply, void* data, sd_bus_error*) {
            const auto& onTaken = static_cast<SignalHandlers*>(data)->onObserving;
            if (onTaken && !isError(reply)) {
                onTaken();
            }
            return 0;
        },
        handlers.get());
    // It fails only when the bus is lost, and onLost says so.
    if (result >= 0) {
        handOver(slot, std::move(handlers));
        updateWatch();
    }
}

void MessageBus::filter(std::function<bool(sd_bus_message*)> onMessage) {
    using Filter = std::function<bool(sd_bus_message*)>;
    auto handler = std::make_unique<Filter>(std::move(onMessage));
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_filter(
        bus_.get(), &slot,
        [](sd_bus_message* message, void* data, sd_bus_error*) {
            return (*static_cast<Filter*>(data))(message) ? 1 : 0;
        },
        handler.get());
    if (result >= 0) {
        handOver(slot, std::move(handler));
    }
}

BusMessage MessageBus::newCall(const BusObject& target, const char* interface, const char* member) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(bus_.get(), &message, target.owner.c_str(), target.path.c_str(),
                                   interface, member);
    return BusMessage(message);
}

bool MessageBus::call(BusMessage message, std::chrono::microseconds timeout, OnReply onReply) {
    auto handler = std::make_unique<Handler>(std::move(onReply));
    sd_bus_slot* slot = nullptr;
    // Zero would mean the library's own timeout.
    const std::uint64_t microseconds =
        timeout == noTimeout
            ? UINT64_MAX
            : static_cast<std::uint64_t>(std::max<std::int64_t>(timeout.count(), 1));
    if (!message || sd_bus_call_async(
                        bus_.get(), &slot, message.get(),
                        [](sd_bus_message* reply, void* data, sd_bus_error*) {
                            (*static_cast<Handler*>(data))(reply);
                            return 0;
                        },
                        handler.get(), microseconds) < 0) {
        return false;
    }
    handOver(slot, std::move(handler));
    updateWatch();
    return true;
}

void MessageBus::send(BusMessage message) {
    if (message) {
        // A signal expects none, and refuses to be asked.
        sd_bus_message_set_expect_reply(message.get(), 0);
        sd_bus_send(bus_.get(), message.get(), nullptr);
        updateWatch();
    }
}

BusMessage MessageBus::newSignal(const std::string& path, const char* interface,
                                 const char* member) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_signal(bus_.get(), &message, path.c_str(), interface, member);
    return BusMessage(message);
}

void MessageBus::addObject(const char* path, const char* interface, const sd_bus_vtable* methods,
                           void* data) {
    sd_bus_add_object_vtable(bus_.get(), nullptr, path, interface, methods, data);
}

void MessageBus::addObjects(const char* prefix, const char* interface, const sd_bus_vtable* methods,
                            void* data) {
    sd_bus_add_fallback_vtable(bus_.get(), nullptr, prefix, interface, methods, nullptr, data);
}

void MessageBus::releaseName(const char* name) {
    // The reply does not matter: the name goes with the connection at the latest.
    sd_bus_release_name_async(
        bus_.get(), nullptr, name, [](sd_bus_message*, void*, sd_bus_error*) { return 0; },
        nullptr);
    updateWatch();
}

bool MessageBus::isOpen() const {
    return sd_bus_is_open(bus_.get()) > 0;
}

bool MessageBus::dispatchUntil(const std::function<bool()>& condition, SteadyTime deadline) {
    bool holds = condition();
    while (!holds) {
        const int result = sd_bus_process(bus_.get(), nullptr);
        holds = condition();
        if (holds || result < 0 || std::chrono::steady_clock::now() >= deadline) {
            break;
        }
        if (result == 0) {
            pollfd awaited{sd_bus_get_fd(bus_.get()),
                           static_cast<short>(std::max(sd_bus_get_events(bus_.get()), 0)), 0};
            const timespec left = timeUntil(std::min(nextTimeout().value_or(deadline), deadline));
            ppoll(&awaited, 1, &left, nullptr);
        }
    }
    updateWatch();
    return holds;
}

void MessageBus::dispatch() {
    int result = 1;
    while (result > 0) {
        result = sd_bus_process(bus_.get(), nullptr);
    }
    if (result == 0) {
        updateWatch();
    } else {
        lose(-result);
    }
}

void MessageBus::lose(int number) {
    watch_.reset();
    timeout_.reset();
    if (const OnLost onLost = std::exchange(onLost_, nullptr)) {
        onLost(errorOf(number));
    }
}

void MessageBus::updateWatch() {
    if (!watch_) {
        return;
    }
    const int events = sd_bus_get_events(bus_.get());
    watch_->setEvents(static_cast<short>(std::max(events, 0)));
    // A connection without events is lost, and its descriptor closed: the loop is to see it now.
    const auto next = events < 0 ? std::optional(std::chrono::steady_clock::now()) : nextTimeout();
    if (next) {
        timeout_->set(*next, [this] { dispatch(); });
    } else {
        timeout_->clear();
    }
}

std::optional<SteadyTime> MessageBus::nextTimeout() const {
    std::uint64_t microseconds = UINT64_MAX;
    if (sd_bus_get_timeout(bus_.get(), &microseconds) < 0 || microseconds == UINT64_MAX) {
        return std::nullopt;
    }
    return SteadyTime(std::chrono::microseconds(microseconds));
}

}  // namespace tarvik::linuxdesktop
