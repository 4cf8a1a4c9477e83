// SPDX-License-Identifier: MIT

#include "tests/linux/x11/X11Server.h"

#include <signal.h>
#include <stdlib.h>

#include <stdexcept>

namespace tarvik::tests {

namespace {

std::vector<std::string> commandWith(const std::vector<std::string>& options) {
    std::vector<std::string> command{"Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
}

}  // namespace

X11Server::X11Server(RealTimeQueue& mainQueue, const std::vector<std::string>& options)
    : process_(commandWith(options)), earlierDisplay_(getenv("DISPLAY")) {
    std::string number;
    const bool isReady = mainQueue.runUntil([&] {
        process_.readOutput(number);
        return number.ends_with("\n");
    });
    if (!isReady) {
        throw std::runtime_error("the X server does not start");
    }
    number.pop_back();
    setenv("DISPLAY", (":" + number).c_str(), 1);
}

X11Server::~X11Server() {
    setenv("DISPLAY", earlierDisplay_.c_str(), 1);
}

void X11Server::hang() {
    kill(process_.identifier(), SIGSTOP);
}

void X11Server::goOn() {
    kill(process_.identifier(), SIGCONT);
}

}  // namespace tarvik::tests
