"""Why a part warps: the job run again with one cause switched off each, and what each contributes. Called by view_cli.

Contribution = result of the whole job less that without the cause. Contributions need not add up to the whole: what is
left is even shrinkage, and causes act on each other.
"""

from __future__ import annotations

import csv
import html
import io
import os
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

from ..base import atomic
from ..base.findings import BadFile, Findings
from ..base.keld_program import Program
from ..base.ownership import CAUSES_HEAD
from ..measuring import measures
from ..part.drawing import Drawing
from ..report import picture
from ..report import shown as shown_fields
from ..report.shown import Fit
from ..results.finished_job import FinishedJob
from ..results.results_file import read_results
from . import solve, workers
from .switches import SPRING_IN, SWITCHES, UNEVEN, Job, files_of, no_spring_in


@dataclass
class Cause:
    """One cause; `absent` says why the job hasn't got it."""

    name: str
    absent: str = ""
    share_mm: np.ndarray | None = None  # (N, 3) that it adds to the aligned shape
    contributions: list[float] = field(default_factory=list)  # to each row of the table


@dataclass
class Causes:
    rows: list[str]  # largest deviation, largest warpage, then the measures
    whole: list[float]  # deviation of each row, mm or degrees
    causes: list[Cause]


def find_causes(job: FinishedJob, drawing: Drawing, fit: Fit, keld: Program, progress) -> Causes:
    """Run all that the job has, side by side. BadFile for a run that fails."""
    if not np.array_equal(job.part.triangle_numbers, np.arange(1, len(job.part.triangles) + 1)):
        raise BadFile(job.part.path, "numbers runners before triangles; --causes takes meshes as keld-job writes them")
    causes, pending = switched(Job(files_of(job.base), job.part))
    progress(f"running the job without each of {len(pending)} causes")
    with workers.pool_of(None, max(1, min(len(pending), len(os.sched_getaffinity(0))))) as pool:
        solved = list(pool.map(solve.caller(keld.path, keld.install, 1), pending.values()))
    rows, *whole = table_of(job, job.results.total_mm, drawing, fit)
    without = {}
    for name, result in zip(pending, solved):
        if result["results"] is None:
            raise BadFile(f"{job.base} without {name}", result["message"])
        _, *without[name] = table_of(job, displacement(result["results"], len(job.part.points_mm)), drawing, fit)
    for cause in (c for c in causes if not c.absent):
        values, shape = whole
        if cause.name == UNEVEN and SPRING_IN in without:
            values, shape = without[SPRING_IN]
        less, less_shape = without[cause.name]
        cause.contributions = [x - y for x, y in zip(values, less)]
        cause.share_mm = shape - less_shape
    return Causes(rows, whole[0], causes)


def switched(mine: Job) -> tuple[list[Cause], dict[str, dict[str, bytes]]]:
    """All causes, and for those that the job has its files without them, by name.

    Fibres that are made even change what springs in at corners too; so uneven shrinkage is told between two jobs
    without spring-in, where there is such a load.
    """
    causes, pending = [], {}
    for name, switch in SWITCHES.items():
        changed = switch(mine)
        causes.append(Cause(name, changed if isinstance(changed, str) else ""))
        if not isinstance(changed, str):
            pending[name] = {s: content for s, content in (mine.files | changed).items() if content}
    if UNEVEN in pending and SPRING_IN in pending:
        changed = no_spring_in(Job(pending[UNEVEN], mine.part))
        pending[UNEVEN] |= changed if isinstance(changed, dict) else {}
    return causes, pending


def displacement(content: bytes, nodes: int) -> np.ndarray:
    """(N, 3) mm of the bytes of a .WR1."""
    with tempfile.TemporaryDirectory(prefix="keld-cause-") as folder:
        path = Path(folder, "job.WR1")
        path.write_bytes(content)
        return read_results(path, nodes).total_mm


