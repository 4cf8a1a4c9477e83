#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The installed packages in use: start, memory, local service, a sentence, upgrade, way back.

usage: installed.py PACKAGE...

The packages are installed in place of the present ones while the application runs. This changes the
system; packaging/linux/test-deb calls it on one that is dropped afterwards.
"""

import platform
import subprocess
import sys
import time

from desktop import Desktop, wait_for
from installed_session import NAME, InstalledSession
from resource_usage import memory, private_memory, wait_until_idle, wakeups_of_threads
from windows import window_with_title

IDLE_SECONDS = 60
# Nothing in the application is periodic; a message of the desktop may come.
MAX_WAKEUPS = 5
# Qt 6.11, which the release after Debian 13 has, reads 3 MiB more than Qt 6.8 does. In KiB.
OLDER_QT = platform.freedesktop_os_release()["VERSION_CODENAME"] in ("bookworm", "trixie")
MORE_OF_QT = 0 if OLDER_QT else 3 * 1024
# In KiB: limits of an idle process. On a bare system nobody else uses Qt, so its pages are private, too.
# They are shared on a desktop with another program of Qt 6.
MAX_ALONE = {"Rss": 42 * 1024, "Private": 30 * 1024 + MORE_OF_QT, "Written": 5632}
MAX_BESIDE = {"Rss": 42 * 1024, "Private": 13 * 1024, "Written": 5632}
# The first dictation uses TLS, and reads what serves sound.
MAX_AFTER_DICTATION = {"Rss": 47 * 1024 + MORE_OF_QT, "Private": 14 * 1024, "Written": 7 * 1024}
# How many of the files with the most private memory are named.
LARGEST = 12
# A program of Qt 6 with a window, and the window's title.
NEIGHBOUR, NEIGHBOUR_TITLE = "qt6ct", "Qt6 Configuration Tool"
OWN_SETTINGS = "[General]\ndeepgramApiKey=my own key\ndeepgramHost=speech.example:444\n"


def check_wakeups(session):
    """Counts the wake-ups in a minute in which nothing happens, after the setup window was open."""
    wait_until_idle(session.process)
    before, end = wakeups_of_threads(session.process), time.monotonic() + IDLE_SECONDS
    wait_for(lambda: time.monotonic() > end, "the end of the minute", IDLE_SECONDS + 5)
    # A thread that has ended meanwhile does not count.
    count = sum(now - before.get(thread, 0)
                for thread, now in wakeups_of_threads(session.process).items())
    print(f"Idle: {count} wake-ups in a minute", flush=True)
    assert count <= MAX_WAKEUPS, count


def check_memory(session, when, limits):
    """Measures the idle process. `when` says after what."""
    wait_until_idle(session.process)
    used = memory(session.process)
    print(f"Idle {when}: {used['Rss']} KiB resident, {used['Private']} KiB of them private, "
          f"{used['Written']} KiB of these written", flush=True)
    by_size = sorted(private_memory(session.process).items(), key=lambda file: -file[1]["Private"])
    for name, sizes in by_size[:LARGEST]:
        print(f"  {sizes['Private']:6} KiB private, {sizes['Written']:5} KiB written: {name}", flush=True)
    for kind, limit in limits.items():
        assert used[kind] <= limit, (when, kind, used[kind], limit)


def check_idle(desktop, session):
    """The idle process as after the installation, as on every day, and beside another program of Qt 6.
    The setup window comes up at every start, and is closed. Leaves the application running."""
    session.start()
    print("The session bus has started the application.", flush=True)
    check_wakeups(session)
    check_memory(session, "after the first start", MAX_ALONE)
    session.end()
    settings = session.settings.read_text()
    session.settings.write_text(settings.replace("[General]\n", OWN_SETTINGS, 1))
    session.start()
    check_memory(session, "with a key", MAX_ALONE)
    session.end()
    desktop.spawn([NEIGHBOUR])
    wait_for(lambda: window_with_title(desktop, NEIGHBOUR_TITLE), "the other program of Qt 6")
    session.start()
    check_memory(session, "beside another program of Qt 6", MAX_BESIDE)


def main(packages):
    with Desktop(wm=True, a11y=True, audio=True) as desktop:
        session = InstalledSession(desktop)
        check_idle(desktop, session)
        session.switch("on")
        assert "deepgramApiKey=local" in session.own_settings(), session.own_settings()
        session.dictate()
        check_memory(session, "after a dictation", MAX_AFTER_DICTATION)

        process = session.process
        subprocess.run(["apt-get", "install", "-y", "-qq", *packages], check=True,
                       stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL)
        assert session.process == process, "the upgrade ended the application"
        session.end()
        session.start()
        print("The application runs on after the upgrade, and starts again.", flush=True)

        session.switch("off")
        assert session.own_settings() == OWN_SETTINGS.splitlines()[1:], session.own_settings()
        session.end()
        home = sorted(str(path.relative_to(desktop.folder)) for path in desktop.folder.rglob("*")
                      if "tarvik" in path.name.lower() and path.parent.name != "services")
        print("What is left of the user's:", *home, sep="\n  ", flush=True)
        assert home == ["config/Tarvik", "config/Tarvik/Tarvik Dictate.conf",
                        f"config/autostart/{NAME}.desktop", "state/tarvik-speech-service"], home
        # After the packages are removed, the entry names a program that is not there.
        entry = desktop.folder / f"config/autostart/{NAME}.desktop"
        assert "\nTryExec=/usr/bin/tarvik-dictate\n" in entry.read_text()


if __name__ == "__main__":
    main(sys.argv[1:])
