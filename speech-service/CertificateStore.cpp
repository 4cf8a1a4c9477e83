// SPDX-License-Identifier: MIT

#include "speech-service/CertificateStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

#include "speech-service/AtomicFile.h"
#include "speech-service/CertificateFactory.h"

namespace tarvik::service {

namespace filesystem = std::filesystem;

namespace {

/// An exclusive lock against other processes that prepare the same directory.
class DirectoryLock {
  public:
    explicit DirectoryLock(const filesystem::path& directory)
        : file_(::open((directory / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        while (file_ >= 0 && ::flock(file_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~DirectoryLock() {
        if (file_ >= 0) {
            ::close(file_);
        }
    }
    DirectoryLock(const DirectoryLock&) = delete;
    DirectoryLock& operator=(const DirectoryLock&) = delete;

    bool isHeld() const { return file_ >= 0; }

  private:
    int file_;
};

std::string contentOf(const filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Identity load(const filesystem::path& certificate, const filesystem::path& key) {
    return identityFromPem(contentOf(certificate), contentOf(key));
}

// The key comes first: a client takes the existence of a certificate for that of the pair.
std::optional<Error> save(const Identity& identity, const filesystem::path& certificate,
                          const filesystem::path& key) {
    if (std::optional<Error> error = writeFile(key, pemOf(identity.key), true)) {
        return error;
    }
    return writeFile(certificate, pemOf(identity.certificate), false);
}

void moveAside(const filesystem::path& path) {
    std::error_code error;
    filesystem::rename(path, path.string() + ".unusable", error);
    if (!error) {
        std::cerr << path.string() + " cannot be used any more; it was kept as " +
                         path.filename().string() + ".unusable\n";
    } else if (error != std::errc::no_such_file_or_directory) {
        std::cerr << path.string() + " could not be kept: " + error.message() + "\n";
    }
}

Result<Identity> prepareAuthority(const CertificateFiles& files) {
    Identity stored = load(files.authority, files.authorityKey);
    if (isUsable(stored)) {
        return stored;
    }
    moveAside(files.authority);
    moveAside(files.authorityKey);
    Result<Identity> made = makeAuthority();
    if (made) {
        if (std::optional<Error> error = save(made.value(), files.authority, files.authorityKey)) {
            return *std::move(error);
        }
    }
    return made;
}

std::optional<Error> prepareServer(const CertificateFiles& files, const Identity& authority) {
    const Identity stored = load(files.server, files.serverKey);
    if (isUsable(stored) && isIssuedBy(authority, stored)) {
        return std::nullopt;
    }
    if (stored.certificate) {
        std::cerr << files.server.string() + " is renewed\n";
    }
    const Result<Identity> made = makeServerIdentity(authority);
    if (!made) {
        return made.error();
    }
    return save(made.value(), files.server, files.serverKey);
}

}  // namespace

Result<CertificateFiles> prepareCertificates(const filesystem::path& directory) {
    std::error_code status;
    if (filesystem::create_directories(directory, status)) {
        filesystem::permissions(directory, filesystem::perms::owner_all, status);
    }
    if (status) {
        return Error{status.value(),
                     directory.string() + " cannot be created: " + status.message()};
    }
    const DirectoryLock lock(directory);
    if (!lock.isHeld()) {
        return Error{errno, directory.string() +
                                " cannot be written: " + std::generic_category().message(errno)};
    }
    const CertificateFiles files{directory / "ca.pem", directory / "ca-key.pem",
                                 directory / "server.pem", directory / "server-key.pem"};
    const Result<Identity> authority = prepareAuthority(files);
    if (!authority) {
        return authority.error();
    }
    if (std::optional<Error> error = prepareServer(files, authority.value())) {
        return *std::move(error);
    }
    return files;
}

}  // namespace tarvik::service
