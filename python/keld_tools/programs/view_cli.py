"""keld-view: BASE.vtu and BASE.png of a finished job, and the corrected cavity. Called by the executable keld-view."""

from __future__ import annotations

import argparse
import math
import sys
from pathlib import Path
from shlex import quote

import numpy as np

from .. import __version__
from ..base import ownership
from ..base.findings import BadFile, Findings
from ..base.program import next_commands, run_program, whole_output
from ..base.progress import Progress
from ..job import working_files
from ..report import picture
from ..results import compensate, vtu
from ..results.geometry_file import PartGeometry, read_geometry, read_prior
from ..results.results_file import Results, read_results

RESULTS = (".WR1", ".WD1", ".WLG1", ".vtu", ".png")  # files of a base name besides those of its job

# field -> (what distorts the part, component or None for the length, words)
FIELDS = {
    "total": ("total", None, "total displacement"),
    "x": ("total", 0, "displacement along x"),
    "y": ("total", 1, "displacement along y"),
    "z": ("total", 2, "displacement along z"),
    "in-mold": ("in-mold", None, "in-mold displacement (frozen-in stress)"),
    "thermal": ("thermal", None, "thermal displacement"),
    "sink": ("total", None, "sink mark"),
    "remaining": ("remaining", None, "remaining deviation from the nominal shape"),
}


def arguments(argv: list[str] | None) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="keld-view", description="Write BASE.vtu and BASE.png of a finished KELD job."
    )
    parser.add_argument("base", metavar="BASE", help="base name of the job, as given to keld")
    parser.add_argument(
        "--field", choices=FIELDS, help="what colours the picture (default total; remaining for a cavity)"
    )
    parser.add_argument("--scale", type=float, metavar="TIMES", help="exaggeration of the displacement")
    parser.add_argument("--view", default="iso", help=f"{', '.join(picture.VIEWS)}, or AZIMUTH,ELEVATION in degrees")
    parser.add_argument("--ascii", action="store_true", help="write the .vtu as text instead of base64")
    parser.add_argument("-o", "--output", metavar="NAME", help="write NAME.vtu, NAME.png, NAME-cavity1 instead")
    parser.add_argument("--overwrite", action="store_true", help="replace files that these tools didn't write")
    parser.add_argument("--compensate", action="store_true", help="also write the corrected cavity and its job")
    parser.add_argument("--factor", type=float, default=1.0, help="share of the displacement turned round (default 1)")
    parser.add_argument("--version", action="version", version=f"keld-view {__version__}")
    words = list(sys.argv[1:] if argv is None else argv)
    if "--view" in words[:-1]:  # argparse takes -60,30 for an option unless the two are one word
        at = words.index("--view")
        words[at : at + 2] = [f"--view={words[at + 1]}"]
    return parser.parse_args(words)


@whole_output
def main(argv: list[str] | None = None) -> int:
    """Exit status: 0 when everything is written, 1 for a file or an option that can't be used."""
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
    geometry, results_path = Path(f"{base}.PG1"), Path(f"{base}.WR1")
    progress("reading the part")
    part = read_geometry(geometry)
    if not len(part.triangles):
        raise BadFile(geometry, "has no triangle")
    progress("reading the results")
    if not results_path.is_file():
        raise BadFile(results_path, f"isn't there; run keld {quote(str(base))} 1@ INSTALL/ 2@ first")
    results = read_results(results_path, len(part.points))
    if results_path.stat().st_mtime < geometry.stat().st_mtime:
        findings.warn(str(results_path), "is older than the mesh: is it the result of this job?")
    read_prior(base, part, findings)
    nominal = compensate.nominal_points(base, part)
    remaining = None if nominal is None else part.points + results.total - nominal
    scene = make_scene(options, part, results, remaining, nominal, view)

    target = options.output or str(base)
    cavity = compensate.next_base(Path(target))
    written = [Path(f"{target}.vtu"), Path(f"{target}.png")]
    ownership.refuse_foreign(
        written + (compensate.paths_at_risk(base, cavity) if options.compensate else []), options.overwrite, findings
    )
    if findings.faults:
        return ""
    progress("writing the .vtu")
    vtu.write_vtu(Path(f"{target}.vtu"), part, vtu.point_data(results, remaining), options.ascii)
    progress("drawing")
    picture.draw(Path(f"{target}.png"), scene)
    lines = scene.notes + [f"written: {target}.vtu {target}.png"]
    if options.compensate:
        progress("writing the corrected cavity")
        deviation = results.total if remaining is None else remaining
        files = compensate.write_cavity(base, cavity, part, deviation, options.factor, nominal)
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


def make_scene(options, part: PartGeometry, results: Results, remaining, nominal, view) -> picture.Scene:
    """The picture's data; a corrected cavity is shown as its deviation from the nominal shape."""
    name = options.field or ("total" if remaining is None else "remaining")
    which, component, words = FIELDS[name]
    vectors = {"total": results.total, "in-mold": results.in_mold, "thermal": results.thermal, "remaining": remaining}
    vector = vectors[which]
    if vector is None:
        raise BadFile(
            f"--field {name}",
            "this run has no frozen-in stress" if which == "in-mold" else "this job isn't a corrected cavity",
        )
    values = (
        results.sink
        if name == "sink"
        else (np.linalg.norm(vector, axis=1) if component is None else vector[:, component])
    )
    points = nominal if which == "remaining" else part.points
    scale = options.scale or picture.automatic_scale(points[np.unique(part.triangles)], vector)
    return picture.Scene(
        points,
        part.triangles,
        vector,
        values,
        "mm",
        f"{Path(options.base).name}: {words}".encode(errors="replace").decode(),
        notes_of(points, part, vector, values, words),
        scale,
        view,
    )


def notes_of(points: np.ndarray, part: PartGeometry, vector: np.ndarray, values: np.ndarray, words: str) -> list[str]:
    """The greatest value and where it is, and the range of each component over the part."""
    used = np.unique(part.triangles)
    node = used[np.abs(values[used]).argmax()]
    x, y, z = points[node]
    lines = [
        f"greatest {words.split(' (')[0]}: {values[node]:.4g} mm at node {node + 1} ({x:.4g}, {y:.4g}, {z:.4g}) mm"
    ]
    ranges = [f"{axis} {vector[used, i].min():.4g} to {vector[used, i].max():.4g}" for i, axis in enumerate("xyz")]
    lines.append("components of the displacement shown: " + ", ".join(ranges) + " mm")
    return lines
