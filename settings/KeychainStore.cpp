// SPDX-License-Identifier: MIT

#include "settings/KeychainStore.h"

namespace tarvik {

KeychainStore::KeychainStore(platform::Platform& platform) : defaults_(platform.userDefaults()) {}

KeychainStore& KeychainStore::shared() {
    return platform::Platform::current().shared<KeychainStore>();
}

std::optional<std::string> KeychainStore::apiKey() const {
    std::optional<std::string> stored = defaults_.stringForKey(defaultsKey);
    if (stored && stored->empty()) {
        return std::nullopt;
    }
    return stored;
}

void KeychainStore::setApiKey(const std::optional<std::string>& apiKey) {
    if (apiKey && !apiKey->empty()) {
        defaults_.setString(*apiKey, defaultsKey);
    } else {
        defaults_.removeObjectForKey(defaultsKey);
    }
}

}  // namespace tarvik
