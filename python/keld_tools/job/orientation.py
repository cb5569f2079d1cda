"""Orientation tensors and averaged directions as KELD takes them: one direction in the wall and the share along it.

Called by element_csv and fields. A row of six holds a11, a22, a33, a12, a13, a23 in global axes.
"""

from __future__ import annotations

import numpy as np

TRACE_SLACK = 0.1  # by which a11 + a22 + a33 may differ from 1


def laid_into_walls(spread: dict[str, np.ndarray], normals: np.ndarray) -> dict[str, np.ndarray]:
    """Dyads and tensors, rows of six, as fibre_direction (T, 3) and, of tensors, orientation (T,)."""
    if "dyad" in spread:
        six = spread.pop("dyad")
        known = ~np.isnan(six).any(axis=1)
        spread["fibre_direction"] = np.full((len(six), 3), np.nan)
        spread["fibre_direction"][known] = np.linalg.eigh(full_tensor(six[known]))[1][:, :, 2]
    if "tensor" in spread:
        full = full_tensor(spread.pop("tensor"))
        spread["fibre_direction"], spread["orientation"] = principal_in_wall(full, normals)
    return spread


def full_tensor(six: np.ndarray) -> np.ndarray:
    """(n, 3, 3) of rows of six."""
    return six[:, [0, 3, 4, 3, 1, 5, 4, 5, 2]].reshape(-1, 3, 3)


def principal_in_wall(tensor: np.ndarray, normals: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """First principal direction (T, 3) within the wall of tensors (T, 3, 3), and its share (T,) of both in the wall.

    Fibres through the wall count for neither; where no fibre lies in the wall the share is 0.5.
    """
    axis = np.eye(3)[np.abs(normals).argmin(axis=1)]
    first = np.cross(normals, axis)
    length = np.linalg.norm(first, axis=1, keepdims=True)
    first = np.where(length > 0, first / np.where(length > 0, length, 1.0), [1.0, 0.0, 0.0])
    second = np.cross(normals, first)
    a, b, c = (np.einsum("ti,tij,tj->t", u, tensor, v) for u, v in ((first, first), (second, second), (first, second)))
    angle = 0.5 * np.arctan2(2.0 * c, a - b)
    direction = np.cos(angle)[:, None] * first + np.sin(angle)[:, None] * second
    total = a + b
    share = 0.5 + 0.5 * np.hypot(a - b, 2.0 * c) / np.where(total > 1e-6, total, np.inf)
    return np.where(np.isnan(share)[:, None], np.nan, direction), np.where(
        np.isnan(share), np.nan, np.minimum(share, 1.0)
    )
