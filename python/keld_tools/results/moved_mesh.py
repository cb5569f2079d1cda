"""The moulded shape for other programs: an STL, or the user's own mesh file with its nodes moved. Called by view_cli.

A deck keeps every line but its nodes; Gmsh and other meshes go through meshio.
"""

from __future__ import annotations

import contextlib
import io
import re
from dataclasses import dataclass
from pathlib import Path

import meshio
import numpy as np
from scipy.spatial import cKDTree

from ..base import atomic
from ..base.findings import BadFile
from ..base.ownership import MADE_BY_VIEW
from ..meshes.nastran_deck import real
from . import compensate
from .finished_job import FinishedJob

NASTRAN, ABAQUS = (".bdf", ".nas", ".fem", ".dat"), (".inp",)
SAME = 1e-5  # of the part's extent: a node of the file that lies nearer to one of the job is that one


@dataclass
class NodeLine:
    """Where a deck tells a node: its lines from `first` to before `end`, and the words round its coordinates."""

    first: int
    end: int
    number: str
    point: list[float]
    rest: list[str]


def export(path: Path, job: FinishedJob, moved_mm: np.ndarray) -> None:
    """Write the shape (N, 3). BadFile where the file's kind is none that can be written for this job."""
    source, kind = job.origin.mesh, path.suffix.lower()
    if kind == ".stl":
        content = compensate.stl(moved_mm, job.part.triangles)
        atomic.write_file(path, lambda place: place.write_bytes(content))
        return
    if source is None or kind != source.suffix.lower():
        known = "; the job doesn't know its mesh file" if source is None else f" or {source.suffix}, as {source.name}"
        raise BadFile(path, f"can't be written as {kind or 'a file without an ending'}: choose .stl{known}")
    if not source.is_file():
        raise BadFile(source, "isn't there any more: it is the mesh whose nodes are to be moved")
    mover = Mover(job, moved_mm)
    if kind in (*NASTRAN, *ABAQUS):
        text = moved_deck(source, mover, kind in NASTRAN)
        atomic.write_file(path, lambda place: place.write_text(text, encoding="utf-8"))
    else:
        write_by_meshio(path, source, mover)


class Mover:
    """Moves points of the mesh file; middle nodes by the mean of the two nearest nodes of the job."""

    def __init__(self, job: FinishedJob, moved_mm: np.ndarray):
        self.to_mm, self.source = job.origin.to_mm, job.origin.mesh
        points = job.nominal_mm[job.nodes]
        self.shift_mm = (moved_mm - job.nominal_mm)[job.nodes]
        self.tree = cKDTree(points)
        self.near = SAME * float(np.ptp(points, axis=0).max())

    def __call__(self, points: np.ndarray) -> np.ndarray:
        """(n, 3) in the unit of the file. BadFile where the file isn't the mesh of the job."""
        distance, index = self.tree.query(points * self.to_mm, k=2)
        met = distance[:, 0] <= self.near
        if len(np.unique(index[met, 0])) < len(self.shift_mm):
            raise BadFile(
                self.source,
                f"has {len(np.unique(index[met, 0]))} of the {len(self.shift_mm)} nodes of the job: it has changed, or "
                "they stand in included files or in instances that the deck places; export an .stl",
            )
        weight = 1.0 / np.maximum(distance, 1e-12)
        shift = np.einsum("ij,ijk->ik", weight / weight.sum(axis=1, keepdims=True), self.shift_mm[index])
        shift[met] = self.shift_mm[index[met, 0]]
        return points + shift / self.to_mm


