# SPDX-License-Identifier: MIT

"""The programs of docs/desktops.md, as they are started in a Wayland session and on X11."""

from desktop import wait_for
from matrix.browsers import Chromium, Firefox
from matrix.rows import Gtk3Text, Gtk4Text, ProgramTarget, Qt6Text, Xterm
from matrix.writer import Writer
from pressed_keys import A
from target import WidgetTarget

X11, WAYLAND = "x11", "wayland"
# In seconds, how long a program has to be quiet before its first keys count as read.
QUIET = 0.5


class Unseen:
    """A window of which the session tells nobody. The program itself shows that it has the keyboard."""

    def _find_window(self, *_):
        pass

    def activate(self):
        pass


class UnseenWidget(Unseen, WidgetTarget):
    """As WidgetTarget."""


class UnseenProgram(Unseen, ProgramTarget):
    """As ProgramTarget."""


class Gtk3OfX11(Gtk3Text):
    # The input method of Wayland's programs is none for X programs.
    environment = {"GDK_BACKEND": "x11", "GTK_IM_MODULE": "gtk-im-context-simple"}


class Qt6WithMenu(Qt6Text):
    # A lone Alt would open it.
    options = {"menu_bar": True}


class Foot(Xterm):
    program = "foot"
    command = ("foot", "--title", "terminal")


class WaylandFirefox(Firefox):
    def command(self, address):
        return ["env", "MOZ_ENABLE_WAYLAND=1", *super().command(address)]


class WaylandChromium(Chromium):
    options = ("--ozone-platform=wayland", "--disable-gpu")


# Per row: the class on X11, the class in a Wayland session, and what shows the window there.
ROWS = {
    "GTK 3 text view": (Gtk3Text, Gtk3Text, WAYLAND),
    "GTK 4 text view": (Gtk4Text, Gtk4Text, WAYLAND),
    "Qt 6 text area": (Qt6WithMenu, Qt6WithMenu, WAYLAND),
    "foot": (None, Foot, WAYLAND),
    "Firefox field": (Firefox, WaylandFirefox, WAYLAND),
    "Chromium field": (Chromium, WaylandChromium, WAYLAND),
    "LibreOffice Writer": (Writer, Writer, WAYLAND),
    "xterm": (Xterm, Xterm, X11),
    "GTK 3 text view of X11": (None, Gtk3OfX11, X11),
}


def row_class(name, is_wayland):
    """The class of a row, or None where the session cannot have it."""
    on_x11, on_wayland, _ = ROWS[name]
    if not is_wayland:
        return on_x11
    return type(on_wayland.__name__, (on_wayland,),
                {"widget_target": UnseenWidget, "program_target": UnseenProgram})


def wait_for_keyboard(row, keyboard):
    """Waits until a program has the keyboard. Types into a program that does not tell, until the keys
    arrive, and then empties the program."""
    if isinstance(row.target, WidgetTarget):
        return
    wait_for(lambda: keyboard.tap(A) or row.text, "the keyboard in the program", 60)
    length = -1
    while length != len(row.text):
        length = len(row.text)
        settled = []
        wait_for(lambda: settled.append(0) or len(settled) * 0.1 > QUIET, "the last keys")
    row.clear()
