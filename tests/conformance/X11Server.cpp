#include "tests/conformance/X11Server.h"

#include <stdlib.h>

#include <stdexcept>

namespace tarvik::conformance {

X11Server::X11Server(X11MainQueue& mainQueue)
    : process_({"Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24"}),
      earlierDisplay_(getenv("DISPLAY")) {
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

}  // namespace tarvik::conformance
