"""From what a mesh file holds to the triangles and runners of a job: cutting, merging, choosing. Called by job_cli."""

from __future__ import annotations

from dataclasses import dataclass, field

import numpy as np

from ..base.findings import Findings, count_of
from . import repair, surface
from .raw_mesh import RawMesh

FARTHEST = 1e6  # mm; beyond it a coordinate is damaged or in a wrong unit
STL_TOLERANCE = 1e-6  # of the part's extent: nodes of an STL that lie nearer are one


@dataclass
class JobMesh:
    """The mesh of a job, indices from 0; triangles first, then runners, in the file's order."""

    points_mm: np.ndarray  # (N, 3)
    node_numbers: np.ndarray  # (N,) the number of each node in the mesh file
    triangles: np.ndarray  # (T, 3)
    source: np.ndarray  # (T,) index into the file's shell elements
    shell_numbers: np.ndarray  # (S,) their numbers in the file
    runners: np.ndarray  # (R, 2)
    diameter_mm: np.ndarray  # (R,) nan where unknown
    runner_numbers: np.ndarray  # (R,)
    card_thickness_mm: np.ndarray  # (S,) nan where the file gives none
    groups: dict[str, np.ndarray] = field(default_factory=dict)  # name -> (S,) mask
    cell_data: dict[str, np.ndarray] = field(default_factory=dict)  # name -> (S,) or (S, n)
    notes: list[str] = field(default_factory=list)
    to_mm: float = 1.0  # of the mesh file's length unit

    @property
    def numbers(self) -> np.ndarray:
        """(T,) the mesh file's number of each triangle's element."""
        return self.shell_numbers[self.source]

    @property
    def extent_mm(self) -> float:
        return float(np.ptp(self.points_mm[np.unique(self.triangles)], axis=0).max()) if len(self.triangles) else 0.0


def build(raw: RawMesh, request, findings: Findings) -> JobMesh:
    """The job's mesh of what a file holds: mm, quadrilaterals cut, unused nodes dropped."""
    notes = raw.notes + tell_kinds(raw, request, findings)
    to_mm = unit_of(raw, request, notes, findings)
    points = raw.points * to_mm
    if not np.isfinite(points).all():
        bad = raw.node_numbers[~np.isfinite(points).all(axis=1)]
        findings.fault(str(request.path), f"{count_of(bad, 'node')} without finite coordinates")
        points = np.where(np.isfinite(points), points, 0.0)
    if np.abs(points).max(initial=0.0) > FARTHEST:
        findings.fault(
            str(request.path), f"a node lies {np.abs(points).max():g} mm from the origin, beyond {FARTHEST:g} mm"
        )
        points = np.clip(points, -FARTHEST, FARTHEST)
    triangles, source = cut(points, raw.shells)
    lines, line_numbers, diameter = raw.lines, raw.line_numbers, raw.line_diameter * to_mm
    triangles, lines = merge(points, triangles, lines, raw, request, notes)
    whole = (triangles != triangles[:, [1, 2, 0]]).all(axis=1)
    if not whole.all():
        findings.warn(
            str(request.path),
            f"{count_of(raw.shell_numbers[source[~whole]], 'triangle')} with a corner " "twice left out",
        )
        triangles, source = triangles[whole], source[whole]
    if request.repair_below_mm is not None and len(triangles):
        repaired = repair.collapse_short_edges(points, triangles, request.repair_below_mm)
        notes.append(repaired.words(request.repair_below_mm))
        triangles, source = repaired.node[triangles][repaired.kept], source[repaired.kept]
        lines = repaired.node[lines]
        ends = lines[:, 0] != lines[:, 1]
        lines, line_numbers, diameter = lines[ends], line_numbers[ends], diameter[ends]
    runner = runner_mask(triangles, lines, request.runners)
    if request.runners and len(lines) > runner.sum():
        notes.append(f"{len(lines) - runner.sum()} two-node elements along edges of triangles left out")
    mesh = JobMesh(
        points,
        raw.node_numbers,
        triangles,
        source,
        raw.shell_numbers,
        lines[runner],
        diameter[runner],
        line_numbers[runner],
        raw.shell_thickness * to_mm,
        raw.groups,
        raw.cell_data,
        notes,
        to_mm,
    )
    if request.orient and len(triangles):
        turn = surface.turned_alike(triangles, surface.edges_of(triangles))
        mesh.triangles[turn] = mesh.triangles[turn][:, [0, 2, 1]]
        notes.append(f"{turn.sum()} triangles turned round, so that neighbours agree")
    drop_unused_nodes(mesh, raw, findings, str(request.path))
    return mesh


def unit_of(raw: RawMesh, request, notes: list[str], findings: Findings) -> float:
    """mm per length unit: what the user says, else what the file says of itself, else mm."""
    if raw.unit_mm is None or request.to_mm is None:
        if raw.unit_mm is not None:
            notes.append(
                f"the file says that its lengths are in units of {raw.unit_mm:.6g} mm; length_unit overrules it"
            )
        return request.to_mm or raw.unit_mm or 1.0
    if abs(raw.unit_mm / request.to_mm - 1.0) > 1e-3:
        findings.warn(
            str(request.path),
            f"the file says that its lengths are in units of {raw.unit_mm:.6g} mm, length_unit says "
            f"{request.to_mm:.6g} mm, which is taken",
        )
    return request.to_mm


