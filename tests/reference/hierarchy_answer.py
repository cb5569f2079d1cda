#!/usr/bin/python3
"""Sets up and solves a system by itself and writes or checks the kept hierarchy.

usage: hierarchy_answer.py [--check] FOLDER...      a folder holds system.txt and expected.txt, whose first line has
                                                    the settings beside the defaults
"""

from __future__ import annotations

import argparse
import sys
from itertools import zip_longest
from pathlib import Path

from hierarchy_files import (
    Hierarchy,
    Level,
    Settings,
    answer_lines,
    level_files,
    read_settings,
    read_system,
    write_files,
)
from hierarchy_interpolation import galerkin, interpolate
from hierarchy_solution import solve
from hierarchy_splitting import split
from hierarchy_strength import find_strong

MOST_LEVELS = 25
MOST_DIRECT = 1500  # rows that a direct solution may face
VALUE_TOLERANCE = 1e-10  # of the largest value of a file
STEPS_COMPARED = 20  # rounding grows in later ones
RESIDUAL_TOLERANCE = 1e-6


def coarsen(level: Level, k: int, s: Settings) -> str:
    """Splits level k and interpolates; the rule that ends coarsening here, empty when none does."""
    direct = level.size <= MOST_DIRECT
    if level.size <= s.coarse_most:
        return "low # variables"
    if level.entries() / level.size**2 >= s.dense and direct:
        return "high density"
    strong, dominated = find_strong(level, k, s)
    if dominated:
        return "diagonal dominance"
    if strong == 0:
        return "no strong connections"
    coarse, fine = split(level, k)
    if min(coarse, fine) < 3:
        return "less than 3 C-variables" if coarse < 3 else "less than 3 F-variables"
    if coarse <= s.coarse_most and direct:
        return "low # C-variables"
    if coarse / level.size >= 0.9:
        return "inefficient grid reduction"
    interpolate(level, k, s)
    return ""


def set_up(first: Level, s: Settings) -> Hierarchy:
    levels = [first]
    while len(levels) < MOST_LEVELS:
        if stop := coarsen(levels[-1], len(levels), s):
            return Hierarchy(levels, stop)
        levels.append(galerkin(levels[-1]))
    return Hierarchy(levels, "levels")


def file_differs(path: Path, made: list[tuple]) -> str:
    """How a kept file of a level differs from what was made; empty when it doesn't."""
    kept = [line.split() for line in path.read_text(encoding="ascii").splitlines()]
    made = sorted(made)
    kept.sort(key=lambda words: [int(word) for word in words[:2]])
    size = 2 if path.suffix != ".state" else 1
    places = [tuple(int(word) for word in words[:size]) for words in kept]
    if places != [line[:size] for line in made]:
        return f"{path}: another pattern: {len(kept)} lines, computed {len(made)}"
    values = [(float(words[size]), line[size]) for words, line in zip(kept, made, strict=True)]
    limit = VALUE_TOLERANCE * max(abs(value) for value, _ in values) if size == 2 else 0.0
    worst = max(abs(a - b) for a, b in values)
    return f"{path}: a value differs by {worst:.3e}" if not worst <= limit else ""


def text_differs(path: Path, made: list[str]) -> list[str]:
    """Counters must be the same; residuals near, the number of steps within one."""
    kept = path.read_text(encoding="ascii").splitlines()[1:]
    counters = ([line for line in lines if not line.startswith(("RES ", "RESULT "))] for lines in (kept, made))
    faults = [f"{path}: {a!r}, computed {b!r}" for a, b in zip_longest(*counters) if a != b]
    old, new = ([float(line.split()[2]) for line in lines if line.startswith("RES ")] for lines in (kept, made))
    if abs(len(old) - len(new)) > 1:
        faults.append(f"{path}: {len(old) - 1} steps, computed {len(new) - 1}")
    for step, (a, b) in enumerate(zip(old, new, strict=False)):
        if step <= STEPS_COMPARED and not abs(a - b) <= RESIDUAL_TOLERANCE * a:
            faults.append(f"{path}: residual {a} after step {step}, computed {b}")
    return faults


def compare(folder: Path, h: Hierarchy, lines: list[str]) -> list[str]:
    files = level_files(h)
    faults = text_differs(folder / "expected.txt", lines)
    kept = {path.name for path in folder.glob("level*")}
    if kept != set(files):
        faults.append(f"{folder}: files {sorted(kept)}, computed {sorted(files)}")
    return faults + [
        fault for name, made in files.items() if name in kept and (fault := file_differs(folder / name, made))
    ]


def main() -> int:
    parser = argparse.ArgumentParser(description="Sets up and solves systems by itself; writes or checks hierarchies.")
    parser.add_argument("--check", action="store_true", help="compare with the kept files, write nothing")
    parser.add_argument("folder", nargs="+", type=Path)
    options = parser.parse_args()
    wrong = 0
    for folder in options.folder:
        settings = read_settings(folder / "expected.txt")
        first, right = read_system(folder / "system.txt")
        hierarchy = set_up(first, settings)
        lines = answer_lines(hierarchy, *solve(hierarchy, right, settings.eps))
        if not options.check:
            write_files(folder, hierarchy, lines)
            continue
        faults = compare(folder, hierarchy, lines)
        print("\n".join(faults) or f"{folder}: agrees")
        wrong += bool(faults)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
