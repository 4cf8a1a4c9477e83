// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <utility>

namespace tarvik::linuxdesktop {

/// An open file descriptor, closed with the object.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }

    explicit operator bool() const { return number_ >= 0; }
    int number() const { return number_; }
    /// Leaves the descriptor to the caller, who closes it.
    [[nodiscard]] int release() { return std::exchange(number_, -1); }

  private:
    int number_ = -1;
};

}  // namespace tarvik::linuxdesktop
