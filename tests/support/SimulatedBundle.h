// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/Bundle.h"

namespace tarvik::simulated {

/// A bundle whose information dictionary a test sets.
class SimulatedBundle final : public platform::Bundle {
  public:
    std::optional<std::string> objectForInfoDictionaryKey(std::string_view key) const override {
        const auto found = info.find(key);
        if (found == info.end() || !std::holds_alternative<std::string>(found->second)) {
            return std::nullopt;
        }
        return std::get<std::string>(found->second);
    }
    std::string bundlePath() const override { return path; }
    std::string openCommand() const override { return command; }

    void setVersion(const std::string& version) {
        info.insert_or_assign("CFBundleShortVersionString", version);
    }
    void removeVersion() { info.erase("CFBundleShortVersionString"); }
    /// Makes the version a number instead of text.
    void setVersionThatIsNotText() {
        info.insert_or_assign("CFBundleShortVersionString", std::int64_t{7});
    }

    std::map<std::string, std::variant<std::string, std::int64_t>, std::less<>> info{
        {"CFBundleShortVersionString", "0.1.0"}};
    std::string path = "/Applications/Tarvik Dictate.app";
    std::string command = "/usr/bin/open -n";
};

}  // namespace tarvik::simulated
