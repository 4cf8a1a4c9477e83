// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace tarvik::tests {

/// Variables of the environment with other values while the object lives. One thread, while no
/// other thread reads the environment.
class TemporaryVariables {
  public:
    TemporaryVariables() = default;
    ~TemporaryVariables() {
        for (const auto& [name, value] : before_) {
            if (value) {
                setenv(name.c_str(), value->c_str(), 1);
            } else {
                unsetenv(name.c_str());
            }
        }
    }
    TemporaryVariables(const TemporaryVariables&) = delete;
    TemporaryVariables& operator=(const TemporaryVariables&) = delete;

    void set(const std::string& name, const std::string& value) {
        remember(name);
        setenv(name.c_str(), value.c_str(), 1);
    }
    void unset(const std::string& name) {
        remember(name);
        unsetenv(name.c_str());
    }

  private:
    void remember(const std::string& name) {
        const char* before = std::getenv(name.c_str());
        before_.try_emplace(name,
                            before != nullptr ? std::optional<std::string>(before) : std::nullopt);
    }

    std::map<std::string, std::optional<std::string>> before_;
};

}  // namespace tarvik::tests
