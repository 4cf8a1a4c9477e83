# SPDX-License-Identifier: MIT

"""Measurements of the real application on a private desktop."""

import contextlib
import dataclasses
import os
import socket
import subprocess
import threading
import time

from application import VERSION, Application, write_settings
from desktop import Desktop, wait_for
from microphone import Microphone
from resource_usage import memory, processor_time, wait_until_idle, wakeups
from samples import sample_until_settled
from scripted_service import ScriptedService, make_certificate
from target import WidgetTarget
from windows import wait_for_window
from xtest import XTest

TEXTS = {
    "English": "The quick brown fox jumps over the lazy dog, twice a day, ok",
    "many scripts": "Zażółć gęślą jaźń — Привет, мир! 日本語のテスト 😀🎉 done, I hope.",
}
STOPPED = "TarvikDictate: audio.stop"


def milliseconds(since):
    return (time.monotonic() - since) * 1000


@contextlib.contextmanager
def running_application(binaries, host=None, authority=None, **parts):
    """Runs the application on its own desktop and closes its setup window. Yields desktop,
    application and service. The service is a scripted one, or None when `host` is given."""
    with Desktop(wm=True, **parts) as desktop, contextlib.ExitStack() as stack:
        service = None
        if host is None:
            key, authority = make_certificate(desktop.folder / "certificates")
            service = ScriptedService(key, authority)
            stack.callback(service.close)
            host = service.host
        application = start_application(desktop, binaries, host, authority)
        stack.callback(application.close)
        yield desktop, application, service


def start_application(desktop, binaries, host, authority, command=()):
    """Starts the application with a service at `host` and closes its setup window. `command` is the
    beginning of the command that runs the application."""
    write_settings(desktop.environment, {"deepgramApiKey": "a-key", "deepgramHost": host,
                                         "lastWelcomeShownForVersion": VERSION})
    application = Application(desktop, binaries, {"SSL_CERT_FILE": str(authority or "")},
                              command=command)
    wait_for_window(desktop).close()
    return application


def hotkey_to_connect(binaries):
    """Milliseconds from the key press to the arrival of the connection at the service's port."""
    with socket.create_server(("127.0.0.1", 0), backlog=64) as listener:
        host = f"127.0.0.1:{listener.getsockname()[1]}"
        with running_application(binaries, host, a11y=True, audio=True) as (desktop, application, _):
            target = WidgetTarget(desktop, "gtk3")
            keys = XTest(desktop.environment["DISPLAY"])

            def press():
                seen = len(application.log)
                keys.press("Alt_L")
                pressed = time.monotonic()
                keys.press("space")
                connection, _ = listener.accept()
                taken = milliseconds(pressed)
                keys.release("space")
                keys.release("Alt_L")
                application.log.wait_for(STOPPED, since=seen)
                connection.close()
                return taken

            samples = sample_until_settled(press)
            target.close()
    return samples


def time_until_visible(target, piece, action, timeout=10.0):
    """Milliseconds from the start of `action` until the target's text has grown by the size of
    `piece`, up to `timeout` seconds; and whether it has grown by exactly this text."""
    before = target.text
    wanted = len((before + piece).encode())
    begin = time.monotonic()
    action()
    # Polled without a pause, because a pause would be part of the result.
    while time.monotonic() < begin + timeout and os.stat(target.out).st_size < wanted:
        pass
    return milliseconds(begin), target.text == before + piece


def final_message_to_text(binaries, text):
    """Yields for each way to enter `text` into a GTK text area: its name, the samples in
    milliseconds, and the number of samples with the right text."""
    with running_application(binaries, a11y=True, audio=True) as (desktop, application, service):
        target = WidgetTarget(desktop, "gtk3")
        microphone = Microphone(desktop.fifo())
        keys = XTest(desktop.environment["DISPLAY"])

        def measure(piece, action, **limits):
            outcomes = []

            def once():
                taken, is_right = time_until_visible(target, piece, action)
                outcomes.append(is_right)
                return taken

            return sample_until_settled(once, **limits), sum(outcomes)

        keys.press("Alt_L")
        keys.press("space")
        stream = service.stream()
        wait_for(lambda: len(stream.audio) > 0, "sound at the service")
        # Every piece after the first one of a recording begins with a space.
        stream.say("First.")
        target.wait_for_text("First.")
        dictated = measure(" " + text, lambda: stream.say(text))
        keys.release("space")
        keys.release("Alt_L")
        application.log.wait_for(STOPPED)
        typed = measure(text, lambda: desktop.spawn(["xdotool", "type", text]),
                        min_count=3, max_count=8)
        microphone.pull_out()
        target.close()
    yield "dictated", *dictated
    yield "xdotool type", *typed


@dataclasses.dataclass
class RecordingFigures:
    # One value per minute.
    processor_seconds: list
    idle_wakeups: int
    idle: dict
    recording: dict


def recording(binaries):
    """The resource usage of minutes of recording, and of idling."""
    with running_application(binaries, a11y=True, audio=True) as (desktop, application, service):
        target = WidgetTarget(desktop, "gtk3")
        microphone = Microphone(desktop.fifo())
        # Work that the closed windows have caused does not count as idling.
        wait_until_idle(application.pid)
        before = wakeups(application.pid)
        time.sleep(30)
        idle_wakeups = wakeups(application.pid) - before
        idle = memory(application.pid)
        keys = XTest(desktop.environment["DISPLAY"])
        for key in ("Alt_L", "Shift_L", "space"):
            keys.press(key)
        for key in ("space", "Shift_L", "Alt_L"):
            keys.release(key)
        stream = service.stream()
        wait_for(lambda: len(stream.audio) > 0, "sound at the service")

        def minute():
            used = processor_time(application.pid)
            # One sentence every five seconds, as a user speaks. Silence would end the recording.
            for number in range(12):
                time.sleep(5)
                stream.say(f"This is sentence number {number} of a minute.")
            return processor_time(application.pid) - used

        # A recording lasts ten minutes at most.
        seconds = sample_until_settled(minute, min_count=3, max_count=8)
        during = memory(application.pid)
        microphone.pull_out()
        target.close()
    return RecordingFigures(seconds, idle_wakeups, idle, during)


def start(binaries):
    """Milliseconds from the start of the process to its log line on the registered hotkeys."""
    with Desktop(wm=True, a11y=True, audio=True) as desktop:
        write_settings(desktop.environment, {"deepgramApiKey": "a-key"})

        def once():
            begin = time.monotonic()
            process = desktop.spawn([binaries / "tarvik-dictate"], stderr=subprocess.PIPE, text=True)
            next(line for line in process.stderr if "tap-to-toggle registered" in line)
            taken = milliseconds(begin)
            threading.Thread(target=process.stderr.read, daemon=True).start()
            desktop.end(process)
            return taken

        return sample_until_settled(once)
