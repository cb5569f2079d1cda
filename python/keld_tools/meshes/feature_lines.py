"""Edges that draw a shape, found on meshes with noise too, and lines cut up for drawing. Called by finished_job and picture."""

from __future__ import annotations

import numpy as np
from scipy.sparse import coo_matrix
from scipy.sparse.csgraph import connected_components

from . import surface

FOLD_DEGREES = 30.0  # between the smoothed normals of both sides
NOISE_DEGREES = (20.0, 40.0)  # bounds of the angle below which neighbours count as one wall with noise
PASSES = 8  # of smoothing
SHORTEST = 0.03  # of the part's extent: a chain of folds that reaches less far is noise


def feature_edges(points: np.ndarray, triangles: np.ndarray) -> np.ndarray:
    """(F, 2) nodes: borders, junctions, and folds between walls; a rough skin is no fold."""
    edges = surface.edges_of(triangles)
    a, b, same = edges.pairs()
    left, right = edges.triangle[a], edges.triangle[b]
    sign = np.where(same, -1.0, 1.0)  # neighbours that are turned over have the opposite normal
    normals = smoothed(surface.unit_normals(points, triangles), areas(points, triangles), left, right, sign)
    cosine = sign * np.einsum("ij,ij->i", normals[left], normals[right])
    folds = edges.nodes[edges.of_side[a[cosine < np.cos(np.radians(FOLD_DEGREES))]]]
    extent = float(np.ptp(points[triangles.ravel()], axis=0).max()) if len(triangles) else 0.0
    return np.concatenate([edges.nodes[edges.count != 2], long_chains(points, folds, SHORTEST * extent)])


def areas(points: np.ndarray, triangles: np.ndarray) -> np.ndarray:
    return 0.5 * np.linalg.norm(surface.crosses(points, triangles), axis=1)


def smoothed(normals: np.ndarray, area: np.ndarray, left: np.ndarray, right: np.ndarray, sign: np.ndarray):
    """(T, 3) normals averaged with those of neighbours, the less the more they differ: folds stay, noise goes.

    Bilateral filter of normals: Zheng et al., IEEE Trans. Vis. Comput. Graph. 17 (2011) 1521-1530.
    """
    cosine = np.clip(sign * np.einsum("ij,ij->i", normals[left], normals[right]), -1.0, 1.0)
    roughness = np.degrees(np.arccos(np.median(cosine))) if len(cosine) else 0.0
    width = 1.0 - np.cos(np.radians(np.clip(3.0 * roughness, *NOISE_DEGREES)))
    one, other, both = np.concatenate([left, right]), np.concatenate([right, left]), np.concatenate([sign, sign])
    for _ in range(PASSES):
        neighbour = both[:, None] * normals[other]
        apart = 1.0 - np.einsum("ij,ij->i", normals[one], neighbour)
        weight = area[other] * np.exp(-((apart / width) ** 2))
        total = area[:, None] * normals
        for axis in range(3):
            total[:, axis] += np.bincount(one, weight * neighbour[:, axis], len(normals))
        length = np.linalg.norm(total, axis=1, keepdims=True)
        normals = np.divide(total, length, out=normals.copy(), where=length > 0)
    return normals


def long_chains(points: np.ndarray, edges: np.ndarray, shortest: float) -> np.ndarray:
    """The edges of connected sets that reach over at least `shortest` along one axis."""
    if not len(edges):
        return edges
    graph = coo_matrix((np.ones(len(edges)), (edges[:, 0], edges[:, 1])), shape=(len(points), len(points)))
    count, label = connected_components(graph, directed=False)
    chain = label[edges[:, 0]]
    low, high = np.full((count, 3), np.inf), np.full((count, 3), -np.inf)
    for end in (0, 1):
        np.minimum.at(low, chain, points[edges[:, end]])
        np.maximum.at(high, chain, points[edges[:, end]])
    return edges[(high - low).max(axis=1)[chain] >= shortest]


def cut_up(points: np.ndarray, edges: np.ndarray, longest: float) -> np.ndarray:
    """Edges (n, 2) as segments (m, 2, 3) of about `longest` at most."""
    a, b = points[edges[:, 0]], points[edges[:, 1]]
    pieces = np.maximum(1, np.ceil(np.linalg.norm((b - a)[:, :2], axis=1) / longest)).astype(int)
    edge = np.repeat(np.arange(len(edges)), pieces)
    place = np.arange(len(edge)) - np.repeat(np.cumsum(pieces) - pieces, pieces)
    step = ((b - a) / pieces[:, None])[edge]
    start = a[edge] + place[:, None] * step
    return np.stack([start, start + step], axis=1)
