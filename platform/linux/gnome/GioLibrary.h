// SPDX-License-Identifier: MIT
#pragma once

#include <gio/gio.h>

namespace tarvik::linuxdesktop {

/// The functions of GIO for settings. The library is loaded at the first use and stays loaded: it
/// costs a megabyte that sessions of other desktops do not pay. Any thread.
struct GioLibrary {
    /// Null where the library or one of its functions is missing.
    static const GioLibrary* shared();

    decltype(&::g_object_unref) objectUnref = nullptr;
    decltype(&::g_settings_get_default_value) defaultValue = nullptr;
    decltype(&::g_settings_get_user_value) userValue = nullptr;
    decltype(&::g_settings_get_value) value = nullptr;
    decltype(&::g_settings_new_full) newSettings = nullptr;
    decltype(&::g_settings_reset) reset = nullptr;
    decltype(&::g_settings_schema_list_keys) schemaKeys = nullptr;
    decltype(&::g_settings_schema_source_get_default) defaultSource = nullptr;
    decltype(&::g_settings_schema_source_lookup) lookUpSchema = nullptr;
    decltype(&::g_settings_schema_unref) schemaUnref = nullptr;
    decltype(&::g_settings_set_string) setString = nullptr;
    decltype(&::g_settings_set_strv) setStrings = nullptr;
    decltype(&::g_settings_sync) sync = nullptr;
};

}  // namespace tarvik::linuxdesktop
