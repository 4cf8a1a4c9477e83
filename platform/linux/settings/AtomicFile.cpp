// SPDX-License-Identifier: MIT

#include "platform/linux/settings/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

namespace {

// Far beyond any file of this application. A log or a device that stands here by mistake is larger.
constexpr off_t maxFileSize = 1 << 20;

Error systemError(const std::string& what, int number) {
    return Error{number, what + ": " + std::strerror(number)};
}

// The target of a link; the path itself when nothing is there yet.
std::string resolved(const std::string& path) {
    char* found = realpath(path.c_str(), nullptr);
    if (found == nullptr) {
        return path;
    }
    std::string result = found;
    std::free(found);
    return result;
}

int makeFolders(const std::string& folder, mode_t mode) {
    if (folder.empty() || mkdir(folder.c_str(), mode) == 0 || errno == EEXIST) {
        return 0;
    }
    if (errno != ENOENT) {
        return errno;
    }
    if (const int failure = makeFolders(folderOf(folder), mode)) {
        return failure;
    }
    return mkdir(folder.c_str(), mode) == 0 || errno == EEXIST ? 0 : errno;
}

int writeAll(int file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = write(file, content.data(), content.size());
        if (written >= 0) {
            content.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int fill(int file, std::string_view content, mode_t mode, Durability durability) {
    if (fchmod(file, mode) != 0) {
        return errno;
    }
    if (const int failure = writeAll(file, content)) {
        return failure;
    }
    return durability == Durability::disk && fsync(file) != 0 ? errno : 0;
}

// The folder holds the rename. The rename has succeeded when this fails, so there is nothing to
// undo or to report: only a loss of power could still bring the old file back.
void syncFolder(const std::string& folder) {
    const FileDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) {
        fsync(opened.number());
    }
}

}  // namespace

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

Result<std::optional<std::string>> readWholeFile(const std::string& path) {
    // Without O_NONBLOCK a pipe in the place of the file would block the program.
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) {
        return errno == ENOENT ? Result<std::optional<std::string>>(std::nullopt)
                               : systemError("cannot open " + path, errno);
    }
    struct stat facts {};
    if (fstat(file.number(), &facts) != 0) {
        return systemError("cannot examine " + path, errno);
    }
    if (!S_ISREG(facts.st_mode)) {
        return systemError(path + " is no file", S_ISDIR(facts.st_mode) ? EISDIR : EINVAL);
    }
    if (facts.st_size > maxFileSize) {
        return systemError("cannot read " + path, EFBIG);
    }
    std::string content(static_cast<std::size_t>(facts.st_size), '\0');
    std::size_t size = 0;
    while (size < content.size()) {
        const ssize_t got = read(file.number(), content.data() + size, content.size() - size);
        if (got < 0 && errno != EINTR) {
            return systemError("cannot read " + path, errno);
        }
        if (got == 0) {
            break;
        }
        size += static_cast<std::size_t>(got > 0 ? got : 0);
    }
    content.resize(size);
    return std::optional(std::move(content));
}

std::optional<Error> closeToOthers(const std::string& path) {
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0) {
        return errno == ENOENT ? std::nullopt
                               : std::optional(systemError("cannot examine " + path, errno));
    }
    // A link may lead to a device that everybody uses.
    const bool isOwnable = S_ISREG(facts.st_mode) || S_ISDIR(facts.st_mode);
    constexpr mode_t others = S_IRWXG | S_IRWXO;
    if (isOwnable && (facts.st_mode & others) != 0 &&
        chmod(path.c_str(), facts.st_mode & S_IRWXU) != 0) {
        return systemError("others can open " + path, errno);
    }
    return std::nullopt;
}

std::optional<Error> replaceFile(const std::string& path, std::string_view content, mode_t mode,
                                 mode_t directoryMode, Durability durability) {
    const std::string target = resolved(path);
    const std::string folder = folderOf(target);
    if (const int failure = makeFolders(folder, directoryMode)) {
        return systemError("cannot make the folder " + folder, failure);
    }
    std::string temporary = target + ".XXXXXX";
    const FileDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file) {
        return systemError("cannot write in the folder " + folder, errno);
    }
    int failure = fill(file.number(), content, mode, durability);
    if (failure == 0 && rename(temporary.c_str(), target.c_str()) != 0) {
        failure = errno;
    }
    if (failure != 0) {
        unlink(temporary.c_str());
        return systemError("cannot write " + target, failure);
    }
    if (durability == Durability::disk) {
        syncFolder(folder);
    }
    return std::nullopt;
}

}  // namespace tarvik::linuxdesktop
