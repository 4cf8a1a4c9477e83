// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/linux/loop/BackgroundWorker.h"

namespace tarvik::linuxdesktop {

/// Writes to standard error and to syslog(3), which the journal collects, as "tarvik-dictate".
///
/// Any thread; nothing waits. A worker writes the lines, because standard error may be a pipe that
/// nobody reads, and the journal may be busy. Control characters inside a line, line breaks too,
/// become blanks. Beyond 10000 unwritten lines new ones are dropped, and a later line says how
/// many. When the system has no thread left, lines are written at once. An abort waits up to a
/// second for the lines that are left. A process has one such log.
class SystemLog final : public platform::Log {
  public:
    SystemLog();
    /// As finish().
    ~SystemLog() override;

    void write(std::string_view line) override;
    /// Waits up to a second for the lines that are left. Later lines are not written. The thread
    /// that made the log.
    void finish() { worker_.finish(); }

  private:
    struct Backlog;

    std::shared_ptr<Backlog> backlog_;
    BackgroundWorker worker_;
};

}  // namespace tarvik::linuxdesktop
