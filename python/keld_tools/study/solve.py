"""One run of keld in a folder of its own: files in, results out. Called by runs and causes.

Needs the standard library alone, since it goes to the workers of a cluster as it stands.
"""

from __future__ import annotations

import os
import resource
import shutil
import subprocess
import tempfile
import time
from pathlib import Path


NO_SOLUTION = "The displacements of this pass are no solution"  # told by a run that else ends as a good one


def located(program: str, install: str) -> tuple[str, str]:
    """keld and its data; where the given ones aren't on this machine, those that are installed on it."""
    if Path(program).is_file() and (Path(install) / "Standard").is_dir():
        return program, install
    found = shutil.which("keld")
    if not found:
        raise FileNotFoundError(f"neither {program} nor a keld on the PATH is on this machine ({os.uname().nodename})")
    return found, str(Path(found).resolve().parent.parent / "share" / "keld")


def solve(files: dict[str, bytes], program: str, install: str, threads: int) -> dict:
    """Run the job of `files` (suffix -> content).

    Returns results (the .WR1, or None), message (of a failed run), seconds, peak_mb of the largest run so far.
    """
    program, install = located(program, install)
    bounds = {name: str(threads) for name in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS")}
    start = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="keld-run-") as folder:
        for suffix, content in files.items():
            Path(folder, f"job{suffix}").write_bytes(content)
        done = subprocess.run(
            [program, "job", "1@", f"{install}/", "2@"],
            cwd=folder,
            env=os.environ | bounds,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
        )
        result = Path(folder, "job.WR1")
        text = done.stdout.decode(errors="replace")
        good = done.returncode == 0 and result.is_file() and NO_SOLUTION not in text
        return {
            "results": result.read_bytes() if good else None,
            "message": "" if good else message_of(text, done.returncode),
            "seconds": time.monotonic() - start,
            "peak_mb": resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024.0,
        }


def message_of(text: str, status: int) -> str:
    """The error that keld told, on one line."""
    sign = next((sign for sign in (NO_SOLUTION, "!! Error !!") if sign in text), "")
    said = sign.strip("! ") + text.rpartition(sign)[2] if sign else text[-400:]
    return f"keld ended with {status}: {' '.join(said.split())[:400]}"


def caller(program: str, install: str, threads: int):
    """solve with its program; a function of a function, so that cluster workers get it by value."""

    def call(files: dict[str, bytes]) -> dict:
        return solve(files, program, install, threads)

    return call
