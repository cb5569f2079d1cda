"""NASTRAN bulk data: grid points, shell and two-node elements, and the property cards with their thickness.

A reader of its own, since meshio 5.0 carries no property cards and passes over large-field elements in silence.
Called by mesh_input.
"""

from __future__ import annotations

import math
import re
from collections.abc import Iterator
from pathlib import Path

import numpy as np

from ..base.findings import BadFile, count_of
from .raw_mesh import RawMesh, filled, with_indices

# card -> (corners, place of the first grid point, place of the first corner thickness)
SHELLS = {
    "CTRIA3": (3, 2, 10),
    "CTRIAR": (3, 2, 10),
    "CTRIA6": (3, 2, 10),
    "CQUAD4": (4, 2, 10),
    "CQUADR": (4, 2, 10),
    "CQUAD8": (4, 2, 10),
    "CSHEAR": (4, 2, None),
    "CQUAD": (4, 2, None),
}
HIGHER = {"CTRIA6": 6, "CQUAD8": 8, "CQUAD": 9}  # nodes of the cards that have more than corners
LINES = {"CBAR", "CBEAM", "CROD", "CONROD", "CTUBE"}
# Elements that can be no wall; masses, dampers and plot elements carry nothing and are passed over.
OTHERS = re.compile(
    r"C(TETRA|HEXA|PENTA|PYRAM?|BUSH(1D|2D)?|ELAS[1-4]|GAP|BEND|BEAM3|FAST|WELD|SEAM|TRIAX6?|QUADX[48]?|TRAX[36]"
    r"|QUADP|TRIAP|RAC2D|RAC3D)|R(BAR1?|BE[123]|ROD|TRPLT1?|SPLINE|JOINT|SSCON)"
)
INCLUDE = re.compile(r"\s*INCLUDE\b\s*(.*)", re.I)
MISSING_E = re.compile(r"(?<=[\d.])([+-]\d+)$")


def cards(path: Path):
    """Yield ((file, line number), keyword, fields) of each card: small, large and free field, continued lines joined."""
    at, name, fields = (path, 0), "", []
    for file, number, line in bulk_lines(path):
        line = line.split("$", 1)[0].rstrip()
        if not line:
            continue
        if "\t" in line:
            line = line.expandtabs(8)
        head, body = split_line(line)
        if head == "" or head[0] in "+*":
            fields += body
            continue
        if name:
            yield at, name, fields
        if head.upper().startswith("ENDDATA"):
            return
        at, name, fields = (file, number), head.rstrip("*").upper(), body
    if name:
        yield at, name, fields


def bulk_lines(path: Path) -> list[tuple[Path, int, str]]:
    """File, number and text of every line behind BEGIN BULK, those of included files in their places."""
    lines = list(lines_of(path, path))
    begin = next((i for i, (_, _, line) in enumerate(lines) if re.match(r"\s*BEGIN\s+BULK", line, re.I)), -1)
    return lines[begin + 1 :]


def lines_of(path: Path, deck: Path, depth: int = 0) -> Iterator[tuple[Path, int, str]]:
    """Lines of a file; an INCLUDE, whose quoted name may go over several lines, gives way to its file's."""
    lines = path.read_text(encoding="utf-8", errors="replace").splitlines()
    number = 0
    while number < len(lines):
        line, number = lines[number], number + 1
        statement = INCLUDE.match(line) if line[:1] in "iI " else None
        if not statement:
            yield path, number, line
            continue
        first, name = number, statement[1].strip()
        while name[:1] in ("'", '"') and name.count(name[0]) < 2 and number < len(lines):
            name, number = name + lines[number].strip(), number + 1
        quoted = re.match(r"(['\"])(.*?)\1", name)
        name = quoted[2] if quoted else name.split("$", 1)[0].strip()
        target = next((f / name for f in (path.parent, deck.parent) if name and (f / name).is_file()), None)
        if target is None or depth > 10:
            why = "includes itself" if target else "isn't there"
            raise BadFile(path, f"the file {name!r} that it includes {why}", first)
        yield from lines_of(target, deck, depth + 1)


def split_line(line: str) -> tuple[str, list[str]]:
    """Head field and data fields of a line; continuation names at its end are dropped."""
    if "," in line:
        head, *body = [f.strip() for f in line.split(",")]
        return head, (body + [""] * 8)[:8]
    head = line[:8].strip()
    width, count = (16, 4) if "*" in head else (8, 8)
    line = line.ljust(72)
    return head, [line[8 + width * i : 8 + width * (i + 1)].strip() for i in range(count)]


def real(text: str) -> float:
    """A NASTRAN real: 1.5, 1.5E3, 1.5+3, 1.5D3."""
    text = text.upper().replace("D", "E")
    return float(MISSING_E.sub(r"E\1", text) if "E" not in text else text)


