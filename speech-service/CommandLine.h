// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

#include "base/Result.h"

namespace tarvik::service {

/// The settings on the command line.
struct CommandLine {
    enum class Action { serve, printAuthority, help };

    Action action = Action::serve;
    std::uint16_t port = 8443;
    std::filesystem::path stateDirectory;
};

/// The text of --help.
std::string_view usage();

/// Parses the arguments after the program's name. The error's text is for the user. The default
/// state directory is tarvik-speech-service in $XDG_STATE_HOME or ~/.local/state.
Result<CommandLine> parseCommandLine(std::span<const std::string_view> arguments);

}  // namespace tarvik::service
