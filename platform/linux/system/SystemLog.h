#pragma once

#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/linux/loop/BackgroundWorker.h"

namespace tarvik::linuxdesktop {

/// Writes to standard error and to syslog(3), which the journal collects, as "tarvik-dictate".
///
/// A thread of its own does it: standard error may be a pipe that nobody reads, and the journal may
/// be busy. Line breaks and other control characters inside a line become blanks. Should nobody
/// take the lines, the newest are dropped beyond 10000, and one line says how many. An abort waits
/// for the lines as the destructor does; a process has one such log.
class SystemLog final : public platform::Log {
  public:
    SystemLog();
    /// Waits up to a second for the lines that are left.
    ~SystemLog() override;

    void write(std::string_view line) override;

  private:
    struct Backlog;

    std::shared_ptr<Backlog> backlog_;
    BackgroundWorker worker_;
};

}  // namespace tarvik::linuxdesktop
