"""How many runs of keld fit into this machine, and who runs them. Called by runs and causes."""

from __future__ import annotations

import contextlib
import os
from collections.abc import Iterator
from concurrent.futures import Executor, ThreadPoolExecutor
from pathlib import Path

from ..base.findings import BadFile
from . import solve

SHARE_OF_MEMORY = 0.8  # of what is free that runs side by side may take
CONNECT_SECONDS = 20


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
def pool_of(cluster: str | None, count: int) -> Iterator[Executor]:
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
