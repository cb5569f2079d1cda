"""Where keld is, how many runs of it fit into this machine, and who runs them. Called by runs and causes."""

from __future__ import annotations

import contextlib
import os
import shutil
import sys
from collections.abc import Iterator
from concurrent.futures import Executor, ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

from ..base.findings import BadFile
from . import solve

SHARE_OF_MEMORY = 0.8  # of what is free that runs side by side may take
CONNECT_SECONDS = 20


@dataclass
class Program:
    """keld and the folder with its Standard."""

    path: str
    install: str


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


def side_by_side(jobs: int | None, runs: int, peak_mb: float) -> int:
    """Runs at a time: as many as asked for, else as cores and memory allow."""
    if jobs:
        return max(1, min(jobs, runs))
    fitting = int(SHARE_OF_MEMORY * free_mb() / max(peak_mb, 1.0))
    return max(1, min(len(os.sched_getaffinity(0)), runs, fitting))


def free_mb() -> float:
    for line in Path("/proc/meminfo").read_text().splitlines():
        if line.startswith("MemAvailable:"):
            return int(line.split()[1]) / 1024.0
    return 1024.0


@contextlib.contextmanager
def workers(cluster: str | None, count: int) -> Iterator[Executor]:
    """Threads that each wait for one run, or the scheduler of a cluster (Dask)."""
    if not cluster:
        pool = ThreadPoolExecutor(count)
        try:
            yield pool
        finally:
            pool.shutdown(wait=True, cancel_futures=True)
        return
    try:
        import cloudpickle
        from distributed import Client
    except ImportError:
        raise BadFile("--cluster", "needs the packages python3-distributed and python3-cloudpickle") from None
    cloudpickle.register_pickle_by_value(solve)  # workers needn't have these tools
    try:
        client = Client(cluster, timeout=CONNECT_SECONDS, set_as_default=False)
    except (OSError, ValueError, TimeoutError) as error:
        raise BadFile(f"--cluster {cluster}", f"no scheduler answers there: {error}") from None
    with client:
        if not client.scheduler_info()["workers"]:
            raise BadFile(f"--cluster {cluster}", "the scheduler has no workers; start dask-worker with its address")
        yield client.get_executor(pure=False)
