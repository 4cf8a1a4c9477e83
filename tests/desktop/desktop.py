# SPDX-License-Identifier: MIT

"""A private desktop: X server, window manager, session bus, accessibility bus, sound server.

Everything runs in its own folder and ends with it. Nothing of the user's session is visible to it or
changed by it. Fonts, themes, session services and the system's settings are its own as well, so that
a machine with every desktop installed gives the same desktop as a machine with none.
"""

import contextlib
import functools
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

import reaper
from managed_windows import ManagedWindows

START_TIMEOUT = 15.0
# In seconds, how long wait_for() rests between two questions.
MIN_REST, MAX_REST = 0.01, 0.1

OPENBOX_CONFIG = """<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy></placement>
  <keyboard>
    <keybind key="A-space"><action name="ShowMenu"><menu>client-menu</menu></action></keybind>
    <keybind key="A-Tab"><action name="NextWindow"/></keybind>
    <keybind key="A-F4"><action name="Close"/></keybind>
  </keyboard>
</openbox_config>
"""

BUS_CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

# The programs that the session bus may start.
SERVICES = ("org.a11y.Bus", "org.xfce.Xfconf")

# GTK reads these after the files of the system.
GTK_SETTINGS = """[Settings]
gtk-theme-name=Adwaita
gtk-icon-theme-name=Adwaita
gtk-font-name=Sans 10
gtk-application-prefer-dark-theme=0
gtk-entry-select-on-focus=1
"""
GTK_3_SETTINGS = GTK_SETTINGS + "gtk-key-theme-name=Default\n"

FONTS = pathlib.Path(__file__).parent / "fonts"
PULSE_CLIENT_CONFIG = pathlib.Path(__file__).parents[1] / "support" / "pulse-client.conf"


def wait_for(condition, what, timeout=START_TIMEOUT, process=None):
    """Calls `condition` every few milliseconds until it returns a true value; returns this value.
    Raises an error after `timeout` seconds, or as soon as `process` has ended."""
    deadline = time.monotonic() + timeout
    while True:
        begin = time.monotonic()
        value = condition()
        if value:
            return value
        if process is not None and process.poll() is not None:
            raise RuntimeError(
                f"{process.args[0]} ended with {process.returncode}; waited for {what}")
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {timeout} s for {what}")
        # A condition that runs programs would take a whole processor away from what it waits for.
        time.sleep(min(max(MIN_REST, 2 * (time.monotonic() - begin)), MAX_REST))


def accepts_connections(path):
    """Whether a server listens at the socket `path`. The file is there a little earlier."""
    with socket.socket(socket.AF_UNIX) as client:
        return client.connect_ex(str(path)) == 0


