// SPDX-License-Identifier: MIT

#include "tests/linux/portal/FakePortal.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace tarvik::tests {

namespace {

using linuxdesktop::BusMessage;

constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* shortcutsInterface = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* sessionInterface = "org.freedesktop.portal.Session";
constexpr const char* sessionFolder = "/org/freedesktop/portal/desktop/session";

// The value of a text in the dictionary that the message stands at; empty without such a text.
std::string optionIn(sd_bus_message* message, const std::string& wanted) {
    std::string found;
    if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) {
        return found;
    }
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = nullptr;
        const char* value = nullptr;
        sd_bus_message_read(message, "s", &key);
        if (key != wanted) {
            sd_bus_message_skip(message, "v");
        } else if (sd_bus_message_read(message, "v", "s", &value) > 0) {
            found = value;
        }
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    return found;
}

void appendNames(sd_bus_message* message, const FakePortal::Names& names) {
    sd_bus_message_open_container(message, 'a', "(sa{sv})");
    for (const std::string& name : names) {
        sd_bus_message_append(message, "(sa{sv})", name.c_str(), 1, "trigger_description", "s",
                              "Press something");
    }
    sd_bus_message_close_container(message);
}

bool hasDesktopFile(const std::string& application) {
    const char* folder = std::getenv("XDG_DATA_HOME");
    return folder != nullptr &&
           std::filesystem::exists(std::filesystem::path(folder) / "applications" /
                                   (application + ".desktop"));
}

}  // namespace

template <int (FakePortal::*method)(sd_bus_message*)>
int FakePortal::handle(sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    auto& fake = *static_cast<FakePortal*>(self);
    return fake.manner_ == Manner::byErrors ? -EACCES : (fake.*method)(call);
}

int FakePortal::version(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                        const char* /*property*/, sd_bus_message* reply, void* /*self*/,
                        sd_bus_error* /*error*/) {
    return sd_bus_message_append(reply, "u", 1U);
}

