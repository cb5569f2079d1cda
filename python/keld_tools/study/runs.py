"""The runs of a study: a job for each variant, solved where it isn't yet, kept so that an interruption loses little.

Called by study_cli. A run's files stand in OUTPUT.runs/NAME.*; NAME.key tells what its results belong to.
"""

from __future__ import annotations

import hashlib
import io
from collections.abc import Callable
from concurrent.futures import Executor, as_completed
from dataclasses import dataclass, field
from pathlib import Path

from ..base import atomic
from ..base.findings import BadFile, Findings
from ..base.keld_program import Program
from ..base.ownership import MADE_BY_STUDY
from ..base.progress import Progress
from ..job import checks, job_files, working_files
from ..meshes import formats, mesh_input
from ..meshes.raw_mesh import RawMesh
from ..part import part_file
from . import plan as plans
from . import solve, workers
from .plan import Plan, Variant

KEY = ".key"


@dataclass
class Run:
    """One variant; `fault` says why it has no results."""

    variant: Variant
    base: Path
    files: dict[str, bytes] = field(default_factory=dict)
    key: str = ""
    fault: str = ""
    seconds: float = 0.0
    resumed: bool = False


def prepare(plan: Plan, program: Program, findings: Findings, progress: Callable[[str], None]) -> list[Run]:
    """All jobs, formed and checked before the first one runs. A variant that can't be formed carries its fault."""
    meshes: dict[Path, RawMesh] = {}
    runs = []
    stamp = Path(program.path).stat()
    for number, variant in enumerate(plan.variants, 1):
        progress(f"forming job {number} of {len(plan.variants)}")
        run = Run(variant, Path(f"{plan.output}.runs") / variant.name)
        own = Findings()
        try:
            run.files = form(plan, variant, meshes, own)
        except BadFile as error:
            own.faults.append(str(error))
        for warning in own.warnings:
            if warning not in findings.warnings:
                findings.warnings.append(warning)
        run.fault = "; ".join(own.faults)
        digest = hashlib.sha256(f"{program.path} {stamp.st_size} {stamp.st_mtime_ns}".encode())
        for suffix, content in sorted(run.files.items()):
            digest.update(f"{suffix} {len(content)} ".encode() + content)
        run.key = digest.hexdigest()
        runs.append(run)
    return runs


def form(plan: Plan, variant: Variant, meshes: dict[Path, RawMesh], findings: Findings) -> dict[str, bytes]:
    """Suffix -> content of the variant's job; a mesh is read once."""
    document = plans.applied(plan, variant)
    part = part_file.read_part(document, plan.part, plan.part_lines, findings, plan.part.parent)
    path = part.mesh.path
    if path not in meshes:
        meshes[path] = formats.read_raw(path)
    mesh = mesh_input.build(meshes[path], part.mesh, findings)
    checks.check_polymer(part.polymer, part.filler is not None, part.places["polymer"], findings)
    if part.second:
        checks.check_polymer(part.second, part.filler is not None, part.places["second_polymer"], findings)
    files = job_files.texts(part, mesh, findings, Progress("keld-study", io.StringIO()))
    if files is None or findings.faults:
        return {}
    return {suffix: text.encode(errors="replace") for suffix, text in files.contents.items()}


def finished(run: Run) -> bool:
    """Whether the results beside the run are those of its very files."""
    key = Path(f"{run.base}{KEY}")
    return key.is_file() and run.key in key.read_text(errors="replace") and Path(f"{run.base}.WR1").is_file()


def solve_all(
    runs: list[Run], program: Program, jobs: int | None, cluster: str | None, progress: Callable[[str], None]
) -> int:
    """Solve what isn't finished; returns how many ran at a time.

    On one machine the first run is alone: its memory tells how many more fit beside each other.
    """
    pending = []
    for run in runs:
        run.resumed = not run.fault and finished(run)
        if not run.fault and not run.resumed:
            pending.append(run)
    done = len(runs) - len(pending)
    count = 1

    def tell() -> None:
        share = round(20 * done / max(len(runs), 1))
        progress(f"[{'#' * share}{'.' * (20 - share)}] {done} of {len(runs)} runs")

    tell()
    if pending and not cluster:
        first = pending.pop(0)
        alone = solve.solve(first.files, program.path, program.install, 1)
        keep(first, alone)
        done += 1
        count = workers.side_by_side(jobs, max(len(pending), 1), alone["peak_mb"])
    if pending:
        with workers.pool_of(cluster, count) as pool:
            for _ in solved(pool, pending, program):
                done += 1
                tell()
    return count


def solved(pool: Executor, pending: list[Run], program: Program):
    """Each run as it ends, its results kept."""
    call = solve.caller(program.path, program.install, 1)
    waiting = {pool.submit(call, run.files): run for run in pending}
    for future in as_completed(waiting):
        run = waiting[future]
        try:
            keep(run, future.result())
        except OSError as error:
            run.fault = f"{error.filename or run.base}: {error.strerror or error}"
        except Exception as error:  # a cluster loses workers in ways of its own
            run.fault = f"{type(error).__name__}: {error}"
        yield run


def keep(run: Run, result: dict) -> None:
    """The job and its results beside each other, the key last: a run without it is done again."""
    run.seconds = result["seconds"]
    if result["results"] is None:
        run.fault = result["message"]
        return
    run.base.parent.mkdir(parents=True, exist_ok=True)
    key = f"{MADE_BY_STUDY}\n{run.key}\n".encode()
    contents = run.files | {".WR1": result["results"], KEY: key}
    stale = tuple(s for s in working_files.SUFFIXES if s not in contents)
    atomic.write_family(run.base, contents, stale, last=KEY)
