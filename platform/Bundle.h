// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvik::platform {

/// The application as it is installed. Any thread.
class Bundle {
  public:
    virtual ~Bundle() = default;

    /// A text entry of the information dictionary, for example "CFBundleShortVersionString".
    /// Nothing when the entry is missing or not text.
    virtual std::optional<std::string> objectForInfoDictionaryKey(std::string_view key) const = 0;
    /// The absolute path that a user opens to start the application: the bundle's folder, or the
    /// executable where an application is a single file.
    virtual std::string bundlePath() const = 0;
    /// A shell command that starts a new instance. The caller appends the quoted bundle path.
    virtual std::string openCommand() const = 0;
};

}  // namespace tarvik::platform
