// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// The answer to a command line that starts nothing.
struct CommandLineAnswer {
    std::string text;
    /// The exit status of the process. The text belongs on standard error unless the status is 0.
    int status = 0;
};

/// The answer to the arguments after the program's name: to --help, to --version, or to anything
/// else, which is refused with status 2. Empty without arguments: the application starts. Any
/// thread.
std::optional<CommandLineAnswer> answerToArguments(std::span<const std::string_view> arguments);

}  // namespace tarvik::linuxdesktop
