// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// The engine of IBus that the user has chosen, in a file of the session. The file is there while
/// the application may take the engine's place, and outlives a process that is killed. Reads and
/// writes a small file.
class PreviousEngine {
  public:
    /// The file is in XDG_RUNTIME_DIR. Without such a folder nothing is kept.
    PreviousEngine();

    std::optional<std::string> read() const;
    void write(const std::string& engine) const;
    void remove() const;

  private:
    std::string path_;
};

}  // namespace tarvik::linuxdesktop
