// SPDX-License-Identifier: MIT
#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/Error.h"
#include "base/Result.h"
#include "platform/linux/bus/BusHandles.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// An object on a bus.
struct BusObject {
    /// The bus name of its owner.
    std::string owner;
    std::string path;

    friend bool operator==(const BusObject&, const BusObject&) = default;
};

/// A connection to a message bus. It belongs to one thread: that of the loop which drives it.
///
/// Handlers run on that thread, in a turn of the loop or inside dispatchUntil(). They neither
/// destroy the connection nor run a loop of their own. No operation but dispatchUntil() blocks.
class MessageBus {
  public:
    /// Gets the reply, or an error message in its place. The error message is one of the
    /// connection's own when the timeout passes or the bus is lost.
    using OnReply = std::function<void(sd_bus_message*)>;
    using OnSignal = std::function<void(sd_bus_message*)>;
    using OnLost = std::function<void(const Error&)>;
    /// The timeout of a call that waits until its receiver replies or leaves the bus.
    static constexpr std::chrono::microseconds noTimeout = std::chrono::microseconds::max();

    /// Connects to the user's session bus, to the system bus, or to the bus at `address`. An error
    /// when nobody listens there.
    static Result<std::unique_ptr<MessageBus>> openSession();
    static Result<std::unique_ptr<MessageBus>> openSystem();
    static Result<std::unique_ptr<MessageBus>> open(const std::string& address);
    /// Connects to the program at `address`, which speaks D-Bus without being a message bus. Its
    /// calls need no destination. Rules of observe() filter what it sends, and are not sent to it.
    static Result<std::unique_ptr<MessageBus>> openPeer(const std::string& address);
    /// The socket of the user's session bus; empty when the bus has no socket in the file system.
    static std::filesystem::path sessionSocket();
    MessageBus(const MessageBus&) = delete;
    MessageBus& operator=(const MessageBus&) = delete;

    /// Has `loop`, which outlives the connection, drive it. Until then nothing but dispatchUntil()
    /// does. `onLost` is called once, in a turn of the loop and after the last handler, when the
    /// bus is lost. `onLost` may destroy the connection. Once.
    void attach(EventLoop& loop, OnLost onLost);

    /// Calls `onSignal` for each signal that matches `rule`. `onObserving` is called when the bus
    /// has taken the rule; a refused rule leaves its signals unseen.
    void observe(const std::string& rule, OnSignal onSignal,
                 std::function<void()> onObserving = {});

    /// Calls `onMessage` for each message but the replies to call(), before any other handler. True
    /// keeps the message from the others.
    void filter(std::function<bool(sd_bus_message*)> onMessage);

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
    /// A call for the value of a property, which the readers of BusReplies.h take from the reply.
    BusMessage newPropertyCall(const BusObject& target, const char* interface, const char* name) {
        return newCall(target, "org.freedesktop.DBus.Properties", "Get", "ss", interface, name);
    }

    /// Sends a call; `onReply` is called exactly once, unless the connection is destroyed first.
    /// False, and no call of `onReply`, when nothing can be sent. An empty `message` cannot.
    bool call(BusMessage message, std::chrono::microseconds timeout, OnReply onReply);
    /// Sends a signal, or a call without waiting for its reply.
    void send(BusMessage message);

    /// A signal of an own object. Empty when the message could not be made.
    BusMessage newSignal(const std::string& path, const char* interface, const char* member);

    /// Replies to calls to the object at `path` by `methods`, whose handlers get `data`. Both
    /// outlive the connection.
    void addObject(const char* path, const char* interface, const sd_bus_vtable* methods,
                   void* data);
    /// As addObject(), for every object whose path begins with `prefix` and a slash.
    void addObjects(const char* prefix, const char* interface, const sd_bus_vtable* methods,
                    void* data);
    /// Gives up a name on the bus.
    void releaseName(const char* name);

    /// False once the bus is lost, as far as is known.
    bool isOpen() const;
    /// Blocks, and handles what comes, until `condition` holds; false when `deadline` passes or the
    /// bus is lost before that. Outside handlers.
    bool dispatchUntil(const std::function<bool()>& condition, SteadyTime deadline);

  private:
    explicit MessageBus(BusHandle bus) : bus_(std::move(bus)) {}
    static Result<std::unique_ptr<MessageBus>> open(const std::string& address, bool isBus);

    void dispatch();
    void lose(int number);
    void updateWatch();
    /// When dispatch() is due at the latest; empty while nothing is.
    std::optional<SteadyTime> nextTimeout() const;

    BusHandle bus_;
    OnLost onLost_;
    /// Both from attach() until the loss.
    std::unique_ptr<EventLoop::Watch> watch_;
    std::unique_ptr<Deadline> timeout_;
};

}  // namespace tarvik::linuxdesktop
