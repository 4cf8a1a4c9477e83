// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/IbusMessages.h"

#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

// Every object begins with the name of its type and an array of attachments, which is empty here.
constexpr const char* textType = "(sa{sv}sv)";
constexpr const char* attributesType = "(sa{sv}av)";
constexpr const char* componentType = "(sa{sv}ssssssssavav)";
constexpr const char* engineType = "(sa{sv}ssssssssussssssss)";

constexpr const char* title = "Tarvik Dictate";

const BusObject daemon{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
constexpr const char* daemonInterface = "org.freedesktop.DBus";

}  // namespace

Result<std::unique_ptr<MessageBus>> openIbus(const std::string& address,
                                             std::uint64_t firstSerial) {
    auto opened = MessageBus::openPeer(address);
    if (opened) {
        MessageBus& bus = *opened.value();
        BusMessage greeting = bus.newCall(daemon, daemonInterface, "Hello");
        if (greeting) {
            // The library counts on from there.
            sd_bus_message_set_expect_reply(greeting.get(), 0);
            sd_bus_message_seal(greeting.get(), firstSerial, 0);
        }
        bus.send(std::move(greeting));
    }
    return opened;
}

void addIbusRule(MessageBus& bus, const std::string& rule) {
    bus.send(bus.newCall(daemon, daemonInterface, "AddMatch", "s", rule.c_str()));
}

BusMessage newIbusQuestion(MessageBus& bus) {
    return bus.newCall(daemon, daemonInterface, "GetId");
}

void observeIbus(MessageBus& bus, const std::string& rule, MessageBus::OnSignal onSignal) {
    bus.observe(rule, std::move(onSignal));
    addIbusRule(bus, rule);
}

bool appendIbusText(sd_bus_message* message, const std::string& text) {
    return sd_bus_message_append(message, "v", textType, "IBusText", 0, text.c_str(),
                                 attributesType, "IBusAttrList", 0, 0) >= 0;
}

bool appendIbusComponent(sd_bus_message* message, const std::string& engine) {
    constexpr const char* none = "";
    return sd_bus_message_append(
               message, "v", componentType, "IBusComponent", 0,
               // Name, description, version, licence, author, home page, command, text domain.
               engine.c_str(), title, none, "MIT", none, none, none, none,
               // Watched paths, and one engine.
               0, 1, engineType, "IBusEngineDesc", 0,
               // Name, long name, description, language, licence, author, icon, layout.
               engine.c_str(), title, title, "other", "MIT", none, none, "default",
               // Rank, and eight texts that are not shown.
               0, none, none, none, none, none, none, none, none) >= 0;
}

std::optional<std::string> engineNameIn(sd_bus_message* reply) {
    char type = 0;
    const char* contents = nullptr;
    if (isError(reply)) {
        return std::nullopt;
    }
    while (sd_bus_message_peek_type(reply, &type, &contents) > 0 && type == SD_BUS_TYPE_VARIANT) {
        if (sd_bus_message_enter_container(reply, type, contents) <= 0) {
            return std::nullopt;
        }
    }
    const char* name = nullptr;
    if (type != SD_BUS_TYPE_STRUCT || sd_bus_message_enter_container(reply, type, contents) <= 0 ||
        sd_bus_message_skip(reply, "sa{sv}") < 0 || sd_bus_message_read(reply, "s", &name) <= 0) {
        return std::nullopt;
    }
    return name;
}

}  // namespace tarvik::linuxdesktop
