#include "tests/conformance/X11Process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace tarvik::conformance {

namespace {

pid_t start(const std::vector<std::string>& arguments, const posix_spawn_file_actions_t* actions) {
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers;
    for (std::string& argument : copies) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawnp(&process, pointers[0], actions, nullptr, pointers.data(), environ) != 0) {
        throw std::runtime_error("cannot start " + arguments[0]);
    }
    return process;
}

}  // namespace

X11Process::X11Process(const std::vector<std::string>& arguments) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    identifier_ = start(arguments, &actions);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
}

X11Process::~X11Process() {
    end();
    close(input_);
    close(output_);
}

bool X11Process::readOutput(std::string& output) {
    std::array<char, 4096> bytes{};
    const ssize_t count = read(output_, bytes.data(), bytes.size());
    if (count <= 0) {
        return false;
    }
    output.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
}

void X11Process::end() {
    if (identifier_ != 0) {
        kill(identifier_, SIGKILL);
        waitpid(std::exchange(identifier_, 0), nullptr, 0);
    }
}

int X11Process::run(const std::vector<std::string>& arguments) {
    int status = 0;
    waitpid(start(arguments, nullptr), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace tarvik::conformance
