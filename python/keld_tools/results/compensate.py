"""A cavity corrected by the displacement turned round, and its job. Called by view_cli with --compensate.

Step k: cavity(k + 1) = cavity(k) - factor (part(k) - nominal), part(k) = cavity(k) + displacement(k), a fixed-point
iteration. Its job keeps the nominal shape beside it as BASE.nominal.PG1 and the boundary nodes of the first
run, so that a second run is measured against the same shape in the same frame.
"""

from __future__ import annotations

import filecmp
import re
from pathlib import Path

import numpy as np

from ..base import atomic
from ..base.findings import BadFile
from ..base.ownership import MADE_BY_VIEW
from ..base.units import CM_PER_MM
from ..job import working_files
from ..meshes import surface
from .geometry_file import PartGeometry, after_title, read_geometry, text_of

COPIED = (".PRC", ".CPU", ".MAL", ".RS1", ".PT1", ".CT1", ".origin.json")


def nominal_path(base: Path) -> Path:
    return Path(f"{base}.nominal.PG1")


def nominal_points(base: Path, part: PartGeometry) -> np.ndarray | None:
    """(N, 3) mm of the shape that the part should have; None for a job that isn't a corrected cavity."""
    path = nominal_path(base)
    if not path.is_file():
        return None
    nominal = read_geometry(path)
    if len(nominal.points_mm) != len(part.points_mm) or not np.array_equal(nominal.triangles, part.triangles):
        raise BadFile(path, f"isn't the nominal shape of {part.path}: its mesh is another one")
    return nominal.points_mm


def next_base(base: Path) -> Path:
    """cover -> cover-cavity1 -> cover-cavity2."""
    step = re.fullmatch(r"(.+)-cavity(\d+)", base.name)
    return base.with_name(f"{step[1]}-cavity{int(step[2]) + 1}" if step else f"{base.name}-cavity1")


def chosen_boundary(part: PartGeometry) -> list[int]:
    """Node numbers that keld chooses by itself: nearest to the centre, farthest from it, largest triangle with both."""
    corners = part.triangles.ravel()
    nodes = corners[np.sort(np.unique(corners, return_index=True)[1])]
    p = part.points_mm[nodes]
    first = np.linalg.norm(p - p.mean(axis=0), axis=1).argmin()
    second = np.linalg.norm(p - p[first], axis=1).argmax()
    area = np.linalg.norm(np.cross(p - p[first], p[second] - p[first]), axis=1)
    third = len(area) - 1 - area[::-1].argmax()
    return [int(nodes[i]) + 1 for i in (first, second, third)]


def held_nodes(base: Path, part: PartGeometry) -> list[int]:
    """Boundary nodes of a job: .BC1, else .CPU, else keld's own choice."""
    fixed = Path(f"{base}.BC1")
    if fixed.is_file():
        text = fixed.read_text(encoding="utf-8", errors="replace")
        groups = re.findall(r"^\[Keld_FixBC\][^\n]*\n\s*(\d+)[^\n]*\n\s*(\d+)[^\n]*\n\s*(\d+)", text, re.M)
        nodes = [int(n) for n in groups[-1]] if groups else []
    else:
        nodes = []
    if not nodes and Path(f"{base}.CPU").is_file():
        text = Path(f"{base}.CPU").read_text(encoding="utf-8", errors="replace").partition("[Keld_ComputeData]")[2]
        values = re.findall(r"=[^=\n]*=[^=\n]*=\s*([-+.\deE]+)", text)
        nodes = [int(float(v)) for v in values[4:7]]
    return nodes if len(nodes) == 3 and all(1 <= n <= len(part.points_mm) for n in nodes) else chosen_boundary(part)


def paths_at_risk(base: Path, target: Path) -> list[Path]:
    """Every file that write_cavity would change or remove; a copy that is there already would only be renewed."""

    def same(suffix: str) -> bool:
        copy, source = Path(f"{target}{suffix}"), Path(f"{base}{suffix}")
        return suffix in COPIED and copy.is_file() and source.is_file() and filecmp.cmp(copy, source, shallow=False)

    suffixes = (*working_files.SUFFIXES, ".nominal.PG1", ".stl", ".WR1")
    return [Path(f"{target}{suffix}") for suffix in suffixes if not same(suffix)]


def write_cavity(
    base: Path, target: Path, part: PartGeometry, deviation: np.ndarray, factor: float, nominal: np.ndarray | None
) -> list[Path]:
    """Write the corrected cavity's job at `target`, its nominal shape and its STL; returns the files.

    deviation: (N, 3) mm, what the moulded part of the job `base` differs by from the nominal shape.
    """
    cavity = part.points_mm - factor * deviation
    heading = [working_files.MADE_BY, f"cavity corrected by {factor:g} of the deviation of {base.name}"]

    contents = {
        ".PG1": moved(part.path, cavity, heading),
        ".nominal.PG1": moved(
            part.path,
            part.points_mm if nominal is None else nominal,
            [working_files.MADE_BY, f"nominal shape of {target.name}"],
        ),
        ".BC1": working_files.boundary(held_nodes(base, part)).encode(),
        ".stl": stl(cavity, part.triangles),
    }
    for suffix in COPIED:
        source = Path(f"{base}{suffix}")
        if source.is_file():
            contents[suffix] = source.read_bytes()
    stale = tuple(s for s in working_files.SUFFIXES + (".WR1",) if s not in contents)
    atomic.write_family(target, contents, stale, last=".PG1")
    return [Path(f"{target}{suffix}") for suffix in contents]


def moved(path: Path, points: np.ndarray, heading: list[str]) -> bytes:
    """The .PG1 at `path` with other coordinates (mm); every other field stays as it is."""
    text = text_of(path)
    head, *lines = text[after_title(path, text) :].split("\n")
    count, nodes, _, factor = (float(word) for word in head.split())
    elements, records = lines[: int(count)], lines[int(count) : int(count + nodes)]
    fields = [record.split(None, 4) for record in records]
    order = np.array([int(f[0]) for f in fields]) - 1
    xyz = (points[order] * (CM_PER_MM / factor)).tolist()
    body = [f"{f[0]} {x:.10g} {y:.10g} {z:.10g} {f[4].rstrip()}" for f, (x, y, z) in zip(fields, xyz)]
    return (working_files.title(heading) + "\n".join([head, *elements, *body]) + "\n").encode(errors="replace")


def stl(points: np.ndarray, triangles: np.ndarray) -> bytes:
    """A binary STL: 80 bytes of header, the count, and per triangle normal, corners (mm) and two bytes of nothing."""
    record = np.zeros(len(triangles), np.dtype([("vectors", "<f4", (4, 3)), ("attribute", "<u2")]))
    record["vectors"][:, 0] = surface.unit_normals(points, triangles)
    record["vectors"][:, 1:] = points[triangles]
    return MADE_BY_VIEW.encode().ljust(80) + len(triangles).to_bytes(4, "little") + record.tobytes()
