#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "base/Time.h"

namespace tarvik::tests {

/// A program of tests/desktop/targets. It ends with the object.
class TargetProcess {
  public:
    /// Starts `program` and waits until it is ready.
    TargetProcess(const std::string& program, const std::vector<std::string>& options);
    ~TargetProcess();
    TargetProcess(const TargetProcess&) = delete;
    TargetProcess& operator=(const TargetProcess&) = delete;

    pid_t process() const { return process_; }
    /// What its text field holds.
    std::string text() const;
    /// Has it do something and returns the line that it answers.
    std::string command(const std::string& line);
    void send(int signal);
    /// Ends it at once.
    void kill();

  private:
    std::string readLine();

    std::string out_;
    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string pending_;
};

/// Polls until `condition` holds, or `limit` has passed; returns whether it holds.
bool becomesTrue(const std::function<bool()>& condition, Seconds limit);

}  // namespace tarvik::tests
