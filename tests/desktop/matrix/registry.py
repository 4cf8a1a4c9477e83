# SPDX-License-Identifier: MIT

"""All rows of the matrix, in the order of the published page."""

from matrix.browsers import Chromium, ChromiumAccessible, Firefox, FirefoxEditable
from matrix.editors import Featherpad, GnomeTextEditor, Mousepad
from matrix.rows import (Gtk3Entry, Gtk3Password, Gtk3Text, Gtk4Entry, Gtk4Text, Qt5Entry, Qt5Text,
                         Qt6Entry, Qt6Text, SwingText, TkText, Xterm)
from matrix.scripted import Emacs, Gvim, VimInXterm
from matrix.writer import Writer

ROWS = {
    "GTK 3 entry": Gtk3Entry,
    "GTK 3 text view": Gtk3Text,
    "GTK 3 password field": Gtk3Password,
    "GTK 4 entry": Gtk4Entry,
    "GTK 4 text view": Gtk4Text,
    "Qt 5 line": Qt5Entry,
    "Qt 5 text area": Qt5Text,
    "Qt 6 line": Qt6Entry,
    "Qt 6 text area": Qt6Text,
    "Swing text area": SwingText,
    "Tk text": TkText,
    "xterm": Xterm,
    "vim in xterm": VimInXterm,
    "gvim": Gvim,
    "Emacs": Emacs,
    "mousepad": Mousepad,
    "featherpad": Featherpad,
    "gnome-text-editor": GnomeTextEditor,
    "LibreOffice Writer": Writer,
    "Firefox field": Firefox,
    "Firefox contenteditable": FirefoxEditable,
    "Chromium field": Chromium,
    "Chromium field, forced accessibility": ChromiumAccessible,
}