class _Deck:
    """What the cards of one file give, in lists, until the end of the file."""

    def __init__(self):
        self.grid, self.points, self.systems = [], [], []
        self.shells, self.shell_ids, self.shell_props, self.corner_thickness = [], [], [], []
        self.lines, self.line_ids, self.line_props, self.line_diameter = [], [], [], []
        self.thickness, self.diameter, self.left_out, self.reduced = {}, {}, {}, {}
        self.others: list[int] = []  # middle nodes and nodes of solids

    def add(self, name: str, f: list[str]) -> None:
        if name == "GRID":
            self.grid.append(int(f[0]))
            self.points.append([real(c) if c else 0.0 for c in f[2:5]])
            if f[1] not in ("", "0"):
                self.systems.append(int(f[0]))
        elif name in SHELLS:
            self.add_shell(name, f)
        elif name in LINES:
            first = 1 if name == "CONROD" else 2
            self.lines.append([int(f[first]), int(f[first + 1])])
            self.line_ids.append(int(f[0]))
            self.line_props.append(int(f[1] or f[0]) if name != "CONROD" else -1)
            self.line_diameter.append(disc_diameter(real(f[4])) if name == "CONROD" else math.nan)
        elif name == "PSHELL" and f[2]:
            self.thickness[int(f[0])] = real(f[2])
        elif name in ("PROD", "PBAR", "PBEAM") and f[2]:
            self.diameter[int(f[0])] = disc_diameter(real(f[2]))
        elif name == "PTUBE" and f[2]:
            self.diameter[int(f[0])] = real(f[2])
        elif name in ("PBARL", "PBEAML") and f[3].upper() in ("ROD", "TUBE") and len(f) > 8:
            self.diameter[int(f[0])] = 2.0 * real(f[8])
        elif OTHERS.fullmatch(name):
            self.left_out[name] = self.left_out.get(name, 0) + 1
            self.others += [int(n) for n in f[2:] if n.isdigit()]

    def add_shell(self, name: str, f: list[str]) -> None:
        corners, first, thick = SHELLS[name]
        nodes = [int(n) for n in f[first : first + corners]]
        self.shells.append(nodes + [-1] * (4 - corners))
        if name in HIGHER:
            self.others += [int(n) for n in f[first + corners : first + HIGHER[name]] if n]
            self.reduced[name] = self.reduced.get(name, 0) + 1
        self.shell_ids.append(int(f[0]))
        self.shell_props.append(int(f[1] or f[0]))
        given = [t for t in f[thick : thick + corners] if t] if thick else []
        mean = sum(map(real, given)) / len(given) if given else math.nan
        relative = bool(given) and name in ("CTRIA3", "CTRIAR", "CQUAD4", "CQUADR") and f[9] == "1"
        self.corner_thickness.append((mean, relative))


def disc_diameter(area: float) -> float:
    return math.sqrt(4.0 * area / math.pi)


def read(path: Path) -> RawMesh:
    """The mesh of a bulk data file. Raises BadFile with line and card for what can't be read."""
    deck = _Deck()
    for (file, line), name, fields in cards(path):
        try:
            deck.add(name, fields)
        except (ValueError, IndexError):
            raise BadFile(file, f"card {name} can't be read: {','.join(fields)[:80]!r}", line) from None
    if deck.systems:
        raise BadFile(
            path,
            f"{count_of(deck.systems, 'grid point')} in a coordinate system of its own; "
            "write the mesh in basic coordinates",
        )
    numbers = np.asarray(deck.grid, np.int64)
    if len(np.unique(numbers)) != len(numbers):
        values, counts = np.unique(numbers, return_counts=True)
        raise BadFile(path, f"grid point {values[counts > 1][0]} is given twice")
    props = np.asarray(deck.shell_props, np.int64)
    by_prop = np.array([deck.thickness.get(p, math.nan) for p in deck.shell_props])
    own, relative = np.array(deck.corner_thickness, float).reshape(-1, 2).T
    thickness = np.where(np.isnan(own), by_prop, np.where(relative > 0, own * by_prop, own))
    diameter = [
        d if not math.isnan(d) else deck.diameter.get(p, math.nan) for p, d in zip(deck.line_props, deck.line_diameter)
    ]
    raw = filled(
        deck.points,
        numbers,
        deck.shells,
        deck.shell_ids,
        thickness,
        deck.lines,
        deck.line_ids,
        diameter,
        left_out=deck.left_out,
        reduced=deck.reduced,
    )
    return with_indices(path, raw, deck.others, {str(p): props == p for p in np.unique(props)})
