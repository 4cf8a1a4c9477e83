#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes pictures of the real application in a GNOME session: the setup window, and a dictation.

usage: gnome_pictures.py [BINARIES [FOLDER]]

BINARIES is build/default/bin and FOLDER build/pictures where they are not given. The pictures belong to
the user that runs the session, who is nobody where root calls this: FOLDER has to let nobody write.
"""

from accessible import ScreenReader
from application import VERSION, Application, write_settings
from desktop import wait_for
from gnome import GnomeDesktop, missing
from gnome_parts import GnomeKeyboard, GnomeWidgetTarget
from microphone import Microphone
from picture_arguments import picture_arguments
from scripted_service import ScriptedService, make_certificate
from session_test import EXACT, close_setup_window
from setup_window import RESTART
from sway import become_ordinary_user

SCREENSHOT = "org.gnome.Shell.Screenshot"


def take(desktop, path):
    """Takes a picture of the screen as soon as the screen does not change any more."""
    before = None
    while before != (before := path.read_bytes() if path.exists() else b""):
        (has_succeeded, _) = desktop.bus.call(
            SCREENSHOT, "/org/gnome/Shell/Screenshot", SCREENSHOT, "Screenshot", "(bbs)", False,
            False, str(path))
        if not has_succeeded:
            raise RuntimeError("GNOME Shell takes no picture")
    print(path)


def main():
    binaries, folder = picture_arguments()
    with GnomeDesktop(a11y=True, audio=True, shows_screen=True) as desktop:
        keyboard = GnomeKeyboard(desktop)
        microphone = Microphone(desktop.fifo())
        key, authority = make_certificate(desktop.folder / "certificates")
        service = ScriptedService(key, authority)
        write_settings(desktop.environment, {
            "deepgramApiKey": "a-key", "deepgramHost": service.host,
            "lastWelcomeShownForVersion": VERSION})
        application = Application(desktop, binaries, {"SSL_CERT_FILE": str(authority)},
                                  ["tap-to-toggle registered"])
        reader = ScreenReader(desktop)
        window = reader.window_with(RESTART)
        wait_for(lambda: window.has("active"), "the setup window in front")
        take(desktop, folder / "gnome-setup.png")
        reader.close()
        close_setup_window(desktop, keyboard)
        target = GnomeWidgetTarget(desktop, "gtk4", title="Letter")
        keyboard.hold()
        service.stream(1).say(EXACT)
        target.wait_for_text(EXACT)
        take(desktop, folder / "gnome-dictation.png")
        keyboard.end_hold()
        target.close()
        application.close()
        microphone.pull_out()
        service.close()


if __name__ == "__main__":
    if missing():
        raise SystemExit(f"No GNOME session: {missing()}.")
    become_ordinary_user()
    main()
