// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::platform {

/// The application's standard domain of persistent settings.
///
/// Every later read of this process sees a write at once. The backend saves the write to disk soon
/// after, without blocking the caller; a saved write survives a crash of the process. A failure to
/// save is reported in the log and leaves the earlier file intact. Any thread.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    /// The text under `key`. A number or a truth value is returned in the platform's text form.
    /// Nothing when the entry is absent or of another type.
    virtual std::optional<std::string> stringForKey(std::string_view key) const = 0;
    /// The number under `key`; 0 when the entry is absent or not a 64-bit integer. On macOS a text
    /// of digits reads as its number, a fraction as its whole part, and true as 1.
    virtual std::int64_t integerForKey(std::string_view key) const = 0;
    /// The truth value under `key`; false when the entry is absent or not a truth value. On macOS
    /// every number but 0 and the texts "YES" and "1" read as true, too.
    virtual bool boolForKey(std::string_view key) const = 0;

    /// Whether there is an entry under `key`, of any type.
    virtual bool hasObjectForKey(std::string_view key) const = 0;

    virtual void setString(std::string_view value, std::string_view key) = 0;
    virtual void setInteger(std::int64_t value, std::string_view key) = 0;
    virtual void setBool(bool value, std::string_view key) = 0;
    /// Removes the entry, if there is one.
    virtual void removeObjectForKey(std::string_view key) = 0;
};

}  // namespace tarvik::platform
