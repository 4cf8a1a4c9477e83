# SPDX-License-Identifier: MIT

"""The command line of the programs that take pictures."""

import pathlib
import sys


def picture_arguments():
    """The folder of the binaries, and that of the pictures, which is made."""
    build = pathlib.Path(__file__).resolve().parents[2] / "build"
    binaries, folder = (
        pathlib.Path(argument).resolve() for argument in
        (sys.argv[1:3] + [build / "default/bin", build / "pictures"][len(sys.argv) - 1:]))
    folder.mkdir(parents=True, exist_ok=True)
    return binaries, folder
