#!/usr/bin/python3
"""Writes or checks the linear system of a job's last pass, as system.txt of a kept hierarchy.

usage: job_system.py [--check] FOLDER SYSTEM      FOLDER holds job.PG1 and so on, SYSTEM is a system.txt

Rows stand point by point, columns in the order in which elements bring their nodes: ties of a set-up hang on it.
Entries are rounded to whole dyn/cm, some eleven digits of them: what should be zero or equal is so in the file.
"""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

import numpy as np

import job_answer

TOLERANCE = 1e-10  # of the largest entry and of the largest load


def neighbours(nodes: np.ndarray, count: int) -> list[list[int]]:
    """Nodes of the elements at each node: itself, then the others as they are met."""
    near: list[dict[int, None]] = [{n: None} for n in range(count)]
    for element in nodes.tolist():
        for n in element:
            near[n].update(dict.fromkeys(element))
    return [list(others) for others in near]


def ordered_columns(near: list[int], number: np.ndarray, place: int) -> list[int]:
    """Columns of the row of a node's unknown number `place`; its diagonal is brought to the front by turning three."""
    columns = [int(number[n, c]) for n in near for c in range(3) if number[n, c] >= 0]
    return columns[place:3] + columns[:place] + columns[3:]


def system_lines(folder: Path) -> list[str]:
    job = job_answer.prepare(folder)
    free = job.restraint.free
    number = np.full(free.shape, -1)
    number[free] = np.arange(free.sum())
    load = job.load(job.cooling)
    lines, entries, point = [], 0, 0
    for n, near in enumerate(neighbours(job.wedges.nodes, len(free))):
        point += bool(free[n].any())
        for place, c in enumerate(np.flatnonzero(free[n])):
            columns = ordered_columns(near, number, place)
            values = np.rint(job.dense[3 * n + c, np.flatnonzero(free)[columns]])
            pairs = " ".join(f"{j + 1} {v + 0.0:.0f}" for j, v in zip(columns, values, strict=True))
            lines.append(f"{c + 1} {point} {load[n, c]:.12g} {len(columns)} {pairs}")
            entries += len(columns)
    return [f"{len(lines)} {entries} 3", *lines]


def parsed(lines: list[str]) -> tuple[list[tuple[str, ...]], np.ndarray, np.ndarray]:
    """Everything but values; values; loads."""
    words = [line.split() for line in lines[1:]]
    fixed = [(lines[0],), *(tuple(row[:2] + row[3:4] + row[4::2]) for row in words)]
    values = np.array([float(v) for row in words for v in row[5::2]])
    return fixed, values, np.array([float(row[2]) for row in words])


def difference(kept: list[str], made: list[str]) -> str:
    """Empty when the systems agree."""
    a, b = parsed(kept), parsed(made)
    if a[0] != b[0]:
        row = next((i for i, (x, y) in enumerate(zip(a[0], b[0], strict=False)) if x != y), 0)
        return f"line {row + 1} has other places"
    for name, x, y in zip(("entry", "load"), a[1:], b[1:], strict=True):
        gap = np.abs(x - y).max() / np.abs(x).max()
        if not gap <= TOLERANCE:
            return f"an {name} differs by {gap:.3e} of the largest"
    return ""


def main() -> int:
    parser = argparse.ArgumentParser(description="Writes or checks the linear system of a job.")
    parser.add_argument("--check", action="store_true", help="compare with the kept system, write nothing")
    parser.add_argument("folder", type=Path)
    parser.add_argument("system", type=Path)
    options = parser.parse_args()
    made = system_lines(options.folder)
    if not options.check:
        options.system.write_text("\n".join(made) + "\n", encoding="ascii")
        return 0
    fault = difference(options.system.read_text(encoding="ascii").splitlines(), made)
    print(f"{options.system}: {fault or 'agrees'}")
    return 1 if fault else 0


if __name__ == "__main__":
    sys.exit(main())
