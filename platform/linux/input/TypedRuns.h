#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/x11/Typist.h"

namespace tarvik::linuxdesktop {

/// Collects runs of UTF-16 units into texts, whole characters each.
class TypedRuns {
  public:
    /// Adds a run for a process, or for whatever has the keyboard.
    void add(std::optional<platform::ProcessIdentifier> process, std::u16string_view units);

    /// The texts so far, in order, runs for the same process joined. The first half of a surrogate
    /// pair stays behind while its other half may still come next. A half that stands alone becomes
    /// U+FFFD. Line breaks and tabs become spaces and other control characters nothing: as keys
    /// they would send a message or move the focus, and so act instead of typing.
    std::vector<TypedText> takeTexts();
    /// The same, and nothing stays behind.
    std::vector<TypedText> takeEverything();

  private:
    struct Run {
        std::optional<platform::ProcessIdentifier> process;
        std::u16string units;
    };

    std::vector<Run> runs_;
};

}  // namespace tarvik::linuxdesktop
