"""Geometry and connection of triangles: edges, bodies, normals, turning, feature edges. Pure functions of arrays.

Points are (N, 3), triangles (T, 3) indices from 0. Used by checks, mesh_input and picture.
"""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
from scipy.sparse import coo_matrix
from scipy.sparse.csgraph import connected_components
from scipy.spatial import cKDTree


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
    graph = coo_matrix((np.ones(len(a), np.int8), (a, b)), shape=(n, n))
    count, label = connected_components(graph, directed=False)
    least = np.full(count, n)
    np.minimum.at(least, label, np.arange(n))
    return least[label]


def crosses(points: np.ndarray, triangles: np.ndarray) -> np.ndarray:
    """Edge 1-2 x edge 1-3 of each triangle: twice its area along its normal."""
    p = points[triangles]
    return np.cross(p[:, 1] - p[:, 0], p[:, 2] - p[:, 0])


def nearest_on(points: np.ndarray, triangles: np.ndarray, place) -> tuple[int, np.ndarray]:
    """The triangle nearest to a place (3,), and the weights (3,) of its corners that give the nearest point on it.

    That point lies above the triangle's inside, or on one of its sides: Ericson, Real-Time Collision Detection (2005), 5.1.5.
    """
    p = points[triangles] - np.asarray(place, float)
    best, found = np.full(len(triangles), np.inf), np.zeros((len(triangles), 3))

    def offer(weights: np.ndarray, allowed) -> None:
        distance = np.linalg.norm(np.einsum("ti,tij->tj", weights, p), axis=1)
        nearer = allowed & (distance < best)
        best[nearer], found[nearer] = distance[nearer], weights[nearer]

    for corner, other in ((0, 1), (1, 2), (2, 0)):
        side = p[:, other] - p[:, corner]
        square = np.einsum("ij,ij->i", side, side)
        along = -np.einsum("ij,ij->i", side, p[:, corner])
        share = np.clip(np.divide(along, square, out=np.zeros_like(along), where=square > 0), 0.0, 1.0)
        weights = np.zeros_like(found)
        weights[:, corner], weights[:, other] = 1.0 - share, share
        offer(weights, True)
    normal = crosses(points, triangles)
    square = np.einsum("ij,ij->i", normal, normal)
    parts = [np.einsum("ij,ij->i", np.cross(p[:, i], p[:, j]), normal) for i, j in ((1, 2), (2, 0), (0, 1))]
    weights = np.divide(
        np.stack(parts, axis=1), square[:, None], out=np.full_like(found, -1.0), where=square[:, None] > 0
    )
    offer(weights, (weights >= 0).all(axis=1))
    triangle = int(best.argmin())
    return triangle, found[triangle]


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
    """For each node the least node of those that lie within `tolerance` of it, or of each other in a row.

    Nodes of exactly one place fall together first, which leaves few for the search.
    """
    _, first, place = np.unique(points, axis=0, return_index=True, return_inverse=True)
    pairs = (
        cKDTree(points[first]).query_pairs(tolerance, output_type="ndarray") if tolerance > 0 else np.zeros((0, 2), int)
    )
    group = components(len(first), pairs[:, 0], pairs[:, 1])[place.ravel()]
    least = np.full(len(first), len(points))
    np.minimum.at(least, group, np.arange(len(points)))
    return least[group]
