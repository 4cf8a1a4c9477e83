#include "platform/linux/bus/BusConnection.h"

#include <poll.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds patienceForProperty(25);

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

BusConnection::BusConnection(const platform::Clock& clock, std::function<void(Error)> onLost)
    : clock_(clock), onLost_(std::move(onLost)), alarm_([this] { process(); }) {}

BusConnection::BusConnection(Bus bus, const platform::Clock& clock,
                             std::function<void(Error)> onLost)
    : BusConnection(clock, std::move(onLost)) {
    sd_bus* opened = nullptr;
    startFailure_ = bus == Bus::system ? sd_bus_open_system(&opened) : sd_bus_open_user(&opened);
    bus_.reset(opened);
    start();
}

BusConnection::BusConnection(BusHandle bus, const platform::Clock& clock,
                             std::function<void(Error)> onLost)
    : BusConnection(clock, std::move(onLost)) {
    bus_ = std::move(bus);
    start();
}

void BusConnection::start() {
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
                                  std::function<void(sd_bus_message*)> handler,
                                  std::function<void()> onObserving) {
    if (!bus_) {
        return;
    }
    struct Handlers {
        std::function<void(sd_bus_message*)> onSignal;
        std::function<void()> onObserving;
    };
    auto kept = std::make_unique<Handlers>(Handlers{std::move(handler), std::move(onObserving)});
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_match_async(
        bus_.get(), &slot, rule.c_str(),
        [](sd_bus_message* message, void* data, sd_bus_error*) {
            static_cast<Handlers*>(data)->onSignal(message);
            return 0;
        },
        // A refusal leaves the signal unseen, no more; by default it would end the connection.
        [](sd_bus_message* answer, void* data, sd_bus_error*) {
            const auto* handlers = static_cast<Handlers*>(data);
            if (handlers->onObserving && sd_bus_message_is_method_error(answer, nullptr) == 0) {
                handlers->onObserving();
            }
            return 0;
        },
        kept.get());
    if (result >= 0) {
        handOver(slot, std::move(kept));
        awaitNext();
    }
}

BusMessage BusConnection::newCall(const char* service, const char* path, const char* interface,
                                  const char* member) {
    sd_bus_message* message = nullptr;
    if (bus_) {
        sd_bus_message_new_method_call(bus_.get(), &message, service, path, interface, member);
    }
    return BusMessage(message);
}

bool BusConnection::call(BusMessage message, Seconds patience,
                         std::function<void(sd_bus_message*)> handler) {
    using Handler = std::function<void(sd_bus_message*)>;
    auto kept = std::make_unique<Handler>(std::move(handler));
    sd_bus_slot* slot = nullptr;
    if (!message || sd_bus_call_async(
                        bus_.get(), &slot, message.get(),
                        [](sd_bus_message* answer, void* data, sd_bus_error*) {
                            (*static_cast<Handler*>(data))(answer);
                            return 0;
                        },
                        kept.get(), static_cast<std::uint64_t>(patience.count() * 1e6)) < 0) {
        return false;
    }
    handOver(slot, std::move(kept));
    awaitNext();
    return true;
}

void BusConnection::getBool(const Property& property,
                            std::function<void(std::optional<bool>)> handler) {
    BusMessage question =
        newCall(property.service, property.path, "org.freedesktop.DBus.Properties", "Get");
    if (question &&
        sd_bus_message_append(question.get(), "ss", property.interface, property.name) >= 0) {
        call(std::move(question), patienceForProperty,
             [handler = std::move(handler)](sd_bus_message* answer) {
                 int value = 0;
                 const bool isAnswer = sd_bus_message_is_method_error(answer, nullptr) == 0 &&
                                       sd_bus_message_read(answer, "v", "b", &value) > 0;
                 handler(isAnswer ? std::optional(value != 0) : std::nullopt);
             });
    }
}

void BusConnection::addObject(const char* path, const char* interface, const sd_bus_vtable* methods,
                              void* data) {
    if (bus_) {
        sd_bus_add_object_vtable(bus_.get(), nullptr, path, interface, methods, data);
    }
}

void BusConnection::releaseName(const char* name) {
    if (bus_) {
        // The answer does not matter: the name goes with the connection at the latest.
        sd_bus_release_name_async(
            bus_.get(), nullptr, name, [](sd_bus_message*, void*, sd_bus_error*) { return 0; },
            nullptr);
        awaitNext();
    }
}

}  // namespace tarvik::linuxdesktop
