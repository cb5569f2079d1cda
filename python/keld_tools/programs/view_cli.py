"""keld-view: BASE.vtu and BASE.png of a finished job, and the corrected cavity. Called by the executable keld-view."""

from __future__ import annotations

import argparse
import math
import sys
from pathlib import Path

import numpy as np

from .. import __version__
from ..base import atomic, ownership
from ..base.findings import BadFile, Findings
from ..base.program import next_commands, run_program, whole_output
from ..base.progress import Progress
from ..job import working_files
from ..measuring import alignment, listing, measures
from ..part.drawing import Drawing, Place, read_drawing
from ..report import picture
from ..report import shown as shown_fields
from ..results import compensate, vtu
from ..results.finished_job import FinishedJob, read_job

RESULTS = (".WR1", ".WD1", ".WLG1", ".vtu", ".png")  # files of a base name besides those of its job


def arguments(argv: list[str] | None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="keld-view", description="Write BASE.vtu and BASE.png of a finished KELD job."
    )
    parser.add_argument("base", metavar="BASE", help="base name of the job, as given to keld")
    parser.add_argument(
        "--field", choices=shown_fields.FIELDS, help="what colours the picture (default total; remaining for a cavity)"
    )
    parser.add_argument("--scale", type=float, metavar="TIMES", help="exaggeration of the displacement")
    parser.add_argument("--view", default="iso", help=f"{', '.join(picture.VIEWS)}, or AZIMUTH,ELEVATION in degrees")
    parser.add_argument("--ascii", action="store_true", help="write the .vtu as text instead of base64")
    parser.add_argument("-o", "--output", metavar="NAME", help="write NAME.vtu, NAME.png, NAME-cavity1 instead")
    parser.add_argument("--overwrite", action="store_true", help="replace files that these tools didn't write")
    parser.add_argument("--compensate", action="store_true", help="also write the corrected cavity and its job")
    parser.add_argument("--factor", type=float, default=1.0, help="share of the displacement turned round (default 1)")
    parser.add_argument(
        "--measure",
        nargs="?",
        const="",
        metavar="DRAWING.toml",
        help="answer its measures, else those of the part file",
    )
    parser.add_argument(
        "--align", choices=alignment.METHODS, default="best-fit", help="how the part lies over its nominal shape"
    )
    parser.add_argument("--datum", metavar='"X,Y,Z X,Y,Z X,Y,Z"', help="three points of --align points, mm")
    parser.add_argument("--remove-shrinkage", action="store_true", help="fit a scale too: what remains is the warpage")
    parser.add_argument("--version", action="version", version=f"keld-view {__version__}")
    words = list(sys.argv[1:] if argv is None else argv)
    for name in ("--view", "--datum"):  # argparse takes -60,30 for an option unless the two are one word
        if name in words[:-1]:
            at = words.index(name)
            words[at : at + 2] = [f"{name}={words[at + 1]}"]
    return parser.parse_args(words)


@whole_output
def main(argv: list[str] | None = None) -> int:
    """Exit status: 0 when everything is written, 1 for a file or an option that can't be used, 2 out of tolerance."""
    options = arguments(argv)
    options.base = str(base_of(options.base))
    return run_program("keld-view", options, run, options.output or options.base, "stopped")


