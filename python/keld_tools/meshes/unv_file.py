"""Universal files (.unv): units, nodes, shells, beams and groups, of data sets 164, 2411, 2412, 2467 and their kin.

Called by formats. A data set stands between two lines of -1; records are of fixed sequence, fields split at blanks.
"""

from __future__ import annotations

import math
from pathlib import Path

import numpy as np

from ..base.findings import BadFile
from .raw_mesh import RawMesh, filled, with_indices

SHELLS = {  # descriptor -> nodes, corners
    41: (3, 3), 42: (6, 3), 44: (4, 4), 45: (8, 4), 51: (3, 3), 52: (6, 3), 54: (4, 4), 55: (8, 4), 61: (3, 3),
    62: (6, 3), 64: (4, 4), 65: (8, 4), 74: (3, 3), 76: (6, 3), 71: (4, 4), 72: (8, 4), 91: (3, 3), 92: (6, 3),
    94: (4, 4), 95: (8, 4),
}  # fmt: skip
BEAMS = {21: 2, 22: 2, 23: 3, 24: 3}  # with one more record for orientation and ends
RODS = {11: 2}
POINTS = {136, 161}  # springs to ground and lumped masses
GROUP_SETS = {2435, 2452, 2467, 2477}
ELEMENT = 8  # type of entity in a group


class _Reader:
    def __init__(self) -> None:
        self.nodes: list[int] = []
        self.points: list[list[float]] = []
        self.shells: list[list[int]] = []
        self.shell_ids: list[int] = []
        self.lines: list[list[int]] = []
        self.line_ids: list[int] = []
        self.others: list[int] = []
        self.groups: dict[str, list[int]] = {}
        self.left_out: dict[str, int] = {}
        self.reduced: dict[str, int] = {}
        self.unit_mm: float | None = None

    def set_units(self, rows: list[list[str]]) -> None:
        """Behind a line of words the factors from SI to the file's units, that of lengths first."""
        per_metre = float(rows[1][0].upper().replace("D", "E"))
        if not 1e-6 < per_metre < 1e9:
            raise ValueError(f"{per_metre:g} is no factor for lengths")
        self.unit_mm = 1000.0 / per_metre

    def add_nodes(self, rows: list[list[str]]) -> None:
        for head, place in zip(rows[::2], rows[1::2]):
            self.nodes.append(int(head[0]))
            self.points.append([float(word.upper().replace("D", "E")) for word in place[:3]])

    def add_elements(self, rows: list[list[str]]) -> None:
        at = 0
        while at < len(rows):
            number, code, *_, count = (int(word) for word in rows[at])
            at += 2 if code in BEAMS else 1
            nodes: list[int] = []
            while len(nodes) < count:
                nodes += [int(word) for word in rows[at]]
                at += 1
            self.add_element(number, code, nodes)

    def add_element(self, number: int, code: int, nodes: list[int]) -> None:
        if code in BEAMS or code in RODS:
            self.lines.append([nodes[0], nodes[-1]])
            self.line_ids.append(number)
            self.others += nodes
        elif code in SHELLS:
            count, corners = SHELLS[code]
            if len(nodes) != count:
                raise ValueError(f"element {number} has {len(nodes)} nodes, expected {count}")
            kept = nodes[:: count // corners]  # corners and middle nodes take turns
            self.shells.append(kept + [-1] * (4 - corners))
            self.shell_ids.append(number)
            self.others += nodes
            if count > corners:
                self.reduced[f"{code} ({count} nodes)"] = self.reduced.get(f"{code} ({count} nodes)", 0) + 1
        elif code not in POINTS:
            self.others += nodes
            self.left_out[str(code)] = self.left_out.get(str(code), 0) + 1

    def add_groups(self, rows: list[list[str]]) -> None:
        """Records: numbers (the last counts the entities), name, then entities in fours, one or two a line."""
        at = 0
        while at + 1 < len(rows):
            count, name = int(rows[at][-1]), " ".join(rows[at + 1])
            at += 2
            words: list[int] = []
            while len(words) < 4 * count:
                words += [int(word) for word in rows[at]]
                at += 1
            entities = np.array(words).reshape(-1, 4)
            self.groups.setdefault(name, []).extend(entities[entities[:, 0] == ELEMENT, 1].tolist())

    def dataset(self, number: int, rows: list[list[str]]) -> None:
        if number == 164:
            self.set_units(rows)
        elif number in (781, 2411):
            self.add_nodes(rows)
        elif number == 15:
            self.nodes += [int(row[0]) for row in rows]
            self.points += [[float(word) for word in row[4:7]] for row in rows]
        elif number in (780, 2412):
            self.add_elements(rows)
        elif number in GROUP_SETS:
            self.add_groups(rows)


def read(path: Path) -> RawMesh:
    """Raises BadFile with the data set for what can't be read."""
    lines = path.read_text(encoding="utf-8", errors="replace").splitlines()
    marks = [i for i, line in enumerate(lines) if line.strip() == "-1"]
    if not marks or len(marks) % 2:
        raise BadFile(path, "isn't a whole universal file: the lines of -1 round its data sets don't come in pairs")
    reader = _Reader()
    for start, end in zip(marks[::2], marks[1::2]):
        rows = [line.split() for line in lines[start + 2 : end]]
        number = lines[start + 1].strip()
        try:
            if number.isdigit():
                reader.dataset(int(number), rows)
        except (ValueError, IndexError) as error:
            raise BadFile(path, f"the data set {number} can't be read: {error}", start + 2) from None
    return raw_of(path, reader)


def raw_of(path: Path, reader: _Reader) -> RawMesh:
    if len(set(reader.nodes)) != len(reader.nodes):
        raise BadFile(path, "node numbers are given twice")
    ids = np.asarray(reader.shell_ids, np.int64)
    raw = filled(
        reader.points,
        reader.nodes,
        reader.shells,
        ids,
        np.full(len(ids), math.nan),
        reader.lines,
        reader.line_ids,
        np.full(len(reader.lines), math.nan),
        left_out=reader.left_out,
        reduced=reader.reduced,
        unit_mm=reader.unit_mm,
    )
    groups = {name: np.isin(ids, numbers) for name, numbers in reader.groups.items()}
    return with_indices(path, raw, reader.others, groups)
