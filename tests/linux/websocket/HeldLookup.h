// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tarvik::tests {

/// While it lives, every name lookup of this process waits for answer().
class HeldLookup {
  public:
    HeldLookup();
    /// Answers with the system's own addresses, if answer() was not called.
    ~HeldLookup();
    HeldLookup(const HeldLookup&) = delete;
    HeldLookup& operator=(const HeldLookup&) = delete;

    /// Answers the lookups with `address`, as if every name had this address alone.
    void answer(const std::string& address);
};

}  // namespace tarvik::tests
