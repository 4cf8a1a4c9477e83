#include "tests/linux/system/SystemProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace tarvik::tests {

SystemProcess::SystemProcess(const std::vector<std::string>& command) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        std::abort();
    }
    output_ = linuxdesktop::FileDescriptor(ends[0]);
    const linuxdesktop::FileDescriptor input(ends[1]);
    std::vector<char*> words;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.number(), STDOUT_FILENO);
    if (posix_spawnp(&process_, words[0], &actions, nullptr, words.data(), environ) != 0) {
        process_ = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
}

SystemProcess::~SystemProcess() {
    if (process_ > 0) {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
    }
}

void SystemProcess::waitForEnd() {
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

std::string SystemProcess::readLine() {
    std::string line;
    char c = 0;
    while (read(output_.number(), &c, 1) == 1 && c != '\n') {
        line += c;
    }
    return line;
}

}  // namespace tarvik::tests
