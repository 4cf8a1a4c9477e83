// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

typedef struct _GSettings GSettings;
typedef struct _GVariant GVariant;

namespace tarvik::linuxdesktop {

struct GioLibrary;

/// One group of the settings that GNOME keeps for its user. A setting that does not exist in this
/// version of GNOME is empty, and takes no value. One thread.
class GnomeSettings {
  public:
    using Texts = std::vector<std::string>;
    using TextPairs = std::vector<std::pair<std::string, std::string>>;

    /// `path` is for a group of which there are several.
    explicit GnomeSettings(const std::string& schema, const std::string& path = {});
    ~GnomeSettings();
    GnomeSettings(const GnomeSettings&) = delete;
    GnomeSettings& operator=(const GnomeSettings&) = delete;

    /// Whether this version of GNOME has the setting.
    bool has(const std::string& key) const;
    /// Whether the setting has a value of the user's own, be it that of GNOME.
    bool isSet(const std::string& key) const;
    /// All settings of the group.
    const std::vector<std::string>& keys() const { return keys_; }

    std::optional<bool> flag(const std::string& key) const;
    std::optional<std::uint32_t> number(const std::string& key) const;

    std::optional<std::string> text(const std::string& key) const;
    std::optional<Texts> texts(const std::string& key) const;
    /// The value where the user has set none.
    std::optional<Texts> defaultTexts(const std::string& key) const;
    std::optional<TextPairs> pairs(const std::string& key) const;

    /// Set a value; false when GNOME does not take the value. Each waits until the value is stored.
    bool set(const std::string& key, const std::string& text);
    bool set(const std::string& key, const Texts& texts);
    /// Gives the setting its first value again.
    void reset(const std::string& key);

  private:
    struct Unreferenced {
        void operator()(GVariant* value) const;
    };
    using Value = std::unique_ptr<GVariant, Unreferenced>;

    // Empty when there is no such setting, or when it is of another type.
    Value value(const std::string& key, const char* type) const;
    static std::optional<Texts> textsIn(const Value& value);

    // Both are null when this version of GNOME has no such group.
    GSettings* settings_ = nullptr;
    const GioLibrary* gio_ = nullptr;
    std::vector<std::string> keys_;
};

}  // namespace tarvik::linuxdesktop
