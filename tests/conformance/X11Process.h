#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tarvik::conformance {

/// A program that runs as long as the object.
class X11Process {
  public:
    explicit X11Process(const std::vector<std::string>& arguments);
    ~X11Process();
    X11Process(const X11Process&) = delete;
    X11Process& operator=(const X11Process&) = delete;

    pid_t identifier() const { return identifier_; }
    /// What it has printed and nobody has read yet; false when there is nothing new.
    bool readOutput(std::string& output);
    /// Kills it.
    void end();

    /// Runs a program to its end; its exit status.
    static int run(const std::vector<std::string>& arguments);

  private:
    pid_t identifier_ = 0;
    int input_ = -1;
    int output_ = -1;
};

}  // namespace tarvik::conformance
