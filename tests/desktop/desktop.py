"""A private desktop: X server, window manager, session bus, accessibility bus, sound server.

Everything runs in a folder of its own and ends with it; nothing of the user's session is seen or
touched.
"""

import contextlib
import ctypes
import os
import pathlib
import select
import shutil
import signal
import subprocess
import tempfile
import time

PR_SET_PDEATHSIG = 1
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


def wait_for(condition, what, deadline=START_DEADLINE):
    """The first true value of `condition`, asked again every few milliseconds."""
    end = time.monotonic() + deadline
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise TimeoutError(f"waited {deadline} s for {what}")
        time.sleep(0.01)


def die_with_parent():
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGTERM)


class Desktop:
    """Starts the parts that are asked for; a context manager."""

    def __init__(self, x11=True, wm=False, a11y=False, audio=False, size="1280x800"):
        self.wants = {"x11": x11, "wm": wm, "a11y": a11y, "audio": audio}
        self.size = size
        self.processes = []
        self.environment = {}
        self.folder = None

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tarvik-desktop-"))
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
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        for process in reversed(self.processes):
            self.end(process)
        self.processes = []
        if self.folder:
            self._end_activated_services()
            shutil.rmtree(self.folder, ignore_errors=True)
            self.folder = None

    def spawn(self, arguments, **options):
        """Starts a program on this desktop that ends with it."""
        options.setdefault("env", self.environment)
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("stdout", subprocess.DEVNULL)
        options.setdefault("stderr", open(self.folder / "services.log", "ab"))
        process = subprocess.Popen(
            arguments, start_new_session=True, preexec_fn=die_with_parent, **options
        )
        self.processes.append(process)
        return process

    def end(self, process, deadline=3.0):
        """Ends a program and whatever it started; its exit status."""
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGCONT)
            os.killpg(process.pid, signal.SIGTERM)
        try:
            process.wait(deadline)
        except subprocess.TimeoutExpired:
            pass
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        return process.wait()

    def run(self, arguments, **options):
        """Runs a program to its end; what it printed."""
        options.setdefault("timeout", 30)
        options.setdefault("check", True)
        return subprocess.run(
            arguments, env=self.environment, capture_output=True, text=True, **options
        ).stdout

    def _make_environment(self):
        keep = ("PATH", "TERM", "ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS")
        self.environment = {name: os.environ[name] for name in keep if name in os.environ}
        # The distribution's Python comes first: it is the one with the desktop's bindings.
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
        self.environment["TARVIK_DESKTOP_FOLDER"] = str(self.folder)
        # Settings of GTK and dconf stay in memory, and portals that nobody needs are not waited for.
        self.environment["GSETTINGS_BACKEND"] = "memory"
        self.environment["GTK_USE_PORTAL"] = "0"

    def _start_x_server(self):
        reader, writer = os.pipe()
        self.spawn(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{self.size}x24", "-dpi", "96",
             "-nolisten", "tcp", "-noreset"],
            pass_fds=(writer,),
        )
        os.close(writer)
        ready, _, _ = select.select([reader], [], [], START_DEADLINE)
        number = os.read(reader, 16).strip().decode() if ready else ""
        os.close(reader)
        if not number:
            raise RuntimeError("the X server did not start")
        self.environment["DISPLAY"] = ":" + number

    def _start_session_bus(self):
        socket = self.folder / "runtime" / "bus"
        config = self.folder / "session-bus.conf"
        config.write_text(BUS_CONFIG.format(socket=socket))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={socket}"
        self.spawn(["dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile"])
        wait_for(socket.exists, "the session bus")

    def _start_window_manager(self):
        config = self.folder / "openbox.xml"
        config.write_text(OPENBOX_CONFIG)
        self.spawn(["openbox", "--config-file", str(config)])
        wait_for(
            lambda: "window id" in self.run(
                ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], check=False
            ),
            "the window manager",
        )

    def _start_accessibility_bus(self):
        call = ["dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus"]
        wait_for(
            lambda: "unix:" in self.run(call + ["org.a11y.Bus.GetAddress"], check=False),
            "the accessibility bus",
        )
        self.run(call + ["org.freedesktop.DBus.Properties.Set", "string:org.a11y.Status",
                         "string:IsEnabled", "variant:boolean:true"])
        reply = self.run(call + ["org.a11y.Bus.GetAddress"])
        address = reply.split('"')[1]
        registry = ["dbus-send", f"--bus={address}", "--print-reply",
                    "--dest=org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root",
                    "org.freedesktop.DBus.Peer.Ping"]
        wait_for(
            lambda: subprocess.run(registry, env=self.environment, capture_output=True).returncode
            == 0,
            "the accessibility registry",
        )

    def start_sound_server(self):
        """Starts the sound server with one microphone, `vmic`, that plays what `microphone` is fed."""
        self.sound_server = self.spawn(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
             "-L", "module-native-protocol-unix", "-L", "module-always-sink"],
        )
        self.environment["PULSE_SERVER"] = "unix:" + str(self.folder / "runtime/pulse/native")
        wait_for(
            lambda: subprocess.run(["pactl", "info"], env=self.environment, capture_output=True)
            .returncode == 0,
            "the sound server",
        )
        self.plug_microphone()

    def plug_microphone(self, name="vmic", rate=16000, channels=1):
        """Plugs a microphone in and makes it the default one; the module's number."""
        fifo = self.folder / (name + ".fifo")
        module = self.run(
            ["pactl", "load-module", "module-pipe-source", f"source_name={name}", f"file={fifo}",
             "format=s16le", f"rate={rate}", f"channels={channels}"]
        ).strip()
        self.run(["pactl", "set-default-source", name])
        return module

    @property
    def microphone(self):
        return self.folder / "vmic.fifo"

    def _end_activated_services(self):
        # Programs that the buses started for themselves are recognised by this desktop's folder.
        mark = ("TARVIK_DESKTOP_FOLDER=" + str(self.folder)).encode()
        for entry in pathlib.Path("/proc").iterdir():
            if entry.name.isdigit() and int(entry.name) != os.getpid():
                with contextlib.suppress(OSError):
                    if mark in (entry / "environ").read_bytes().split(b"\0"):
                        os.kill(int(entry.name), signal.SIGKILL)
