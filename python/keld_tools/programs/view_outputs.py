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
from ..base.findings import BadFile, Findings
from ..base.keld_program import find_keld
from ..base.program import next_commands
from ..base.progress import Progress
from ..measuring import listing, measures
from ..part.drawing import Drawing
from ..report import animation, page, picture
from ..report import shown as shown_fields
from ..results import compensate, moved_mesh, vtu
from ..results.finished_job import FinishedJob, read_job
from ..study import causes
from . import view_options


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
    causes: causes.Causes | None = None

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
    scale = request.options.scale or picture.automatic_scale(
        shown.points_mm[job.nodes], shown.displacement_mm[job.nodes]
    )
    title = f"{Path(request.options.base).name}: {shown.words}"
    return shown_fields.scene_of(job, shown, title, shown_fields.notes_of(shown, job.nodes), scale, None, request.view)


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
    if any(answer.within is False for answer in request.answers):
        request.findings.status = 2
    return ["", listing.console(request.answers), ""]


def write_report(request: Request) -> list[str]:
    request.progress("writing the report")
    table = causes.html_table(causes_of(request)) if request.options.causes else ""
    page.write_page(request.target(".html"), request.job, request.fit, request.answers, table)
    return []


def causes_of(request: Request) -> causes.Causes:
    """Found once, for the table and the report."""
    if request.causes is None:
        keld = find_keld(request.options.keld)
        request.causes = causes.find_causes(request.job, request.drawing, request.fit, keld, request.progress)
    return request.causes


def write_causes(request: Request) -> list[str]:
    found = causes_of(request)
    text = causes.csv_text(found)
    atomic.write_file(request.target(".causes.csv"), lambda place: place.write_text(text, encoding="utf-8"))
    causes.draw(request.target(".causes.png"), request.job, found, request.view, picture.MARK)
    return causes.console(found)


def write_animation(request: Request) -> list[str]:
    request.progress("drawing the animation")
    animation.write_gif(request.target(".gif"), scene_of(request))
    return []


def write_export(request: Request) -> list[str]:
    request.progress("writing the moulded shape")
    job = request.job
    moved, _ = shown_fields.laid_over(job.nominal_mm, job.moulded_mm, job.nodes, request.fit, job.boundary)
    moved_mesh.export(Path(request.options.export), job, moved)
    return []


def write_comparison(request: Request) -> list[str]:
    """The shape of the other run less that of this one, both laid over the nominal shape alike."""
    job = request.job
    other = read_job(view_options.base_of(request.options.compare), request.findings, request.progress)
    if not np.array_equal(other.part.triangles, job.part.triangles):
        raise BadFile(other.part.path, f"has another mesh than {job.part.path}; two runs on one mesh can be compared")
    shapes = [
        shown_fields.laid_over(job.nominal_mm, j.moulded_mm, job.nodes, request.fit, job.boundary) for j in (job, other)
    ]
    difference = shapes[1][0] - shapes[0][0]
    difference[np.setdiff1d(np.arange(len(difference)), job.nodes)] = 0.0
    words = f"{other.base.name} less {job.base.name}, {request.fit.words}"
    length = np.linalg.norm(difference, axis=1)
    field = shown_fields.Shown(job.nominal_mm, difference, length, words, shapes[0][1])
    scale = request.options.scale or picture.automatic_scale(field.points_mm[job.nodes], difference[job.nodes])
    notes = shown_fields.notes_of(field, job.nodes)
    picture.draw(
        request.target(".compare.png"), shown_fields.scene_of(job, field, words, notes, scale, None, request.view)
    )
    return notes


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
    Output(lambda o: o.causes, lambda r: [r.target(".causes.csv"), r.target(".causes.png")], write_causes),
    Output(lambda o: o.animate, lambda r: [r.target(".gif")], write_animation),
    Output(lambda o: o.export is not None, lambda r: [Path(r.options.export)], write_export),
    Output(lambda o: o.compare is not None, lambda r: [r.target(".compare.png")], write_comparison),
    Output(lambda o: o.report, lambda r: [r.target(".html")], write_report),
    Output(lambda o: o.compensate, lambda r: compensate.paths_at_risk(r.job.base, cavity_of(r)), write_cavity),
)
