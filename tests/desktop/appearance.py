# SPDX-License-Identifier: MIT

"""The appearance of a desktop: panel, light or dark colours, single or double resolution."""

import dataclasses
import pathlib
import string

from demonstrate import LOOK_FILES, decorate
from desktop import wait_for

FRAME = "Plain"
FRAME_COLORS = {
    False: {"title": "#e4e4e4", "border": "#b4b4b4", "text": "#2e2e2e", "faint": "#8a8a8a"},
    True: {"title": "#1f2224", "border": "#111213", "text": "#e6e6e6", "faint": "#8a8a8a"},
}
FRAME_OPTIONS = """  <theme>
    <name>{name}</name>
    <titleLayout>NLC</titleLayout>
    <font place="ActiveWindow"><size>{size}</size><weight>Bold</weight></font>
    <font place="InactiveWindow"><size>{size}</size></font>
  </theme>
"""
LXQT_THEMES = {False: "Clearlooks", True: "silver"}


@dataclasses.dataclass(frozen=True)
class Appearance:
    """One combination of panel, colours and scale."""

    panel: str = "xfce4-panel"
    is_dark: bool = False
    scale: int = 1

    @property
    def name(self):
        return ("dark" if self.is_dark else "light") + ("-2x" if self.scale == 2 else "")

    @property
    def size(self):
        return f"{1280 * self.scale}x{800 * self.scale}"

    @property
    def is_scaled_by_text(self):
        """Whether the application gets the scale from the text size, as on Xfce. Otherwise it gets
        the scale from a variable of its toolkit, as on LXQt."""
        return self.scale != 1 and self.panel == "xfce4-panel"

    @property
    def environment(self):
        """The variables that the session passes to the application."""
        variables = {}
        if self.is_dark:
            # Qt reads the colours of this desktop without further packages.
            variables |= {"XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true",
                          "KDE_SESSION_VERSION": "5"}
        if self.scale != 1 and not self.is_scaled_by_text:
            variables["QT_SCALE_FACTOR"] = str(self.scale)
        return variables

    def decorate(self, desktop):
        """Sets up the background, the panel, the window frames and the colours."""
        config = pathlib.Path(desktop.environment["XDG_CONFIG_HOME"])
        if self.is_dark:
            (config / "kdeglobals").write_text((LOOK_FILES / "kdeglobals-dark").read_text())
        (config / "lxqt").mkdir()
        (config / "lxqt/lxqt.conf").write_text(f"[General]\ntheme={LXQT_THEMES[self.is_dark]}\n")
        desktop.environment["GTK_THEME"] = "Adwaita:dark" if self.is_dark else "Adwaita"
        panel = {"GDK_SCALE": str(self.scale), "QT_SCALE_FACTOR": str(self.scale)}
        desktop.environment.update(panel)
        decorate(desktop, self.panel)
        for name in panel:
            del desktop.environment[name]
        if self.is_scaled_by_text:
            set_text_scale(desktop, self.scale)
        self._frame_windows(desktop)
        self.rest_pointer(desktop)

    def rest_pointer(self, desktop):
        """Moves the pointer to a place where nothing reacts to it."""
        desktop.run(["xdotool", "mousemove", "0", self.size.partition("x")[2]])

    def _frame_windows(self, desktop):
        theme = pathlib.Path(desktop.environment["XDG_DATA_HOME"]) / "themes" / FRAME / "openbox-3"
        theme.mkdir(parents=True)
        (theme / "themerc").write_text(
            string.Template((LOOK_FILES / "openbox-themerc").read_text()).substitute(
                FRAME_COLORS[self.is_dark], border_width=self.scale, padding=4 * self.scale))
        write_bitmap(theme / "close.xbm", cross(9 * self.scale, thickness=self.scale))
        options = desktop.folder / "openbox.xml"
        options.write_text(options.read_text().replace(
            "  <keyboard>", FRAME_OPTIONS.format(name=FRAME, size=9 * self.scale) + "  <keyboard>"))
        desktop.run(["openbox", "--reconfigure"])
        wait_for(lambda: FRAME in desktop.run(["xprop", "-root", "_OB_THEME"]), "the window frames")


def set_text_scale(desktop, scale):
    """Sets the text scale of all programs that start from now on."""
    desktop.run(["xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER",
                 f"Xft.dpi:\t{96 * scale}\n"])


def cross(side, thickness):
    """The picture of a close button, as rows of truth values."""
    return [[min(abs(x - y), abs(x + y - side + 1)) <= thickness // 2 for x in range(side)]
            for y in range(side)]


def write_bitmap(path, rows):
    """Writes black and white pixels as an XBM file, the format of window managers."""
    octets = [sum(bit << i for i, bit in enumerate(row[start:start + 8]))
              for row in rows for start in range(0, len(row), 8)]
    path.write_text(f"#define picture_width {len(rows[0])}\n#define picture_height {len(rows)}\n"
                    f"static unsigned char picture_bits[] = {{\n{','.join(map(hex, octets))}}};\n")
