"""A mesh as its file gives it, whatever the format: what the readers hand to mesh_input."""

from __future__ import annotations

import math
from collections.abc import Iterable
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

from ..base.findings import BadFile

# kind of cell, by the names of meshio -> corners
CORNERS = {"triangle": 3, "triangle6": 3, "triangle7": 3, "quad": 4, "quad8": 4, "quad9": 4}
LINES = {"line", "line3"}
POINTS = {"vertex"}


@dataclass
class RawMesh:
    """Lengths in the file's own unit; node and element indices from 0."""

    points: np.ndarray  # (N, 3)
    node_numbers: np.ndarray  # (N,) the numbers the user knows
    shells: np.ndarray  # (S, 4) corners in order round the element; -1 in column 4 of a triangle
    shell_numbers: np.ndarray  # (S,)
    shell_thickness: np.ndarray  # (S,) nan where the file gives none
    lines: np.ndarray  # (L, 2)
    line_numbers: np.ndarray  # (L,)
    line_diameter: np.ndarray  # (L,) nan where the file gives none
    groups: dict[str, np.ndarray] = field(default_factory=dict)  # name -> (S,) mask
    cell_data: dict[str, np.ndarray] = field(default_factory=dict)  # name -> (S,) or (S, n)
    left_out: dict[str, int] = field(default_factory=dict)  # kind of element -> count that can be no wall
    reduced: dict[str, int] = field(default_factory=dict)  # kind of element -> count taken by its corners, or split
    referenced: np.ndarray | None = None  # (N,) mask of nodes that any element has, middle nodes too; None: by corners
    shares_nodes: bool = True  # False: each triangle has nodes of its own (STL)
    unit_mm: float | None = None  # of the file's lengths, where the file tells it
    notes: list[str] = field(default_factory=list)  # what a user should know of the reading

    def loose(self) -> np.ndarray:
        """(N,) mask of the nodes that no element of the file has."""
        used = np.zeros(len(self.points), bool) if self.referenced is None else self.referenced.copy()
        used[self.shells[self.shells >= 0]] = True
        used[self.lines.ravel()] = True
        return ~used


def filled(
    points, node_numbers, shells, shell_numbers, shell_thickness, lines, line_numbers, line_diameter, **others
) -> RawMesh:
    """A RawMesh from lists, with the right shapes also where a list is empty."""
    return RawMesh(
        np.asarray(points, float).reshape(-1, 3),
        np.asarray(node_numbers, np.int64),
        np.asarray(shells, np.int64).reshape(-1, 4),
        np.asarray(shell_numbers, np.int64),
        np.asarray(shell_thickness, float),
        np.asarray(lines, np.int64).reshape(-1, 2),
        np.asarray(line_numbers, np.int64),
        np.asarray(line_diameter, float),
        **others,
    )


def from_cells(
    path: Path,
    points: np.ndarray,
    cells: list[tuple[str, np.ndarray]],
    cell_data: dict[str, list[np.ndarray]] | None = None,
    groups: dict[str, list[np.ndarray]] | None = None,
) -> RawMesh:
    """Blocks of cells (kind, (n, nodes) indices) as shells and lines; numbers are places in the file, from 1.

    cell_data and groups: one array per block, values or masks. Higher-order cells count by their corners, a polygon
    of more than four is split into triangles. Raises BadFile for a node that isn't there.
    """
    points = np.asarray(points, float)
    points = np.column_stack([points, np.zeros((len(points), 3 - points.shape[1]))])
    shells, lines, rows = [], [], {}
    left_out: dict[str, int] = {}
    reduced: dict[str, int] = {}
    referenced = np.zeros(len(points), bool)
    for index, (kind, block) in enumerate(cells):
        data = np.asarray(block, np.int64)
        if data.size and (data.min() < 0 or data.max() >= len(points)):
            raise BadFile(path, f"an element of kind {kind} has a node that isn't in the file")
        referenced[data.ravel()] |= kind not in POINTS
        if kind in CORNERS or kind.startswith("polygon"):
            corners, rows[index] = shell_corners(kind, data)
            shells.append(corners)
            if kind not in ("triangle", "quad") and data.shape[1] > 4:
                reduced[kind] = reduced.get(kind, 0) + len(data)
        elif kind in LINES:
            lines.append(data[:, :2])
        elif kind not in POINTS:
            left_out[kind] = left_out.get(kind, 0) + len(data)
    shell = np.concatenate(shells) if shells else np.zeros((0, 4), np.int64)
    line = np.concatenate(lines) if lines else np.zeros((0, 2), np.int64)

    def over_shells(blocks: dict[str, list[np.ndarray]] | None) -> dict[str, np.ndarray]:
        kept = {name: [np.asarray(of[i])[row] for i, row in rows.items()] for name, of in (blocks or {}).items()}
        return {name: np.concatenate(parts) for name, parts in kept.items() if parts}

    return filled(
        points,
        np.arange(1, len(points) + 1),
        shell,
        np.arange(1, len(shell) + 1),
        np.full(len(shell), math.nan),
        line,
        np.arange(1, len(line) + 1),
        np.full(len(line), math.nan),
        groups=over_shells(groups),
        cell_data=over_shells(cell_data),
        left_out=left_out,
        reduced=reduced,
        referenced=referenced,
    )


