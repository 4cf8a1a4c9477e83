// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/Result.h"
#include "speech-service/EngineChoice.h"

namespace tarvik::service {

/// The settings on the command line.
struct CommandLine {
    enum class Action { serve, printAuthority, version, help };

    Action action = Action::serve;
    std::uint16_t port = 8443;
    std::filesystem::path stateDirectory;
    std::string engine{defaultEngine};
    /// Empty for the engine's own model.
    std::filesystem::path model;
    std::optional<std::size_t> maxStreams;
    std::optional<std::uint16_t> metricsPort;
    /// Empty if every key opens streams.
    std::filesystem::path keyFile;
    /// The HTTP status that refuses every stream.
    std::optional<int> refusal;
};

/// The text of --help.
std::string usage();

/// Parses the arguments after the program's name. The error's text is for the user. The default
/// state directory is tarvik-speech-service in $XDG_STATE_HOME or ~/.local/state.
Result<CommandLine> parseCommandLine(std::span<const std::string_view> arguments);

}  // namespace tarvik::service
