"""The text of expected.txt: writing, reading, comparing two answers. Called by job_answer."""

from __future__ import annotations

from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

CONSTANT_TOLERANCE = 1e-9  # relative: volume, determinant, material
LENGTH_TOLERANCE = 1e-7  # of the greatest displacement
SUMMARY_TOLERANCE = 1e-6  # of the greatest of its values, which have seven digits

COMMENTS = {
    "boundary": "boundary nodes, free freedoms, stored entries, residual stress valid, temperature from cool",
    "volume": "cm3 of all elements; determinant mean",
    "stiffness": "stiffness of the two kinds, 36 values a row, row by row, dyn/cm2; expansion along and across, 1/K",
    "report": "lines that the report holds",
    "summary": "summary, mm: spread x y z, greatest length, sink least and greatest",
    "node": "geometry node, cm: total x y z, in-mold x y z, sink mark",
}


@dataclass
class Answer:
    boundary: list[int] = field(default_factory=list)
    free: int = 0
    entries: int = 0
    valid: int = 0
    cool: int = 0
    volume: float = 0.0
    jacobian: float = 0.0
    stiffness: list[list[float]] = field(default_factory=list)
    expansion: list[list[float]] = field(default_factory=list)
    report: list[str] = field(default_factory=list)
    summary: list[float] = field(default_factory=list)
    node: np.ndarray = field(default_factory=lambda: np.zeros((0, 7)))  # (N, 7) cm


def write_answer(path: Path, answer: Answer) -> None:
    lines = [f"# {COMMENTS['boundary']}", "boundary " + " ".join(map(str, answer.boundary))]
    lines += [f"{name} {getattr(answer, name)}" for name in ("free", "entries", "valid", "cool")]
    lines += [f"# {COMMENTS['volume']}", f"volume {answer.volume:.12e}", f"jacobian {answer.jacobian:.12e}"]
    lines.append(f"# {COMMENTS['stiffness']}")
    for stiffness, expansion in zip(answer.stiffness, answer.expansion, strict=True):
        lines.append("stiffness " + " ".join(f"{x + 0.0:.10e}" for x in stiffness))
        lines.append("expansion " + " ".join(f"{x:.10e}" for x in expansion))
    lines += [f"# {COMMENTS['report']}", *(f"report {line}" for line in answer.report)]
    lines += [f"# {COMMENTS['summary']}", "summary " + " ".join(f"{x:.6e}" for x in answer.summary)]
    lines.append(f"# {COMMENTS['node']}")
    lines += [f"node {n} " + " ".join(f"{x:.9e}" for x in row) for n, row in enumerate(answer.node, 1)]
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")


def read_answer(path: Path) -> Answer:
    answer, nodes = Answer(), []
    for line in path.read_text(encoding="utf-8").splitlines():
        name, _, rest = line.partition(" ")
        if name == "#":
            continue
        if name == "report":
            answer.report.append(rest)
        elif name in ("stiffness", "expansion"):
            getattr(answer, name).append([float(x) for x in rest.split()])
        elif name in ("boundary", "summary"):
            setattr(answer, name, [float(x) for x in rest.split()])
        elif name == "node":
            nodes.append([float(x) for x in rest.split()])
        elif name in ("free", "entries", "valid", "cool", "volume", "jacobian"):
            setattr(answer, name, float(rest))
        else:
            raise ValueError(f"{path}: unknown quantity {name}")
    if [row[0] for row in nodes] != list(range(1, len(nodes) + 1)):
        raise ValueError(f"{path}: nodes out of order")
    answer.node = np.array([row[1:] for row in nodes])
    return answer


def differences(made: Answer, kept: Answer) -> list[str]:
    """What differs by more than the tolerances, in words; `made` is the fresh answer."""
    faults = []
    for name in ("boundary", "free", "entries", "valid", "cool", "report"):
        if list(np.atleast_1d(getattr(made, name))) != list(np.atleast_1d(getattr(kept, name))):
            faults.append(f"{name} is {getattr(kept, name)}, computed {getattr(made, name)}")
    for name in ("volume", "jacobian", "stiffness", "expansion"):
        a, b = np.array(getattr(made, name)), np.array(getattr(kept, name))
        if a.shape != b.shape or not np.all(np.abs(a - b) <= CONSTANT_TOLERANCE * np.max(np.abs(b))):
            faults.append(f"{name} is {b.tolist()}, computed {a.tolist()}")
    if made.node.shape != kept.node.shape:
        return [*faults, f"{len(kept.node)} nodes, computed {len(made.node)}"]
    greatest = np.linalg.norm(kept.node[:, :3], axis=1).max()
    gap = np.abs(made.node - kept.node)
    if not gap.max() <= LENGTH_TOLERANCE * greatest:
        n, column = np.unravel_index(gap.argmax(), gap.shape)
        faults.append(f"node {n + 1} column {column + 1} differs by {gap.max():.3e} cm")
    spread = np.abs(np.array(made.summary) - np.array(kept.summary))
    if not spread.max() <= SUMMARY_TOLERANCE * max(kept.summary):
        faults.append(f"summary is {kept.summary}, computed {made.summary}")
    return faults
