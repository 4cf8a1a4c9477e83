// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/GioLibrary.h"

#include <dlfcn.h>

#include <optional>

namespace tarvik::linuxdesktop {

namespace {

template <typename Function>
bool find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

std::optional<GioLibrary> load() {
    // The number is that of the interface that this file is compiled with.
    void* library = dlopen("libgio-2.0.so.0", RTLD_NOW | RTLD_LOCAL);
    GioLibrary gio;
    if (library == nullptr || !find(library, "g_object_unref", gio.objectUnref) ||
        !find(library, "g_settings_get_default_value", gio.defaultValue) ||
        !find(library, "g_settings_get_user_value", gio.userValue) ||
        !find(library, "g_settings_get_value", gio.value) ||
        !find(library, "g_settings_new_full", gio.newSettings) ||
        !find(library, "g_settings_reset", gio.reset) ||
        !find(library, "g_settings_schema_list_keys", gio.schemaKeys) ||
        !find(library, "g_settings_schema_source_get_default", gio.defaultSource) ||
        !find(library, "g_settings_schema_source_lookup", gio.lookUpSchema) ||
        !find(library, "g_settings_schema_unref", gio.schemaUnref) ||
        !find(library, "g_settings_set_string", gio.setString) ||
        !find(library, "g_settings_set_strv", gio.setStrings) ||
        !find(library, "g_settings_sync", gio.sync)) {
        return std::nullopt;
    }
    return gio;
}

}  // namespace

const GioLibrary* GioLibrary::shared() {
    static const std::optional<GioLibrary> library = load();
    return library ? &*library : nullptr;
}

}  // namespace tarvik::linuxdesktop
