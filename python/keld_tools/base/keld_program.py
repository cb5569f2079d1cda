"""Running keld on a job: where it is, and whether it says that it has a solution. Called by the programs."""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

from .findings import BadFile

NO_SOLUTION = re.compile(r"The displacements of this pass are no solution[^\n]*")
ERROR = re.compile(r"!! Error !!\s*([^\n]*)")
SUMMARY = "Keldage stage results summary"


@dataclass
class Program:
    """keld and the folder with its Standard."""

    path: str
    install: str


@dataclass
class Outcome:
    """A run that has ended."""

    status: int
    text: str  # of the console

    def fault(self) -> str:
        """What makes the run a failed one, empty for a solution."""
        if self.status != 0:
            told = ERROR.search(self.text)
            return f"keld ended with {self.status}: {told[1] if told else ' '.join(self.text[-300:].split())}"
        told = NO_SOLUTION.search(self.text)
        return f"keld says: {told[0]}" if told else ""

    def summary(self) -> str:
        """The closing lines of the console with the extreme displacements."""
        _, found, rest = self.text.rpartition(SUMMARY)
        return "\n".join(line.rstrip() for line in (found + rest).splitlines() if line.strip())


def find_keld(given: str | None) -> Program:
    """--keld, KELD_PROGRAM, beside the tools (installed or in the source tree), or on the PATH."""
    root = Path(__file__).resolve().parents[3]
    beside = [Path(sys.argv[0]).resolve().parent / "keld", root / "build/release/keld"]
    named = given or os.environ.get("KELD_PROGRAM")
    candidates = [Path(named)] if named else [*beside, Path(shutil.which("keld") or "")]
    for path in candidates:
        if path.is_file() and os.access(path, os.X_OK):
            return Program(str(path.resolve()), str(install_of(path.resolve())))
    raise BadFile(named or "keld", "there is no such program; --keld PROGRAM or KELD_PROGRAM names it")


def install_of(path: Path) -> Path:
    """share/keld beside bin, or install/ of the source tree that the program was built in."""
    for folder in (path.parent.parent / "share" / "keld", *(parent / "install" for parent in path.parents)):
        if (folder / "Standard").is_dir():
            return folder
    raise BadFile(path, "has no share/keld/Standard beside it, which a run needs")


def run_keld(program: Program, base: Path) -> Outcome:
    """Run the job at `base` to its end."""
    done = subprocess.run(
        [program.path, base, "1@", f"{program.install}/", "2@"],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
    )
    return Outcome(done.returncode, done.stdout.decode(errors="replace"))
