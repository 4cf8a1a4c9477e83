// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/input/TypingMeans.h"

namespace tarvik::linuxdesktop {

/// Collects runs of UTF-16 units and shapes them into texts of whole characters that can be typed.
/// One thread.
class TypedRuns {
  public:
    /// Adds a run for a process, or for whatever has the keyboard.
    void add(std::optional<platform::ProcessIdentifier> process, std::u16string_view units);

    /// The texts so far, in order; runs for the same process are joined. No text is empty.
    ///
    /// The first half of a surrogate pair stays behind at the end, since its second half may come
    /// next. A half that stands alone becomes U+FFFD. Control characters are handled as
    /// KeyboardEvents says; CR LF counts as one line break.
    std::vector<TypedText> takeTexts();
    /// The same, but nothing stays behind.
    std::vector<TypedText> takeEverything();

    /// Whether a run for `process` is still here.
    bool contains(std::optional<platform::ProcessIdentifier> process) const;

  private:
    struct Run {
        std::optional<platform::ProcessIdentifier> process;
        std::u16string units;
    };

    std::vector<Run> runs_;
};

}  // namespace tarvik::linuxdesktop
