// SPDX-License-Identifier: MIT

#include "speech-service/KeyFile.h"

#include <cerrno>
#include <fstream>

#include "base/Text.h"

namespace tarvik::service {

Result<std::set<std::string, std::less<>>> readKeyFile(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file) {
        return Error{ENOENT, "The keys in " + path.string() + " cannot be read"};
    }
    std::set<std::string, std::less<>> keys;
    for (std::string line; std::getline(file, line);) {
        const std::string key = trimmed(line);
        if (!key.empty() && key.front() != '#') {
            keys.emplace(key);
        }
    }
    if (keys.empty()) {
        return Error{EINVAL, "There is no key in " + path.string()};
    }
    return keys;
}

}  // namespace tarvik::service
