"""Laying the moulded part over its nominal shape before deviations are told. Called by the programs and by measures.

moulded -> aligned: q = nominal_anchor + R (p - moulded_anchor) / scale, with R and the anchors by the chosen method.
"""

from __future__ import annotations

import warnings
from dataclasses import dataclass

import numpy as np
from scipy.spatial.transform import Rotation

from ..base.findings import BadFile

METHODS = ("best-fit", "boundary", "points")
LEAST_ANGLE = 1e-6  # sine of the angle at the first datum point below which three points lie on one line


@dataclass
class Alignment:
    """A rigid motion, with a scale where shrinkage is removed."""

    rotation: np.ndarray  # (3, 3)
    moulded_anchor_mm: np.ndarray  # (3,) place of the moulded part that comes to lie on
    nominal_anchor_mm: np.ndarray  # (3,) this place
    scale: float = 1.0  # size of the moulded part over the nominal one; 1 keeps the shrinkage

    def apply(self, moulded_mm: np.ndarray) -> np.ndarray:
        """(N, 3) places of the moulded part in the frame of the nominal one."""
        return self.nominal_anchor_mm + (moulded_mm - self.moulded_anchor_mm) @ self.rotation.T / self.scale

    @property
    def shrinkage_percent(self) -> float:
        return 100.0 * (1.0 - self.scale)


def best_fit(nominal_mm: np.ndarray, moulded_mm: np.ndarray) -> Alignment:
    """Least squares over all nodes, rigid: Kabsch, Acta Cryst. A 32 (1976) 922-923."""
    anchor, centre = nominal_mm.mean(axis=0), moulded_mm.mean(axis=0)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", UserWarning)  # nodes on one line leave a turn about it free: any will do
        turn, _ = Rotation.align_vectors(nominal_mm - anchor, moulded_mm - centre)
    return Alignment(turn.as_matrix(), centre, anchor)


def at_points(nominal_mm: np.ndarray, moulded_mm: np.ndarray) -> Alignment:
    """Three datum points (3, 3): the first is met, the second lies on the line of both, the third in their plane."""
    frames = [datum_frame(points) for points in (nominal_mm, moulded_mm)]
    return Alignment(frames[0].T @ frames[1], moulded_mm[0], nominal_mm[0])


def datum_frame(points_mm: np.ndarray) -> np.ndarray:
    """Rows: along the line from point 1 to 2, in the plane across it, and normal. BadFile for points on one line."""
    along, other = points_mm[1] - points_mm[0], points_mm[2] - points_mm[0]
    normal = np.cross(along, other)
    if np.linalg.norm(normal) <= LEAST_ANGLE * np.linalg.norm(along) * np.linalg.norm(other):
        places = ", ".join("(" + " ".join(f"{c:.6g}" for c in p) + ")" for p in points_mm)
        raise BadFile("datum points", f"{places} mm lie on one line; choose three that span a plane")
    along, normal = along / np.linalg.norm(along), normal / np.linalg.norm(normal)
    return np.array([along, np.cross(normal, along), normal])


def fitted_scale(nominal_mm: np.ndarray, moulded_mm: np.ndarray, rotation: np.ndarray) -> float:
    """Size of the moulded part over the nominal one for a given rotation, by least squares about both centres.

    Of |p - s R^T q|^2 with p moulded and q nominal: s = sum(q . R p) / sum(q . q).
    """
    nominal, moulded = nominal_mm - nominal_mm.mean(axis=0), moulded_mm - moulded_mm.mean(axis=0)
    squares = np.einsum("ij,ij", nominal, nominal)
    scale = np.einsum("ij,ij", nominal, moulded @ rotation.T) / squares if squares > 0 else 1.0
    return float(scale) if scale > 0 else 1.0


def aligned(
    method: str,
    nominal_mm: np.ndarray,
    moulded_mm: np.ndarray,
    nodes: np.ndarray,
    datum: list[int] | None,
    remove_shrinkage: bool = False,
) -> Alignment:
    """The alignment of (N, 3) nominal and moulded nodes, of which `nodes` belong to the part.

    datum: three node indices; `points` fits to them, `boundary` leaves the results as they stand and takes the first
    as the place that a scale keeps.
    """
    own, other = nominal_mm[nodes], moulded_mm[nodes]
    if method == "best-fit":
        result = best_fit(own, other)
    elif method == "points":
        if datum is None:
            raise BadFile("--align points", "needs three datum points: --datum, or [datum] in the drawing")
        result = at_points(nominal_mm[datum], moulded_mm[datum])
    else:
        first = moulded_mm[datum[0]] if remove_shrinkage and datum else np.zeros(3)
        result = Alignment(np.eye(3), first, first)
    if remove_shrinkage:
        result.scale = fitted_scale(own, other, result.rotation)
    return result
