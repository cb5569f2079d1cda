"""Wedges, loads and restraint of the reference analysis. Called by job_answer.

A triangle becomes a solid of six nodes, moved by half a thickness to either side of its plane, and is integrated on
7 x 3 points in one einsum over all elements: no closed form, nothing symmetric assumed. cm, dyn/cm2, K.
"""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np

from job_files import Fields, Mesh, Process
from job_material import Constants


def quadrature() -> tuple[np.ndarray, np.ndarray]:
    """Points (21, 3) and weights (21,): Radon's rule of degree 5 on the triangle, Gauss's through the thickness."""
    q = 15.0**0.5
    a, b = (6.0 + q) / 21.0, (6.0 - q) / 21.0
    wa, wb = (155.0 + q) / 2400.0, (155.0 - q) / 2400.0
    plane = [(1 / 3, 1 / 3, 0.1125), (a, a, wa), (1 - 2 * a, a, wa), (a, 1 - 2 * a, wa)]
    plane += [(b, b, wb), (1 - 2 * b, b, wb), (b, 1 - 2 * b, wb)]
    through = [(-(0.6**0.5), 5 / 9), (0.0, 8 / 9), (0.6**0.5, 5 / 9)]
    points = np.array([(r, s, t) for r, s, _ in plane for t, _ in through])
    return points, np.array([w * v for _, _, w in plane for _, v in through])