def table_of(job: FinishedJob, total: np.ndarray, drawing: Drawing, fit: Fit):
    """Names and values of the rows for a displacement, and the aligned shape."""
    moulded = job.part.points_mm + total
    aligned, _ = shown_fields.laid_over(job.nominal_mm, moulded, job.nodes, fit, job.boundary)
    shape, _ = shown_fields.laid_over(job.nominal_mm, moulded, job.nodes, Fit(remove_shrinkage=True), job.boundary)
    largest = [float(np.linalg.norm((s - job.nominal_mm)[job.nodes], axis=1).max()) for s in (aligned, shape)]
    shapes = measures.Shapes(
        job.nominal_mm, job.part.points_mm, moulded, aligned, job.part.triangles, job.origin.groups
    )
    findings = Findings()
    answers = measures.answers_of(drawing.measures, shapes, findings)
    if findings.faults:
        raise BadFile("--causes", "; ".join(findings.faults))
    names = ["largest deviation [mm]", "largest warpage, shrinkage removed [mm]"]
    names += [f"{answer.measure.name} [{answer.measure.unit}]" for answer in answers]
    return names, [*largest, *(answer.deviation for answer in answers)], aligned


def cells(found: Causes) -> list[list[str]]:
    """Head and rows; an absent cause has a dash."""
    head = [CAUSES_HEAD, "deviation", *(cause.name for cause in found.causes)]
    lines = [head]
    for i, (name, value) in enumerate(zip(found.rows, found.whole)):
        shares = ["-" if cause.absent else f"{cause.contributions[i]:+.4f}" for cause in found.causes]
        lines.append([name, f"{value:.4f}", *shares])
    return lines


def csv_text(found: Causes) -> str:
    stream = io.StringIO()
    csv.writer(stream, lineterminator="\n").writerows(cells(found))
    return stream.getvalue()


def console(found: Causes) -> list[str]:
    rows = cells(found)
    rows[0][0] = ""
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    lines = ["  ".join(c.ljust(w) if i == 0 else c.rjust(w) for i, (c, w) in enumerate(zip(r, widths))) for r in rows]
    notes = [f"{cause.name}: {cause.absent}" for cause in found.causes if cause.absent]
    return ["", "what each cause contributes (whole job less the job without it):", *lines, *notes, ""]


def html_table(found: Causes) -> str:
    head, *rows = cells(found)
    head[0] = "measure"

    def row(tag: str, texts: list[str]) -> str:
        parts = [f'<{tag}{" class=number" if i else ""}>{html.escape(text)}</{tag}>' for i, text in enumerate(texts)]
        return f"<tr>{''.join(parts)}</tr>"

    notes = "; ".join(f"{cause.name}: {cause.absent}" for cause in found.causes if cause.absent)
    table = "\n".join([row("th", head), *(row("td", r) for r in rows)])
    words = "Deviation of the whole job, and the deviation less that of the job without the cause. "
    return f'<table>{table}</table><p class="quiet">{words}{html.escape(notes)}</p>'


def draw(path: Path, job: FinishedJob, found: Causes, view: tuple[float, float], mark: dict) -> None:
    """Four pictures side by side, in one range of colours and one exaggeration: the shape that each cause adds."""
    still = np.zeros_like(job.nominal_mm)
    parts = [still if cause.share_mm is None else cause.share_mm for cause in found.causes]
    for part in parts:
        part[np.setdiff1d(np.arange(len(part)), job.nodes)] = 0.0
    lengths = [np.linalg.norm(part, axis=1) for part in parts]
    top = max(float(length[job.nodes].max()) for length in lengths) or 1e-6
    largest = parts[int(np.argmax([length.max() for length in lengths]))]
    scale = picture.automatic_scale(job.nominal_mm[job.nodes], largest[job.nodes])
    figures = []
    for cause, part, length in zip(found.causes, parts, lengths):
        notes = [cause.absent] if cause.absent else [f"greatest share: {length[job.nodes].max():.4g} mm"]
        scene = picture.Scene(
            job.nominal_mm, job.part.triangles, part, length, "mm", f"due to {cause.name}", notes, scale, view
        )
        scene.edges, scene.value_range_mm = job.edges, (0.0, top)
        figures.append(picture.compose(scene, 75))
    atomic.write_file(path, lambda place: picture.tile(place, figures, 2, mark))
