#pragma once

#include <systemd/sd-bus.h>

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/Clock.h"
#include "platform/linux/system/Alarm.h"

namespace tarvik::linuxdesktop {

/// A connection to a message bus on the main thread's loop. Nothing it does waits for the bus. Main
/// thread only; not to be destroyed inside one of its handlers.
class BusConnection {
  public:
    enum class Bus { session, system };

    /// `onLost` is called once, in a later turn, when the bus cannot be reached or goes away.
    /// `clock` outlives the connection.
    BusConnection(Bus bus, const platform::Clock& clock, std::function<void(Error)> onLost);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// Calls `handler` for each signal that `rule`, a match rule of the bus, describes.
    void observeSignal(const std::string& rule, std::function<void(sd_bus_message*)> handler);

    struct Property {
        const char* service;
        const char* path;
        const char* interface;
        const char* name;
    };
    /// Asks for a truth value; `handler` gets nothing when there is no answer or another one.
    void getBool(const Property& property, std::function<void(std::optional<bool>)> handler);

  private:
    struct Unreferenced {
        void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    };

    void start(Bus bus);
    void process();
    void awaitNext();
    void lose(int number);

    const platform::Clock& clock_;
    std::function<void(Error)> onLost_;
    std::unique_ptr<sd_bus, Unreferenced> bus_;
    std::unique_ptr<QSocketNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_;
    Alarm alarm_;
    int startFailure_ = 0;
};

}  // namespace tarvik::linuxdesktop
