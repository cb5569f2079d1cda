"""What can be shown of a result: the fields, laid over the nominal shape, and the words on them.

Called by view_cli, page and study; picture and the page draw what stands in a Shown.
"""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np

from ..base.findings import BadFile
from ..measuring import alignment
from ..results.finished_job import FinishedJob
from . import picture

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
AFTER = {
    "best-fit": "after best fit",
    "boundary": "as the boundary nodes hold it",
    "points": "after fit to three points",
}


@dataclass
class Fit:
    """How shapes are laid over the nominal one."""

    method: str = "best-fit"
    remove_shrinkage: bool = False
    datum: list[int] | None = None  # node indices

    @property
    def words(self) -> str:
        return AFTER[self.method] + (", shrinkage removed" if self.remove_shrinkage else "")


@dataclass
class Shown:
    """One field of a result, arrays by node."""

    points_mm: np.ndarray  # (N, 3) undistorted
    displacement_mm: np.ndarray  # (N, 3) that distorts the part, aligned
    values_mm: np.ndarray  # (N,) that colour it
    words: str
    fit: alignment.Alignment


def shown(job: FinishedJob, name: str, fit: Fit) -> Shown:
    """A field by its name in FIELDS. BadFile where the run hasn't got it."""
    which, component, words = FIELDS[name]
    results = job.results
    vector = {
        "total": results.total_mm,
        "in-mold": results.in_mold_mm,
        "thermal": results.thermal_mm,
        "remaining": job.remaining_mm,
    }[which]
    if vector is None:
        raise BadFile(
            f"--field {name}",
            "this run has no frozen-in stress" if which == "in-mold" else "this job isn't a corrected cavity",
        )
    points = job.nominal_mm if which == "remaining" else job.part.points_mm
    moved, motion = laid_over(points, points + vector, job.nodes, fit, job.boundary)
    shift = moved - points
    shift[np.setdiff1d(np.arange(len(points)), job.nodes)] = 0.0  # nodes of runners alone
    if name == "sink":
        values = results.sink_mm
    else:
        values = np.linalg.norm(shift, axis=1) if component is None else shift[:, component]
        words = f"{words}, {fit.words}"
    return Shown(points, shift, values, words, motion)


def scene_of(
    job: FinishedJob,
    field: Shown,
    title: str,
    notes: list[str],
    scale: float,
    value_range: tuple[float, float] | None = None,
    view: tuple[float, float] = picture.VIEWS["iso"],
) -> picture.Scene:
    """What picture draws of a field; the title of a job whose name is no text is shown with signs in its place."""
    return picture.Scene(
        field.points_mm,
        job.part.triangles,
        field.displacement_mm,
        field.values_mm,
        "mm",
        title.encode(errors="replace").decode(),
        notes,
        scale,
        view,
        job.boundary,
        job.part.gates.tolist(),
        job.edges,
        value_range,
    )


def laid_over(points: np.ndarray, moulded: np.ndarray, nodes: np.ndarray, fit: Fit, boundary: list[int]):
    """(N, 3) mm of the moulded shape over `points`, and the motion that brings it there."""
    datum = boundary if fit.method == "boundary" else fit.datum
    motion = alignment.aligned(fit.method, points, moulded, nodes, datum, fit.remove_shrinkage)
    return motion.apply(moulded), motion


def notes_of(shown: Shown, nodes: np.ndarray) -> list[str]:
    """The greatest value and where it is, and the range of each component over the part."""
    node = nodes[np.abs(shown.values_mm[nodes]).argmax()]
    x, y, z = shown.points_mm[node]
    what = shown.words.split(" (")[0].split(",")[0]
    lines = [f"greatest {what}: {shown.values_mm[node]:.4g} mm at node {node + 1} ({x:.4g}, {y:.4g}, {z:.4g}) mm"]
    vector = shown.displacement_mm[nodes]
    ranges = [f"{axis} {vector[:, i].min():.4g} to {vector[:, i].max():.4g}" for i, axis in enumerate("xyz")]
    lines.append("components of the displacement shown: " + ", ".join(ranges) + " mm")
    if shown.fit.scale != 1.0:
        lines.append(f"shrinkage of {shown.fit.shrinkage_percent:.3f} % removed")
    return lines
