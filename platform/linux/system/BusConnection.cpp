#include "platform/linux/system/BusConnection.h"

#include <poll.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

Seconds untilMoment(std::uint64_t microseconds) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return Seconds(static_cast<double>(microseconds) / 1e6 - static_cast<double>(now.tv_sec) -
                   static_cast<double>(now.tv_nsec) / 1e9);
}

// The library's callbacks carry one pointer: the handler, which the slot destroys with itself.
template <typename Handler>
sd_bus_slot* handOver(sd_bus_slot* slot, std::unique_ptr<Handler> handler) {
    sd_bus_slot_set_destroy_callback(slot, [](void* data) { delete static_cast<Handler*>(data); });
    static_cast<void>(handler.release());
    sd_bus_slot_set_floating(slot, 1);
    return sd_bus_slot_unref(slot);
}

}  // namespace

BusConnection::BusConnection(Bus bus, const platform::Clock& clock,
                             std::function<void(Error)> onLost)
    : clock_(clock), onLost_(std::move(onLost)), alarm_([this] { process(); }) {
    start(bus);
}

void BusConnection::start(Bus bus) {
    sd_bus* opened = nullptr;
    startFailure_ = bus == Bus::system ? sd_bus_open_system(&opened) : sd_bus_open_user(&opened);
    bus_.reset(opened);
    if (startFailure_ < 0) {
        alarm_.set(clock_.now());
        return;
    }
    const int file = sd_bus_get_fd(bus_.get());
    readable_ = std::make_unique<QSocketNotifier>(file, QSocketNotifier::Read);
    writable_ = std::make_unique<QSocketNotifier>(file, QSocketNotifier::Write);
    for (QSocketNotifier* notifier : {readable_.get(), writable_.get()}) {
        QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this] { process(); });
    }
    awaitNext();
}

void BusConnection::process() {
    int result = startFailure_;
    while (result == 0 || result == 1) {
        result = sd_bus_process(bus_.get(), nullptr);
        if (result == 0) {
            awaitNext();
            return;
        }
    }
    lose(result);
}

void BusConnection::awaitNext() {
    const int events = sd_bus_get_events(bus_.get());
    writable_->setEnabled(events >= 0 && (events & POLLOUT) != 0);
    std::uint64_t moment = UINT64_MAX;
    if (sd_bus_get_timeout(bus_.get(), &moment) >= 0 && moment != UINT64_MAX) {
        alarm_.set(clock_.now() + untilMoment(moment));
    } else {
        alarm_.clear();
    }
}

void BusConnection::lose(int number) {
    alarm_.clear();
    // Only switched off: one of them may be what has called.
    for (QSocketNotifier* notifier : {readable_.get(), writable_.get()}) {
        if (notifier != nullptr) {
            notifier->setEnabled(false);
        }
    }
    if (const auto onLost = std::exchange(onLost_, nullptr)) {
        onLost(Error{-number, std::strerror(-number)});
    }
}

void BusConnection::observeSignal(const std::string& rule,
                                  std::function<void(sd_bus_message*)> handler) {
    if (!bus_) {
        return;
    }
    using Handler = std::function<void(sd_bus_message*)>;
    auto kept = std::make_unique<Handler>(std::move(handler));
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_match_async(
        bus_.get(), &slot, rule.c_str(),
        [](sd_bus_message* message, void* data, sd_bus_error*) {
            (*static_cast<Handler*>(data))(message);
            return 0;
        },
        // A refusal leaves the signal unseen, no more; by default it would end the connection.
        [](sd_bus_message*, void*, sd_bus_error*) { return 0; }, kept.get());
    if (result >= 0) {
        handOver(slot, std::move(kept));
        awaitNext();
    }
}

void BusConnection::getBool(const Property& property,
                            std::function<void(std::optional<bool>)> handler) {
    using Handler = std::function<void(std::optional<bool>)>;
    if (!bus_) {
        return;
    }
    auto kept = std::make_unique<Handler>(std::move(handler));
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_method_async(
        bus_.get(), &slot, property.service, property.path, "org.freedesktop.DBus.Properties",
        "Get",
        [](sd_bus_message* message, void* data, sd_bus_error*) {
            int value = 0;
            const bool isAnswer = sd_bus_message_is_method_error(message, nullptr) == 0 &&
                                  sd_bus_message_read(message, "v", "b", &value) > 0;
            (*static_cast<Handler*>(data))(isAnswer ? std::optional(value != 0) : std::nullopt);
            return 0;
        },
        kept.get(), "ss", property.interface, property.name);
    if (result >= 0) {
        handOver(slot, std::move(kept));
        awaitNext();
    }
}

}  // namespace tarvik::linuxdesktop
