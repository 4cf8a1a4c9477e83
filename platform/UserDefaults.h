#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::platform {

/// The application's standard domain of persistent settings.
///
/// A write is seen by every later read of this process at once; it reaches the disk on its own soon
/// after, without the caller waiting for it, and survives a crash of the process from then on. A
/// failure to save is reported in the log and leaves the earlier file whole. Any thread.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    /// The text under `key`; a number or a truth value as the platform writes it. Nothing when it
    /// is absent or of another type.
    virtual std::optional<std::string> stringForKey(std::string_view key) const = 0;
    /// The number under `key`; 0 when it is absent or not a whole number of 64 bits.
    virtual std::int64_t integerForKey(std::string_view key) const = 0;
    /// The truth value under `key`; false when it is absent or not a truth value.
    virtual bool boolForKey(std::string_view key) const = 0;

    virtual void setString(std::string_view value, std::string_view key) = 0;
    virtual void setInteger(std::int64_t value, std::string_view key) = 0;
    virtual void setBool(bool value, std::string_view key) = 0;
    /// Removes the entry; nothing happens when there is none.
    virtual void removeObjectForKey(std::string_view key) = 0;
};

}  // namespace tarvik::platform
