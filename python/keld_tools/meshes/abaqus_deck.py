"""Abaqus and CalculiX decks: nodes, shell and two-node elements, element sets and section thickness.

A reader of its own, since meshio 5.0 carries no sections, loses sets of several blocks and doesn't know S6 and S8.
Called by mesh_input.
"""

from __future__ import annotations

import math
import re
from collections.abc import Callable
from pathlib import Path

import numpy as np
from scipy.spatial.transform import Rotation

from ..base.findings import BadFile
from .raw_mesh import RawMesh, filled, with_indices

SHELL = re.compile(r"(?:S|DS|STRI|M3D|CPS|CPE|SFM3D|R3D|CAX)(3|4|6|65|8|9)(?!\d)")
LINE = re.compile(r"(?:B2|B3|T2D|T3D|R2D)[123]")
NO_STIFFNESS = ("MASS", "ROTARYI", "HEATCAP")  # elements that a wall can do without
NODES_OF_SHELL = {"3": 3, "4": 4, "6": 6, "65": 6, "8": 8, "9": 9}


class _Deck:
    """State of the reading: the open keyword, and what the data lines have given so far."""

    def __init__(self, path: Path):
        self.path = path
        self.nodes: list[int] = []
        self.points: list[list[float]] = []
        self.shells: list[list[int]] = []
        self.shell_ids: list[int] = []
        self.lines: list[list[int]] = []
        self.line_ids: list[int] = []
        self.sets: dict[str, list] = {}
        self.sections: list[tuple[str, float]] = []  # set, thickness
        self.beams: list[tuple[str, float]] = []  # set, diameter
        self.left_out: dict[str, int] = {}
        self.reduced: dict[str, int] = {}
        self.others: list[int] = []  # middle nodes and nodes of elements left out
        self.instances = 0
        self.placing: list[list[float]] = []  # of the instance: shift, then two points of an axis and degrees
        self.in_assembly = False  # behind *ASSEMBLY and not in an instance: nodes there are reference points
        self.take: Callable[[list[str]], None] | None = None  # what the data lines go to
        self.pending: list[int] = []  # of an element over several lines

    def keyword(self, line: str, file: Path, depth: int) -> None:
        self.pending, self.take = [], None
        name, *words = [w.strip() for w in line.lstrip("*").split(",")]
        name = re.sub(r"\s+", " ", name).upper()
        options = {k.strip().upper(): v.strip() for k, _, v in (w.partition("=") for w in words if w)}
        if name == "NODE":
            self.take = self.node
        elif name == "ELEMENT":
            self.start_elements(options)
        elif name == "ELSET":
            self.start_set(options)
        elif name in ("SHELL SECTION", "SHELL GENERAL SECTION", "MEMBRANE SECTION"):
            if "COMPOSITE" not in options and "NODAL THICKNESS" not in options:
                self.start_section(self.sections, options.get("ELSET", ""), 1.0)
        elif name == "BEAM SECTION" and options.get("SECTION", "").upper() in ("CIRC", "PIPE"):
            self.start_section(self.beams, options.get("ELSET", ""), 2.0)
        elif name in ("ASSEMBLY", "END INSTANCE", "END ASSEMBLY"):
            self.in_assembly = name != "END ASSEMBLY"
        elif name == "INSTANCE":
            self.instances += 1
            self.in_assembly = False
            if self.instances > 1:
                raise ValueError("several instances; write one flat mesh")
            self.take = lambda words: self.placing.append([float(w) if w else 0.0 for w in words])
        if "INPUT" in options and (name == "INCLUDE" or self.take):
            read_lines(self, included(options["INPUT"].strip("\"'"), file, self.path), depth + 1)

    def node(self, words: list[str]) -> None:
        if self.in_assembly:
            return
        self.nodes.append(int(words[0]))
        self.points.append([float(w) if w else 0.0 for w in (words[1:4] + ["", "", ""])[:3]])

    def start_elements(self, options: dict) -> None:
        kind = options.get("TYPE", "").upper()
        members = self.sets.setdefault(options["ELSET"].upper(), []) if options.get("ELSET") else []
        if shell := SHELL.match(kind):
            count = NODES_OF_SHELL[shell[1]]
            corners = 3 if count in (3, 6) else 4
        elif LINE.match(kind):
            count = 3 if kind.startswith(("B22", "B32", "T2D3", "T3D3")) else 2
            corners = 2
        else:
            count = corners = 0

        def element(words: list[str]) -> None:
            self.pending += [int(w) for w in words if w]
            if not count:
                if not kind.startswith(NO_STIFFNESS):
                    self.left_out[kind or "?"] = self.left_out.get(kind or "?", 0) + 1
                self.others += self.pending[1:]
                self.pending = []
            elif len(self.pending) > count:
                number, *nodes = self.pending
                if len(nodes) != count:
                    raise ValueError(f"element {number} of {kind} has {len(nodes)} nodes, expected {count}")
                self.pending = []
                self.others += nodes[corners:] if corners > 2 else nodes[1:-1]
                members.append(number)
                if corners == 2:
                    self.lines.append([nodes[0], nodes[-1]])
                    self.line_ids.append(number)
                else:
                    self.shells.append(nodes[:corners] + [-1] * (4 - corners))
                    self.shell_ids.append(number)
                    if count > corners:
                        self.reduced[kind] = self.reduced.get(kind, 0) + 1

        self.take = element

    def start_set(self, options: dict) -> None:
        members = self.sets.setdefault(options.get("ELSET", "").upper(), [])

        def entries(words: list[str]) -> None:
            words = [w for w in words if w]
            if "GENERATE" in options:
                first, last, step = ([int(w) for w in words] + [1])[:3]
                members.extend(range(first, last + 1, step))
            else:
                members.extend(int(w) if w.isdigit() else w.upper() for w in words)

        self.take = entries

    def start_section(self, sections: list, name: str, factor: float) -> None:
        def first_line(words: list[str]) -> None:
            sections.append((name.upper(), factor * float(words[0])))
            self.take = None

        self.take = first_line

    def members(self, name: str, depth: int = 0) -> np.ndarray:
        """Element numbers of a set, with those of the sets that it names."""
        if depth > 20:
            raise BadFile(self.path, f"element set {name} contains itself")
        entries = self.sets.get(name, [])
        nested = [self.members(e, depth + 1) for e in entries if isinstance(e, str)]
        return np.unique(np.concatenate([np.array([e for e in entries if isinstance(e, int)], np.int64), *nested]))


