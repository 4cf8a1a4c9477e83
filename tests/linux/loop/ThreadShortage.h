// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::tests {

/// Makes the system refuse new threads to this process, until its destruction. At most one object
/// at a time.
class ThreadShortage {
  public:
    /// The next `threadsLeft` threads still start.
    explicit ThreadShortage(int threadsLeft = 0);
    ~ThreadShortage();
    ThreadShortage(const ThreadShortage&) = delete;
    ThreadShortage& operator=(const ThreadShortage&) = delete;
};

}  // namespace tarvik::tests
