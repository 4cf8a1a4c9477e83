#pragma once

#include <memory>

#include "base/Result.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Opens a connection to the X server, in a way that can be given up. Any thread.
class XcbOpening {
  public:
    using Opened = Result<std::unique_ptr<XcbConnection>>;

    XcbOpening();

    /// Waits for the server, or until somebody gives up. Once.
    Opened open();
    /// Lets open() answer with an error; without effect once it has ended.
    void giveUp();

  private:
    struct Answer;

    std::shared_ptr<Answer> answer_;
};

}  // namespace tarvik::linuxdesktop