def placed(points: list[list[float]], placing: list[list[float]]) -> np.ndarray:
    """Points of a part where its instance stands in the assembly: shifted first, then turned about the axis."""
    result = np.asarray(points, float).reshape(-1, 3)
    if placing:
        result = result + (placing[0] + [0.0] * 3)[:3]
    if len(placing) > 1 and len(placing[1]) >= 7:
        start, end, degrees = np.array(placing[1][:3]), np.array(placing[1][3:6]), placing[1][6]
        axis = (end - start) / np.linalg.norm(end - start)
        result = Rotation.from_rotvec(np.radians(degrees) * axis).apply(result - start) + start
    return result


def included(name: str, file: Path, deck: Path) -> Path:
    """A file that `file` names, relative to itself or to the deck. Raises ValueError where there is none."""
    for folder in (file.parent, deck.parent):
        if name and (folder / name).is_file():
            return folder / name
    raise ValueError(f"the file {name!r} that it includes isn't there")


def read_lines(deck: _Deck, path: Path, depth: int = 0) -> None:
    if depth > 10:
        raise ValueError("includes itself")
    head = ""
    for number, line in enumerate(path.read_text(encoding="utf-8", errors="replace").splitlines(), 1):
        line = line.strip()
        if not line or line.startswith("**"):
            continue
        try:
            if line.startswith("*") or head:
                head += line
                if not head.endswith(","):
                    whole, head = head, ""
                    deck.keyword(whole, path, depth)
            elif deck.take:
                deck.take([w.strip() for w in line.split(",")])
        except (ValueError, IndexError) as error:
            raise BadFile(path, f"can't be read: {error}: {line[:80]!r}", number) from None


def read(path: Path) -> RawMesh:
    """The mesh of a deck. Raises BadFile with the line for what can't be read."""
    deck = _Deck(path)
    read_lines(deck, path)
    numbers, first = np.unique(np.asarray(deck.nodes, np.int64), return_index=True)
    if len(numbers) != len(deck.nodes):
        raise BadFile(path, "node numbers are given twice; write one flat mesh, without parts of their own numbers")
    shell_ids, line_ids = np.asarray(deck.shell_ids, np.int64), np.asarray(deck.line_ids, np.int64)
    thickness, diameter = np.full(len(shell_ids), math.nan), np.full(len(line_ids), math.nan)
    for name, value in deck.sections:
        thickness[np.isin(shell_ids, deck.members(name))] = value
    for name, value in deck.beams:
        diameter[np.isin(line_ids, deck.members(name))] = value
    raw = filled(
        placed(deck.points, deck.placing),
        deck.nodes,
        deck.shells,
        shell_ids,
        thickness,
        deck.lines,
        line_ids,
        diameter,
        left_out=deck.left_out,
        reduced=deck.reduced,
    )
    groups = {name: np.isin(shell_ids, deck.members(name)) for name in deck.sets if name}
    return with_indices(path, raw, deck.others, groups)
