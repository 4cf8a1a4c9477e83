#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The keys that are lent to typed text, by code, and the symbol that each one yields meanwhile.
using LentSymbols = std::map<xcb_keycode_t, std::uint32_t>;

/// The list of all lent keys, on the server's root window: an instance that is killed cannot give
/// its keys back, so the next one does. Who changes the list has grabbed the server. Input thread
/// only.
class LentKeys {
  public:
    explicit LentKeys(XcbConnection& connection);

    /// What other instances that still live have lent.
    LentSymbols ofOthers();
    /// What this instance has lent, and what those that have ended left behind.
    LentSymbols toGiveBack();

    /// This instance lends `symbols`, and no other ones. To be called before it does, so that no
    /// moment is left in which being killed loses a key.
    void lend(const LentSymbols& symbols);
    /// Everything that was to be given back has been.
    void setGivenBack();

  private:
    struct Entry {
        xcb_window_t owner = XCB_NONE;
        xcb_keycode_t key = 0;
        std::uint32_t symbol = 0;
    };

    std::vector<Entry> read(const std::function<bool(xcb_window_t owner)>& isWanted);
    void write(const std::vector<Entry>& entries);
    bool isOther(xcb_window_t owner);

    XcbConnection& connection_;
    xcb_atom_t list_;
    xcb_window_t self_;
};

}  // namespace tarvik::linuxdesktop
