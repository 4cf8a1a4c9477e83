// SPDX-License-Identifier: MIT

#include "platform/linux/system/CommandLine.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr int badUsage = 2;

constexpr std::string_view help =
    "usage: tarvik-dictate [--help | --version]\n"
    "\n"
    "Starts Tarvik Dictate in the tray, or brings forward the one that runs.\n"
    "\n"
    "  Hold Alt+Space        dictate into the text field in front while the keys are held\n"
    "  Tap Alt+Shift+Space   start a long dictation, and end it with the next tap\n"
    "\n"
    "  --help     print this text and end\n"
    "  --version  print the version and end\n"
    "\n"
    "Everything else is set in the setup window. \"man tarvik-dictate\" says more.\n";

}  // namespace

std::optional<CommandLineAnswer> answerToArguments(std::span<const std::string_view> arguments) {
    if (arguments.empty()) {
        return std::nullopt;
    }
    const std::string_view argument = arguments.front();
    if (arguments.size() == 1 && argument == "--help") {
        return CommandLineAnswer{std::string(help), 0};
    }
    if (arguments.size() == 1 && argument == "--version") {
        return CommandLineAnswer{"Tarvik Dictate " TARVIK_VERSION "\n", 0};
    }
    // The text names the argument that is wrong. After an option, that is the second argument.
    const bool isOption = argument == "--help" || argument == "--version";
    return CommandLineAnswer{"tarvik-dictate: there is no argument \"" +
                                 std::string(isOption ? arguments[1] : argument) +
                                 "\" here; --help says what there is\n",
                             badUsage};
}

}  // namespace tarvik::linuxdesktop