def tell_kinds(raw: RawMesh, request, findings: Findings) -> list[str]:
    """Notes on elements that were reduced or left out; one that is left out unasked is a fault."""
    notes = [f"{count} of kind {kind} taken by their corners or split" for kind, count in raw.reduced.items()]
    if not raw.left_out:
        return notes
    counts = ", ".join(f"{count} of kind {kind}" for kind, count in raw.left_out.items())
    if request.leave_out:
        return [*notes, f"elements left out: {counts}"]
    findings.fault(
        str(request.path),
        f"has elements that can be no wall of triangles: {counts}; leave_out = true in [mesh] (or --leave-out) "
        f"makes the job of the other {len(raw.shells)} shells",
    )
    return notes


def cut(points: np.ndarray, shells: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """Triangles (T, 3) of shells (S, 4) and the shell of each; a quadrilateral is cut along its shorter diagonal.

    Where the shorter one lies outside (a re-entrant corner) the other is taken.
    """
    quad = (shells[:, 3] >= 0) & (shells[:, 3] != shells[:, 2])
    q = shells[quad]
    p = points[q]
    across13 = np.linalg.norm(p[:, 2] - p[:, 0], axis=1) <= np.linalg.norm(p[:, 3] - p[:, 1], axis=1) * (1 + 1e-12)
    by13, by24 = q[:, [0, 1, 2, 0, 2, 3]], q[:, [0, 1, 3, 1, 2, 3]]

    def folded(halves):
        both = [surface.crosses(points, halves[:, :3]), surface.crosses(points, halves[:, 3:])]
        return np.einsum("ij,ij->i", *both) < 0

    across13 = np.where(folded(by13) & ~folded(by24), False, across13 | (folded(by24) & ~folded(by13)))
    first = shells[:, :3].copy()
    halves = np.where(across13[:, None], by13, by24)
    first[quad] = halves[:, :3]
    every = np.concatenate([first, halves[:, 3:]])
    source = np.concatenate([np.arange(len(shells)), np.flatnonzero(quad)])
    order = np.argsort(source, kind="stable")
    return every[order], source[order]


def merge(points, triangles, lines, raw: RawMesh, request, notes: list[str]):
    """Triangles and lines with nodes of one place made one, where asked or where the format shares none."""
    tolerance = request.merge_tolerance_mm
    if tolerance is None and not raw.shares_nodes and len(points):
        tolerance = STL_TOLERANCE * float(np.ptp(points, axis=0).max())
    if tolerance is None or not len(points):
        return triangles, lines
    node = surface.merged_nodes(points, tolerance)
    count = int((node != np.arange(len(points))).sum())
    notes.append(f"{count} nodes merged with others at their place")
    return node[triangles], node[lines]


def runner_mask(triangles: np.ndarray, lines: np.ndarray, wanted: bool) -> np.ndarray:
    """Two-node elements that are runners: those that don't lie along the edge of a triangle, as meshed curves do."""
    if not wanted or not len(lines):
        return np.zeros(len(lines), bool)
    span = int(max(triangles.max(initial=0), lines.max())) + 1
    low, high = np.sort(lines, axis=1).T
    edges = surface.edges_of(triangles).nodes if len(triangles) else np.zeros((0, 2), np.int64)
    return ~np.isin(low * span + high, edges[:, 0] * span + edges[:, 1])


def drop_unused_nodes(mesh: JobMesh, raw: RawMesh, findings: Findings, place: str) -> None:
    """Renumber without the nodes that nothing uses; those that no element of the file has are worth a warning."""
    used = np.zeros(len(mesh.points_mm), bool)
    used[mesh.triangles.ravel()] = True
    used[mesh.runners.ravel()] = True
    new = np.cumsum(used) - 1
    loose = raw.loose()
    if loose.any():
        findings.warn(place, f"{count_of(raw.node_numbers[loose], 'loose node')} left out: no element has them")
    mesh.points_mm, mesh.node_numbers = mesh.points_mm[used], mesh.node_numbers[used]
    mesh.triangles, mesh.runners = new[mesh.triangles], new[mesh.runners]


def find_nodes(mesh: JobMesh, wanted: list, what: str, place: str, findings: Findings) -> list[int]:
    """Node indices of numbers of the mesh file, or of the nodes nearest to points; triangles' nodes alone.

    A point farther than a quarter of the part's extent from every node is a fault.
    """
    on_part = np.unique(mesh.triangles)
    found = []
    for entry in wanted:
        if isinstance(entry, int):
            places = np.flatnonzero(mesh.node_numbers == entry)
            if not len(places):
                findings.fault(place, f"{what} {entry} is no node of the mesh that an element uses")
                continue
            index = int(places[0])
            if what == "boundary node" and index not in on_part:
                findings.fault(place, f"boundary node {entry} belongs to no triangle")
        else:
            candidates = on_part if what == "boundary node" else np.arange(len(mesh.points_mm))
            distance = np.linalg.norm(mesh.points_mm[candidates] - entry, axis=1)
            index = int(candidates[distance.argmin()])
            if distance.min() > 0.25 * mesh.extent_mm:
                findings.fault(place, f"the point {list(entry)} mm lies {distance.min():.4g} mm from the nearest node")
        found.append(index)
    return found
