"""Splitting of a level into coarse and fine variables. Called by hierarchy_answer.

First pass of J. W. Ruge and K. Stueben, in S. McCormick (ed.), Multigrid Methods, SIAM 1987, 73-130: the variable on
which most undecided ones depend becomes coarse, these become fine. Of equal ones the one that waits longest is taken.
"""

from __future__ import annotations

from hierarchy_files import Level

C, FF, F, UNDECIDED = 1, 0, -1, -2


class Waiting:
    """Undecided variables by measure; those of one measure in the order in which they came."""

    def __init__(self, measure: list[int], variables: list[int]) -> None:
        self.lists: dict[int, dict[int, None]] = {}
        self.place: dict[int, int] = {}
        for i in variables:
            self.put(i, measure[i])

    def put(self, i: int, measure: int) -> None:
        self.take(i)
        self.lists.setdefault(measure, {})[i] = None
        self.place[i] = measure

    def take(self, i: int) -> None:
        if i in self.place:
            del self.lists[self.place.pop(i)][i]

    def best(self) -> int | None:
        """The oldest of the highest measure; None when none above 0 is left."""
        highest = max((m for m, waiting in self.lists.items() if waiting), default=0)
        return next(iter(self.lists[highest])) if highest > 0 else None


def first_pass(level: Level) -> list[int]:
    """States of all variables."""
    strong = [[j for j, _ in row[1 : 1 + count]] for row, count in zip(level.rows, level.strong, strict=True)]
    depends: list[list[int]] = [[] for _ in strong]
    for i, couplings in enumerate(strong):
        for j in couplings:
            depends[j].append(i)
    measure = [len(d) for d in depends]
    state = [C if level.bad[i] else UNDECIDED if strong[i] else FF for i in range(level.size)]
    for bad in [i for i, s in enumerate(state) if s == C]:
        make_coarse(bad, state, measure, strong, depends)
    waiting = Waiting(measure, [i for i, s in enumerate(state) if s == UNDECIDED])
    while (best := waiting.best()) is not None:
        state[best] = C
        waiting.take(best)
        fine, changed = make_coarse(best, state, measure, strong, depends)
        for j in fine:
            waiting.take(j)
        for j in reversed(changed):
            if state[j] == UNDECIDED:
                waiting.put(j, measure[j])
    return state


def make_coarse(
    i: int, state: list[int], measure: list[int], strong: list[list[int]], depends: list[list[int]]
) -> tuple[list[int], list[int]]:
    """What a new coarse variable does to others: those that became fine, and those of another measure, in order."""
    fine = []
    changed: dict[int, None] = {}
    for j in depends[i]:
        if state[j] != UNDECIDED:
            continue
        state[j] = F
        fine.append(j)
        for other in strong[j]:
            if state[other] == UNDECIDED:
                measure[other] += 1
                changed.setdefault(other)
    for j in strong[i]:
        if state[j] == UNDECIDED:
            measure[j] -= 1
            changed.setdefault(j)
    return fine, list(changed)


def split(level: Level, k: int) -> tuple[int, int]:
    """Sets the states of the level; coarse and fine count."""
    state = first_pass(level)
    left = [i for i, s in enumerate(state) if s == UNDECIDED]
    lonely = [i for i in left if not any(state[j] == F for j, _ in level.rows[i][1 : 1 + level.strong[i]])]
    for i in lonely:
        state[i] = C
    level.state = state
    coarse, ff, extra = state.count(C), state.count(FF), state.count(UNDECIDED)
    fine = level.size - coarse - ff
    level.counts[f"SPLIT level={k}"] = (
        f"n={level.size} nnz={level.entries()} C={coarse} F={fine} FF={ff} XF={extra} FC={sum(level.bad)} "
        f"reduced=0 cforce=0 ratio={coarse / level.size:.6f}"
    )
    return coarse, fine