class Desktop:
    """A context manager that starts the requested parts of a desktop and ends them."""

    def __init__(self, x11=True, wm=False, a11y=False, audio=False, size="1280x800"):
        self.wants = {"x11": x11 or wm, "wm": wm, "a11y": a11y, "audio": audio}
        self.size = size
        self.environment = {}
        self.folder = None
        self.sound_server = None
        self._processes = []

    def __enter__(self):
        # A longer path than this one does not fit into the address of a socket.
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tarvik-desktop-", dir="/tmp"))
        self._start_reaper()
        try:
            self._make_environment()
            if self.wants["x11"]:
                self._start_x_server()
            self._start_session_bus()
            if self.wants["wm"]:
                self.start_window_manager()
            if self.wants["a11y"]:
                self._start_accessibility_bus()
            if self.wants["audio"]:
                self.start_sound_server()
        except BaseException:
            sys.stderr.write(self.services_log())
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Ends all processes of this desktop and removes its folder."""
        if "windows" in vars(self):
            self.windows.close()
        self._reaper.stdin.close()
        self._reaper.wait()
        self._reaper.stdout.close()
        for process in self._processes:
            process.wait()

    @functools.cached_property
    def windows(self):
        """The windows on the X server."""
        return ManagedWindows(self.environment["DISPLAY"])

    def services_log(self):
        """The error output of the desktop's parts."""
        log = self.folder / "services.log"
        return log.read_text(errors="replace") if log.exists() else ""

    def spawn(self, arguments, **options):
        """Starts a program on this desktop; it ends with the desktop at the latest."""
        options.setdefault("env", self.environment)
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("stdout", subprocess.DEVNULL)
        with open(self.folder / "services.log", "ab") as log:
            options.setdefault("stderr", log)
            process = subprocess.Popen(arguments, start_new_session=True, **options)
        self._processes.append(process)
        return process

    def end(self, process, timeout=3.0):
        """Terminates a program and its children; returns the program's exit status. Whatever is left
        after `timeout` seconds is killed."""
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGTERM)
            os.killpg(process.pid, signal.SIGCONT)
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(timeout)
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        if process.stdin:
            process.stdin.close()
        return process.wait()

    def run(self, arguments, **options):
        """Runs a program to its end; returns its output."""
        options.setdefault("timeout", 30)
        check = options.pop("check", True)
        result = subprocess.run(
            arguments, env=self.environment, capture_output=True, text=True, **options
        )
        if check and result.returncode != 0:
            raise RuntimeError(f"{result.args} ended with {result.returncode}: {result.stderr}")
        return result.stdout

    def succeeds(self, arguments):
        """Whether a program runs to its end without an error."""
        return subprocess.run(
            arguments, env=self.environment, capture_output=True, timeout=30
        ).returncode == 0

    def _start_reaper(self):
        self._reaper = subprocess.Popen(
            [sys.executable, reaper.__file__, str(self.folder)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=True,
        )
        self._reaper.stdout.readline()

    def _make_environment(self):
        kept = ("ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS",
                "TARVIK_FUZZ_SECONDS", "TARVIK_FUZZ_SEED")
        self.environment = {name: os.environ[name] for name in kept if name in os.environ}
        # Only the distribution's programs: its Python has the bindings of the desktop libraries.
        self.environment["PATH"] = "/usr/local/sbin:/usr/sbin:/sbin:/usr/bin:/bin"
        self.environment["LANG"] = "C.UTF-8"
        for name, folder in (
            ("HOME", "home"),
            ("XDG_RUNTIME_DIR", "runtime"),
            ("XDG_CONFIG_HOME", "config"),
            ("XDG_STATE_HOME", "state"),
            ("XDG_DATA_HOME", "data"),
            ("XDG_CACHE_HOME", "cache"),
            ("TMPDIR", "tmp"),
        ):
            path = self.folder / folder
            path.mkdir(mode=0o700)
            self.environment[name] = str(path)
        self.environment[reaper.MARK] = str(self.folder)
        self._replace_host_settings()

    def _replace_host_settings(self):
        """Gives the programs settings of their own in the place of the machine's and the user's."""
        system = self.folder / "system"
        system.mkdir()
        for version, settings in (("gtk-3.0", GTK_3_SETTINGS), ("gtk-4.0", GTK_SETTINGS)):
            file = self.folder / "config" / version / "settings.ini"
            file.parent.mkdir()
            file.write_text(settings)
        fonts = os.environ.get("TARVIK_TEST_FONTS", "normal")
        self.environment |= {
            "TZ": "UTC",
            "FONTCONFIG_FILE": str(FONTS / f"{fonts}.conf"),
            "XDG_CONFIG_DIRS": str(system),
            "XDG_DATA_DIRS": "/usr/share",
            # Nobody listens there, unless a test starts a bus.
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/runtime/system-bus",
            "PULSE_CONFIG": "/dev/null",
            "PULSE_CLIENTCONFIG": str(PULSE_CLIENT_CONFIG),
            # No input method, whichever are installed.
            "GTK_IM_MODULE": "gtk-im-context-simple",
            "QT_IM_MODULE": "compose",
            "XMODIFIERS": "@im=none",
            # GTK and dconf keep their settings in memory, and GTK waits for no portal.
            "GSETTINGS_BACKEND": "memory",
            "GTK_USE_PORTAL": "0",
            "GIO_USE_VFS": "local",
        }

    def _start_x_server(self):
        self.x_server, self.environment["DISPLAY"] = self.start_x_server()

    def start_x_server(self):
        """Starts an X server that nobody uses yet; returns it and the name of its display."""
        reader, writer = os.pipe()
        server = self.spawn(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{self.size}x24", "-dpi", "96",
             "-nolisten", "tcp", "-noreset", "-s", "0"],
            pass_fds=(writer,),
        )
        os.close(writer)
        # The server writes the number and the line break separately. Only the line break shows that the
        # number is complete. A server that fails closes the pipe.
        with open(reader, encoding="ascii") as pipe:
            line = pipe.readline()
        if not line.endswith("\n"):
            raise RuntimeError("the X server did not start")
        return server, ":" + line.strip()

    def _start_session_bus(self):
        path = self.folder / "runtime" / "bus"
        config = self.folder / "session-bus.conf"
        services = self.folder / "services"
        services.mkdir()
        for name in SERVICES:
            with contextlib.suppress(FileNotFoundError):
                shutil.copy(f"/usr/share/dbus-1/services/{name}.service", services)
        config.write_text(BUS_CONFIG.format(socket=path, services=services))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={path}"
        self.session_bus = self.spawn(
            ["dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile"])
        wait_for(lambda: accepts_connections(path), "the session bus", process=self.session_bus)

    def start_window_manager(self):
        """Starts the window manager, also again after its end."""
        config = self.folder / "openbox.xml"
        config.write_text(OPENBOX_CONFIG)
        manager = self.spawn(["openbox", "--config-file", str(config)])
        wait_for(
            lambda: "window id" in self.run(
                ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], check=False
            ),
            "the window manager", process=manager,
        )

    def _start_accessibility_bus(self):
        call = ["dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus"]
        reply = self.run(call + ["org.a11y.Bus.GetAddress"])
        self.run(call + ["org.freedesktop.DBus.Properties.Set", "string:org.a11y.Status",
                         "string:IsEnabled", "variant:boolean:true"])
        # Any call starts the registry. The reply shows that the registry is ready.
        self.run(["dbus-send", "--bus=" + reply.split('"')[1], "--print-reply",
                  "--dest=org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root",
                  "org.freedesktop.DBus.Peer.Ping"])

    def start_sound_server(self, plugs_microphone=True):
        """Starts the sound server, with loudspeakers and one microphone, `vmic`."""
        self.environment["PULSE_SERVER"] = "unix:" + str(self.folder / "runtime/pulse/native")
        self.sound_server = self.spawn(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
             "-L", "module-native-protocol-unix", "-L", "module-always-sink"],
        )
        wait_for(lambda: self.succeeds(["pactl", "info"]), "the sound server",
                 process=self.sound_server)
        if plugs_microphone:
            self.plug_microphone()

    def plug_microphone(self, name="vmic", rate=16000, channels=1):
        """Plugs a microphone in and makes it the default; returns the number of its module. The
        microphone plays the samples that are written to `fifo(name)`."""
        # A killed sound server leaves its pipe behind, and the next one would refuse the pipe.
        self.fifo(name).unlink(missing_ok=True)
        module = self.run(
            ["pactl", "load-module", "module-pipe-source", f"source_name={name}",
             f"file={self.fifo(name)}", "format=s16le", f"rate={rate}", f"channels={channels}"]
        ).strip()
        self.run(["pactl", "set-default-source", name])
        return module

    def is_microphone_open(self):
        """Whether a program records from a microphone. A corked stream does not count."""
        return "Corked: no" in self.run(["pactl", "list", "source-outputs"])

    def fifo(self, name="vmic"):
        """The pipe that takes the samples of a microphone."""
        return self.folder / (name + ".fifo")
