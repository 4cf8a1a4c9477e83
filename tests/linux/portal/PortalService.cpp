// SPDX-License-Identifier: MIT

// A portal on the session bus, for tests in other languages. Each line of the input is "press" or
// "release" and the name of a shortcut; a press waits until the shortcut is bound.
#include <chrono>
#include <iostream>
#include <string>

#include "tests/linux/portal/FakePortal.h"
#include "tests/support/RealTimeQueue.h"

int main() {
    tarvik::tests::FakePortal portal;
    tarvik::tests::RealTimeQueue queue;
    std::cout << "ready" << std::endl;
    std::string verb;
    std::string name;
    while (std::cin >> verb >> name) {
        const bool isBound = queue.runUntil([&] { return portal.bound().contains(name); });
        if (verb == "press") {
            portal.activate(name);
        } else {
            portal.deactivate(name);
        }
        std::cout << (isBound ? "done" : "not bound") << std::endl;
    }
}
