"""Needles out of a mesh: edges below a told length collapse, and what becomes empty goes. Called by mesh_input.

The commonest fault of real meshes is a triangle next to no width, which spoils the equations around it.
"""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np

from . import surface

FOLD = 0.87  # cosine of the angle between two triangles below which their edge is a fold


@dataclass
class Repaired:
    """What a repair leaves, over the nodes and triangles that were given."""

    node: np.ndarray  # (N,) the node that stands in for each
    kept: np.ndarray  # (T,) mask of the triangles that are left
    edges: int  # collapsed

    def words(self, length: float) -> str:
        return (
            f"repair: {self.edges} edges below {length:g} mm collapsed, {(~self.kept).sum()} empty triangles left out"
        )


def collapse_short_edges(points: np.ndarray, triangles: np.ndarray, length: float) -> Repaired:
    """Shortest edges first, until none is below `length` (mm): one node gives way to the other, which keeps its place.

    A node on a border or fold stays rather than one inside a wall, so that the part keeps its outline. A node is in
    one collapse per round, and lengths are taken anew in each: many short edges in a row don't run into one point.
    """
    node = np.arange(len(points))
    rank = shape_rank(points, triangles)
    edges = 0
    while True:
        live = node[triangles]
        pairs = surface.edges_of(live[whole(live)]).nodes
        size = np.linalg.norm(points[pairs[:, 0]] - points[pairs[:, 1]], axis=1)
        chosen = matching(pairs[size < length], size[size < length], len(points))
        if not len(chosen):
            break
        first_stays = rank[chosen[:, 0]] >= rank[chosen[:, 1]]
        stays, goes = (np.where(first_stays, chosen[:, k], chosen[:, 1 - k]) for k in (0, 1))
        onto = np.arange(len(points))
        onto[goes] = stays
        node = onto[node]
        edges += len(chosen)
    return Repaired(node, whole(node[triangles]) & ~doubled(node[triangles], triangles), edges)


def whole(triangles: np.ndarray) -> np.ndarray:
    """(T,) mask of triangles with three different nodes."""
    return (triangles != triangles[:, [1, 2, 0]]).all(axis=1)


def shape_rank(points: np.ndarray, triangles: np.ndarray) -> np.ndarray:
    """(N,) 2 for nodes on borders and junctions, 1 for those on folds, 0 for others; an empty triangle makes a fold."""
    edges = surface.edges_of(triangles)
    a, b, same = edges.pairs()
    normals = surface.unit_normals(points, triangles)
    cosine = np.einsum("ij,ij->i", normals[edges.triangle[a]], normals[edges.triangle[b]])
    folds = edges.of_side[a[np.where(same, -cosine, cosine) < FOLD]]
    rank = np.zeros(len(points), np.int64)
    rank[edges.nodes[folds].ravel()] = 1
    rank[edges.nodes[edges.count != 2].ravel()] = 2
    return rank


def matching(pairs: np.ndarray, size: np.ndarray, nodes: int) -> np.ndarray:
    """Those of the pairs that are the shortest at both of their nodes: no node is in two of them."""
    order = np.lexsort((pairs[:, 1], pairs[:, 0], size))
    place = np.empty(len(pairs), np.int64)
    place[order] = np.arange(len(pairs))
    least = np.full(nodes, len(pairs))
    for side in (0, 1):
        np.minimum.at(least, pairs[:, side], place)
    return pairs[(least[pairs[:, 0]] == place) & (least[pairs[:, 1]] == place)]


def doubled(now: np.ndarray, before: np.ndarray) -> np.ndarray:
    """(T,) mask of triangles that a repair has laid onto another one."""
    keys, changed = np.sort(now, axis=1), (now != before).any(axis=1)
    order = np.lexsort((np.arange(len(keys)), changed, *keys.T))  # of equal ones, those that stood first
    again = np.zeros(len(keys), bool)
    again[order[1:]] = (keys[order][1:] == keys[order][:-1]).all(axis=1)
    return again & changed
