#pragma once

#include <optional>
#include <string>

#include "platform/Platform.h"

namespace tarvik {

/// Keeps the user's API key, in the user defaults and, its name notwithstanding, in no keychain.
///
/// Nothing is cached: each read asks the user defaults. Main thread.
class KeychainStore {
  public:
    static constexpr std::string_view defaultsKey = "deepgramApiKey";

    explicit KeychainStore(platform::Platform& platform);

    /// The one store of the current platform. Any thread.
    static KeychainStore& shared();

    /// The key exactly as it was stored; nothing when there is none or it is empty.
    std::optional<std::string> apiKey() const;
    /// Stores the key as it is, untrimmed; an absent or empty one removes the entry.
    void setApiKey(const std::optional<std::string>& apiKey);

  private:
    platform::UserDefaults& defaults_;
};

}  // namespace tarvik
