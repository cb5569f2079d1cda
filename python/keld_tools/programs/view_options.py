"""The command line of keld-view, and what its words mean. Called by view_cli."""

from __future__ import annotations

import argparse
import math
import sys
from pathlib import Path

import numpy as np

from .. import __version__
from ..base.findings import BadFile, Findings
from ..job import working_files
from ..measuring import alignment
from ..part.drawing import Drawing, Place, read_drawing
from ..report import picture
from ..report.shown import FIELDS
from ..results.finished_job import FinishedJob

RESULTS = (".WR1", ".WD1", ".WLG1", ".vtu", ".png", ".html")  # files of a base name besides those of its job


def arguments(argv: list[str] | None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="keld-view", description="Write BASE.vtu and BASE.png of a finished KELD job; measure and report it."
    )
    add = parser.add_argument
    add("base", metavar="BASE", help="base name of the job, as given to keld")
    add("--field", choices=FIELDS, help="what colours the picture (default total; remaining for a cavity)")
    add("--scale", type=float, metavar="TIMES", help="exaggeration of the displacement")
    add("--view", default="iso", help=f"{', '.join(picture.VIEWS)}, or AZIMUTH,ELEVATION in degrees")
    add("--ascii", action="store_true", help="write the .vtu as text instead of base64")
    add("-o", "--output", metavar="NAME", help="write NAME.vtu, NAME.png, NAME-cavity1 instead")
    add("--overwrite", action="store_true", help="replace files that these tools didn't write")
    add("--compensate", action="store_true", help="also write the corrected cavity and its job")
    add("--factor", type=float, default=1.0, help="share of the displacement turned round (default 1)")
    words_of_measure = "answer its measures, else those of the part file; exit status 2 where one is out"
    add("--measure", nargs="?", const="", metavar="DRAWING.toml", help=words_of_measure)
    add("--align", choices=alignment.METHODS, default="best-fit", help="how the part lies over its nominal shape")
    add("--datum", metavar='"X,Y,Z X,Y,Z X,Y,Z"', help="three points of --align points, mm")
    add("--remove-shrinkage", action="store_true", help="fit a scale too: what remains is the warpage")
    add("--report", action="store_true", help="also write BASE.html: the part in 3D, measures, job, views")
    add("--causes", action="store_true", help="run the job without each cause of warpage, tell what each contributes")
    add("--keld", metavar="PROGRAM", help="the keld to run with --causes; also KELD_PROGRAM")
    add("--animate", action="store_true", help="also write BASE.gif, which moves")
    add("--export", metavar="FILE", help="write the moulded shape: .stl, or the mesh of the job with moved nodes")
    add("--compare", metavar="BASE2", help="also draw the difference of another run on the same mesh")
    add("--version", action="version", version=f"keld-view {__version__}")
    words = list(sys.argv[1:] if argv is None else argv)
    for name in ("--view", "--datum"):  # argparse takes -60,30 for an option unless the two are one word
        if name in words[:-1]:
            at = words.index(name)
            words[at : at + 2] = [f"{name}={words[at + 1]}"]
    return parser.parse_args(words)


def base_of(text: str) -> Path:
    """The base name of a job, also where a user gives one of its files."""
    path = Path(text)
    return path.with_suffix("") if path.suffix in (*working_files.SUFFIXES, *RESULTS) and path.is_file() else path


def check_numbers(options: argparse.Namespace) -> None:
    for name in ("scale", "factor"):
        value = getattr(options, name)
        if value is not None and not (math.isfinite(value) and value > 0):
            raise BadFile(f"--{name}", f"{value:g} isn't above 0")


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
        numbers = np.array([[float(c) for c in point.split(",")] for point in options.datum.split()])
    except ValueError:
        numbers = np.zeros(0)
    if numbers.shape != (3, 3) or not np.isfinite(numbers).all():
        raise BadFile("--datum", f'{options.datum!r} is not of the form "x,y,z x,y,z x,y,z" in mm')
    return [(x, y, z) for x, y, z in numbers.tolist()]
