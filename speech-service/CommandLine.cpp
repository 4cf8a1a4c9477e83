// SPDX-License-Identifier: MIT

#include "speech-service/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string>

namespace tarvik::service {

namespace {

template <typename Number>
std::optional<Number> numberFrom(std::string_view text, Number min, Number max) {
    Number number = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (status != std::errc() || end != text.data() + text.size() || number < min || number > max) {
        return std::nullopt;
    }
    return number;
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

struct Option {
    std::string_view name;
    std::optional<Error> (*set)(CommandLine& line, const Option& option, std::string_view value);
    /// What a text names, for the error.
    std::string_view what{};
};

template <typename Number, auto field, Number min, Number max>
std::optional<Error> setNumber(CommandLine& line, const Option& option, std::string_view value) {
    const std::optional<Number> number = numberFrom<Number>(value, min, max);
    if (!number) {
        return Error{2, std::string(option.name) + " takes a number from " + std::to_string(min) +
                            " to " + std::to_string(max) + ", not \"" + std::string(value) + "\""};
    }
    line.*field = *number;
    return std::nullopt;
}

template <auto field>
std::optional<Error> setText(CommandLine& line, const Option& option, std::string_view value) {
    if (value.empty()) {
        return Error{2, std::string(option.name) + " takes " + std::string(option.what)};
    }
    line.*field = value;
    return std::nullopt;
}

constexpr Option options[] = {
    {"--port", setNumber<std::uint16_t, &CommandLine::port, 0, 65535>},
    {"--state-directory", setText<&CommandLine::stateDirectory>, "a folder"},
    {"--engine", setText<&CommandLine::engine>, "the name of an engine"},
    {"--model", setText<&CommandLine::model>, "a file or a folder"},
    {"--max-streams", setNumber<unsigned, &CommandLine::maxStreams, 1, 10000>},
    {"--metrics-port", setNumber<std::uint16_t, &CommandLine::metricsPort, 0, 65535>},
    {"--keys", setText<&CommandLine::keyFile>, "a file"},
    {"--refuse", setNumber<int, &CommandLine::refusal, 400, 599>},
};

}  // namespace

std::string usage() {
    return "usage: tarvik-speech-service [OPTION]...\n"
           "\n"
           "Turns speech into text on this machine, over a TLS web socket on the loopback "
           "addresses.\n"
           "\n"
           "  --port N               port to listen on, 0 for a free one (default: 8443)\n"
           "  --state-directory DIR  where the certificates are kept (default:\n"
           "                         $XDG_STATE_HOME/tarvik-speech-service or\n"
           "                         ~/.local/state/tarvik-speech-service)\n"
           "  --engine NAME          the recogniser: " +
           engineNames() +
           "\n"
           "  --model PATH           the recogniser's model; nothing is downloaded (default: the\n"
           "                         English model of the package pocketsphinx-en-us)\n"
           "  --max-streams N        streams at once (default: what this machine can do)\n"
           "  --metrics-port N       port on 127.0.0.1 for http /metrics, 0 for a free one\n"
           "  --keys FILE            the keys that open streams, one a line (default: any key)\n"
           "  --refuse STATUS        refuse every stream with this HTTP status, to try a client\n"
           "  --print-ca             make the certificates if there are none, print the path of\n"
           "                         the authority that clients have to trust, and end\n"
           "  --help                 print this text and end\n"
           "  --version              print the version and end\n"
           "\n"
           "A service manager may hand over listening sockets (LISTEN_FDS). --port has no meaning\n"
           "then.\n"
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
        if (argument == "--version") {
            commandLine.action = CommandLine::Action::version;
            continue;
        }
        if (argument == "--print-ca") {
            commandLine.action = CommandLine::Action::printAuthority;
            continue;
        }
        const auto* known = std::find_if(std::begin(options), std::end(options),
                                         [&](const Option& entry) { return entry.name == option; });
        if (known == std::end(options)) {
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
        if (std::optional<Error> error = known->set(commandLine, *known, value)) {
            return *std::move(error);
        }
    }
    return commandLine;
}

}  // namespace tarvik::service
