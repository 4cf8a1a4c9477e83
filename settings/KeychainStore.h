// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "platform/Platform.h"

namespace tarvik {

/// Stores the user's API key in the user defaults. Despite its name this class uses no keychain.
///
/// Nothing is cached: each read reads the user defaults. Main thread.
class KeychainStore {
  public:
    static constexpr std::string_view defaultsKey = "deepgramApiKey";

    explicit KeychainStore(platform::Platform& platform);

    /// The store of the current platform. Any thread.
    static KeychainStore& shared();

    /// The stored key, unchanged. Nothing when the key is absent or empty.
    std::optional<std::string> apiKey() const;
    /// Stores the key unchanged. An absent or empty key removes the entry.
    void setApiKey(const std::optional<std::string>& apiKey);

  private:
    platform::UserDefaults& defaults_;
};

}  // namespace tarvik
