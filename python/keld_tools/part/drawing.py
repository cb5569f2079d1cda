"""What a drawing asks of the part: the [[measure]] tables of a drawing or a part file, and [datum].

Called by the programs; every fault names file, line and key. Places are mm in the frame of the mesh.
"""

from __future__ import annotations

from dataclasses import dataclass, field
from pathlib import Path

from ..base.findings import Findings
from .part_section import Section
from .toml_file import read_toml

LENGTHS, ZONES = ("distance", "diameter"), ("flatness", "roundness", "position", "profile")
KINDS = (*LENGTHS, "angle", *ZONES)
AT_POINTS = {"distance": ("between", 2), "position": ("point", 1), "diameter": ("hole", 1), "roundness": ("hole", 1)}
FACES = {"flatness": 1, "angle": 2, "profile": 1}

Place = int | tuple[float, float, float]  # node number from 1, or a point in mm
Box = tuple[tuple[float, float, float], tuple[float, float, float]]  # mm, least and greatest corner


@dataclass
class Measure:
    """One line of the drawing; lengths in mm, angles in degrees."""

    name: str
    kind: str
    nominal: float | None = None  # None: what the nominal shape has
    tolerance: tuple[float, float] | None = None  # least and greatest deviation; None: nothing is asked
    places: list[Place] = field(default_factory=list)
    faces: list[str | Box] = field(default_factory=list)  # groups or boxes; none with profile: the whole part
    where: str = ""  # "drawing.toml:12: [measure 2]", for faults

    @property
    def unit(self) -> str:
        return "deg" if self.kind == "angle" else "mm"


@dataclass
class Drawing:
    measures: list[Measure] = field(default_factory=list)
    datum: list[Place] | None = None  # three places of --align points


def read_drawing(path: Path, findings: Findings) -> Drawing:
    """The measures of a TOML file. BadFile when it can't be read or isn't TOML."""
    document, lines = read_toml(path)
    for key in document:
        if key not in ("measure", "datum"):
            findings.fault(f"{path}", f"{key!r} is not known; a drawing has [[measure]] and [datum]")
    return drawing_of(document, path, lines, findings)


def drawing_of(document: dict, path, lines: dict, findings: Findings) -> Drawing:
    """Measures and datum of a parsed document; other tables are left alone."""
    drawing, tables = Drawing(), document.get("measure", [])
    if not isinstance(tables, list):
        findings.fault(str(path), "expected [[measure]] with two brackets: each is one of a list")
        tables = []
    for number, table in enumerate(tables, 1):
        if measure := read_measure(Section(f"measure {number}", table, path, lines, findings), number):
            drawing.measures.append(measure)
    if "datum" in document:
        section = Section("datum", document["datum"], path, lines, findings)
        drawing.datum = section.nodes("points")
        if len(drawing.datum) != 3:
            section.fault("", f"expected three points, found {len(drawing.datum)}")
        section.finish()
    return drawing


def read_measure(section: Section, number: int) -> Measure | None:
    kind = section.take("kind", str, "a text", "")
    measure = Measure(section.take("name", str, "a text", f"measure {number}"), kind, where=section.place())
    if kind not in KINDS:
        section.fault("kind", f"{kind!r} is not known; one of {', '.join(KINDS)}")
        return None
    quantity = "angle" if kind == "angle" else "length"
    if kind not in ZONES:
        measure.nominal = section.quantity("nominal", quantity)
    measure.tolerance = read_tolerance(section, quantity, kind in ZONES)
    if kind in AT_POINTS:
        key, count = AT_POINTS[kind]
        for name in (f"{key}_at_{unit}" for unit in ("mm", "cm", "m", "inch")):
            value = section.table.get(name)
            if count == 1 and isinstance(value, list) and value and not isinstance(value[0], list):
                section.table = section.table | {name: [value]}  # one point needs no second bracket
        measure.places = section.nodes(key)
        if len(measure.places) != count:
            section.fault("", f"expected {count} of {key}_at_mm or {key}_nodes, found {len(measure.places)}")
    if kind in FACES:
        measure.faces = read_faces(section, FACES[kind], kind == "profile")
    section.finish()
    return measure


def read_tolerance(section: Section, quantity: str, zone: bool) -> tuple[float, float] | None:
    """One number: both ways (a zone: its width); a list: least and greatest deviation."""
    found = section.quantity("tolerance", quantity, None, lengths=(1, 2) if not zone else (1,))
    if found is None:
        return None
    entries = found if isinstance(found, list) else [found]
    if len(entries) == 1 and entries[0] <= 0:
        section.fault("", f"a tolerance of {entries[0]:g} isn't above 0")
        return None
    if len(entries) == 2 and entries[0] >= entries[1]:
        section.fault("", f"the tolerance {entries} doesn't rise from its least to its greatest deviation")
        return None
    return (0.0 if zone else -entries[0], entries[0]) if len(entries) == 1 else (entries[0], entries[1])


def read_faces(section: Section, count: int, may_lack: bool) -> list[str | Box]:
    """Groups by name (`group`, `groups`) or boxes in mm (`box_mm`, `boxes_mm`)."""
    one = count == 1
    names = section.take("group" if one else "groups", str if one else list, "the name of a group", None)
    boxes = section.take("box_mm" if one else "boxes_mm", list, "two corners [x, y, z]", None)
    if names is not None and boxes is not None:
        section.fault("", "both a group and a box are given")
    if names is not None:
        found = [names] if one else names
    else:
        found = [] if boxes is None else [box_of(section, box) for box in ([boxes] if one else boxes)]
    if len(found) != count and not (may_lack and names is None and boxes is None):
        section.fault("", f"expected {'a group or a box_mm' if one else 'two of groups or of boxes_mm'}")
    return [face for face in found if face is not None]


def box_of(section: Section, corners) -> Box | None:
    good = isinstance(corners, list) and len(corners) == 2 and all(isinstance(c, list) and len(c) == 3 for c in corners)
    if not good or not all(isinstance(x, (int, float)) for corner in corners for x in corner):
        section.fault("", f"expected a box as [[x, y, z], [x, y, z]], found {corners!r}")
        return None
    (a, d), (b, e), (c, f) = ((float(min(pair)), float(max(pair))) for pair in zip(*corners))
    return (a, b, c), (d, e, f)
