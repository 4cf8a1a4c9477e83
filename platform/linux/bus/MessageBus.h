#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/BusHandles.h"

namespace tarvik::linuxdesktop {

/// Something on a bus that answers calls.
struct BusObject {
    /// Its connection's name on the bus.
    std::string owner;
    std::string path;

    friend bool operator==(const BusObject&, const BusObject&) = default;
};

/// A connection to a message bus. It belongs to one thread, on which its handlers run too, inside
/// dispatch() only. Nothing but dispatchUntil() waits.
class MessageBus {
  public:
    using Moment = std::chrono::steady_clock::time_point;
    /// Gets an answer, or an error message in its place; also one of the connection's own making
    /// when nobody answers in time or the bus is lost.
    using OnAnswer = std::function<void(sd_bus_message*)>;
    using OnSignal = std::function<void(sd_bus_message*)>;
    /// The patience of a call that waits until the other side answers or leaves the bus.
    static constexpr std::chrono::microseconds noTimeout = std::chrono::microseconds::max();

    /// Joins the user's session bus, or the bus at `address`. Empty when there is none there.
    static std::unique_ptr<MessageBus> openSession();
    static std::unique_ptr<MessageBus> open(const std::string& address);

    /// Calls `handler` for each signal that `rule`, a match rule of the bus, describes.
    void observe(const std::string& rule, OnSignal handler);

    BusMessage newCall(const BusObject& target, const char* interface, const char* member);
    /// As above, with arguments of these D-Bus types. Empty when a text among them is not UTF-8.
    template <typename... Arguments>
    BusMessage newCall(const BusObject& target, const char* interface, const char* member,
                       const char* types, Arguments... arguments) {
        BusMessage call = newCall(target, interface, member);
        if (call && sd_bus_message_append(call.get(), types, arguments...) < 0) {
            call.reset();
        }
        return call;
    }
    BusMessage newPropertyCall(const BusObject& target, const char* interface, const char* name) {
        return newCall(target, "org.freedesktop.DBus.Properties", "Get", "ss", interface, name);
    }

    /// Sends a call; `onAnswer` is called exactly once, unless the connection is destroyed first.
    /// False, and no call of it, when nothing can be sent.
    bool call(BusMessage message, std::chrono::microseconds patience, OnAnswer onAnswer);
    /// Sends a call whose answer does not matter.
    void send(BusMessage message);

    /// False once the bus is lost, as far as is known.
    bool isOpen() const;
    /// Handles everything that has come. False once the bus is lost.
    bool dispatch();
    /// Handles what comes until `condition` holds; false when `deadline` passes or the bus is lost
    /// before that.
    bool dispatchUntil(const std::function<bool()>& condition, Moment deadline);

    /// What a loop waits for before it calls dispatch() again, besides moment().
    int fileDescriptor() const;
    short events() const;
    /// When dispatch() is due at the latest; empty while nothing is.
    std::optional<Moment> moment() const;

  private:
    explicit MessageBus(sd_bus* bus) : bus_(bus) {}

    BusHandle bus_;
};

/// The text that an answer consists of; empty when it is an error or of another type.
std::optional<std::string> plainTextIn(sd_bus_message* answer);
/// The number that an answer consists of; empty when it is an error or of another type.
std::optional<std::int32_t> plainIntegerIn(sd_bus_message* answer);
/// Whether the message says that nobody answered: too late, or gone in between.
bool isSilence(sd_bus_message* answer);
/// The content of a property that was asked for; empty when the answer is an error or of another
/// type.
std::optional<std::int32_t> integerIn(sd_bus_message* answer);
std::optional<bool> truthIn(sd_bus_message* answer);
std::optional<std::string> textIn(sd_bus_message* answer);

}  // namespace tarvik::linuxdesktop
