#pragma once

#include <systemd/sd-bus.h>

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Error.h"
#include "base/Time.h"
#include "platform/Clock.h"
#include "platform/linux/bus/BusHandles.h"
#include "platform/linux/loop/Alarm.h"

namespace tarvik::linuxdesktop {

/// A connection to a message bus on the main thread's loop. Nothing it does waits for the bus. Main
/// thread only; not to be destroyed inside one of its handlers, and they run no loop of their own.
class BusConnection {
  public:
    enum class Bus { session, system };

    /// `onLost` is called once, in a later turn, when the bus cannot be reached or goes away.
    /// `clock` outlives the connection.
    BusConnection(Bus bus, const platform::Clock& clock, std::function<void(Error)> onLost);
    /// Goes on with a connection that is open already.
    BusConnection(BusHandle bus, const platform::Clock& clock, std::function<void(Error)> onLost);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// Calls `handler` for each signal that `rule`, a match rule of the bus, describes.
    /// `onObserving` is called once the bus has taken the rule.
    void observeSignal(const std::string& rule, std::function<void(sd_bus_message*)> handler,
                       std::function<void()> onObserving = {});

    struct Property {
        const char* service;
        const char* path;
        const char* interface;
        const char* name;
    };
    /// Asks for a truth value; `handler` gets nothing when there is no answer or another one.
    void getBool(const Property& property, std::function<void(std::optional<bool>)> handler);

    /// A call to be filled with arguments; empty when there is no bus.
    BusMessage newCall(const char* service, const char* path, const char* interface,
                       const char* member);
    /// Sends a call. `handler` gets the answer, or an error message in its place, also when there
    /// is none within `patience`. False, and no call of it, when nothing can be sent.
    bool call(BusMessage message, Seconds patience, std::function<void(sd_bus_message*)> handler);

    /// Answers calls to the object at `path` by `methods`, whose handlers get `data`. Both outlive
    /// the connection.
    void addObject(const char* path, const char* interface, const sd_bus_vtable* methods,
                   void* data);
    /// Gives up a name on the bus.
    void releaseName(const char* name);

  private:
    BusConnection(const platform::Clock& clock, std::function<void(Error)> onLost);

    void start();
    void process();
    void awaitNext();
    void lose(int number);

    const platform::Clock& clock_;
    std::function<void(Error)> onLost_;
    BusHandle bus_;
    std::unique_ptr<QSocketNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_;
    Alarm alarm_;
    int startFailure_ = 0;
};

}  // namespace tarvik::linuxdesktop
