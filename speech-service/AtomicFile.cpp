// SPDX-License-Identifier: MIT

#include "speech-service/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace tarvik::service {

namespace {

Error failure(const std::filesystem::path& path) {
    return {errno, path.string() + " cannot be written: " + std::generic_category().message(errno)};
}

bool writeAll(int file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(file, content.data(), content.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        content.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
    return true;
}

}  // namespace

std::optional<Error> writeFile(const std::filesystem::path& path, std::string_view content,
                               bool isPrivate) {
    std::string temporaryPath = path.string() + ".XXXXXX";
    // mkostemp creates the file with mode 0600, so others can never read a private key.
    const int file = ::mkostemp(temporaryPath.data(), O_CLOEXEC);
    if (file < 0) {
        return failure(path);
    }
    const bool isWritten = ::fchmod(file, isPrivate ? 0600 : 0644) == 0 &&
                           writeAll(file, content) && ::fsync(file) == 0;
    std::optional<Error> error;
    if (!isWritten) {
        error = failure(path);
    }
    ::close(file);
    if (!error && std::rename(temporaryPath.c_str(), path.c_str()) != 0) {
        error = failure(path);
    }
    if (error) {
        ::unlink(temporaryPath.c_str());
    }
    return error;
}

}  // namespace tarvik::service