def moved_deck(source: Path, mover: Mover, nastran: bool) -> str:
    lines = source.read_text(encoding="utf-8", errors="replace").splitlines()
    nodes = list(nastran_nodes(source, lines) if nastran else abaqus_nodes(lines))
    if not nodes:
        raise BadFile(source, "has no nodes of its own; export an .stl")
    places = mover(np.array([node.point for node in nodes]))
    result, at = [f"{'$' if nastran else '**'} {MADE_BY_VIEW}: moulded shape"], 0
    for node, (x, y, z) in zip(nodes, places.tolist()):
        result += lines[at : node.first]
        if nastran:  # large fields, since eight characters don't hold a displacement
            system, others = node.rest[0], (node.rest[1:] + [""] * 3)[:3]
            result.append(f"GRID*   {node.number:>16}{system:>16}{x:16.9G}{y:16.9G}")
            result.append(f"*       {z:16.9G}" + "".join(f"{word:>16}" for word in others).rstrip())
        else:
            result.append(", ".join([node.number, f"{x:.9g}", f"{y:.9g}", f"{z:.9g}", *node.rest]))
        at = node.end
    return "\n".join([*result, *lines[at:]]) + "\n"


def nastran_nodes(source: Path, lines: list[str]):
    """GRID cards in small, large and free field."""
    for at, line in enumerate(lines):
        card = re.match(r"GRID(\*?)(?=[\s,]|$)", line, re.I)
        if not card:
            continue
        body, end = line.split("$", 1)[0], at + 1
        if "," in body:
            words = [word.strip() for word in body.split(",")[1:]]
        elif card[1]:
            more = lines[end].ljust(72) if end < len(lines) and lines[end].startswith("*") else " " * 72
            end += int(end < len(lines) and lines[end].startswith("*"))
            body = body.ljust(72)
            words = [part[8 + 16 * i : 24 + 16 * i].strip() for part in (body, more) for i in range(4)]
        else:
            words = [body.expandtabs(8).ljust(72)[8 + 8 * i : 16 + 8 * i].strip() for i in range(8)]
        words += [""] * 8
        if words[1] not in ("", "0"):
            raise BadFile(source, f"node {words[0]} stands in coordinate system {words[1]}; export an .stl", at + 1)
        try:
            yield NodeLine(at, end, words[0], [real(word or "0") for word in words[2:5]], ["", *words[5:8]])
        except ValueError:
            raise BadFile(source, f"node {words[0]} has no number as a coordinate", at + 1) from None


def abaqus_nodes(lines: list[str]):
    """Data lines below *NODE."""
    inside = False
    for at, line in enumerate(lines):
        if line.startswith("**") or not line.strip():
            continue
        if line.startswith("*"):
            inside = re.match(r"\*\s*NODE\s*(,|$)", line, re.I) is not None
        elif inside:
            words = [word.strip() for word in line.split(",")]
            yield NodeLine(at, at + 1, words[0], [float(w or 0) for w in (words[1:4] + ["", "", ""])[:3]], words[4:])


def write_by_meshio(path: Path, source: Path, mover: Mover) -> None:
    said = io.StringIO()
    with contextlib.redirect_stdout(said), contextlib.redirect_stderr(said):
        try:
            mesh = meshio.read(source)
            flat = np.asarray(mesh.points, float)
            mesh.points = mover(np.column_stack([flat, np.zeros((len(flat), 3 - flat.shape[1]))]))
            kind = gmsh_kind(source) if source.suffix.lower() == ".msh" else {}
            atomic.write_file(path, lambda place: meshio.write(place, mesh, **kind))
        except BadFile:
            raise
        except (Exception, SystemExit) as error:  # meshio's readers and writers end in every kind of exception
            raise BadFile(source, f"can't be written with moved nodes: {error or said.getvalue()}") from None


def gmsh_kind(source: Path) -> dict:
    """The format of the file, kept; meshio's own choice would be the latest."""
    with open(source, "rb") as file:
        words = file.read(200).split()
    version, binary = (words[1], words[2] == b"1") if words[:1] == [b"$MeshFormat"] else (b"4.1", False)
    return {"file_format": "gmsh22" if version.startswith(b"2") else "gmsh", "binary": binary}
