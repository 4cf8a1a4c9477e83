// SPDX-License-Identifier: MIT

#include "tests/linux/ibus/IbusProgram.h"

#include <chrono>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/ibus/IbusMessages.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::BusMessage;
using linuxdesktop::BusObject;
using linuxdesktop::MessageBus;

const BusObject ibus{"org.freedesktop.IBus", "/org/freedesktop/IBus"};
constexpr const char* ibusInterface = "org.freedesktop.IBus";
constexpr const char* contextInterface = "org.freedesktop.IBus.InputContext";
constexpr std::uint32_t releaseState = 1U << 30;

}  // namespace

const sd_bus_vtable IbusProgram::factoryMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("CreateEngine", "s", "o", &IbusProgram::onCreate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

IbusProgram::IbusProgram(linuxdesktop::EventLoop& loop, const std::string& address) {
    auto opened = linuxdesktop::openIbus(address);
    if (!opened) {
        throw std::runtime_error("no IBus: " + opened.error().localizedDescription);
    }
    bus_ = std::move(opened).value();
    bus_->attach(loop, [](const Error&) {});
    bus_->addObject("/org/freedesktop/IBus/Factory", "org.freedesktop.IBus.Factory", factoryMethods,
                    this);
    linuxdesktop::observeIbus(*bus_,
                              std::string("type='signal',interface='") + contextInterface + "'",
                              [this](sd_bus_message* signal) { handleSignal(signal); });
    bus_->call(bus_->newCall(ibus, ibusInterface, "CreateInputContext", "s", "test"), 10s,
               [this](sd_bus_message* reply) {
                   const char* path = "";
                   sd_bus_message_read(reply, "o", &path);
                   const BusObject context{ibus.owner, path};
                   constexpr std::uint32_t preeditAndFocus = 1 | 8;
                   bus_->send(bus_->newCall(context, contextInterface, "SetCapabilities", "u",
                                            preeditAndFocus));
                   path_ = path;
               });
}

void IbusProgram::call(const char* member) {
    bus_->send(bus_->newCall({ibus.owner, path_}, contextInterface, member));
}

void IbusProgram::key(std::uint32_t code, std::uint32_t state) {
    // The symbol does not matter here.
    bus_->call(bus_->newCall({ibus.owner, path_}, contextInterface, "ProcessKeyEvent", "uuu", 0x20U,
                             code, state),
               10s, [this](sd_bus_message*) { ++answeredKeys; });
}

void IbusProgram::choose(const std::string& name) {
    bus_->call(bus_->newCall(ibus, ibusInterface, "SetGlobalEngine", "s", name.c_str()), 10s,
               [this](sd_bus_message*) { ++chosenEngines; });
}

void IbusProgram::askEngine() {
    engine.reset();
    bus_->call(bus_->newPropertyCall(ibus, ibusInterface, "GlobalEngine"), 10s,
               [this](sd_bus_message* reply) {
                   engine = linuxdesktop::engineNameIn(reply).value_or("none");
               });
}

void IbusProgram::registerComposer() {
    BusMessage message = bus_->newCall(ibus, ibusInterface, "RegisterComponent");
    sd_bus_message_append(message.get(), "v", "(sa{sv}ssssssssavav)", "IBusComponent", 0,
                          "tarvik.test", "", "", "", "", "", "", "", 0, 1,
                          "(sa{sv}ssssssssussssssss)", "IBusEngineDesc", 0, "composer", "composer",
                          "", "other", "", "", "", "default", 0, "", "", "", "", "", "", "", "");
    bus_->call(std::move(message), 10s, [this](sd_bus_message*) { isComposerRegistered = true; });
}

int IbusProgram::onCreate(sd_bus_message* call, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "o", "/tarvik/test/composer");
}

void IbusProgram::handleSignal(sd_bus_message* signal) {
    const std::string_view member = sd_bus_message_get_member(signal);
    if (member == "CommitText") {
        const char* committed = "";
        sd_bus_message_enter_container(signal, 'v', "(sa{sv}sv)");
        sd_bus_message_enter_container(signal, 'r', "sa{sv}sv");
        sd_bus_message_skip(signal, "sa{sv}");
        sd_bus_message_read(signal, "s", &committed);
        text += committed;
        lastCommit = committed;
    } else if (member == "ForwardKeyEvent") {
        std::uint32_t symbol = 0;
        std::uint32_t code = 0;
        std::uint32_t state = 0;
        sd_bus_message_read(signal, "uuu", &symbol, &code, &state);
        forwarded += std::to_string(code) + ((state & releaseState) != 0 ? "u " : " ");
    }
}

}  // namespace tarvik::tests
