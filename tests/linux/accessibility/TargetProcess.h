// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "base/Time.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A program of tests/desktop/targets, with one text field. The program ends with the object.
class TargetProcess {
  public:
    /// Starts `program` and waits until it is ready.
    TargetProcess(const std::string& program, const std::vector<std::string>& options);

    pid_t identifier() const { return process_.identifier(); }
    /// The content of the text field.
    std::string text() const;
    /// Has the program do something; the line that it prints in reply.
    std::string command(const std::string& line);
    void send(int signal) { process_.send(signal); }
    void kill() { process_.kill(); }

  private:
    TemporaryFolder folder_;
    TestProcess process_;
};

/// Waits until `condition` holds, by reading it again and again; false when it does not hold within
/// `timeout`.
bool becomesTrue(const std::function<bool()>& condition, Seconds timeout);

}  // namespace tarvik::tests