const sd_bus_vtable FakePortal::shortcutMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("CreateSession", "a{sv}", "o", &handle<&FakePortal::createSession>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("BindShortcuts", "oa(sa{sv})sa{sv}", "o", &handle<&FakePortal::bindShortcuts>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("version", "u", &FakePortal::version, 0, 0), SD_BUS_VTABLE_END};

const sd_bus_vtable FakePortal::registerMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Register", "sa{sv}", "", &handle<&FakePortal::registerApplication>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

const sd_bus_vtable FakePortal::sessionMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Close", "", "", &handle<&FakePortal::closeCalled>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

FakePortal::FakePortal(Options options) : options_(options) {
    sd_bus* const bus = server_.bus();
    if (options.hasShortcuts) {
        sd_bus_add_object_vtable(bus, nullptr, path, shortcutsInterface, shortcutMethods, this);
    }
    if (options.hasRegister) {
        sd_bus_add_object_vtable(bus, nullptr, path, "org.freedesktop.host.portal.Registry",
                                 registerMethods, this);
    }
    sd_bus_add_fallback_vtable(bus, nullptr, sessionFolder, sessionInterface, sessionMethods,
                               nullptr, this);
    sd_bus_request_name(bus, "org.freedesktop.portal.Desktop", 0);
    server_.start();
}

void FakePortal::setManner(Manner manner) {
    const std::lock_guard lock(server_.mutex());
    manner_ = manner;
    server_.setLate(manner == Manner::later);
}

void FakePortal::take(const std::string& name) {
    const std::lock_guard lock(server_.mutex());
    taken_.insert(name);
}

FakePortal::Names FakePortal::bound() {
    const std::lock_guard lock(server_.mutex());
    return bound_;
}

std::map<std::string, std::string> FakePortal::triggers() {
    const std::lock_guard lock(server_.mutex());
    return triggers_;
}

int FakePortal::dialogs() {
    const std::lock_guard lock(server_.mutex());
    return dialogs_;
}

int FakePortal::closings() {
    const std::lock_guard lock(server_.mutex());
    return closings_;
}

std::string FakePortal::application() {
    const std::lock_guard lock(server_.mutex());
    return application_;
}

// The portal's signals are for the one client.
BusMessage FakePortal::newSignal(const std::string& objectPath, const char* interface,
                                 const char* member) const {
    sd_bus_message* signal = nullptr;
    sd_bus_message_new_signal(server_.bus(), &signal, objectPath.c_str(), interface, member);
    sd_bus_message_set_destination(signal, client_.c_str());
    return BusMessage(signal);
}

void FakePortal::emitKeyOf(const std::string& session, const char* member,
                           const std::string& name) {
    const BusMessage signal = newSignal(path, shortcutsInterface, member);
    sd_bus_message_append(signal.get(), "osta{sv}", session.c_str(), name.c_str(), std::uint64_t{0},
                          0);
    sd_bus_send(server_.bus(), signal.get(), nullptr);
    sd_bus_flush(server_.bus());
}

void FakePortal::emitKey(const char* member, const std::string& name) {
    const std::lock_guard lock(server_.mutex());
    if (bound_.contains(name)) {
        emitKeyOf(session_, member, name);
    }
}

void FakePortal::activateForeign(const std::string& name) {
    const std::lock_guard lock(server_.mutex());
    emitKeyOf(std::string(sessionFolder) + "/other", "Activated", name);
}

void FakePortal::emitChange(const Names& names) {
    bound_ = names;
    const BusMessage signal = newSignal(path, shortcutsInterface, "ShortcutsChanged");
    sd_bus_message_append(signal.get(), "o", session_.c_str());
    appendNames(signal.get(), names);
    sd_bus_send(server_.bus(), signal.get(), nullptr);
    sd_bus_flush(server_.bus());
}

void FakePortal::change(const Names& names) {
    const std::lock_guard lock(server_.mutex());
    emitChange(names);
}

void FakePortal::closeSession() {
    const std::lock_guard lock(server_.mutex());
    bound_.clear();
    const BusMessage signal = newSignal(session_, sessionInterface, "Closed");
    sd_bus_message_append(signal.get(), "a{sv}", 0);
    sd_bus_send(server_.bus(), signal.get(), nullptr);
    sd_bus_flush(server_.bus());
}

std::string FakePortal::requestPath(sd_bus_message* call, const std::string& token) const {
    std::string sender = std::string(sd_bus_message_get_sender(call)).substr(1);
    std::ranges::replace(sender, '.', '_');
    return std::string(path) + "/request/" + sender + "/" + token;
}

void FakePortal::respond(const std::string& request, std::uint32_t code, const Names* shortcuts) {
    const BusMessage signal = newSignal(request, "org.freedesktop.portal.Request", "Response");
    sd_bus_message* const made = signal.get();
    sd_bus_message_append(made, "u", code);
    sd_bus_message_open_container(made, 'a', "{sv}");
    sd_bus_message_append(made, "{sv}", "something_else", "u", 7U);
    if (shortcuts != nullptr) {
        sd_bus_message_open_container(made, 'e', "sv");
        sd_bus_message_append(made, "s", "shortcuts");
        sd_bus_message_open_container(made, 'v', "a(sa{sv})");
        appendNames(made, *shortcuts);
        sd_bus_message_close_container(made);
        sd_bus_message_close_container(made);
    } else if (code == 0 && !session_.empty()) {
        sd_bus_message_append(made, "{sv}", "session_handle", "s", session_.c_str());
    }
    sd_bus_message_close_container(made);
    sd_bus_send(server_.bus(), made, nullptr);
}

int FakePortal::registerApplication(sd_bus_message* call) {
    const char* name = nullptr;
    const std::string sender = sd_bus_message_get_sender(call);
    if (sd_bus_message_read(call, "s", &name) <= 0 || sender == registeredClient_ ||
        sender == client_ || !hasDesktopFile(name)) {
        return -EINVAL;
    }
    registeredClient_ = sender;
    application_ = name;
    return sd_bus_reply_method_return(call, "");
}

int FakePortal::createSession(sd_bus_message* call) {
    client_ = sd_bus_message_get_sender(call);
    if (options_.hasRegister && registeredClient_ != client_) {
        return -EACCES;
    }
    const std::string request = requestPath(call, optionIn(call, "handle_token"));
    sd_bus_message_rewind(call, 1);
    const std::string token = optionIn(call, "session_handle_token");
    session_ = std::string(sessionFolder) + "/test/" + token;
    sd_bus_reply_method_return(call, "o", request.c_str());
    if (manner_ == Manner::refusesSession) {
        respond(request, 2, nullptr);
    } else if (manner_ == Manner::garbage) {
        const BusMessage signal = newSignal(request, "org.freedesktop.portal.Request", "Response");
        sd_bus_message_append(signal.get(), "as", 2, "not", "a response");
        sd_bus_send(server_.bus(), signal.get(), nullptr);
    } else if (manner_ != Manner::silent) {
        respond(request, 0, nullptr);
    }
    return 1;
}

int FakePortal::bindShortcuts(sd_bus_message* call) {
    const char* session = nullptr;
    sd_bus_message_read(call, "o", &session);
    if (session != session_ || sd_bus_message_enter_container(call, 'a', "(sa{sv})") <= 0) {
        return -EINVAL;
    }
    Names asked;
    triggers_.clear();
    while (sd_bus_message_enter_container(call, 'r', "sa{sv}") > 0) {
        const char* name = nullptr;
        sd_bus_message_read(call, "s", &name);
        triggers_[name] = optionIn(call, "preferred_trigger");
        if (!taken_.contains(name)) {
            asked.insert(name);
        }
        sd_bus_message_exit_container(call);
    }
    sd_bus_message_exit_container(call);
    const char* parent = nullptr;
    sd_bus_message_read(call, "s", &parent);
    const std::string request = requestPath(call, optionIn(call, "handle_token"));
    sd_bus_reply_method_return(call, "o", request.c_str());
    ++dialogs_;
    const Names none;
    switch (manner_) {
        case Manner::cancelled:
            respond(request, 1, &none);
            break;
        case Manner::reportsFailure:
            bound_ = asked;
            respond(request, 2, &asked);
            break;
        case Manner::tellsLater:
            respond(request, 2, &none);
            emitChange(asked);
            break;
        case Manner::givesNothing:
            respond(request, 0, &none);
            break;
        default:
            bound_ = asked;
            respond(request, 0, &asked);
    }
    return 1;
}

int FakePortal::closeCalled(sd_bus_message* call) {
    ++closings_;
    if (session_ == sd_bus_message_get_path(call)) {
        bound_.clear();
    }
    return sd_bus_reply_method_return(call, "");
}

}  // namespace tarvik::tests
