// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::tests {

/// A program that runs at most as long as the object, with pipes as its standard input and output.
/// One thread at a time. An operation that the system refuses fails the test.
class TestProcess {
  public:
    enum class ErrorOutput {
        /// The program writes to the test's standard error.
        inherited,
        dropped,
        /// The output that is read here is the standard error; the standard output is dropped.
        read
    };
    struct Options {
        /// Variables as "NAME=value", which add to or replace those of the test.
        std::vector<std::string> environment = {};
        ErrorOutput errorOutput = ErrorOutput::inherited;
    };

    /// Starts a program. The first word of `command` is the program's name, searched in PATH.
    explicit TestProcess(const std::vector<std::string>& command);
    TestProcess(const std::vector<std::string>& command, const Options& options);
    /// Kills the program.
    ~TestProcess();
    TestProcess(const TestProcess&) = delete;
    TestProcess& operator=(const TestProcess&) = delete;

    /// The process identifier; 0 after waitForEnd() or kill().
    pid_t identifier() const { return identifier_; }

    /// Writes to the program's standard input.
    void write(std::string_view text) const;
    /// The next line of the output, without the line break. Nothing at the end of the output, or
    /// when no line comes within `timeout`.
    std::optional<std::string> readLine(
        std::chrono::milliseconds timeout = std::chrono::seconds(30));
    /// Appends all new output to `output`, without waiting; false when there is none.
    bool readOutput(std::string& output);

    /// Sends a signal to the program.
    void send(int signal) const;
    /// Waits until the program ends by itself. Returns its exit status, or −1 when a signal has
    /// ended the program, or when an earlier call or kill() has already met its end.
    int waitForEnd();
    /// Kills the program, which has no chance to clean up, and waits for its end. Allowed any
    /// number of times.
    void kill();

    struct Result {
        /// The result of waitForEnd().
        int status = -1;
        std::string output;
    };
    /// Runs a program to its end.
    static Result run(const std::vector<std::string>& command);
    static Result run(const std::vector<std::string>& command, const Options& options);

  private:
    bool readPending();

    pid_t identifier_ = 0;
    int input_ = -1;
    int output_ = -1;
    std::string pending_;
};

}  // namespace tarvik::tests
