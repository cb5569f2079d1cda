"""A mesh as its file gives it, whatever the format: what the readers hand to mesh_input."""

from __future__ import annotations

from dataclasses import dataclass, field

import numpy as np


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
    left_out: dict[str, int] = field(default_factory=dict)  # kind of element -> count passed over
    referenced: np.ndarray | None = None  # (N,) mask of nodes that any element has, middle nodes too; None: by corners
    shares_nodes: bool = True  # False: each triangle has nodes of its own (STL)

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


def indices_of(numbers: np.ndarray, wanted: np.ndarray) -> np.ndarray:
    """Places in `numbers` of the `wanted` ones; -1 for one that isn't there. A negative wanted stays -1."""
    if len(numbers) == 0:
        return np.full(wanted.shape, -1)
    order = np.argsort(numbers, kind="stable")
    at = np.searchsorted(numbers, wanted, sorter=order)
    found = order[np.minimum(at, len(numbers) - 1)]
    return np.where(numbers[found] == wanted, found, -1)