def run(options: argparse.Namespace, findings: Findings, progress: Progress) -> str:
    view = view_angles(options.view)
    for name in ("scale", "factor"):
        value = getattr(options, name)
        if value is not None and not (math.isfinite(value) and value > 0):
            raise BadFile(f"--{name}", f"{value:g} isn't above 0")
    base = Path(options.base)
    job = read_job(base, findings, progress)
    drawing = drawing_for(options, job, findings)
    fit = shown_fields.Fit(options.align, options.remove_shrinkage, job.nodes_at(datum_of(options) or drawing.datum))
    name = options.field or ("remaining" if job.corrected else "total")
    shown = shown_fields.shown(job, name, fit)
    if findings.faults:
        return ""
    target = options.output or str(base)
    cavity = compensate.next_base(Path(target))
    measures_path = [Path(f"{target}.measures.csv")] * (options.measure is not None)
    written = [Path(f"{target}.vtu"), Path(f"{target}.png"), *measures_path]
    ownership.refuse_foreign(
        written + (compensate.paths_at_risk(base, cavity) if options.compensate else []), options.overwrite, findings
    )
    if findings.faults:
        return ""
    progress("writing the .vtu")
    vtu.write_vtu(Path(f"{target}.vtu"), job.part, vtu.point_data(job.results, job.remaining_mm), options.ascii)
    progress("drawing")
    scene = make_scene(options, job, shown, view)
    picture.draw(Path(f"{target}.png"), scene)
    lines = scene.notes
    if options.measure is not None:
        lines += measured(job, drawing.measures, fit, measures_path[0], findings)
    lines.append("written: " + " ".join(map(str, written)))
    if options.compensate:
        progress("writing the corrected cavity")
        deviation = job.moulded_mm - job.nominal_mm
        nominal = job.nominal_mm if job.corrected else None
        files = compensate.write_cavity(base, cavity, job.part, deviation, options.factor, nominal)
        lines += [
            "corrected cavity: " + " ".join(map(str, files)),
            f"next: {next_commands(cavity)}   shows what remains",
        ]
    return "\n".join(lines)


def base_of(text: str) -> Path:
    """The base name of a job, also where a user gives one of its files."""
    path = Path(text)
    return path.with_suffix("") if path.suffix in (*working_files.SUFFIXES, *RESULTS) and path.is_file() else path


def view_angles(text: str) -> tuple[float, float]:
    if text in picture.VIEWS:
        return picture.VIEWS[text]
    try:
        azimuth, elevation = (float(word) for word in text.split(","))
        if math.isfinite(azimuth) and abs(elevation) <= 90:
            return azimuth, elevation
    except ValueError:
        pass
    raise BadFile("--view", f"{text!r} is none of {', '.join(picture.VIEWS)} and no AZIMUTH,ELEVATION in degrees")


def drawing_for(options: argparse.Namespace, job: FinishedJob, findings: Findings) -> Drawing:
    """The drawing named after --measure, else the one that keld-job handed on."""
    if options.measure:
        return read_drawing(Path(options.measure), findings)
    if options.measure is not None and not job.origin.drawing.measures:
        raise BadFile("--measure", f"{job.base} has no [[measure]] of its part file; name a drawing.toml")
    return job.origin.drawing


def datum_of(options: argparse.Namespace) -> list[Place] | None:
    """Three points of --datum "x,y,z x,y,z x,y,z"."""
    if options.datum is None:
        return None
    try:
        points = [tuple(float(c) for c in point.split(",")) for point in options.datum.split()]
    except ValueError:
        points = []
    if len(points) != 3 or any(len(p) != 3 or not np.isfinite(p).all() for p in points):
        raise BadFile("--datum", f'{options.datum!r} is not of the form "x,y,z x,y,z x,y,z" in mm')
    return points


def measured(job: FinishedJob, wanted, fit: shown_fields.Fit, path: Path, findings) -> list[str]:
    """The table of all answers; BASE.measures.csv beside it."""
    moved, _ = shown_fields.laid_over(job.nominal_mm, job.moulded_mm, job.nodes, fit, job.boundary)
    answers = measures.answers_of(wanted, job.shapes(moved), findings)
    if findings.faults:
        return []
    atomic.write_file(path, lambda place: place.write_text(listing.csv_text(answers), encoding="utf-8"))
    findings.out_of_tolerance = any(answer.within is False for answer in answers)
    return ["", listing.console(answers), ""]


def make_scene(options, job: FinishedJob, shown: shown_fields.Shown, view) -> picture.Scene:
    """The picture's data; a corrected cavity is shown as its deviation from the nominal shape."""
    scale = options.scale or picture.automatic_scale(shown.points_mm[job.nodes], shown.displacement_mm[job.nodes])
    return picture.Scene(
        shown.points_mm,
        job.part.triangles,
        shown.displacement_mm,
        shown.values_mm,
        "mm",
        f"{Path(options.base).name}: {shown.words}".encode(errors="replace").decode(),
        shown_fields.notes_of(shown, job.nodes),
        scale,
        view,
    )
