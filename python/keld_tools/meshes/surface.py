"""Geometry and connection of triangles: edges, bodies, normals, turning, feature edges. Pure functions of arrays.

Points are (N, 3), triangles (T, 3) indices from 0. Used by checks, mesh_input and picture.
"""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np


@dataclass
class Edges:
    """Each edge once, and where the three sides of each triangle find theirs."""

    nodes: np.ndarray  # (E, 2) lower node first
    count: np.ndarray  # (E,) triangles at the edge
    of_side: np.ndarray  # (3 T,) edge of side s of triangle t at t + s T; side s runs from corner s to s + 1
    forward: np.ndarray  # (3 T,) the side runs from the edge's lower node to its upper one
    triangle: np.ndarray  # (3 T,)

    def pairs(self) -> tuple[np.ndarray, np.ndarray, np.ndarray]:
        """Edges with exactly two triangles: their two sides, and whether both run the same way."""
        order = np.argsort(self.of_side, kind="stable")
        start = np.concatenate([[0], np.cumsum(self.count)[:-1]]).astype(np.int64)
        double = start[self.count == 2]
        a, b = order[double], order[double + 1]
        return a, b, self.forward[a] == self.forward[b]


def edges_of(triangles: np.ndarray) -> Edges:
    start = triangles.T.reshape(-1)
    end = triangles[:, [1, 2, 0]].T.reshape(-1)
    low, high = np.minimum(start, end), np.maximum(start, end)
    span = int(triangles.max(initial=0)) + 1
    keys, of_side, count = np.unique(low * span + high, return_inverse=True, return_counts=True)
    return Edges(
        np.column_stack([keys // span, keys % span]),
        count,
        of_side,
        start == low,
        np.tile(np.arange(len(triangles)), 3),
    )


def components(n: int, a: np.ndarray, b: np.ndarray) -> np.ndarray:
    """Label per node of the graph with edges a-b: the least node of its component."""
    label = np.arange(n)
    while len(a):
        la, lb = label[a], label[b]
        apart = la != lb
        if not apart.any():
            break
        a, b, la, lb = a[apart], b[apart], la[apart], lb[apart]
        np.minimum.at(label, np.maximum(la, lb), np.minimum(la, lb))
        while not np.array_equal(shorter := label[label], label):
            label = shorter
    return label


def crosses(points: np.ndarray, triangles: np.ndarray) -> np.ndarray:
    """Edge 1-2 x edge 1-3 of each triangle: twice its area along its normal."""
    p = points[triangles]
    return np.cross(p[:, 1] - p[:, 0], p[:, 2] - p[:, 0])


def unit_normals(points: np.ndarray, triangles: np.ndarray) -> np.ndarray:
    """(T, 3); zero for a triangle without area."""
    c = crosses(points, triangles)
    length = np.linalg.norm(c, axis=1, keepdims=True)
    return np.divide(c, length, out=np.zeros_like(c), where=length > 0)


def turned_alike(triangles: np.ndarray, edges: Edges) -> np.ndarray:
    """Mask of the triangles to turn so that neighbours agree; the first triangle of each body stays.

    Breadth first over edges with two triangles. A surface with one side only (Moebius) keeps a seam.
    """
    a, b, same = edges.pairs()
    left, right = edges.triangle[a], edges.triangle[b]
    source = np.concatenate([left, right])
    order = np.argsort(source, kind="stable")
    target = np.concatenate([right, left])[order]
    flip = np.concatenate([same, same])[order]
    start = np.searchsorted(source[order], np.arange(len(triangles) + 1))
    turn, seen = np.zeros(len(triangles), bool), np.zeros(len(triangles), bool)
    for seed in range(len(triangles)):
        if seen[seed]:
            continue
        seen[seed] = True
        front = np.array([seed])
        while len(front):
            counts = start[front + 1] - start[front]
            first = np.repeat(start[front] - np.concatenate([[0], np.cumsum(counts)[:-1]]), counts)
            links = first + np.arange(counts.sum())
            parent, child = np.repeat(front, counts), target[links]
            new = ~seen[child]
            child, index = np.unique(child[new], return_index=True)
            turn[child] = turn[parent[new][index]] ^ flip[links][new][index]
            seen[child] = True
            front = child
    return turn


def merged_nodes(points: np.ndarray, tolerance: float) -> np.ndarray:
    """For each node the least node of those that lie at its place, to about `tolerance` (0: the same numbers).

    Nodes of one cell of a grid of twice the tolerance fall together; eight shifted grids see every pair.
    """
    a, b = [], []
    shifts = np.array([[i, j, k] for i in (0.0, 0.5) for j in (0.0, 0.5) for k in (0.0, 0.5)])
    origin = points.min(axis=0) if len(points) else np.zeros(3)
    for shift in shifts if tolerance > 0 else shifts[:1]:
        cells = np.floor((points - origin) / (2 * tolerance) + shift) if tolerance > 0 else points
        order = np.lexsort(cells.T)
        alike = (cells[order][1:] == cells[order][:-1]).all(axis=1)
        a.append(order[:-1][alike])
        b.append(order[1:][alike])
    return components(len(points), np.concatenate(a), np.concatenate(b))
