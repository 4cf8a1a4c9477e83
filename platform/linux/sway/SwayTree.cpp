// SPDX-License-Identifier: MIT

#include "platform/linux/sway/SwayTree.h"

#include <simdjson.h>

namespace tarvik::linuxdesktop {

namespace {

using Node = simdjson::dom::element;

// Deeper than anybody nests containers.
constexpr int maxDepth = 200;

std::int64_t integer(const Node& node, const char* name) {
    std::int64_t value = 0;
    return node[name].get(value) == simdjson::SUCCESS ? value : 0;
}

bool flag(const Node& node, const char* name) {
    bool value = false;
    return node[name].get(value) == simdjson::SUCCESS && value;
}

std::string_view text(const Node& node, const char* name) {
    std::string_view value;
    return node[name].get(value) == simdjson::SUCCESS ? value : std::string_view();
}

std::string quoted(std::string_view name) {
    std::string result = "\"";
    for (const char character : name) {
        if (character == '"' || character == '\\') {
            result += '\\';
        }
        result += character;
    }
    return result + '"';
}

}  // namespace

SwayTree::SwayTree(std::string_view json) {
    simdjson::dom::parser parser;
    Node root;
    if (parser.parse(json.data(), json.size()).get(root) == simdjson::SUCCESS) {
        add(root, 0);
    }
}

template <typename NodeType>
void SwayTree::add(const NodeType& node, int depth) {
    const std::int64_t process = integer(node, "pid");
    const bool isFocused = flag(node, "focused");
    if (process > 0) {
        const WindowFocus::Window window{
            integer(node, "id"), static_cast<platform::ProcessIdentifier>(process),
            text(node, "shell") == "xwayland", static_cast<std::uint32_t>(integer(node, "window"))};
        windows_.push_back(window);
        if (isFocused) {
            focused_ = window;
        }
    }
    if (isFocused) {
        focusCommand_ = text(node, "type") == "workspace"
                            ? "workspace --no-auto-back-and-forth " + quoted(text(node, "name"))
                            : focusCommandFor(integer(node, "id"));
    }
    for (const char* kind : {"nodes", "floating_nodes"}) {
        simdjson::dom::array children;
        if (depth < maxDepth && node[kind].get(children) == simdjson::SUCCESS) {
            for (const Node child : children) {
                add(child, depth + 1);
            }
        }
    }
}

std::string focusCommandFor(std::int64_t window) {
    return "[con_id=" + std::to_string(window) + "] focus";
}

}  // namespace tarvik::linuxdesktop
