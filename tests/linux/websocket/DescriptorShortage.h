// SPDX-License-Identifier: MIT
#pragma once

#include <sys/resource.h>

namespace tarvik::tests {

/// While it lives, the process can open no file descriptor. Open descriptors stay open.
class DescriptorShortage {
  public:
    DescriptorShortage();
    ~DescriptorShortage();
    DescriptorShortage(const DescriptorShortage&) = delete;
    DescriptorShortage& operator=(const DescriptorShortage&) = delete;

  private:
    rlimit before_{};
};

}  // namespace tarvik::tests
