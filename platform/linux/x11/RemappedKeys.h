// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "platform/linux/x11/KeyboardMap.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Spare keys that are remapped for typed text, by key code, with the symbols that each yields.
using RemappedSymbols = std::map<xcb_keycode_t, SymbolPair>;

/// The list of the remapped keys of all instances, a property of the server's root window. A killed
/// instance cannot restore its keys, so the next instance does. The server is grabbed while the
/// list changes. Input thread only.
class RemappedKeys {
  public:
    explicit RemappedKeys(XcbConnection& connection);

    /// The keys of other instances that still live.
    RemappedSymbols ofOthers();
    /// The keys of this instance, and those that ended instances have left behind.
    RemappedSymbols toRestore();

    /// This instance remaps the keys of `symbols`, and no other ones. To be called before the map
    /// is changed, so that a kill in between loses no key.
    void record(const RemappedSymbols& symbols);
    /// All keys of toRestore() have been restored.
    void setRestored();

  private:
    struct Entry {
        xcb_window_t owner = XCB_NONE;
        xcb_keycode_t key = 0;
        SymbolPair symbols{};
    };

    std::vector<Entry> read(const std::function<bool(xcb_window_t owner)>& isWanted);
    void write(const std::vector<Entry>& entries);
    bool isOther(xcb_window_t owner);

    XcbConnection& connection_;
    xcb_atom_t list_;
    xcb_window_t self_;
};

}  // namespace tarvik::linuxdesktop
