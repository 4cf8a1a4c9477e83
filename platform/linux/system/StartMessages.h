// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace tarvik::linuxdesktop {

/// Holds Qt's messages back while the QApplication is made. Main thread only; one at a time. The
/// messages may come from any thread.
///
/// Without a display Qt ends the process with a core dump and several messages. Here one line on
/// standard error gives the reason, and the exit status is 1. When Qt starts, the destructor passes
/// the messages on.
class StartMessages {
  public:
    StartMessages();
    ~StartMessages();
    StartMessages(const StartMessages&) = delete;
    StartMessages& operator=(const StartMessages&) = delete;

  private:
    QtMessageHandler previous_;
};

}  // namespace tarvik::linuxdesktop
