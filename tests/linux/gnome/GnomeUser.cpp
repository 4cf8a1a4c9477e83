// SPDX-License-Identifier: MIT

#include "tests/linux/gnome/GnomeUser.h"

#include <gio/gio.h>

#include <chrono>
#include <stdexcept>
#include <vector>

#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

constexpr const char* service = "org.gnome.Mutter.RemoteDesktop";
constexpr const char* sessionInterface = "org.gnome.Mutter.RemoteDesktop.Session";

std::string outputOf(const std::vector<std::string>& command) {
    std::string output = TestProcess::run(command).output;
    while (output.ends_with('\n')) {
        output.pop_back();
    }
    return output;
}

}  // namespace

GnomeUser::GnomeUser() {
    sd_bus* opened = nullptr;
    sd_bus_open_user(&opened);
    bus_.reset(opened);
    sd_bus_message* answer = nullptr;
    const char* path = nullptr;
    if (sd_bus_call_method(opened, service, "/org/gnome/Mutter/RemoteDesktop", service,
                           "CreateSession", nullptr, &answer, nullptr) < 0 ||
        sd_bus_message_read(answer, "o", &path) < 0) {
        throw std::runtime_error("no keyboard in GNOME");
    }
    session_ = path;
    sd_bus_message_unref(answer);
    if (sd_bus_call_method(opened, service, session_.c_str(), sessionInterface, "Start", nullptr,
                           nullptr, nullptr) < 0) {
        throw std::runtime_error("the keyboard in GNOME does not start");
    }
    // The first key makes it a keyboard of the seat.
    tap(shiftKey);
}

GnomeUser::~GnomeUser() {
    releaseAll();
    sd_bus_call_method(bus_.get(), service, session_.c_str(), sessionInterface, "Stop", nullptr,
                       nullptr, nullptr);
}

void GnomeUser::send(std::uint32_t key, bool isPressed) {
    if (sd_bus_call_method(bus_.get(), service, session_.c_str(), sessionInterface,
                           "NotifyKeyboardKeycode", nullptr, nullptr, "ub", key,
                           isPressed ? 1 : 0) < 0) {
        throw std::runtime_error("GNOME does not take a key");
    }
}

std::string GnomeUser::setting(const std::string& schema, const std::string& key) {
    return outputOf({"gsettings", "get", schema, key});
}

void GnomeUser::set(const std::string& schema, const std::string& key, const std::string& value) {
    TestProcess::run({"gsettings", "set", schema, key, value});
    // The store of a private desktop tells this process through its main loop.
    const std::string wanted = setting(schema, key);
    const auto colon = schema.find(':');
    GSettings* settings = colon == std::string::npos
                              ? g_settings_new(schema.c_str())
                              : g_settings_new_with_path(schema.substr(0, colon).c_str(),
                                                         schema.substr(colon + 1).c_str());
    const auto isKnown = [&] {
        GVariant* known = g_settings_get_value(settings, key.c_str());
        char* text = g_variant_print(known, TRUE);
        const bool isSame = text == wanted;
        g_free(text);
        g_variant_unref(known);
        return isSame;
    };
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!isKnown() && std::chrono::steady_clock::now() < end) {
        g_main_context_iteration(nullptr, FALSE);
    }
    g_object_unref(settings);
}

std::string GnomeUser::engine() {
    return outputOf({"ibus", "engine"});
}

}  // namespace tarvik::tests
