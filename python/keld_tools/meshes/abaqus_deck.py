"""Abaqus and CalculiX decks: keywords and data lines, as the parts and instances of an assembly or one flat mesh.

A reader of its own, since meshio 5.0 carries no sections, loses sets of several blocks and doesn't know S6 and S8.
Called by formats; abaqus_assembly makes one mesh of what is read.
"""

from __future__ import annotations

import re
from collections.abc import Callable
from pathlib import Path

from ..base.findings import BadFile
from .abaqus_assembly import Content, Instance, Model, assembled
from .raw_mesh import RawMesh

SHELL = re.compile(r"(?:S|DS|STRI|M3D|CPS|CPE|SFM3D|R3D|CAX)(3|4|6|65|8|9)(?!\d)")
LINE = re.compile(r"(?:B2|B3|T2D|T3D|R2D)[123]")
NO_STIFFNESS = ("MASS", "ROTARYI", "HEATCAP")  # elements that a wall can do without
NODES_OF_SHELL = {"3": 3, "4": 4, "6": 6, "65": 6, "8": 8, "9": 9}
MAKERS = ("NGEN", "NFILL", "NCOPY", "NMAP", "ELGEN", "ELCOPY", "SYSTEM")  # of nodes and elements that no line tells


class _Deck:
    """State of the reading: the open keyword, and the part, instance or flat mesh that its data lines belong to."""

    def __init__(self, path: Path):
        self.path = path
        self.model = Model()
        self.here = self.model.flat
        self.assembly = False  # within *ASSEMBLY and not in an instance: nodes there are reference points
        self.take: Callable[[list[str]], None] | None = None  # what the data lines go to
        self.pending: list[int] = []  # of an element over several lines

    def keyword(self, line: str, file: Path, depth: int) -> None:
        self.pending, self.take = [], None
        name, *words = [w.strip() for w in line.lstrip("*").split(",")]
        name = re.sub(r"\s+", " ", name).upper()
        options = {k.strip().upper(): v.strip() for k, _, v in (w.partition("=") for w in words if w)}
        if name in MAKERS or name == "NODE" and options.get("SYSTEM", "R").upper() not in ("R", ""):
            raise ValueError(f"*{name} in this form isn't read; write the mesh with every node and element of its own")
        if starts := {
            "NODE": self.start_nodes,
            "ELEMENT": self.start_elements,
            "ELSET": self.start_set,
            "SHELL SECTION": self.start_shell_section,
            "SHELL GENERAL SECTION": self.start_shell_section,
            "MEMBRANE SECTION": self.start_shell_section,
            "BEAM SECTION": self.start_beam_section,
            "INSTANCE": self.start_instance,
        }.get(name):
            starts(options)
        elif name == "PART":
            self.here = self.model.parts.setdefault(options.get("NAME", "").upper(), Content())
        elif name == "END PART":
            self.here = self.model.flat
        elif name in ("ASSEMBLY", "END INSTANCE", "END ASSEMBLY"):
            self.assembly, self.here = name != "END ASSEMBLY", self.model.flat
        if "INPUT" in options and (name == "INCLUDE" or self.take):
            read_lines(self, included(options["INPUT"].strip("\"'"), file, self.path), depth + 1)

    def start_instance(self, options: dict) -> None:
        instance = Instance(options.get("NAME", ""), options.get("PART", ""))
        self.model.instances.append(instance)
        self.assembly, self.here = False, instance.own
        self.take = lambda words: instance.placing.append([float(w) if w else 0.0 for w in words])

    def start_nodes(self, options: dict) -> None:
        def node(words: list[str]) -> None:
            self.here.nodes.append(int(words[0]))
            self.here.points.append([float(w) if w else 0.0 for w in (words[1:4] + ["", "", ""])[:3]])

        self.take = (lambda words: None) if self.assembly else node

    def start_elements(self, options: dict) -> None:
        kind, here = options.get("TYPE", "").upper(), self.here
        members = here.sets.setdefault(options["ELSET"].upper(), []) if options.get("ELSET") else []
        count, corners = node_counts(kind)

        def no_wall(words: list[str]) -> None:
            if not kind.startswith(NO_STIFFNESS):
                here.left_out[kind or "?"] = here.left_out.get(kind or "?", 0) + 1
            here.others += [int(w) for w in words[1:] if w.isdigit() and not self.assembly]

        def element(words: list[str]) -> None:
            self.pending += [int(w) for w in words if w]
            if len(self.pending) <= count:
                return
            number, *nodes = self.pending
            if len(nodes) != count:
                raise ValueError(f"element {number} of {kind} has {len(nodes)} nodes, expected {count}")
            self.pending = []
            members.append(number)
            here.add_element(number, nodes, corners, kind)

        self.take = element if count and not self.assembly else no_wall

    def start_set(self, options: dict) -> None:
        name, of = options.get("ELSET", "").upper(), options.get("INSTANCE", "").upper()
        members: list = self.model.sets.setdefault(name, []) if self.assembly else self.here.sets.setdefault(name, [])

        def entries(words: list[str]) -> None:
            words = [w for w in words if w]
            if "GENERATE" in options:
                first, last, step = ([int(w) for w in words] + [1])[:3]
                found: list = list(range(first, last + 1, step))
            else:
                found = [int(w) if w.isdigit() else w.upper() for w in words]
            members.extend([(of, entry) for entry in found] if self.assembly else found)

        self.take = entries

    def start_shell_section(self, options: dict) -> None:
        if "COMPOSITE" not in options and "NODAL THICKNESS" not in options:
            self.start_section(self.here.sections, options.get("ELSET", ""), 1.0)

    def start_beam_section(self, options: dict) -> None:
        if options.get("SECTION", "").upper() in ("CIRC", "PIPE"):
            self.start_section(self.here.beams, options.get("ELSET", ""), 2.0)

    def start_section(self, sections: list, name: str, factor: float) -> None:
        def first_line(words: list[str]) -> None:
            sections.append((name.upper(), factor * float(words[0])))
            self.take = None

        self.take = first_line


def node_counts(kind: str) -> tuple[int, int]:
    """Nodes and corners of a kind of element; 0 for one that can be no wall and no runner."""
    if shell := SHELL.match(kind):
        count = NODES_OF_SHELL[shell[1]]
        return count, 3 if count in (3, 6) else 4
    if LINE.match(kind):
        return 3 if kind.startswith(("B22", "B32", "T2D3", "T3D3")) else 2, 2
    return 0, 0


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
    return assembled(path, deck.model)
