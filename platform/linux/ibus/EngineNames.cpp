// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/EngineNames.h"

#include <unistd.h>

#include <atomic>

namespace tarvik::linuxdesktop {

namespace {

constexpr const char* ownBeginning = "tarvik-dictate-";

}  // namespace

std::string nextEngineName() {
    static std::atomic<int> count = 0;
    return std::string(ownBeginning) + std::to_string(getpid()) + "-" + std::to_string(++count);
}

bool isOwnEngine(const std::string& name) {
    return name.starts_with(ownBeginning);
}

bool composes(const std::string& name) {
    return !name.starts_with("xkb:");
}

}  // namespace tarvik::linuxdesktop
