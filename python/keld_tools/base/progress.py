"""One line on a terminal that tells what a program is doing; silent where there is no terminal."""

from __future__ import annotations

import sys
import time


class Progress:
    """Used as `with Progress("keld-job") as progress: progress("reading the mesh")`."""

    def __init__(self, program: str, stream=None):
        self.program = program
        self.stream = stream or sys.stderr
        self.shown = self.stream.isatty()
        self.start = time.monotonic()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.clear()

    def __call__(self, text: str) -> None:
        if self.shown:
            seconds = time.monotonic() - self.start
            self.stream.write(f"\r\033[K{self.program}: {text} ... ({seconds:.0f} s)")
            self.stream.flush()

    def clear(self) -> None:
        if self.shown:
            self.stream.write("\r\033[K")
            self.stream.flush()
