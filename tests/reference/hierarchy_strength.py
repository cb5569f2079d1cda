"""Strong couplings of a level: which entries of a row count in splitting and interpolation. Called by hierarchy_answer.

A row is sorted in place: diagonal, largest coupling, the other strong ones, weak ones. K. Stueben, Journal of
Computational and Applied Mathematics 128 (2001) 281-309, for the measure; positive couplings as told at `eliminated`.
"""

from __future__ import annotations

from collections import Counter

from hierarchy_files import Level, Row, Settings

NAMES = ("dirichlet", "diagdom", "violating", "nonposdiag", "onlypos", "elim", "failed", "ineffective")


def eliminated(level: Level, i: int, limit: float) -> dict[int, float]:
    """Row i after each coupling above the limit was replaced by way of its own row, which must give it."""
    function = level.function
    r = dict(level.rows[i])
    for j, a in level.rows[i][1:]:
        if function[j] != function[i] or a <= limit:
            continue
        c, r[j] = r[j], 0.0
        diagonal = level.rows[j][0][1]
        for other, b in level.rows[j][1:]:
            if function[other] == function[i]:
                r[other] = r.get(other, 0.0) + b * (-c / diagonal)
    return r


def after_elimination(level: Level, i: int, own: list[int], least: float, s: Settings, n: Counter) -> set[int] | None:
    """Places of the strong entries of a row with large positive couplings; None where the row is to be left out."""
    row = level.rows[i]
    candidates = [p for p in own if row[p][1] <= least * s.strong]
    n["elim"] += 1
    r = eliminated(level, i, -s.positive * least)
    smallest = min(0.0, min(r[row[p][0]] for p in own))
    kept = [p for p in candidates if r[row[p][0]] <= smallest * s.strong] if smallest < 0.0 else []
    if not kept:
        n["failed"] += 1
        return None if s.strength == 3 else set(candidates)
    n["ineffective"] += len(kept) == len(candidates)
    return set(kept)


def strong_places(level: Level, i: int, s: Settings, n: Counter) -> set[int] | None:
    """Places of the strong entries of row i, before any row is sorted; None where the row can't be used."""
    row, function = level.rows[i], level.function
    diagonal = row[0][1]
    if len(row) == 1:
        n["dirichlet"] += 1
        return set()
    own = [p for p in range(1, len(row)) if function[row[p][0]] == function[i]]
    total = sum(abs(row[p][1]) for p in own)
    if s.dominant * diagonal < total:
        n["not dominated"] += 1
    if total <= s.same_row * diagonal:
        n["diagdom"] += 1
        return set()
    if diagonal <= 0.0:
        n["nonposdiag"] += 1
        return None
    least = min(0.0, min(row[p][1] for p in own))
    largest = max(0.0, max(row[p][1] for p in own))
    negative = {p for p in own if row[p][1] <= least * s.strong}
    positive = s.strength in (2, 5)
    if s.strength < 3 and least < 0.0:
        return negative
    if least == 0.0:
        n["onlypos"] += 1
        return {p for p in own if row[p][1] >= largest * s.strong} if positive else None
    if largest <= -s.positive * least:
        return negative
    return after_elimination(level, i, own, least, s, n)


def sort_row(row: Row, strong: set[int]) -> Row:
    """The largest strong entry first, then by exchanging: a strong one from the end with a weak one from the front."""
    row, marks = list(row), [p in strong for p in range(len(row))]
    size = max(abs(row[p][1]) for p in strong)
    extreme = min(p for p in strong if abs(row[p][1]) == size)
    row[1], row[extreme] = row[extreme], row[1]
    marks[1], marks[extreme] = marks[extreme], marks[1]
    front = 1
    for back in range(len(row) - 1, 0, -1):
        if not marks[back]:
            continue
        while front < back and marks[front]:
            front += 1
        if front >= back:
            break
        row[front], row[back] = row[back], row[front]
        marks[front], marks[back] = True, False
    return row


def find_strong(level: Level, k: int, s: Settings) -> tuple[int, bool]:
    """Sorts all rows. Gives the number of strong couplings and whether every row is dominated by its diagonal."""
    n: Counter = Counter()
    places = [strong_places(level, i, s, n) for i in range(level.size)]
    for i, strong in enumerate(places):
        if strong:
            level.rows[i] = sort_row(level.rows[i], strong)
    level.strong = [len(strong or ()) for strong in places]
    level.bad = [strong is None for strong in places]
    total = sum(level.strong)
    level.counts[f"STRENGTH level={k}"] = " ".join([f"strong={total}", *(f"{name}={n[name]}" for name in NAMES)])
    return total, n["not dominated"] == 0
