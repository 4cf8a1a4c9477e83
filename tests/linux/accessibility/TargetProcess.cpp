#include "tests/linux/accessibility/TargetProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <thread>

namespace tarvik::tests {

namespace {

std::string newOutFile() {
    const char* folder = std::getenv("TMPDIR");
    std::string path = std::string(folder ? folder : "/tmp") + "/target-XXXXXX";
    const int file = mkstemp(path.data());
    EXPECT_GE(file, 0);
    close(file);
    return path;
}

}  // namespace

TargetProcess::TargetProcess(const std::string& program, const std::vector<std::string>& options)
    : out_(newOutFile()) {
    std::vector<std::string> command{"/usr/bin/python3", TARVIK_TARGETS_FOLDER, "--out", out_};
    command[1].append("/").append(program);
    command.insert(command.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);

    std::array<int, 2> input{};
    std::array<int, 2> output{};
    EXPECT_EQ(pipe2(input.data(), O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(output.data(), O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    EXPECT_EQ(posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environ),
              0);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
    EXPECT_EQ(readLine(), "ready") << program;
}

TargetProcess::~TargetProcess() {
    kill();
    close(input_);
    close(output_);
    unlink(out_.c_str());
}

std::string TargetProcess::text() const {
    std::ifstream file(out_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string TargetProcess::command(const std::string& line) {
    const std::string whole = line + "\n";
    EXPECT_EQ(write(input_, whole.data(), whole.size()), static_cast<ssize_t>(whole.size()));
    // A field that has got the focus says so in between.
    std::string answer;
    do {
        answer = readLine();
    } while (answer == "ready");
    return answer;
}

void TargetProcess::send(int signal) {
    ::kill(process_, signal);
}

void TargetProcess::kill() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
        process_ = -1;
    }
}

std::string TargetProcess::readLine() {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (pending_.find('\n') == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            limit - std::chrono::steady_clock::now());
        pollfd waited{output_, POLLIN, 0};
        std::array<char, 4096> buffer{};
        if (left.count() <= 0 || poll(&waited, 1, static_cast<int>(left.count())) <= 0) {
            return "(nothing)";
        }
        const ssize_t length = read(output_, buffer.data(), buffer.size());
        if (length <= 0) {
            return "(ended)";
        }
        pending_.append(buffer.data(), static_cast<std::size_t>(length));
    }
    const std::size_t end = pending_.find('\n');
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    return line;
}

bool becomesTrue(const std::function<bool()>& condition, Seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace tarvik::tests
