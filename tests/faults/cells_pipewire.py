# SPDX-License-Identifier: MIT

"""Microphones and servers of PipeWire that change or end during a recording."""

from cell import Cell
from desktop import wait_for
from fault_test import FaultTest, add_cells
from faults import steps, waits_for
from peers import program

REBUILT = "audio configuration changed — rebuilding engine"
NO_FORMAT = "AudioCapture: input has no format"
LOST = "sound — server lost: "
# The stream and the server tell of the same loss.
CLOSED = "sound — microphone closed: "


class Pipewire(FaultTest):
    """The sound server is PipeWire with its PulseAudio interface. Its microphones give silence."""

    @classmethod
    def prepare(cls):
        cls.desktop.end(cls.desktop.sound_server)
        del cls.desktop.environment["PULSE_SERVER"]
        cls.servers = {}
        for name in ("pipewire", "wireplumber", "pipewire-pulse"):
            cls.start_server(name)
        cls.plug()

    @classmethod
    def start_server(cls, name):
        cls.servers[name] = cls.desktop.spawn([program(name)])
        if name == "pipewire":
            wait_for(lambda: (cls.desktop.folder / "runtime/pipewire-0").exists(), name)
        if name == "pipewire-pulse":
            wait_for(lambda: cls.desktop.succeeds(["pactl", "info"]), name)

    @classmethod
    def plug(cls, name="vmic", rate=48000):
        cls.desktop.run(["pactl", "load-module", "module-null-sink", "media.class=Audio/Source/Virtual",
                         f"sink_name={name}", f"rate={rate}"])
        wait_for(lambda: name in cls.desktop.run(["pactl", "list", "short", "sources"]), "the microphone")
        # WirePlumber has the say in this, and may still be starting.
        wait_for(lambda: cls.desktop.succeeds(["pactl", "set-default-source", name])
                 and cls.desktop.run(["pactl", "get-default-source"]).strip() == name,
                 "the default microphone")

    def unplug(self, name="vmic"):
        modules = self.desktop.run(["pactl", "list", "short", "modules"]).splitlines()
        number = next(line.split()[0] for line in modules if f"sink_name={name}" in line)
        self.desktop.run(["pactl", "unload-module", number])

    def kill(self, name):
        self.servers[name].kill()
        self.servers[name].wait()

    def sound_comes(self):
        before = len(self.stream.audio)
        wait_for(lambda: len(self.stream.audio) > before + 32000, "a third of a second of sound", 15)


def sound(world):
    world.sound_comes()


CELLS = [
    Cell("a recording", sound, parts=("PipeWire",)),
    Cell("the microphone unplugged and plugged in",
         steps(lambda w: w.unplug(), waits_for(NO_FORMAT), lambda w: w.plug(), sound),
         ("sound — now no microphone", REBUILT, NO_FORMAT, "sound — now microphone vmic", REBUILT),
         may_log=(CLOSED,), parts=("PipeWire",)),
    Cell("another microphone", steps(lambda w: w.plug("second", 44100), sound),
         ("sound — now microphone second", REBUILT), heal=lambda w: w.unplug("second"),
         may_log=("sound — now no microphone", NO_FORMAT, REBUILT), parts=("PipeWire",)),
    Cell("pipewire-pulse killed and started again",
         steps(lambda w: w.kill("pipewire-pulse"), waits_for(LOST, NO_FORMAT),
               lambda w: w.start_server("pipewire-pulse"), lambda w: w.plug(), sound),
         (LOST, REBUILT, NO_FORMAT, "sound — now microphone vmic", REBUILT), may_log=(CLOSED,),
         parts=("PipeWire",)),
    Cell("loudness that changes all the time", lambda w: [
        w.desktop.run(["pactl", "set-source-volume", "vmic", f"{n}%"]) for n in range(60, 101)],
        parts=("PipeWire",)),
    Cell("a muted microphone", lambda w: w.desktop.run(["pactl", "set-source-mute", "vmic", "1"]),
         heal=lambda w: w.desktop.run(["pactl", "set-source-mute", "vmic", "0"]), parts=("PipeWire",)),
]


add_cells(Pipewire, CELLS)
