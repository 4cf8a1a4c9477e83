// SPDX-License-Identifier: MIT

#include "platform/linux/system/ProcessTaskLauncher.h"

#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

namespace {

class SpawnAttributes {
  public:
    SpawnAttributes() {
        posix_spawnattr_init(&attributes_);
        // A child must not inherit the signals that this process ignores or blocks.
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &all);
        posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

// Closes everything but the standard streams in the child. What a library or the parent of this
// process has opened without O_CLOEXEC is nothing for the child.
class SpawnFileActions {
  public:
    SpawnFileActions() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    ~SpawnFileActions() { posix_spawn_file_actions_destroy(&actions_); }
    SpawnFileActions(const SpawnFileActions&) = delete;
    SpawnFileActions& operator=(const SpawnFileActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

// A child that has ended keeps its entry in the process table until its parent reaps it. Without a
// pidfd the child is not reaped, and the entry stays as long as this process.
void reapWhenEnded(pid_t child) {
    auto process =
        std::make_shared<FileDescriptor>(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
    if (!*process) {
        return;
    }
    auto* notifier =
        new QSocketNotifier(process->number(), QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [child, process, notifier] {
        waitpid(child, nullptr, WNOHANG);
        notifier->setEnabled(false);
        notifier->deleteLater();
    });
}

}  // namespace

std::optional<Error> ProcessTaskLauncher::launch(const std::string& launchPath,
                                                 const std::vector<std::string>& arguments) {
    std::vector<char*> pointers = {const_cast<char*>(launchPath.c_str())};
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    pid_t child = 0;
    const int failure = posix_spawn(&child, launchPath.c_str(), SpawnFileActions().get(),
                                    SpawnAttributes().get(), pointers.data(), environ);
    if (failure != 0) {
        return Error{failure, "cannot start " + launchPath + ": " + std::strerror(failure)};
    }
    reapWhenEnded(child);
    return std::nullopt;
}

}  // namespace tarvik::linuxdesktop
