// SPDX-License-Identifier: MIT

#include "tests/support/TestProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace tarvik::tests {

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentWith(const std::vector<std::string>& variables) {
    std::vector<std::string> result = variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view present(*variable);
        const auto name = present.substr(0, present.find('=') + 1);
        if (std::ranges::none_of(
                variables, [&](const std::string& other) { return other.starts_with(name); })) {
            result.emplace_back(present);
        }
    }
    return result;
}

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for a program");
    }
    return ends;
}

}  // namespace

TestProcess::TestProcess(const std::vector<std::string>& command)
    : TestProcess(command, Options{}) {}

TestProcess::TestProcess(const std::vector<std::string>& command, const Options& options) {
    const auto input = makePipe();
    const auto output = makePipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    if (options.errorOutput == ErrorOutput::dropped) {
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    } else if (options.errorOutput == ErrorOutput::read) {
        posix_spawn_file_actions_adddup2(&actions, output[1], STDERR_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    std::vector<std::string> words = command;
    std::vector<std::string> variables = environmentWith(options.environment);
    const int error = posix_spawnp(&identifier_, words[0].c_str(), &actions, nullptr,
                                   pointersTo(words).data(), pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
    if (error != 0) {
        close(input_);
        close(output_);
        throw std::runtime_error("cannot start " + command[0]);
    }
}

TestProcess::~TestProcess() {
    kill();
    close(input_);
    close(output_);
}

void TestProcess::write(std::string_view text) const {
    EXPECT_EQ(::write(input_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

bool TestProcess::readPending() {
    std::array<char, 4096> bytes{};
    const ssize_t count = read(output_, bytes.data(), bytes.size());
    if (count > 0) {
        pending_.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

std::optional<std::string> TestProcess::readLine(std::chrono::milliseconds timeout) {
    using std::chrono::steady_clock;
    const auto deadline = steady_clock::now() + timeout;
    std::size_t end = 0;
    while ((end = pending_.find('\n')) == std::string::npos) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - steady_clock::now());
        pollfd readable{output_, POLLIN, 0};
        if (poll(&readable, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0))) <= 0 ||
            !readPending()) {
            return std::nullopt;
        }
    }
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    return line;
}

bool TestProcess::readOutput(std::string& output) {
    while (readPending()) {
    }
    output += pending_;
    return !std::exchange(pending_, {}).empty();
}

void TestProcess::send(int signal) const {
    ASSERT_NE(identifier_, 0);
    EXPECT_EQ(::kill(identifier_, signal), 0);
}

int TestProcess::waitForEnd() {
    // Number 0 would stand for any child of the test.
    if (identifier_ == 0) {
        return -1;
    }
    int status = 0;
    const bool hasEnded = waitpid(std::exchange(identifier_, 0), &status, 0) > 0;
    return hasEnded && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void TestProcess::kill() {
    if (identifier_ != 0) {
        ::kill(identifier_, SIGKILL);
        waitForEnd();
    }
}

TestProcess::Result TestProcess::run(const std::vector<std::string>& command) {
    return run(command, Options{});
}

TestProcess::Result TestProcess::run(const std::vector<std::string>& command,
                                     const Options& options) {
    TestProcess process(command, options);
    Result result;
    pollfd readable{process.output_, POLLIN, 0};
    do {
        poll(&readable, 1, -1);
    } while (process.readOutput(result.output));
    result.status = process.waitForEnd();
    return result;
}

}  // namespace tarvik::tests
