// SPDX-License-Identifier: MIT

#include "platform/linux/x11/RemappedKeys.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::size_t itemsPerEntry = 4;

template <typename Entries>
RemappedSymbols symbolsOf(const Entries& entries) {
    RemappedSymbols symbols;
    for (const auto& entry : entries) {
        symbols[entry.key] = entry.symbols;
    }
    return symbols;
}

}  // namespace

// A window ends with its client, however the client ends. Its number may become that of another
// program's window, so an owner's window bears the list's name and its own number as a property.
RemappedKeys::RemappedKeys(XcbConnection& connection)
    : connection_(connection),
      list_(connection.atom("_TARVIK_DICTATE_REMAPPED_KEYS")),
      self_(xcb_generate_id(connection.get())) {
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, self_, connection_.root(), -1, -1, 1,
                      1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, self_, list_, XCB_ATOM_WINDOW, 32,
                        1, &self_);
}

bool RemappedKeys::isOther(xcb_window_t owner) {
    return owner != self_ && connection_.firstOfProperty(owner, list_, XCB_ATOM_WINDOW) == owner;
}

std::vector<RemappedKeys::Entry> RemappedKeys::read(
    const std::function<bool(xcb_window_t owner)>& isWanted) {
    const auto items = connection_.property(connection_.root(), list_, XCB_ATOM_CARDINAL);
    std::vector<Entry> entries;
    for (std::size_t i = 0; i + itemsPerEntry <= items.size(); i += itemsPerEntry) {
        if (isWanted(items[i])) {
            entries.push_back(
                {items[i], static_cast<xcb_keycode_t>(items[i + 1]), {items[i + 2], items[i + 3]}});
        }
    }
    return entries;
}

void RemappedKeys::write(const std::vector<Entry>& entries) {
    std::vector<std::uint32_t> items;
    for (const Entry& entry : entries) {
        items.insert(items.end(), {entry.owner, entry.key, entry.symbols[0], entry.symbols[1]});
    }
    if (items.empty()) {
        xcb_delete_property(connection_.get(), connection_.root(), list_);
    } else {
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, connection_.root(), list_,
                            XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(items.size()),
                            items.data());
    }
}

RemappedSymbols RemappedKeys::ofOthers() {
    return symbolsOf(read([this](xcb_window_t owner) { return isOther(owner); }));
}

// An instance that was killed may have had a window with the number that is now this one's.
RemappedSymbols RemappedKeys::toRestore() {
    return symbolsOf(read([this](xcb_window_t owner) { return !isOther(owner); }));
}

void RemappedKeys::record(const RemappedSymbols& symbols) {
    std::vector<Entry> entries = read([this](xcb_window_t owner) { return owner != self_; });
    for (const auto& [key, pair] : symbols) {
        entries.push_back({self_, key, pair});
    }
    write(entries);
}

void RemappedKeys::setRestored() {
    write(read([this](xcb_window_t owner) { return isOther(owner); }));
}

}  // namespace tarvik::linuxdesktop
