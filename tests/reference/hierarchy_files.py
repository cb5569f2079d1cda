"""Systems and hierarchies as text, and the level that all steps of a set-up work on. Called by hierarchy_answer.

Files number from 1, the computation from 0.
"""

from __future__ import annotations

from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

Row = list[tuple[int, float]]  # column and value, in the order that decides ties


@dataclass
class Settings:
    coarse_most: int = 100  # a level of at most so many rows isn't coarsened
    strength: int = 4  # treatment of positive couplings, 1 to 5
    weights: int = 2  # 1 direct, 2 standard, 3 extended interpolation
    same_row: float = 0.01  # off-diagonal sums up to this share of the diagonal leave a row alone
    strong: float = 0.25
    positive: float = 0.2  # positive couplings up to this share of the largest negative one are ignored
    truncation: float = 0.2
    dense: float = 0.2  # density at which coarsening ends
    dominant: float = 0.9
    eps: float = 1e-8  # reduction of the residual


@dataclass
class Level:
    rows: list[Row]  # diagonal first
    function: list[int]
    strong: list[int] = field(default_factory=list)  # strong couplings stand at places 1 .. strong[i] of row i
    bad: list[bool] = field(default_factory=list)  # rows that interpolation can't use
    state: list[int] = field(default_factory=list)  # 1 C, 0 FF, -1 F, -2 XF
    weights: list[Row] = field(default_factory=list)  # by variable of this level; after the product by coarse number
    counts: dict[str, str] = field(default_factory=dict)  # the lines of expected.txt

    @property
    def size(self) -> int:
        return len(self.rows)

    def entries(self) -> int:
        return sum(len(row) for row in self.rows)


@dataclass
class Hierarchy:
    levels: list[Level]
    stop: str


def read_system(path: Path) -> tuple[Level, np.ndarray]:
    """The first level and the right-hand side."""
    lines = path.read_text(encoding="ascii").splitlines()
    count = int(lines[0].split()[0])
    level, right = Level(rows=[], function=[]), np.zeros(count)
    for i, line in enumerate(lines[1 : count + 1]):
        words = line.split()
        level.function.append(int(words[0]))
        right[i] = float(words[2])
        pairs = words[4 : 4 + 2 * int(words[3])]
        level.rows.append([(int(j) - 1, float(v)) for j, v in zip(pairs[::2], pairs[1::2], strict=True)])
        if level.rows[-1][0][0] != i:
            raise ValueError(f"{path}: row {i + 1} doesn't begin with its diagonal")
    return level, right


def read_settings(path: Path) -> Settings:
    """The words of the first line of an expected.txt."""
    settings = Settings()
    words = path.read_text(encoding="ascii").splitlines()[0].split(":")[1].split()
    for name, value in zip(words[::2], words[1::2], strict=True):
        setattr(settings, {"--nptmn": "coarse_most", "--ncg": "strength", "--nwt": "weights"}[name], int(value))
    return settings


def answer_lines(h: Hierarchy, residuals: list[float], res_out: float) -> list[str]:
    lines = []
    for level in h.levels[:-1]:
        lines += [f"{name} {text}" for name, text in level.counts.items()]
    for k, level in enumerate(h.levels, 1):
        lines.append(f"LEVEL {k} n={level.size} nnz={level.entries()} perrow={level.entries() / level.size:.2f}")
    lines.append(f'STOP levels={len(h.levels)} reason="{h.stop}" coarsest=lu')
    grid = sum(level.size for level in h.levels) / h.levels[0].size
    operator = sum(level.entries() for level in h.levels) / h.levels[0].entries()
    lines.append(f"COMPLEXITY grid={grid:.6f} operator={operator:.6f}")
    lines += [f"RES {step} {res:.12e}" for step, res in enumerate(residuals)]
    steps, first = len(residuals) - 1, residuals[0]
    lines.append(
        f'RESULT iterations={steps} status="converged" res_in={first:.12e} res_out={res_out:.12e} '
        f"reduction={res_out / first:.3e} factor={(res_out / first) ** (1.0 / steps):.5f}"
    )
    return lines


def level_files(h: Hierarchy) -> dict[str, list[tuple[int, ...]]]:
    """File name -> lines; values are floats where they are."""
    files: dict[str, list[tuple]] = {}
    for k, level in enumerate(h.levels, 1):
        if k > 1:
            files[f"level{k}.matrix"] = sorted((i + 1, j + 1, v) for i, row in enumerate(level.rows) for j, v in row)
        if k < len(h.levels):
            files[f"level{k}.state"] = [(i + 1, s) for i, s in enumerate(level.state)]
            files[f"level{k}.interp"] = [(i + 1, j + 1, v) for i, row in enumerate(level.weights) for j, v in row]
    return files


def write_files(folder: Path, h: Hierarchy, lines: list[str]) -> None:
    """All files of a folder but its system; the first line of expected.txt, the settings, stays."""
    expected = folder / "expected.txt"
    head = expected.read_text(encoding="ascii").splitlines()[0]
    expected.write_text("\n".join([head, *lines]) + "\n", encoding="ascii")
    for name, content in level_files(h).items():
        text = "".join(" ".join(f"{x:.14g}" for x in line) + "\n" for line in content)
        (folder / name).write_text(text, encoding="ascii")
