"""Wavefront OBJ: v, f (with or without texture and normal), l, and the groups that g and o name. Called by formats."""

from __future__ import annotations

from pathlib import Path

import numpy as np

from ..base.findings import BadFile
from .raw_mesh import RawMesh, from_cells


class _Reader:
    def __init__(self) -> None:
        self.points: list[list[float]] = []
        self.blocks: list[tuple[list[list[int]], list[int]]] = []  # faces of one size in a row, the group of each
        self.lines: list[list[int]] = []
        self.groups: dict[str, int] = {"": 0}
        self.group = 0

    def index(self, word: str) -> int:
        """A node from 0 of "7", "7/1", "7//3", "-1" (counted back from the last one so far)."""
        number = int(word.split("/", 1)[0])
        if number == 0:
            raise ValueError("nodes count from 1")
        return number - 1 if number > 0 else len(self.points) + number

    def line(self, key: str, words: list[str]) -> None:
        if key == "v":
            x, y, z = words[:3]
            self.points.append([float(x), float(y), float(z)])
        elif key == "f":
            if len(words) < 3:
                raise ValueError(f"a face of {len(words)} corners")
            if not self.blocks or len(self.blocks[-1][0][0]) != len(words):
                self.blocks.append(([], []))
            faces, groups = self.blocks[-1]
            faces.append([self.index(word) for word in words])
            groups.append(self.group)
        elif key == "l":
            nodes = [self.index(word) for word in words]
            self.lines += [list(pair) for pair in zip(nodes, nodes[1:])]
        elif key in ("g", "o"):
            self.group = self.groups.setdefault(" ".join(words), len(self.groups))


def read(path: Path) -> RawMesh:
    """Raises BadFile with the line for what can't be read."""
    reader = _Reader()
    text = path.read_text(encoding="utf-8", errors="replace").replace("\\\n", " ")
    for number, line in enumerate(text.splitlines(), 1):
        key, *words = line.split("#", 1)[0].split() or [""]
        try:
            reader.line(key, words)
        except ValueError as error:
            raise BadFile(path, f"can't be read: {error}: {line[:80]!r}", number) from None
    kinds = {3: "triangle", 4: "quad"}
    cells = [(kinds.get(len(faces[0]), "polygon"), np.array(faces)) for faces, _ in reader.blocks]
    of = [np.array(groups) for _, groups in reader.blocks]
    groups = {name: [block == k for block in of] for name, k in reader.groups.items() if name}
    if reader.lines:
        cells.append(("line", np.array(reader.lines)))
        groups = {name: [*blocks, np.zeros(len(reader.lines), bool)] for name, blocks in groups.items()}
    return from_cells(path, np.array(reader.points).reshape(-1, 3), cells, groups=groups)
