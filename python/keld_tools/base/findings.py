"""Faults and warnings of a run, gathered so that a user sees all of them at once.

Every module that checks something adds to a Findings; the two programs print it.
"""

from __future__ import annotations

import sys


class BadFile(Exception):
    """A file that can't be used; the text names the file, the place and what was expected."""

    def __init__(self, path, text: str, line: int | None = None):
        super().__init__(f"{path}{f':{line}' if line else ''}: {text}")


class Findings:
    """Faults end the program before it writes anything, warnings are shown and passed over."""

    def __init__(self):
        self.faults: list[str] = []
        self.warnings: list[str] = []
        self.status = 0  # of a run without a fault: 1 where some of its work failed, 2 for a part out of tolerance

    def fault(self, place: str, text: str) -> None:
        self.faults.append(f"{place}: {text}")

    def warn(self, place: str, text: str) -> None:
        self.warnings.append(f"{place}: {text}")

    def show(self, stream=None) -> None:
        stream = stream or sys.stderr
        for text in self.warnings:
            print(f"warning: {text}", file=stream)
        for text in self.faults:
            print(f"fault:   {text}", file=stream)
        stream.flush()


def count_of(numbers, noun: str) -> str:
    """Count and first members of a list of offenders: "12 triangles (elements 3, 7, 9, ...)"."""
    n = len(numbers)
    shown = ", ".join(str(k) for k in numbers[:5]) + (", ..." if n > 5 else "")
    return f"{n} {noun}{'' if n == 1 else 's'} ({shown})"
