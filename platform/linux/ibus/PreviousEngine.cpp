// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/PreviousEngine.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace tarvik::linuxdesktop {

PreviousEngine::PreviousEngine() {
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR"); folder != nullptr && *folder != '\0') {
        path_ = std::string(folder) + "/tarvik-dictate-previous-engine";
    }
}

std::optional<std::string> PreviousEngine::read() const {
    std::ifstream file(path_);
    std::string engine;
    return std::getline(file, engine) && !engine.empty() ? std::optional(engine) : std::nullopt;
}

// A file that cannot be written is only missed after a kill. Dictation counts more.
void PreviousEngine::write(const std::string& engine) const {
    if (!path_.empty()) {
        std::ofstream(path_) << engine << '\n';
    }
}

void PreviousEngine::remove() const {
    unlink(path_.c_str());
}

}  // namespace tarvik::linuxdesktop
