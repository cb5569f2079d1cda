"""Interpolation and coarse matrix of a level. Called by hierarchy_answer.

Direct, standard and extended interpolation: K. Stueben, Journal of Computational and Applied Mathematics 128 (2001)
281-309, with positive and negative couplings scaled apart, so that a row keeps both of its sums.
"""

from __future__ import annotations

from collections.abc import Iterable
from dataclasses import dataclass

from hierarchy_files import Level, Row, Settings
from hierarchy_splitting import C, FF


@dataclass
class Scaled:
    """A row's interpolatory entries, scaled to the sums of the whole row, and the diagonal that goes with them."""

    diagonal: float
    entries: list[tuple[int, float]]

    def usable(self) -> bool:
        return bool(self.entries) and self.diagonal > 0.0


def added(values: Iterable[float]) -> float:
    """Plain sum in the order given: some versions of sum() correct for rounding, which ties and zeros would see."""
    total = 0.0
    for value in values:
        total += value
    return total


def scale(diagonal: float, entries: Row, positive: float, negative: float) -> Scaled:
    """Entries get the sums `positive` and `negative`; a sum with no entry of its sign goes to the diagonal."""
    above, below = added(v for _, v in entries if v > 0.0), added(v for _, v in entries if v < 0.0)
    up = down = 1.0
    if above <= 0.0:
        diagonal += positive
    else:
        up = positive / above
    if below >= 0.0:
        diagonal += negative
    else:
        down = negative / below
    return Scaled(diagonal, [(j, v * (up if v > 0.0 else down)) for j, v in entries])


def substitute(level: Level, i: int, r: dict[int, float], wanted: set[int], extended: float | None) -> None:
    """Replaces fine neighbours of row r by their own rows; their strong coarse neighbours are wanted too."""
    row, state, function = level.rows[i], level.state, level.function
    for p, (j, a) in enumerate(row[1:], 1):
        if function[j] != function[i] or state[j] == FF:
            continue
        strong = p <= level.strong[i]
        large = extended is not None and not strong and a > abs(row[1][1]) * extended
        if not (strong and state[j] < 0) and not large:
            continue
        c, r[j] = r[j], 0.0
        factor = -c / level.rows[j][0][1]
        for q, (other, b) in enumerate(level.rows[j][1:], 1):
            if function[other] != function[i] or state[other] == FF:
                continue
            r[other] = r.get(other, 0.0) + b * factor
            if state[other] > 0 and q <= level.strong[j]:
                wanted.add(other)


def row_weights(level: Level, i: int, s: Settings) -> Row | None:
    """Weights of a fine variable, by variable of the level; None where it must become coarse."""
    row, state, function = level.rows[i], level.state, level.function
    base = {j: v for j, v in row if j == i or (function[j] == function[i] and state[j] != FF)}
    near = {j for j, _ in row[1 : 1 + level.strong[i]] if j in base and state[j] > 0}
    for substituting in (False, True):
        if not substituting and (s.weights >= 2 or not near):
            continue
        r, wanted = dict(base), set(near)
        if substituting:
            substitute(level, i, r, wanted, s.positive if s.weights == 3 else None)
        diagonal = r.pop(i)
        positive, negative = added(v for v in r.values() if v > 0.0), added(v for v in r.values() if v < 0.0)
        whole = scale(diagonal, [(j, v) for j, v in r.items() if j in wanted and v != 0.0], positive, negative)
        if not whole.usable():
            continue
        limit = s.truncation * max(abs(v) for _, v in whole.entries)
        kept = scale(diagonal, [(j, v) for j, v in whole.entries if abs(v) >= limit], positive, negative)
        if kept.usable():
            return [(j, v * (-1.0 / kept.diagonal)) for j, v in kept.entries]
    return None


def interpolate(level: Level, k: int, s: Settings) -> None:
    """Fills the weights, by coarse number; a fine variable without a usable row becomes coarse at once."""
    turned = fine = 0
    for i in range(level.size):
        weights: Row | None = []
        if level.state[i] < 0:
            weights = row_weights(level, i, s)
            turned += weights is None
            fine += weights is not None
            level.state[i] = C if weights is None else level.state[i]
        level.weights.append([(i, 1.0)] if level.state[i] == C else weights or [])
    number, coarse = {}, 0
    for i, state in enumerate(level.state):
        if state == C:
            number[i], coarse = coarse, coarse + 1
    total = sum(len(row) for row in level.weights)
    level.weights = [[(number[j], v) for j, v in row] for row in level.weights]
    level.counts[f"INTERP level={k}"] = (
        f"gratio={coarse / level.size:.6f} meanw={(total - coarse) / max(fine, 1):.6f} toC={turned} weights={total}"
    )


def galerkin(level: Level) -> Level:
    """The coarse level: P^T A P row by row, columns in the order in which they appear, products of zero left out."""
    coarse = [i for i, state in enumerate(level.state) if state == C]
    used: list[Row] = [[] for _ in coarse]
    for i, weights in enumerate(level.weights):
        for c, r in weights:
            used[c].append((i, r))
    rows = []
    for c, feeding in enumerate(used):
        row = {c: 0.0}
        for i, r in feeding:
            for j, a in level.rows[i]:
                product = r * a
                if product == 0.0:
                    continue
                for m, w in level.weights[j]:
                    row[m] = row.get(m, 0.0) + w * product
        if row[c] <= 0.0:
            raise ValueError(f"coarse row {c + 1} has a diagonal of {row[c]}: its repair isn't part of the reference")
        rows.append(list(row.items()))
    return Level(rows=rows, function=[level.function[i] for i in coarse])
