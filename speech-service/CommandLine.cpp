// SPDX-License-Identifier: MIT

#include "speech-service/CommandLine.h"

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string>

namespace tarvik::service {

namespace {

std::optional<std::uint16_t> portFrom(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (status != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return port;
}

std::filesystem::path defaultStateDirectory() {
    constexpr std::string_view name = "tarvik-speech-service";
    const char* stateHome = std::getenv("XDG_STATE_HOME");
    // The XDG Base Directory rules require relative paths to be ignored.
    if (stateHome && std::filesystem::path(stateHome).is_absolute()) {
        return std::filesystem::path(stateHome) / name;
    }
    const char* home = std::getenv("HOME");
    return std::filesystem::path(home ? home : "/") / ".local/state" / name;
}

std::optional<Error> apply(CommandLine& commandLine, std::string_view option,
                           std::string_view value) {
    if (option == "--port") {
        const std::optional<std::uint16_t> port = portFrom(value);
        if (!port) {
            return Error{
                2, "--port takes a number from 0 to 65535, not \"" + std::string(value) + "\""};
        }
        commandLine.port = *port;
    } else if (value.empty()) {
        return Error{2, "--state-directory takes a folder"};
    } else {
        commandLine.stateDirectory = value;
    }
    return std::nullopt;
}

}  // namespace

std::string_view usage() {
    return "usage: tarvik-speech-service [--port N] [--state-directory DIR] [--print-ca]\n"
           "\n"
           "Turns speech into text on this machine, over a TLS web socket on the loopback "
           "addresses.\n"
           "\n"
           "  --port N               port to listen on, 0 for a free one (default: 8443)\n"
           "  --state-directory DIR  where the certificates are kept (default:\n"
           "                         $XDG_STATE_HOME/tarvik-speech-service or\n"
           "                         ~/.local/state/tarvik-speech-service)\n"
           "  --print-ca             make the certificates if there are none, print the path of\n"
           "                         the authority that clients have to trust, and end\n"
           "  --help                 print this text and end\n"
           "\n"
           "Clients trust the service through ca.pem in the state directory.\n";
}

Result<CommandLine> parseCommandLine(std::span<const std::string_view> arguments) {
    CommandLine commandLine;
    commandLine.stateDirectory = defaultStateDirectory();
    while (!arguments.empty()) {
        const std::string_view argument = arguments.front();
        arguments = arguments.subspan(1);
        const std::size_t equals = argument.find('=');
        const std::string_view option = argument.substr(0, equals);
        if (argument == "--help") {
            commandLine.action = CommandLine::Action::help;
            return commandLine;
        }
        if (argument == "--print-ca") {
            commandLine.action = CommandLine::Action::printAuthority;
            continue;
        }
        if (option != "--port" && option != "--state-directory") {
            return Error{2, "There is no option \"" + std::string(argument) + "\""};
        }
        std::string_view value;
        if (equals != std::string_view::npos) {
            value = argument.substr(equals + 1);
        } else if (arguments.empty()) {
            return Error{2, std::string(option) + " needs a value"};
        } else {
            value = arguments.front();
            arguments = arguments.subspan(1);
        }
        if (std::optional<Error> error = apply(commandLine, option, value)) {
            return *std::move(error);
        }
    }
    return commandLine;
}

}  // namespace tarvik::service
