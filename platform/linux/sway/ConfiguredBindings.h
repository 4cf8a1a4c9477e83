// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::linuxdesktop {

/// A key with modifiers, as Sway's configuration writes it.
struct KeyCombination {
    /// In small letters, Alt as "mod1".
    std::set<std::string> modifiers;
    /// The symbol in small letters, or the number of X11 for `bindcode`.
    std::string key;

    friend bool operator==(const KeyCombination&, const KeyCombination&) = default;
};

/// The bindings of the default mode in a configuration of Sway, which Sway itself does not list.
/// Follows variables, blocks and included files. Immutable.
class ConfiguredBindings {
  public:
    /// `text` is the content of the configuration file at `path`. Reads the included files, so the
    /// constructor may wait for a disk.
    ConfiguredBindings(std::string_view text, const std::string& path);

    /// The command that the configuration binds to the space bar with these modifiers; empty when
    /// there is none.
    std::optional<std::string> commandOfSpace(const std::set<std::string>& modifiers) const;

  private:
    struct Binding {
        KeyCombination combination;
        std::string command;
        bool isCode = false;
    };

    void read(std::string_view text, const std::string& folder, int depth);
    void readLine(std::string line, const std::string& folder, int depth);
    void readStatement(std::string_view statement, const std::string& folder, int depth);
    void include(const std::string& pattern, const std::string& folder, int depth);
    void addBinding(std::string_view kind, std::string_view rest);
    std::string replaceVariables(const std::string& line) const;

    std::map<std::string, std::string> variables_;
    // What the blocks around a line begin with.
    std::vector<std::string> blocks_;
    std::vector<Binding> bindings_;
};

}  // namespace tarvik::linuxdesktop
