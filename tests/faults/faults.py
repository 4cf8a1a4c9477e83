# SPDX-License-Identifier: MIT

"""Parts of which several groups make their faults. A fault is a function of the running test."""

from scripted_service import transcript


def steps(*faults):
    """Several faults, one after the other."""
    def fault(world):
        for each in faults:
            each(world)
    return fault


def waits(seconds):
    return lambda world: world.wait(seconds)


def waits_for(*lines, timeout=12.0):
    """Waits until the log has these parts of lines."""
    return lambda world: world.wait_for_lines(*lines, timeout=timeout)


def says(text):
    """The service sends a final piece."""
    return lambda world: world.stream.send(transcript(text))


def expects(text, timeout=10):
    """Waits until the target has exactly this text."""
    return lambda world: world.target.wait_for_text(text, timeout)


def is_read(world):
    """Waits until the application has read everything that the service has sent."""
    world.stream.wait_until_read()


def stops(world):
    """Ends the recording before the end of the cell."""
    world.stop()


def never_closes(world):
    """The service does not close the stream by itself when the sound ends."""
    world.service.closes_at_end = False


def closes_again(world):
    world.service.closes_at_end = True
