# SPDX-License-Identifier: MIT

"""Clang for macOS on a system without the headers of macOS.

Declarations of the system's interfaces stand in for the system's own headers, and this machine's C and
C++ library for the system's. Nothing can be linked.
"""
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
BACKEND = ROOT / "platform/macos"
WARNINGS = """-Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wnull-dereference -Wformat=2
    -Wno-unused-parameter -Wundeclared-selector -Wunguarded-availability""".split()
# Flags that make this machine's own headers usable for each processor.
PROCESSORS = {"x86_64": [],
              "arm64": ["-D__x86_64__", "-D__builtin_ia32_pause()=((void)0)"]}
PREFIX_HEADER = """#import <AVFoundation/AVFoundation.h>
#import <AppKit/AppKit.h>
#include "platform/Platform.h"
"""
PROGRAM = pathlib.Path(sys.argv[0]).name


def tool(*names):
    for name in names:
        if path := shutil.which(name):
            return path
    sys.exit(f"{PROGRAM}: none of {', '.join(names)} is installed")


def output(*command):
    """The standard output of a command that has to succeed."""
    result = subprocess.run([str(part) for part in command], capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{PROGRAM}: {' '.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


def declare(api, folder):
    """Writes the declarations of `api` to a folder, and returns that folder."""
    declarations = folder / "include"
    output(sys.executable, pathlib.Path(api) / "gen_headers.py", pathlib.Path(api) / "api.json", declarations)
    return declarations


class Compiler:
    """Clang for one processor. Its files go to a folder below `folder`."""

    def __init__(self, declarations, processor, folder):
        self.clang = tool("clang++-16", "clang++-14", "clang++")
        self.folder = folder / processor
        self.folder.mkdir()
        resources = pathlib.Path(output(self.clang, "-print-resource-dir").strip())
        versions = [path for path in pathlib.Path("/usr/include/c++").iterdir() if path.name.isdigit()]
        library = max(versions, key=lambda path: int(path.name))
        system = [library, pathlib.Path("/usr/include/x86_64-linux-gnu/c++") / library.name,
                  resources / "include", "/usr/include/x86_64-linux-gnu", "/usr/include"]
        self.target = ["-target", f"{processor}-apple-macos13.0", "-O2"]
        self.flags = [*self.target, "-std=c++20", "-fobjc-arc", "-fblocks", *WARNINGS, "-U__nonnull",
                      "-U__APPLE__", "-DMD_APPLE_TARGET", "-D__linux__", "-D__gnu_linux__", "-D_GNU_SOURCE",
                      "-nostdinc", "-nostdinc++", *PROCESSORS[processor]]
        for path in system:
            self.flags += ["-isystem", path]
        self.flags += ["-isystem", declarations, "-I", ROOT]
        (self.folder / "Prefix.h").write_text(PREFIX_HEADER)
        output(self.clang, *self.flags, "-x", "objective-c++-header", self.folder / "Prefix.h",
               "-o", self.folder / "Prefix.pch")

    def command(self, source, *mode):
        """The command that compiles a source in the way that `mode` says."""
        return [self.clang, *self.flags, "-include-pch", self.folder / "Prefix.pch",
                "-x", "objective-c++", *mode, source]

    def compile(self, source):
        """The object file of a source, beside its optimised code as text (`.ll`)."""
        code, target = (self.folder / (source.stem + suffix) for suffix in [".ll", ".o"])
        output(*self.command(source, "-S", "-emit-llvm"), "-o", code)
        output(self.clang, *self.target, "-c", code, "-o", target)
        return target
