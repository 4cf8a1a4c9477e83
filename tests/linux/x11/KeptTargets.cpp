// SPDX-License-Identifier: MIT

#include "tests/linux/x11/KeptTargets.h"

#include "tests/linux/x11/WindowManager.h"

namespace tarvik::tests {

X11Target& KeptTargets::ready(X11Target::Kind kind, RealTimeQueue& mainQueue) {
    auto& target = targets_[kind];
    if (!target || kind == X11Target::Kind::terminal) {
        target.reset();
        target = std::make_unique<X11Target>(kind, mainQueue);
        return *target;
    }
    // A test that has failed may have left it stopped.
    target->goOn();
    target->clear();
    bringToFront(target->process());
    return *target;
}

}  // namespace tarvik::tests
