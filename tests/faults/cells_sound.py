# SPDX-License-Identifier: MIT

"""Microphones and a PulseAudio server that change, hang or end during a recording."""

import os
import signal

from cell import Cell
from desktop import wait_for
from fault_test import FaultTest, add_cells
from faults import steps, waits, waits_for
from microphone import Microphone, peak
from test_microphone import VOICE_LEVEL, VOICE_LOUDNESS, tone

REBUILT = "audio configuration changed — rebuilding engine"
NO_FORMAT = "AudioCapture: input has no format"
NOTHING_COMES = "has delivered nothing for 3 s"
LOST = "sound — server lost: "
CLOSED = "sound — microphone closed: "
NONE = "sound — now no microphone"
BACK = "sound — now microphone vmic"


class Sound(FaultTest):
    # The microphone that the user speaks into; the usual one if none.
    other = None

    def speak_until_heard(self):
        """Speaks until the service hears it: earlier sound is lost with the old microphone."""
        microphone = self.other or self.microphone
        before = len(self.stream.audio)
        voice = tone(microphone.rate, 0.2, VOICE_LOUDNESS)

        def heard():
            if microphone.is_silent:
                microphone.play(voice)
            return peak(self.stream.audio[before:]) > VOICE_LEVEL
        wait_for(heard, "the voice", timeout=15)

    def unplug(self, name="vmic"):
        modules = self.desktop.run(["pactl", "list", "short", "modules"]).splitlines()
        number = next(line.split()[0] for line in modules if f"source_name={name} " in line)
        self.desktop.run(["pactl", "unload-module", number])

    def plug(self, name, rate, channels):
        self.desktop.plug_microphone(name, rate=rate, channels=channels)
        type(self).other = Microphone(self.desktop.fifo(name), rate=rate, channels=channels)

    def drop_other(self):
        if self.other is not None:
            self.desktop.run(["pactl", "set-default-source", "vmic"])
            self.unplug("better")
            self.other.pull_out()
            type(self).other = None
            self.wait_for_lines(BACK)

    def pactl(self, *arguments):
        self.desktop.run(["pactl", *arguments])


def heard(world):
    world.speak_until_heard()


def unplugs(world):
    world.unplug()
    world.microphone.pull_out()
    world.wait_for_lines(NONE)


def plugs_in(world):
    world.desktop.plug_microphone()
    world.microphone.plug_in()
    world.wait_for_lines(BACK)


def suspends(is_suspended):
    return lambda world: world.pactl("suspend-source", "vmic", "1" if is_suspended else "0")


def suspends_and_sees(world):
    suspends(True)(world)
    world.wait_for_lines("sound — microphone suspended")


def kills_server(world):
    world.desktop.sound_server.kill()
    world.desktop.sound_server.wait()
    world.microphone.pull_out()
    world.wait_for_lines(LOST)


def starts_server(world):
    world.desktop.start_sound_server(plugs_microphone=False)
    plugs_in(world)


def stops_server(world):
    os.kill(world.desktop.sound_server.pid, signal.SIGSTOP)


def continues_server(world):
    os.kill(world.desktop.sound_server.pid, signal.SIGCONT)


def another(rate, channels):
    def fault(world):
        world.plug("better", rate, channels)
        world.wait_for_lines(f"sound — now microphone better, {rate} Hz")
    return fault


def heals(world):
    world.drop_other()


def mutes(world):
    world.pactl("set-source-mute", "vmic", "1")


def unmutes(world):
    world.pactl("set-source-mute", "vmic", "0")


def changed(name, rate, channels):
    """A cell: another microphone becomes the default, and is heard."""
    return Cell(name, steps(another(rate, channels), heard), ("sound — now microphone better", REBUILT),
                heal=heals, parts=("PulseAudio",))


def without_a_microphone(world):
    """The recording begins, and no sound comes."""
    world.wait_for_lines(NO_FORMAT)
    world.assertEqual(world.stream.audio, b"")


CELLS = [
    Cell("the microphone unplugged and plugged in", steps(unplugs, plugs_in, heard),
         (NONE, REBUILT, BACK), may_log=(CLOSED, NO_FORMAT, REBUILT), is_fast=True,
         parts=("PulseAudio",)),
    Cell("the microphone unplugged until the end", steps(unplugs, waits_for(NO_FORMAT)),
         (NONE, REBUILT, NO_FORMAT), may_log=(CLOSED,), heal=plugs_in, parts=("PulseAudio",)),
    Cell("the microphone suspended and resumed", steps(suspends_and_sees, suspends(False), heard),
         ("sound — microphone suspended", REBUILT, "sound — microphone resumed"), may_log=(REBUILT,),
         heal=suspends(False), is_fast=True, parts=("PulseAudio",)),
    Cell("a suspended microphone that gives nothing",
         steps(suspends_and_sees, waits_for(NOTHING_COMES)),
         ("sound — microphone suspended", REBUILT, NOTHING_COMES), heal=suspends(False),
         parts=("PulseAudio",)),
    Cell("the sound server hangs for four seconds",
         steps(stops_server, waits_for(NOTHING_COMES), continues_server, heard), (NOTHING_COMES,),
         heal=continues_server, parts=("PulseAudio",)),
    Cell("the sound server hangs for a second", steps(stops_server, waits(1), continues_server, heard),
         heal=continues_server, parts=("PulseAudio",)),
    Cell("the sound server killed and started again", steps(kills_server, starts_server, heard),
         (LOST, REBUILT, BACK), may_log=(CLOSED, NO_FORMAT, REBUILT), parts=("PulseAudio",)),
    Cell("the sound server killed until the end", steps(kills_server, waits_for(NO_FORMAT)),
         (LOST, REBUILT, NO_FORMAT), may_log=(CLOSED,), heal=starts_server, parts=("PulseAudio",)),
    changed("a better microphone", 48000, 2),
    changed("a telephone's microphone", 8000, 1),
    changed("a microphone of 96 kHz", 96000, 2),
    changed("a microphone of four channels", 44100, 4),
    Cell("a muted microphone", mutes, heal=unmutes, parts=("PulseAudio",)),
    Cell("loudness at its lowest", lambda w: w.pactl("set-source-volume", "vmic", "0"),
         heal=lambda w: w.pactl("set-source-volume", "vmic", "100%"), parts=("PulseAudio",)),
    Cell("loudness that changes all the time", lambda w: [
        w.pactl("set-source-volume", "vmic", f"{n}%") for n in range(50, 101)], parts=("PulseAudio",)),
    Cell("another program records as well",
         lambda w: w.desktop.spawn(["parec", "--device=vmic", "--raw"]), parts=("PulseAudio",)),
]


add_cells(Sound, CELLS)
