#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace tarvik::linuxdesktop {

/// A settings file in the format of QSettings, of which the entries of the group "General" can be
/// read and changed. Everything else stays as it is: comments, other groups, values of other
/// types.
class IniDocument {
  public:
    IniDocument() = default;
    /// Reads a whole file. The error says why it is no such file: bytes that are not UTF-8 or are
    /// zero, or a line that is neither entry nor group nor comment nor blank.
    static Result<IniDocument> parse(std::string_view content);

    /// The right-hand side of the last entry for `key`, without the blanks around it.
    std::optional<std::string> value(std::string_view key) const;
    /// Puts `value` in the place of every entry for `key`, which is not empty; nothing removes
    /// them.
    void set(std::string_view key, const std::optional<std::string>& value);

    /// The whole file.
    std::string content() const;

  private:
    struct Line {
        std::string text;
        bool isGeneral = false;
        /// Empty where the line is no entry of the group.
        std::string key;
        std::string value;
    };

    static auto isEntry(std::string_view key);
    bool addLine(std::string_view line, bool& isGeneral);
    std::ptrdiff_t endOfGeneral();

    std::vector<Line> lines_;
};

}  // namespace tarvik::linuxdesktop