def shell_corners(kind: str, data: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """(S, 4) corners of a block of shells and the row of the block that each is from."""
    corners, row = CORNERS.get(kind, data.shape[1]), np.arange(len(data))
    if corners <= 4:
        return np.column_stack([data[:, :corners], np.full((len(data), 4 - corners), -1)]), row
    fan = np.stack([data[:, [0, k, k + 1]] for k in range(1, corners - 1)], axis=1).reshape(-1, 3)
    return np.column_stack([fan, np.full(len(fan), -1)]), np.repeat(row, corners - 2)


def named(groups: Iterable[str], name: str) -> str | None:
    """The group of that name; decks write the names of their sets in any case."""
    alike = [group for group in groups if group.lower() == name.lower()]
    return name if name in alike else alike[0] if len(alike) == 1 else None


def indices_of(numbers: np.ndarray, wanted: np.ndarray) -> np.ndarray:
    """Places in `numbers` of the `wanted` ones; -1 for one that isn't there. A negative wanted stays -1."""
    if len(numbers) == 0:
        return np.full(wanted.shape, -1)
    order = np.argsort(numbers, kind="stable")
    at = np.searchsorted(numbers, wanted, sorter=order)
    found = order[np.minimum(at, len(numbers) - 1)]
    return np.where(numbers[found] == wanted, found, -1)


def with_indices(path: Path, raw: RawMesh, others: list[int], groups: dict) -> RawMesh:
    """Node numbers of elements turned into indices; `others` are nodes that elements have beside their corners.

    Raises BadFile for a number that no node has.
    """
    for name in ("shells", "lines"):
        wanted = getattr(raw, name)
        found = indices_of(raw.node_numbers, wanted)
        lost = np.argwhere((found < 0) & (wanted != -1))
        if len(lost):
            element = getattr(raw, name[:-1] + "_numbers")[lost[0][0]]
            raise BadFile(path, f"element {element} has the node {wanted[tuple(lost[0])]}, which isn't in the file")
        setattr(raw, name, found)
    raw.groups = groups
    raw.referenced = np.isin(raw.node_numbers, others)
    return raw


def joined(meshes: list[RawMesh], names: list[str]) -> RawMesh:
    """Several meshes as one. Numbers that clash are counted on behind those of the meshes before."""
    numbers = [[mesh.node_numbers for mesh in meshes]]
    numbers.append([np.concatenate([mesh.shell_numbers, mesh.line_numbers]) for mesh in meshes])
    clash = any(len(np.unique(np.concatenate(of))) < sum(map(len, of)) for of in numbers)
    node_add, element_add = (
        np.concatenate([[0], np.cumsum([n.max(initial=0) for n in of])[:-1]]) * clash for of in numbers
    )
    first = np.concatenate([[0], np.cumsum([len(mesh.points) for mesh in meshes])])
    whole = filled(
        np.concatenate([mesh.points for mesh in meshes]),
        np.concatenate([mesh.node_numbers + add for mesh, add in zip(meshes, node_add)]),
        np.concatenate([np.where(mesh.shells >= 0, mesh.shells + at, -1) for mesh, at in zip(meshes, first)]),
        np.concatenate([mesh.shell_numbers + add for mesh, add in zip(meshes, element_add)]),
        np.concatenate([mesh.shell_thickness for mesh in meshes]),
        np.concatenate([mesh.lines + at for mesh, at in zip(meshes, first)]),
        np.concatenate([mesh.line_numbers + add for mesh, add in zip(meshes, element_add)]),
        np.concatenate([mesh.line_diameter for mesh in meshes]),
    )
    whole.referenced = np.concatenate([~mesh.loose() for mesh in meshes])
    for name in dict.fromkeys(name for mesh in meshes for name in mesh.groups):
        masks = [mesh.groups.get(name, np.zeros(len(mesh.shells), bool)) for mesh in meshes]
        whole.groups[name] = np.concatenate(masks)
    for mesh in meshes:
        for kinds, of in ((whole.left_out, mesh.left_out), (whole.reduced, mesh.reduced)):
            kinds.update({kind: kinds.get(kind, 0) + count for kind, count in of.items()})
    if clash:
        told = [
            f"{name or 'flat mesh'} from node {a + 1}, element {b + 1}"
            for name, a, b in zip(names, node_add, element_add)
        ]
        whole.notes.append("numbers are counted on from one instance to the next: " + "; ".join(told))
    return whole
