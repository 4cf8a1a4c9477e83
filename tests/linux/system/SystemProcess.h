#pragma once

#include <string>
#include <vector>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::tests {

/// A helper program of a test, ended with the object.
class SystemProcess {
  public:
    /// The first word is looked for in the PATH.
    explicit SystemProcess(const std::vector<std::string>& command);
    ~SystemProcess();
    SystemProcess(const SystemProcess&) = delete;
    SystemProcess& operator=(const SystemProcess&) = delete;

    /// The next line that it prints; waits for it. Empty at the end.
    std::string readLine();
    /// Waits until it ends by itself.
    void waitForEnd();

  private:
    pid_t process_ = -1;
    linuxdesktop::FileDescriptor output_;
};

}  // namespace tarvik::tests
