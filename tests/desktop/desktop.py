"""A private desktop: X server, window manager, session bus, accessibility bus, sound server.

Everything runs in a folder of its own and ends with it; nothing of the user's session is seen or
touched.
"""

import contextlib
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

import guardian

START_DEADLINE = 15.0

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
  <standard_session_servicedirs/>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def wait_for(condition, what, deadline=START_DEADLINE, needs=None):
    """The first true value of `condition`, asked again every few milliseconds; an error after
    `deadline` seconds, or as soon as the process `needs` has ended."""
    end = time.monotonic() + deadline
    while True:
        value = condition()
        if value:
            return value
        if needs is not None and needs.poll() is not None:
            raise RuntimeError(f"{needs.args[0]} ended with {needs.returncode}; waited for {what}")
        if time.monotonic() > end:
            raise TimeoutError(f"waited {deadline} s for {what}")
        time.sleep(0.01)


class Desktop:
    """Starts the parts that are asked for; a context manager."""

    def __init__(self, x11=True, wm=False, a11y=False, audio=False, size="1280x800"):
        self.wants = {"x11": x11 or wm, "wm": wm, "a11y": a11y, "audio": audio}
        self.size = size
        self.environment = {}
        self.folder = None
        self.sound_server = None
        self._processes = []

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tarvik-desktop-"))
        self._start_guardian()
        try:
            self._make_environment()
            if self.wants["x11"]:
                self._start_x_server()
            self._start_session_bus()
            if self.wants["wm"]:
                self._start_window_manager()
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
        """Ends every process of this desktop and removes its folder."""
        self._guardian.stdin.close()
        self._guardian.wait()
        self._guardian.stdout.close()
        for process in self._processes:
            process.wait()

    def services_log(self):
        """What the parts of the desktop have complained about."""
        log = self.folder / "services.log"
        return log.read_text(errors="replace") if log.exists() else ""

    def spawn(self, arguments, **options):
        """Starts a program on this desktop, which ends with the desktop at the latest."""
        options.setdefault("env", self.environment)
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("stdout", subprocess.DEVNULL)
        with open(self.folder / "services.log", "ab") as log:
            options.setdefault("stderr", log)
            process = subprocess.Popen(arguments, start_new_session=True, **options)
        self._processes.append(process)
        return process

    def end(self, process, deadline=3.0):
        """Ends a program and whatever it started; its exit status."""
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGTERM)
            os.killpg(process.pid, signal.SIGCONT)
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(deadline)
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        if process.stdin:
            process.stdin.close()
        return process.wait()

    def run(self, arguments, **options):
        """Runs a program to its end; what it printed."""
        options.setdefault("timeout", 30)
        options.setdefault("check", True)
        return subprocess.run(
            arguments, env=self.environment, capture_output=True, text=True, **options
        ).stdout

    def succeeds(self, arguments):
        """Whether a program runs to its end without an error."""
        return subprocess.run(
            arguments, env=self.environment, capture_output=True, timeout=30
        ).returncode == 0

    def _start_guardian(self):
        self._guardian = subprocess.Popen(
            [sys.executable, guardian.__file__, str(self.folder)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=True,
        )
        self._guardian.stdout.readline()

    def _make_environment(self):
        sanitizers = ("ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS")
        self.environment = {name: os.environ[name] for name in sanitizers if name in os.environ}
        # Only the distribution's own programs: its Python is the one with the desktop's bindings.
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
        self.environment[guardian.MARK] = str(self.folder)
        # Settings of GTK and dconf stay in memory, and portals that nobody needs are not waited for.
        self.environment["GSETTINGS_BACKEND"] = "memory"
        self.environment["GTK_USE_PORTAL"] = "0"

    def _start_x_server(self):
        reader, writer = os.pipe()
        self.x_server = self.spawn(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{self.size}x24", "-dpi", "96",
             "-nolisten", "tcp", "-noreset", "-s", "0"],
            pass_fds=(writer,),
        )
        os.close(writer)
        # The number comes in one write and its line break, the sign that it is whole, in another.
        # A server that fails closes the pipe.
        with open(reader, encoding="ascii") as pipe:
            line = pipe.readline()
        if not line.endswith("\n"):
            raise RuntimeError("the X server did not start")
        self.environment["DISPLAY"] = ":" + line.strip()

    def _start_session_bus(self):
        socket = self.folder / "runtime" / "bus"
        config = self.folder / "session-bus.conf"
        config.write_text(BUS_CONFIG.format(socket=socket))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={socket}"
        self.session_bus = self.spawn(
            ["dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile"])
        wait_for(socket.exists, "the session bus", needs=self.session_bus)

    def _start_window_manager(self):
        config = self.folder / "openbox.xml"
        config.write_text(OPENBOX_CONFIG)
        manager = self.spawn(["openbox", "--config-file", str(config)])
        wait_for(
            lambda: "window id" in self.run(
                ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], check=False
            ),
            "the window manager", needs=manager,
        )

    def _start_accessibility_bus(self):
        call = ["dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus"]
        reply = self.run(call + ["org.a11y.Bus.GetAddress"])
        self.run(call + ["org.freedesktop.DBus.Properties.Set", "string:org.a11y.Status",
                         "string:IsEnabled", "variant:boolean:true"])
        # Asking the registry anything starts it, and its answer is the sign that it is up.
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
                 needs=self.sound_server)
        if plugs_microphone:
            self.plug_microphone()

    def plug_microphone(self, name="vmic", rate=16000, channels=1):
        """Plugs a microphone in that plays what is written to `fifo(name)`, and makes it the
        default one; the number of its module."""
        # A sound server that was killed leaves its pipe behind, and the next one refuses it.
        self.fifo(name).unlink(missing_ok=True)
        module = self.run(
            ["pactl", "load-module", "module-pipe-source", f"source_name={name}",
             f"file={self.fifo(name)}", "format=s16le", f"rate={rate}", f"channels={channels}"]
        ).strip()
        self.run(["pactl", "set-default-source", name])
        return module

    def is_recorded(self):
        """Whether somebody listens to a microphone, and not only holds it ready."""
        return "Corked: no" in self.run(["pactl", "list", "source-outputs"])

    def fifo(self, name="vmic"):
        """Where the samples of a microphone are written to."""
        return self.folder / (name + ".fifo")
