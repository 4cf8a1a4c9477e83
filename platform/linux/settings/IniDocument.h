// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace tarvik::linuxdesktop {

/// The text of a settings file in the format of QSettings. The entries of the group "General" can
/// be read and changed. Everything else stays as it is: comments, other groups, values of other
/// types. One thread at a time.
class IniDocument {
  public:
    IniDocument() = default;
    /// Parses a whole file. An error for text that is not UTF-8 or has a zero byte, and for a line
    /// that is neither entry nor group nor comment nor blank.
    static Result<IniDocument> parse(std::string_view content);

    /// The encoded value of the last entry for `key`, without the blanks around it.
    std::optional<std::string> value(std::string_view key) const;
    /// Replaces every entry for `key` by one with the encoded `value`; without a value the entries
    /// are removed. `key` is not empty.
    void set(std::string_view key, const std::optional<std::string>& value);

    /// The whole file. Without the byte order mark of the file that was parsed.
    std::string content() const;

  private:
    struct Line {
        std::string text;
        bool isGeneral = false;
        /// Empty where the line is no entry of the group "General".
        std::string key;
        std::string value;
    };

    static auto isEntry(std::string_view key);
    bool addLine(std::string_view line, bool& isGeneral);
    std::ptrdiff_t endOfGeneral();

    std::vector<Line> lines_;
};

}  // namespace tarvik::linuxdesktop
