"""The files that keld-view writes: for each its paths, told before anything is written, and its writer.

Called by view_cli. A writer returns the lines that it adds to the summary.
"""

from __future__ import annotations

import argparse
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from ..base import atomic
from ..base.findings import Findings
from ..base.program import next_commands
from ..base.progress import Progress
from ..measuring import listing, measures
from ..part.drawing import Drawing
from ..report import page, picture
from ..report import shown as shown_fields
from ..results import compensate, vtu
from ..results.finished_job import FinishedJob


@dataclass
class Request:
    """One run of keld-view, everything read and nothing written."""

    options: argparse.Namespace
    job: FinishedJob
    drawing: Drawing
    fit: shown_fields.Fit
    shown: shown_fields.Shown
    view: tuple[float, float]
    findings: Findings
    progress: Progress
    answers: list[measures.Answer]

    def target(self, suffix: str) -> Path:
        return Path(f"{self.options.output or self.options.base}{suffix}")


@dataclass
class Output:
    wanted: Callable[[argparse.Namespace], bool]
    paths: Callable[[Request], list[Path]]  # that are written or removed
    write: Callable[[Request], list[str]]


def answers_of(drawing: Drawing, job: FinishedJob, fit: shown_fields.Fit, findings: Findings) -> list[measures.Answer]:
    moved, _ = shown_fields.laid_over(job.nominal_mm, job.moulded_mm, job.nodes, fit, job.boundary)
    return measures.answers_of(drawing.measures, job.shapes(moved), findings)


def scene_of(request: Request) -> picture.Scene:
    """The picture's data; a corrected cavity is shown as its deviation from the nominal shape."""
    job, shown = request.job, request.shown
    name = Path(request.options.base).name
    return picture.Scene(
        shown.points_mm,
        job.part.triangles,
        shown.displacement_mm,
        shown.values_mm,
        "mm",
        f"{name}: {shown.words}".encode(errors="replace").decode(),
        shown_fields.notes_of(shown, job.nodes),
        request.options.scale or picture.automatic_scale(shown.points_mm[job.nodes], shown.displacement_mm[job.nodes]),
        request.view,
        job.boundary,
        job.part.gates.tolist(),
    )


def write_grid(request: Request) -> list[str]:
    job = request.job
    request.progress("writing the .vtu")
    data = vtu.point_data(job.results, job.remaining_mm)
    data["deviation_mm"] = np.ascontiguousarray(request.shown.displacement_mm)
    vtu.write_vtu(request.target(".vtu"), job.part, data, request.options.ascii)
    return []


def write_picture(request: Request) -> list[str]:
    request.progress("drawing")
    scene = scene_of(request)
    picture.draw(request.target(".png"), scene)
    return scene.notes


def write_measures(request: Request) -> list[str]:
    """The table of all answers."""
    text = listing.csv_text(request.answers)
    atomic.write_file(request.target(".measures.csv"), lambda place: place.write_text(text, encoding="utf-8"))
    request.findings.out_of_tolerance = any(answer.within is False for answer in request.answers)
    return ["", listing.console(request.answers), ""]


def write_report(request: Request) -> list[str]:
    request.progress("writing the report")
    page.write_page(request.target(".html"), request.job, request.fit, request.answers)
    return []


def cavity_of(request: Request) -> Path:
    return compensate.next_base(request.target(""))


def write_cavity(request: Request) -> list[str]:
    request.progress("writing the corrected cavity")
    job, cavity = request.job, cavity_of(request)
    nominal = job.nominal_mm if job.corrected else None
    deviation = job.moulded_mm - job.nominal_mm
    files = compensate.write_cavity(job.base, cavity, job.part, deviation, request.options.factor, nominal)
    return [
        "corrected cavity: " + " ".join(map(str, files)),
        f"next: {next_commands(cavity)}   shows what remains",
    ]


OUTPUTS = (
    Output(lambda o: True, lambda r: [r.target(".vtu")], write_grid),
    Output(lambda o: True, lambda r: [r.target(".png")], write_picture),
    Output(lambda o: o.measure is not None, lambda r: [r.target(".measures.csv")], write_measures),
    Output(lambda o: o.report, lambda r: [r.target(".html")], write_report),
    Output(lambda o: o.compensate, lambda r: compensate.paths_at_risk(r.job.base, cavity_of(r)), write_cavity),
)
