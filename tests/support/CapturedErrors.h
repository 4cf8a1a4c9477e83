// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::tests {

/// Redirects standard error into a pipe while the object lives. One thread. Every read blocks until
/// there is more output, unless the comment says otherwise.
class CapturedErrors {
  public:
    CapturedErrors() : saved_(dup(STDERR_FILENO)) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            std::abort();
        }
        output_ = linuxdesktop::FileDescriptor(ends[0]);
        dup2(ends[1], STDERR_FILENO);
        ::close(ends[1]);
    }
    ~CapturedErrors() { restore(); }
    CapturedErrors(const CapturedErrors&) = delete;
    CapturedErrors& operator=(const CapturedErrors&) = delete;

    /// Ends the redirection. Allowed any number of times.
    void restore() {
        if (saved_) {
            dup2(saved_.number(), STDERR_FILENO);
            saved_ = linuxdesktop::FileDescriptor();
        }
    }

    /// Reads until `text` has been written; false when the output ends before that.
    bool readUntil(const std::string& text) {
        return readWhile([&] { return text_.find(text) == std::string::npos; });
    }

    /// Reads until `count` lines have been written; false when the output ends before that.
    bool readLines(std::ptrdiff_t count) {
        return readWhile([&] { return std::count(text_.begin(), text_.end(), '\n') < count; });
    }

    /// Ends the redirection and returns every line that was written.
    std::vector<std::string> lines() {
        restore();
        readUntil("never written");
        return split();
    }

    /// The complete lines that have been written so far, without waiting.
    std::vector<std::string> linesSoFar() {
        readWhile([this] {
            pollfd readable{output_.number(), POLLIN, 0};
            return poll(&readable, 1, 0) > 0;
        });
        std::vector<std::string> result = split();
        if (!text_.empty() && text_.back() != '\n') {
            result.pop_back();
        }
        return result;
    }

  private:
    bool readWhile(const std::function<bool()>& isMissing) {
        std::array<char, 4096> part{};
        while (isMissing()) {
            const ssize_t size = read(output_.number(), part.data(), part.size());
            if (size <= 0) {
                return false;
            }
            text_.append(part.data(), static_cast<std::size_t>(size));
        }
        return true;
    }

    std::vector<std::string> split() const {
        std::vector<std::string> result;
        std::istringstream stream(text_);
        for (std::string line; std::getline(stream, line);) {
            result.push_back(line);
        }
        return result;
    }

    linuxdesktop::FileDescriptor saved_;
    linuxdesktop::FileDescriptor output_;
    std::string text_;
};

}  // namespace tarvik::tests