def shape(points: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """Values (P, 6) and derivatives (P, 3, 6) by r, s, t."""
    r, s, t = points.T
    rest, low, up, zero = 1.0 - r - s, (1.0 - t) / 2.0, (1.0 + t) / 2.0, np.zeros_like(r)
    values = np.stack([low * rest, low * r, low * s, up * rest, up * r, up * s], axis=1)
    by_r = np.stack([-low, low, zero, -up, up, zero], axis=1)
    by_s = np.stack([-low, zero, low, -up, zero, up], axis=1)
    by_t = np.stack([-rest, -r, -s, rest, r, s], axis=1) / 2.0
    return values, np.stack([by_r, by_s, by_t], axis=1)


@dataclass
class Wedges:
    nodes: np.ndarray  # (T, 6) wedge nodes from 0: lower three, upper three
    points: np.ndarray  # (2M, 3)
    half: np.ndarray  # (T, 3) from the middle plane to the upper face
    number: dict[int, int]  # geometry node -> lower wedge node
    thickness: np.ndarray  # (T,)
    area: np.ndarray  # (T,)


def make_wedges(mesh: Mesh) -> Wedges:
    """Numbers nodes by their first appearance; the upper layer follows the lower one."""
    triangles = mesh.nodes[mesh.part()]
    number: dict[int, int] = {}
    for n in triangles.flat:
        number.setdefault(int(n), len(number))
    lower = np.vectorize(number.get)(triangles)
    points = mesh.points[list(number)]
    corner = points[lower]
    cross = np.cross(corner[:, 1] - corner[:, 0], corner[:, 2] - corner[:, 0])
    cross[np.abs(cross) < 1e-30] = 0.0
    length = np.linalg.norm(cross, axis=1)
    thickness = mesh.thickness[mesh.part()]
    half = (thickness / (2.0 * length))[:, None] * cross
    nodes = np.hstack([lower, lower + len(number)])
    return Wedges(nodes, np.vstack([points, points]), half, number, thickness, length / 2.0)


@dataclass
class PointValues:
    """At the P integration points of all T elements."""

    shape: np.ndarray  # (P, 6)
    gradient: np.ndarray  # (T, P, 3, 6) by x, y, z
    factor: np.ndarray  # (T, P) determinant x weight
    determinant: np.ndarray  # (T, P)


def integrate(wedges: Wedges) -> PointValues:
    points, weights = quadrature()
    values, local = shape(points)
    corners = wedges.points[wedges.nodes]
    corners = corners + np.concatenate([-wedges.half[:, None]] * 3 + [wedges.half[:, None]] * 3, axis=1)
    jacobian = np.einsum("pik,tkj->tpij", local, corners)
    determinant = np.linalg.det(jacobian)
    if np.any(determinant <= 0.0):
        raise ValueError("an element without volume is no job of the reference")
    gradient = np.linalg.solve(jacobian, np.broadcast_to(local, (len(corners), *local.shape)))
    return PointValues(values, gradient, determinant * weights, determinant)


def averaged(kind: Constants, a1: float) -> tuple[np.ndarray, np.ndarray]:
    """Stiffness C_ijkl and expansion for orientation a = diag(a1, 1 - a1, 0), fourth moment a_ij a_kl.

    S. G. Advani and C. L. Tucker, Journal of Rheology 31 (1987) 751-784: average of a transversely isotropic tensor.
    """
    c = kind.stiffness
    b1 = c[0, 0] + c[1, 1] - 2.0 * c[0, 1] - 4.0 * c[3, 3]
    b2, b3 = c[0, 1] - c[1, 2], c[3, 3] + (c[1, 2] - c[1, 1]) / 2.0
    b4, b5 = c[1, 2], (c[1, 1] - c[1, 2]) / 2.0
    a, delta = np.diag([a1, 1.0 - a1, 0.0]), np.eye(3)
    stiffness = b1 * np.einsum("ij,kl->ijkl", a, a) + b4 * np.einsum("ij,kl->ijkl", delta, delta)
    stiffness += b2 * (np.einsum("ij,kl->ijkl", a, delta) + np.einsum("kl,ij->ijkl", a, delta))
    for left, right in (("ik", "jl"), ("il", "jk"), ("jl", "ik"), ("jk", "il")):
        stiffness += b3 * np.einsum(f"{left},{right}->ijkl", a, delta)
    stiffness += b5 * (np.einsum("ik,jl->ijkl", delta, delta) + np.einsum("il,jk->ijkl", delta, delta))
    return stiffness, kind.across * delta + (kind.along - kind.across) * a


def element_materials(kinds: list[Constants], fields: Fields) -> tuple[np.ndarray, np.ndarray]:
    """Global stiffness (T, 3, 3, 3, 3) and expansion (T, 3, 3)."""
    stiffness, expansion = [], []
    for fraction, a1, axes in zip(fields.kind_fraction, fields.orientation, fields.axes, strict=True):
        c, alpha = averaged(kinds[0 if fraction > 0.5 else 1], a1)
        stiffness.append(np.einsum("abcd,ai,bj,ck,dl->ijkl", c, axes, axes, axes, axes, optimize=True))
        expansion.append(axes.T @ alpha @ axes)
    return np.array(stiffness), np.array(expansion)


def element_matrices(at: PointValues, stiffness: np.ndarray) -> np.ndarray:
    """(T, 18, 18), node by node in x, y, z."""
    g = at.gradient
    blocks = np.einsum("tp,tpai,txayb,tpbj->tixjy", at.factor, g, stiffness, g, optimize=True)
    return blocks.reshape(len(g), 18, 18)


@dataclass
class NodeValues:
    """By wedge node from 0."""

    volume: np.ndarray  # cm3
    temperature: np.ndarray  # K, mean of the elements at a node by volume


def node_values(wedges: Wedges, at: PointValues, fields: Fields) -> NodeValues:
    volume, temperature = np.zeros(len(wedges.points)), np.zeros(len(wedges.points))
    share = at.factor.sum(axis=1) / 6.0
    for k in range(6):
        np.add.at(volume, wedges.nodes[:, k], share)
        np.add.at(temperature, wedges.nodes[:, k], share * fields.sides[:, k // 3])
    return NodeValues(volume, temperature / volume)


def element_loads(
    wedges: Wedges, at: PointValues, fields: Fields, material: tuple[np.ndarray, np.ndarray], cooling: np.ndarray | None
) -> np.ndarray:
    """(T, 18): frozen-in stress, and cooling by `cooling` (2M,) K at the nodes where it is given."""
    stiffness, expansion = material
    frozen = np.einsum("ta,tai,taj->tij", fields.stress, fields.axes[:, :2], fields.axes[:, :2])
    loads = -np.einsum("tp,tpak,tax->tkx", at.factor, at.gradient, frozen)
    if cooling is not None:
        unit = np.einsum("tijkl,tkl->tij", stiffness, expansion)
        change = np.minimum(np.einsum("pk,tk->tp", at.shape, cooling[wedges.nodes]), 0.0)
        loads += np.einsum("tp,tp,tpak,tax->tkx", at.factor, change, at.gradient, unit, optimize=True)
    return loads.reshape(len(loads), 18)


def boundary_nodes(mesh: Mesh, process: Process) -> tuple[int, ...]:
    """Geometry nodes: nearest to the middle, farthest from that one, largest triangle with both.

    Symmetric parts have ties. They are decided by comparing what the formulas give to the last bit: the earliest
    node stands, in the triangle test the latest.
    """
    if all(process.boundary):
        return process.boundary
    nodes = np.array(list(dict.fromkeys(int(n) for n in mesh.nodes[mesh.part()].flat)))
    x = mesh.points[nodes]
    first = int(np.argmin(np.linalg.norm(x - x.mean(axis=0), axis=1)))
    second = int(np.argmax(np.linalg.norm(x - x[first], axis=1)))
    a = np.linalg.norm(x[second] - x[first])
    b, c = np.linalg.norm(x - x[first], axis=1), np.linalg.norm(x - x[second], axis=1)
    s = (a + b + c) / 2.0
    areas = np.sqrt(np.maximum((s - a) * s * (s - b) * (s - c), 0.0))  # Heron
    areas[[first, second]] = -1.0
    third = len(areas) - 1 - int(np.argmax(areas[::-1]))
    return int(nodes[first]), int(nodes[second]), int(nodes[third])


def frame(p1: np.ndarray, p2: np.ndarray, p3: np.ndarray) -> np.ndarray:
    """Axes in columns: along the first two nodes, in their plane with the third, normal to it."""
    along = (p2 - p1) / np.linalg.norm(p2 - p1)
    normal = np.cross(p2 - p1, p3 - p1)
    normal /= np.linalg.norm(normal)
    return np.column_stack([along, np.cross(normal, along), normal])
