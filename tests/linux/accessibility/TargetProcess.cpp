// SPDX-License-Identifier: MIT

#include "tests/linux/accessibility/TargetProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace tarvik::tests {

namespace {

std::vector<std::string> commandOf(const std::string& program, const std::string& out,
                                   const std::vector<std::string>& options) {
    std::vector<std::string> command{
        "/usr/bin/python3", std::string(TARVIK_TARGETS_FOLDER) + "/" + program, "--out", out};
    command.insert(command.end(), options.begin(), options.end());
    return command;
}

}  // namespace

TargetProcess::TargetProcess(const std::string& program, const std::vector<std::string>& options)
    : process_(commandOf(program, folder_ / "text", options)) {
    EXPECT_EQ(process_.readLine(), "ready") << program;
}

std::string TargetProcess::text() const {
    return contentOf(folder_ / "text");
}

std::string TargetProcess::command(const std::string& line) {
    process_.write(line + "\n");
    // A field that has got the focus says so in between.
    std::optional<std::string> reply;
    do {
        reply = process_.readLine();
    } while (reply == "ready");
    return reply.value_or("(nothing)");
}

bool becomesTrue(const std::function<bool()>& condition, Seconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace tarvik::tests
