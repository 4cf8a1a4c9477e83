// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/UserDefaults.h"

namespace tarvik::simulated {

/// A list of texts. The application never stores one, so that it stands for a value of a foreign
/// type.
using UserDefaultsList = std::vector<std::string>;
using UserDefaultsValue = std::variant<std::string, std::int64_t, bool, UserDefaultsList>;

/// The contents of a settings domain. A test passes them to another platform to simulate the next
/// run.
using UserDefaultsContents = std::map<std::string, UserDefaultsValue, std::less<>>;

/// A settings domain in memory.
class SimulatedUserDefaults final : public platform::UserDefaults {
  public:
    explicit SimulatedUserDefaults(UserDefaultsContents contents)
        : contents_(std::move(contents)) {}

    std::optional<std::string> stringForKey(std::string_view key) const override {
        if (const auto number = value<std::int64_t>(key)) {
            return std::to_string(*number);
        }
        if (const auto truth = value<bool>(key)) {
            return *truth ? "true" : "false";
        }
        return value<std::string>(key);
    }
    std::int64_t integerForKey(std::string_view key) const override {
        return value<std::int64_t>(key).value_or(0);
    }
    bool boolForKey(std::string_view key) const override {
        return value<bool>(key).value_or(false);
    }

    bool hasObjectForKey(std::string_view key) const override { return has(key); }

    void setString(std::string_view value, std::string_view key) override {
        set(key, std::string(value));
    }
    void setInteger(std::int64_t value, std::string_view key) override { set(key, value); }
    void setBool(bool value, std::string_view key) override { set(key, value); }

    void removeObjectForKey(std::string_view key) override {
        const std::lock_guard lock(mutex_);
        if (const auto found = contents_.find(key); found != contents_.end()) {
            contents_.erase(found);
        }
        ++writes_;
    }

    UserDefaultsContents contents() const {
        const std::lock_guard lock(mutex_);
        return contents_;
    }
    bool has(std::string_view key) const {
        const std::lock_guard lock(mutex_);
        return contents_.contains(key);
    }
    /// The number of calls that set or removed a value.
    int writes() const {
        const std::lock_guard lock(mutex_);
        return writes_;
    }

  private:
    template <typename T>
    std::optional<T> value(std::string_view key) const {
        const std::lock_guard lock(mutex_);
        const auto found = contents_.find(key);
        if (found == contents_.end() || !std::holds_alternative<T>(found->second)) {
            return std::nullopt;
        }
        return std::get<T>(found->second);
    }

    template <typename T>
    void set(std::string_view key, T value) {
        const std::lock_guard lock(mutex_);
        contents_.insert_or_assign(std::string(key), std::move(value));
        ++writes_;
    }

    mutable std::mutex mutex_;
    UserDefaultsContents contents_;
    int writes_ = 0;
};

}  // namespace tarvik::simulated
