"""The result as an unstructured VTK grid (.vtu) for ParaView and meshio. Called by view_cli."""

from __future__ import annotations

import contextlib
import io
from pathlib import Path

import meshio
import numpy as np

from ..base import atomic
from ..base.ownership import MADE_BY_VIEW
from .geometry_file import PartGeometry
from .results_file import Results


def point_data(results: Results, remaining: np.ndarray | None) -> dict[str, np.ndarray]:
    """mm per node, names with their unit; in-mold only when the run had stress, remaining for a corrected cavity."""
    data = {
        "displacement_total_mm": results.total_mm,
        "displacement_thermal_mm": results.thermal_mm,
        "displacement_length_mm": results.length_mm,
        "sink_mark_mm": results.sink_mm,
    }
    if results.in_mold_mm is not None:
        data["displacement_in_mold_mm"] = results.in_mold_mm
    if remaining is not None:
        data["remaining_deviation_mm"] = remaining
    return {name: np.ascontiguousarray(values) for name, values in data.items()}


def write_vtu(path: Path, part: PartGeometry, points: dict[str, np.ndarray], ascii_text: bool) -> None:
    """Triangles, then runners; a runner has its diameter, and nan where a quantity belongs to walls alone."""
    runners = len(part.runners)
    cells = [("triangle", part.triangles)] + ([("line", part.runners)] if runners else [])
    own = {
        "thickness_mm": (part.thickness_mm, part.diameter_mm),
        "element": (part.triangle_numbers, part.runner_numbers),
    }
    own |= {name: (values, np.full((runners, *values.shape[1:]), np.nan)) for name, values in part.cell_data.items()}
    cell_data = {name: [np.ascontiguousarray(block) for block in blocks[: len(cells)]] for name, blocks in own.items()}
    mesh = meshio.Mesh(part.points_mm, cells, point_data=points, cell_data=cell_data)

    def write(target: Path) -> None:
        with contextlib.redirect_stdout(io.StringIO()), contextlib.redirect_stderr(io.StringIO()):
            meshio.write(target, mesh, file_format="vtu", binary=not ascii_text)
        text = target.read_bytes()
        start = text.index(b"<VTKFile")
        target.write_bytes(text[:start] + f"<!--{MADE_BY_VIEW}-->\n".encode() + text[start:])

    atomic.write_file(path, write)
