#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvik::platform {

/// The application as it is installed. Any thread.
class Bundle {
  public:
    virtual ~Bundle() = default;

    /// An entry of the information dictionary, "CFBundleShortVersionString" for example; nothing
    /// when it is missing or not text.
    virtual std::optional<std::string> objectForInfoDictionaryKey(std::string_view key) const = 0;
    /// What is started to start the application: the bundle's folder, or the executable where an
    /// application is a single file. Absolute.
    virtual std::string bundlePath() const = 0;
    /// The shell command that starts a new instance when it is followed by the quoted bundle path.
    virtual std::string openCommand() const = 0;
};

}  // namespace tarvik::platform
