#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::tests {

/// A program that runs as long as the object, with pipes as its standard input and output. One
/// thread at a time. Every operation fails the test when the system refuses what it needs.
class TestProcess {
  public:
    struct Options {
        /// Variables as "NAME=value", besides those of the test or in place of them.
        std::vector<std::string> environment = {};
        /// Whether its standard error goes nowhere, instead of where the test's own goes.
        bool isErrorOutputDropped = false;
    };

    /// The first word of `command` is the program, which is looked for in the PATH.
    explicit TestProcess(const std::vector<std::string>& command);
    TestProcess(const std::vector<std::string>& command, const Options& options);
    /// Kills it.
    ~TestProcess();
    TestProcess(const TestProcess&) = delete;
    TestProcess& operator=(const TestProcess&) = delete;

    /// 0 once it has ended here.
    pid_t identifier() const { return identifier_; }

    /// Writes to its standard input.
    void write(std::string_view text) const;
    /// The next line of its output, without the line break. Empty at the end of the output, or when
    /// no line comes within `timeout`.
    std::optional<std::string> readLine(
        std::chrono::milliseconds timeout = std::chrono::seconds(30));
    /// Appends what it has printed since, without waiting; false when there is nothing new.
    bool readOutput(std::string& output);

    void send(int signal) const;
    /// Waits until it ends by itself. Its exit status, or −1 when a signal has ended it.
    int waitForEnd();
    /// Kills it, so that it cleans nothing up, and waits for its end. Harmless when repeated.
    void kill();

    struct Result {
        /// As of waitForEnd().
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
