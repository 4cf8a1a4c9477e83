// SPDX-License-Identifier: MIT

#include "platform/linux/sway/ConfiguredBindings.h"

#include <wordexp.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr int maxIncludeDepth = 16;
constexpr std::string_view blanks = " \t\r";

std::string lowered(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](unsigned char character) { return std::tolower(character); });
    return result;
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Takes the first word of `text`.
std::string_view takeWord(std::string_view& text) {
    text = trimmed(text);
    const auto end = std::min(text.find_first_of(blanks), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

std::string canonicalModifier(const std::string& name) {
    if (name == "alt") {
        return "mod1";
    }
    if (name == "super" || name == "logo") {
        return "mod4";
    }
    return name == "control" ? "ctrl" : name;
}

bool isModifier(const std::string& name) {
    static const std::set<std::string> names{"shift", "lock", "caps", "ctrl", "mod1",
                                             "mod2",  "mod3", "mod4", "mod5"};
    return names.contains(name);
}

// Whether a statement, or the beginning of a block of statements, binds keys.
bool isOfBindings(std::string_view statement) {
    const std::string_view kind = takeWord(statement);
    return kind == "bindsym" || kind == "bindcode";
}

bool canHaveBindings(std::string_view block) {
    return isOfBindings(block) || block == "mode default" || block == "mode \"default\"";
}

KeyCombination combinationIn(std::string_view text) {
    KeyCombination combination;
    while (!text.empty()) {
        const auto end = std::min(text.find('+'), text.size());
        const std::string name = canonicalModifier(lowered(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (isModifier(name)) {
            combination.modifiers.insert(name);
        } else if (!name.starts_with("group")) {
            // Of several keys the combination is none that one key can be.
            combination.key += combination.key.empty() ? name : "+" + name;
        }
    }
    return combination;
}

}  // namespace

ConfiguredBindings::ConfiguredBindings(std::string_view text, const std::string& path) {
    read(text, std::filesystem::path(path).parent_path().string(), 0);
}

std::optional<std::string> ConfiguredBindings::commandOfSpace(
    const std::set<std::string>& modifiers) const {
    const auto found = std::ranges::find_if(bindings_, [&](const Binding& binding) {
        return binding.combination.modifiers == modifiers &&
               binding.combination.key == (binding.isCode ? "65" : "space");
    });
    return found != bindings_.end() ? std::optional(found->command) : std::nullopt;
}

void ConfiguredBindings::read(std::string_view text, const std::string& folder, int depth) {
    std::string line;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        line += trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\\') && !text.empty()) {
            line.back() = ' ';
        } else {
            readLine(std::exchange(line, {}), folder, depth);
        }
    }
}

void ConfiguredBindings::readLine(std::string line, const std::string& folder, int depth) {
    if (line.empty() || line.starts_with('#')) {
        return;
    }
    if (line == "}") {
        if (!blocks_.empty()) {
            blocks_.pop_back();
        }
        return;
    }
    // The name of a variable that is set is no use of it.
    std::string_view unreplaced = line;
    if (takeWord(unreplaced) == "set") {
        const std::string name(takeWord(unreplaced));
        variables_[name] = replaceVariables(std::string(unreplaced));
        return;
    }
    line = replaceVariables(line);
    if (line.ends_with('{')) {
        line.pop_back();
        blocks_.emplace_back(trimmed(line));
        return;
    }
    if (std::ranges::all_of(blocks_, canHaveBindings)) {
        const auto block = std::ranges::find_if(blocks_, isOfBindings);
        readStatement(block == blocks_.end() ? line : *block + " " + line, folder, depth);
    }
}

void ConfiguredBindings::readStatement(std::string_view statement, const std::string& folder,
                                       int depth) {
    const std::string_view kind = takeWord(statement);
    if (isOfBindings(kind)) {
        addBinding(kind, statement);
    } else if (kind == "include") {
        include(std::string(statement), folder, depth);
    }
}

void ConfiguredBindings::addBinding(std::string_view kind, std::string_view rest) {
    std::string_view word = takeWord(rest);
    while (word.starts_with("--")) {
        word = takeWord(rest);
    }
    bindings_.push_back({combinationIn(word), std::string(rest), kind == "bindcode"});
}

void ConfiguredBindings::include(const std::string& pattern, const std::string& folder, int depth) {
    if (depth >= maxIncludeDepth) {
        return;
    }
    wordexp_t words{};
    const std::string absolute =
        pattern.starts_with('/') || pattern.starts_with('~') || pattern.starts_with('$')
            ? pattern
            : folder + "/" + pattern;
    // A configuration may name the output of a command, which this process does not run again.
    if (wordexp(absolute.c_str(), &words, WRDE_NOCMD) == 0) {
        for (std::size_t index = 0; index < words.we_wordc; ++index) {
            const std::filesystem::path path(words.we_wordv[index]);
            const std::ifstream file(path);
            std::ostringstream text;
            // A folder is an error of the stream here. An iterator would throw.
            text << file.rdbuf();
            read(text.str(), path.parent_path().string(), depth + 1);
        }
        wordfree(&words);
    }
}

// Of two variables that fit, Sway takes the longer one.
std::string ConfiguredBindings::replaceVariables(const std::string& line) const {
    std::string result;
    for (std::size_t position = 0; position < line.size();) {
        const std::pair<const std::string, std::string>* longest = nullptr;
        for (const auto& variable : variables_) {
            if (!variable.first.empty() &&
                line.compare(position, variable.first.size(), variable.first) == 0 &&
                (longest == nullptr || variable.first.size() > longest->first.size())) {
                longest = &variable;
            }
        }
        result += longest != nullptr ? longest->second : std::string(1, line[position]);
        position += longest != nullptr ? longest->first.size() : 1;
    }
    return result;
}

}  // namespace tarvik::linuxdesktop
