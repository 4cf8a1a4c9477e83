#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

#include "base/Result.h"

namespace tarvik::service {

/// What the command line asks for.
struct CommandLine {
    enum class Action { serve, printAuthority, help };

    Action action = Action::serve;
    std::uint16_t port = 8443;
    std::filesystem::path stateDirectory;
};

/// The text of --help.
std::string_view usage();

/// Reads the arguments after the program's name. The state directory defaults to a folder of the
/// service's own in $XDG_STATE_HOME or ~/.local/state.
Result<CommandLine> parseCommandLine(std::span<const std::string_view> arguments);

}  // namespace tarvik::service
