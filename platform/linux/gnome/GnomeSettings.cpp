// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/GnomeSettings.h"

#include <algorithm>
#include <utility>

#include "platform/linux/gnome/GioLibrary.h"

namespace tarvik::linuxdesktop {

namespace {

std::string childText(GVariant* parent, std::size_t index) {
    GVariant* child = g_variant_get_child_value(parent, index);
    std::string text = g_variant_get_string(child, nullptr);
    g_variant_unref(child);
    return text;
}

}  // namespace

// A group or a key that is unknown would end the process.
GnomeSettings::GnomeSettings(const std::string& schema, const std::string& path) {
    const GioLibrary* gio = GioLibrary::shared();
    GSettingsSchemaSource* source = gio != nullptr ? gio->defaultSource() : nullptr;
    GSettingsSchema* found =
        source != nullptr ? gio->lookUpSchema(source, schema.c_str(), TRUE) : nullptr;
    if (found == nullptr) {
        return;
    }
    char** keys = gio->schemaKeys(found);
    for (char** key = keys; *key != nullptr; ++key) {
        keys_.emplace_back(*key);
    }
    g_strfreev(keys);
    settings_ = gio->newSettings(found, nullptr, path.empty() ? nullptr : path.c_str());
    gio->schemaUnref(found);
    gio_ = gio;
}

GnomeSettings::~GnomeSettings() {
    if (settings_ != nullptr) {
        gio_->objectUnref(settings_);
    }
}

bool GnomeSettings::has(const std::string& key) const {
    return std::ranges::find(keys_, key) != keys_.end();
}

bool GnomeSettings::isSet(const std::string& key) const {
    return has(key) && Value(gio_->userValue(settings_, key.c_str())) != nullptr;
}

void GnomeSettings::Unreferenced::operator()(GVariant* value) const {
    g_variant_unref(value);
}

GnomeSettings::Value GnomeSettings::value(const std::string& key, const char* type) const {
    if (!has(key)) {
        return nullptr;
    }
    Value found(gio_->value(settings_, key.c_str()));
    return g_variant_is_of_type(found.get(), G_VARIANT_TYPE(type)) != FALSE ? std::move(found)
                                                                            : nullptr;
}

std::optional<bool> GnomeSettings::flag(const std::string& key) const {
    const Value found = value(key, "b");
    return found ? std::optional(g_variant_get_boolean(found.get()) != FALSE) : std::nullopt;
}

std::optional<std::uint32_t> GnomeSettings::number(const std::string& key) const {
    const Value found = value(key, "u");
    return found ? std::optional(g_variant_get_uint32(found.get())) : std::nullopt;
}

std::optional<std::string> GnomeSettings::text(const std::string& key) const {
    const Value found = value(key, "s");
    return found ? std::optional<std::string>(g_variant_get_string(found.get(), nullptr))
                 : std::nullopt;
}

std::optional<GnomeSettings::Texts> GnomeSettings::texts(const std::string& key) const {
    return textsIn(value(key, "as"));
}

std::optional<GnomeSettings::Texts> GnomeSettings::defaultTexts(const std::string& key) const {
    if (!value(key, "as")) {
        return std::nullopt;
    }
    return textsIn(Value(gio_->defaultValue(settings_, key.c_str())));
}

std::optional<GnomeSettings::Texts> GnomeSettings::textsIn(const Value& value) {
    if (!value) {
        return std::nullopt;
    }
    Texts texts;
    for (std::size_t index = 0; index < g_variant_n_children(value.get()); ++index) {
        texts.push_back(childText(value.get(), index));
    }
    return texts;
}

std::optional<GnomeSettings::TextPairs> GnomeSettings::pairs(const std::string& key) const {
    const Value found = value(key, "a(ss)");
    if (!found) {
        return std::nullopt;
    }
    TextPairs pairs;
    for (std::size_t index = 0; index < g_variant_n_children(found.get()); ++index) {
        const Value pair(g_variant_get_child_value(found.get(), index));
        pairs.emplace_back(childText(pair.get(), 0), childText(pair.get(), 1));
    }
    return pairs;
}

bool GnomeSettings::set(const std::string& key, const std::string& text) {
    if (!has(key) || gio_->setString(settings_, key.c_str(), text.c_str()) == FALSE) {
        return false;
    }
    gio_->sync();
    return true;
}

bool GnomeSettings::set(const std::string& key, const Texts& texts) {
    std::vector<const char*> pointers;
    for (const std::string& text : texts) {
        pointers.push_back(text.c_str());
    }
    pointers.push_back(nullptr);
    if (!has(key) || gio_->setStrings(settings_, key.c_str(), pointers.data()) == FALSE) {
        return false;
    }
    gio_->sync();
    return true;
}

void GnomeSettings::reset(const std::string& key) {
    if (has(key)) {
        gio_->reset(settings_, key.c_str());
        gio_->sync();
    }
}

}  // namespace tarvik::linuxdesktop
