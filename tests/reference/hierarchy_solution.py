"""V-cycles under flexible GMRES over a hierarchy. Called by hierarchy_answer.

Y. Saad, SIAM Journal on Scientific Computing 14 (1993) 461-469; Gauss-Seidel sweeps over coarse, then fine variables
before and after each coarse correction.
"""

from __future__ import annotations

import numpy as np

from hierarchy_files import Hierarchy, Level
from hierarchy_splitting import C

RESTART = 30


class Operator:
    """A level's matrix and what a sweep needs of it."""

    def __init__(self, level: Level) -> None:
        self.dense = np.zeros((level.size, level.size))
        for i, row in enumerate(level.rows):
            for j, v in row:
                self.dense[i, j] += v
        columns = [np.array([j for j, _ in row[1:]], dtype=int) for row in level.rows]
        self.off = [(j, np.array([v for _, v in row[1:]])) for j, row in zip(columns, level.rows, strict=True)]
        self.order = sorted(range(len(level.state)), key=lambda i: level.state[i] != C)  # keeps the numbers' order
        self.transfer = np.zeros((level.size, level.state.count(C)))
        for i, row in enumerate(level.weights):
            for j, v in row:
                self.transfer[i, j] = v

    def sweep(self, u: np.ndarray, f: np.ndarray) -> None:
        """Gauss-Seidel in place: coarse variables, then fine ones, each in order of number."""
        for i in self.order:
            columns, values = self.off[i]
            u[i] = (f[i] - values @ u[columns]) / self.dense[i, i]


def cycle(operators: list[Operator], k: int, f: np.ndarray) -> np.ndarray:
    """One V-cycle from zero."""
    level = operators[k]
    if k == len(operators) - 1:
        return np.linalg.solve(level.dense, f)
    u = np.zeros_like(f)
    level.sweep(u, f)
    u += level.transfer @ cycle(operators, k + 1, level.transfer.T @ (f - level.dense @ u))
    level.sweep(u, f)
    return u


def restart(operators: list[Operator], r: np.ndarray, target: float, residuals: list[float]) -> np.ndarray:
    """Correction of one round of GMRES; appends its residual after each step."""
    a, length = operators[0].dense, np.linalg.norm(r)
    v, z, h = [r / length], [], np.zeros((RESTART + 1, RESTART))
    for j in range(RESTART):
        z.append(cycle(operators, 0, v[j]))
        w = a @ z[j]
        for i in range(j + 1):
            h[i, j] = w @ v[i]
            w -= h[i, j] * v[i]
        h[j + 1, j] = np.linalg.norm(w)
        v.append(w / h[j + 1, j])
        right = np.zeros(j + 2)
        right[0] = length
        y = np.linalg.lstsq(h[: j + 2, : j + 1], right, rcond=None)[0]
        residuals.append(float(np.linalg.norm(right - h[: j + 2, : j + 1] @ y)))
        if residuals[-1] <= target:
            break
    return np.column_stack(z) @ y


def solve(h: Hierarchy, f: np.ndarray, eps: float) -> tuple[list[float], float]:
    """Residual before the first step and after each, and the true one at the end."""
    operators = [Operator(level) for level in h.levels]
    u, r = np.zeros_like(f), f.copy()
    residuals = [float(np.linalg.norm(f))]
    while np.linalg.norm(r) > eps * residuals[0]:
        u += restart(operators, r, eps * residuals[0], residuals)
        r = f - operators[0].dense @ u
    return residuals, float(np.linalg.norm(r))
