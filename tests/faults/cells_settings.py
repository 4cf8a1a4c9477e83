# SPDX-License-Identifier: MIT

"""Settings that are missing, wrong, too open, or cannot be written."""

import stat
import subprocess

from cell import Cell
from desktop import wait_for
from fault_test import FaultTest, add_cells
from faults import steps, stops, waits_for

NO_HOST = "is not a host to stream to — not connecting"
NOT_SAVED = "settings cannot be saved, the earlier ones are kept"
SET_ASIDE = "it was set aside as"
HEADER = "Deepgram error: The header field Sec-WebSocket-Protocol"


class Settings(FaultTest):
    pass


def waits_a_second(world):
    """Lets the recording last long enough to be counted."""
    world.wait(1.2)


def is_counted(world):
    wait_for(lambda: "totalDictationSeconds=" in world.settings_path.read_text(), "the stored seconds")


def host(name, value, log=(NO_HOST,), **options):
    """A cell: the host of the settings is none, and the key goes nowhere."""
    def fault(world):
        world.wait_for_lines(*log)
        world.assertEqual(world.log.count("secret"), 0)
    return Cell(name, fault, log, settings={"deepgramHost": value}, opens=False, is_lasting=True, **options)


def key(name, value, log, **options):
    return Cell(name, log=log, settings={"deepgramApiKey": value}, opens=False, is_lasting=True, **options)


def good_key(name, value, expected, **options):
    """A cell: a strange key arrives unchanged."""
    def fault(world):
        world.assertEqual(world.stream.protocols, "token, " + expected)
    return Cell(name, fault, settings={"deepgramApiKey": value}, **options)


def in_the_way(world):
    folder = world.settings_path.parent
    world.aside = folder.with_name("aside")
    folder.rename(world.aside)
    folder.write_text("in the way")


def out_of_the_way(world):
    folder = world.settings_path.parent
    if folder.is_file():
        folder.unlink()
        world.aside.rename(folder)


def fills_disk(world):
    """Puts the settings on a small disk that is full."""
    folder = world.settings_path.parent
    content = world.settings_path.read_bytes()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=16k,mode=700", "tmpfs", str(folder)], check=True)
    world.settings_path.write_bytes(content)
    with open(folder / "filler", "wb", buffering=0) as filler:
        try:
            while True:
                filler.write(b"x" * 4096)
        except OSError:
            pass


def empties_disk(world):
    subprocess.run(["umount", "-l", str(world.settings_path.parent)], check=True)


def makes_read_only(world):
    folder = str(world.settings_path.parent)
    subprocess.run(["mount", "--bind", folder, folder], check=True)
    subprocess.run(["mount", "-o", "remount,ro,bind", folder], check=True)


def whole_settings(world):
    """The settings still have what they had."""
    world.assertIn("deepgramApiKey=a-key", world.settings_path.read_text())


def no_seconds(world):
    whole_settings(world)
    world.assertNotIn("totalDictationSeconds", world.settings_path.read_text())


def removes_file(world):
    world.settings_path.unlink()


def replaces_by_directory(world):
    world.settings_path.unlink()
    world.settings_path.mkdir()


def removes_directory(world):
    if world.settings_path.is_dir():
        world.settings_path.rmdir()


def opens_file(world):
    world.settings_path.chmod(0o666)
    world.settings_path.parent.chmod(0o755)


def is_private(world):
    wait_for(lambda: stat.S_IMODE(world.settings_path.stat().st_mode) == 0o600, "a private file")


def adds_by_hand(world):
    with open(world.settings_path, "a", encoding="utf-8") as file:
        file.write("somebodyElses=kept\n")


def is_kept(world):
    is_counted(world)
    world.assertIn("somebodyElses=kept", world.settings_path.read_text())


def replaces_by_link(world):
    real = world.settings_path.with_name("real.conf")
    world.settings_path.rename(real)
    world.settings_path.symlink_to(real)


def removes_link(world):
    world.settings_path.unlink(missing_ok=True)


def unsaved(name, fault, heal, log=(NOT_SAVED,), checks=whole_settings, **options):
    """A cell: the seconds of the recording cannot be stored, and the settings stay whole."""
    def whole(world):
        heal(world)
        checks(world)
    return Cell(name, steps(fault, waits_a_second, stops, waits_for(*log)), log,
                is_red=False, heal=whole, is_lasting=True,
                settings={"firstOfMany": name.replace(" ", "")}, **options)


def saved(name, fault, checks, heal=lambda _world: None, **options):
    """A cell: the seconds of the recording are stored all the same."""
    return Cell(name, steps(fault, waits_a_second, stops, checks), is_red=False, heal=heal, is_lasting=True,
                settings={"firstOfMany": name.replace(" ", "")}, **options)


CELLS = [
    host("a list of hosts", "localhost:1, localhost:2",
         ("TarvikDictate: the setting deepgramHost is no text that can be read", NO_HOST), is_fast=True),
    host("a host with credentials", '"user:secret@localhost:1"', is_fast=True),
    host("a host with a path", '"localhost:1/v1"'),
    host("a host with a scheme", '"wss://localhost"'),
    host("a host with a blank", '"local host"'),
    host("a host with a line break", r'"localhost\nX: 1"'),
    host("a port that is no number", '"localhost:http"'),
    host("a port beyond every port", '"localhost:65536"'),
    host("an IPv6 address that is not closed", '"[::1"'),
    host("a host of control characters", r'"\x1b\x7f"'),
    host("a host beyond every name", "a" * 300, ("Deepgram error: The host aaa",)),
    key("a key of 70,000 bytes", "k" * 70_000, (HEADER + " is too long",), is_fast=True),
    key("a key of several lines", r'"a-key\r\nX-Other: 1"', (HEADER + " has a line break",), is_fast=True),
    key("a key with an escape character", r'"a\x1bkey"', (HEADER + " has a line break",)),
    good_key("a key with a blank at its end", '"a-key  "', "a-key"),
    good_key("a key of 4,000 bytes", "k" * 4000, "k" * 4000),
    good_key("a key of punctuation", '"!#$%&*+-.^_`|~"', "!#$%&*+-.^_`|~"),
    Cell("settings of the wrong types", is_lasting=True,
         settings={"totalDictationSeconds": "many", "loginItemAutoConfigured": "@Variant(xyz)"}),
    unsaved("a file where the folder should be", in_the_way, out_of_the_way,
            ("cannot be used", NOT_SAVED), no_seconds, is_fast=True),
    unsaved("a full disk", fills_disk, empties_disk, is_fast=True, needs_root=True),
    unsaved("a folder that only can be read", makes_read_only, empties_disk, checks=no_seconds,
            needs_root=True),
    unsaved("a folder in place of the file", replaces_by_directory, removes_directory,
            checks=lambda _world: None),
    saved("a file that was deleted", removes_file, is_counted, is_fast=True),
    saved("a line that somebody else has added", adds_by_hand, is_kept),
    saved("a file that everybody can read", opens_file, steps(is_counted, is_private)),
    saved("a file behind a link", replaces_by_link, is_counted, removes_link),
]

add_cells(Settings, CELLS)
