"""Gmsh: format 4.1 by a reader of its own, older ones through meshio. Called by formats.

meshio 5.0 takes no 4.1 file in which some entities have a physical group and others none ("save all"), and takes
element data by order.
"""

from __future__ import annotations

import re
import warnings
from pathlib import Path
from typing import Any

import numpy as np

from ..base.findings import BadFile
from . import meshio_file
from .raw_mesh import RawMesh, from_cells

SECTION = re.compile(rb"^\$(\w+)[ \t]*\r?\n", re.M)
# number of Gmsh -> kind by the names of meshio, nodes
KINDS = {
    1: ("line", 2), 2: ("triangle", 3), 3: ("quad", 4), 4: ("tetra", 4), 5: ("hexahedron", 8), 6: ("wedge", 6),
    7: ("pyramid", 5), 8: ("line3", 3), 9: ("triangle6", 6), 10: ("quad9", 9), 11: ("tetra10", 10),
    12: ("hexahedron27", 27), 13: ("wedge18", 18), 14: ("pyramid14", 14), 15: ("vertex", 1), 16: ("quad8", 8),
    17: ("hexahedron20", 20), 18: ("wedge15", 15), 19: ("pyramid13", 13), 21: ("triangle10", 10), 26: ("line4", 4),
    29: ("tetra20", 20), 36: ("quad16", 16),
}  # fmt: skip


def text_numbers(data: bytes) -> np.ndarray:
    """All numbers of a text. NumPy only warns of a word that is none."""
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        try:
            return np.fromstring(data, sep=" ")
        except DeprecationWarning:
            raise ValueError("expected numbers alone") from None


class _Numbers:
    """The numbers of a section, text or binary, taken from front to back. Raises ValueError at its end."""

    def __init__(self, data: bytes, binary: bool):
        self.binary, self.at = binary, 0
        self.data: Any = data if binary else text_numbers(data)  # bytes, or numbers

    def take(self, count: int, kind: str = "<u8") -> np.ndarray:
        size = np.dtype(kind).itemsize if self.binary else 1
        if count < 0 or self.at + count * size > len(self.data):
            raise ValueError("ends too early")
        start, self.at = self.at, self.at + count * size
        if self.binary:
            return np.frombuffer(self.data, kind, count, start)
        return self.data[start : self.at].astype(kind)

    def one(self, kind: str = "<u8") -> int:
        return int(self.take(1, kind)[0])


def read(path: Path) -> RawMesh:
    """Raises BadFile for what can't be read."""
    data = path.read_bytes()
    head = re.match(rb"\s*\$MeshFormat\s+(\S+)\s+([01])\s", data)
    if not head or head[1] != b"4.1":
        return meshio_file.read(path)
    try:
        return read_41(path, data, head[2] == b"1")
    except (ValueError, KeyError, IndexError, OverflowError) as error:
        raise BadFile(path, f"can't be read as a mesh of Gmsh 4.1: {error}") from None


def sections(data: bytes) -> dict[str, list[bytes]]:
    """Name -> contents of each section of that name; a section that doesn't end is a ValueError."""
    found: dict[str, list[bytes]] = {}
    at = 0
    while head := SECTION.search(data, at):
        end = data.find(b"$End" + head[1], head.end())
        if end < 0:
            raise ValueError(f"the section ${head[1].decode(errors='replace')} doesn't end: the file is cut off")
        found.setdefault(head[1].decode(), []).append(data[head.end() : end])
        at = data.find(b"\n", end) if data.find(b"\n", end) >= 0 else len(data)
    return found


def read_41(path: Path, data: bytes, binary: bool) -> RawMesh:
    parts = sections(data)
    numbers, points = nodes_of(_Numbers(parts["Nodes"][0], binary))
    blocks = elements_of(_Numbers(parts["Elements"][0], binary))
    physical = physical_tags(_Numbers(parts["Entities"][0], binary)) if "Entities" in parts else {}
    order = np.argsort(numbers)
    cells = []
    for _, kind, rows in blocks:
        at = np.minimum(np.searchsorted(numbers, rows[:, 1:], sorter=order), len(numbers) - 1)
        if rows.size and (numbers[order[at]] != rows[:, 1:]).any():
            raise ValueError(f"an element of kind {kind} has a node that isn't in the file")
        cells.append((kind, order[at]))
    names = physical_names(parts.get("PhysicalNames", [b""])[0])
    tags = sorted({tag for (dim, _), of in physical.items() for tag in of if dim == 2})
    groups = {}
    for tag in tags:
        masks = [np.full(len(rows), tag in physical.get(entity, ()) and entity[0] == 2) for entity, _, rows in blocks]
        groups[str(tag)] = masks
        if tag in names:
            groups[names[tag]] = masks
    values = [element_data(section, binary, blocks) for section in parts.get("ElementData", [])]
    return from_cells(path, points, cells, dict(values), groups)


def nodes_of(numbers: _Numbers) -> tuple[np.ndarray, np.ndarray]:
    """Tags (N,) and coordinates (N, 3)."""
    blocks, *_ = numbers.take(4)
    tags, points = [np.zeros(0, np.int64)], [np.zeros((0, 3))]
    for _ in range(int(blocks)):
        dim, _, parametric = numbers.take(3, "<i4")
        count = numbers.one()
        tags.append(numbers.take(count).astype(np.int64))
        width = 3 + (int(dim) if parametric else 0)
        points.append(numbers.take(count * width, "<f8").reshape(count, width)[:, :3])
    return np.concatenate(tags), np.concatenate(points)


def elements_of(numbers: _Numbers) -> list[tuple[tuple[int, int], str, np.ndarray]]:
    """Per block: entity (dimension, tag), kind, and rows of the element's tag and its node tags."""
    blocks = []
    for _ in range(int(numbers.take(4)[0])):
        dim, tag, code = (int(v) for v in numbers.take(3, "<i4"))
        count = numbers.one()
        if code not in KINDS:
            raise ValueError(f"elements of the number {code} aren't known")
        kind, nodes = KINDS[code]
        blocks.append(((dim, tag), kind, numbers.take(count * (nodes + 1)).reshape(count, nodes + 1).astype(np.int64)))
    return blocks


def physical_tags(numbers: _Numbers) -> dict[tuple[int, int], list[int]]:
    """Entity (dimension, tag) -> its physical groups."""
    result = {}
    for dim, count in enumerate(int(v) for v in numbers.take(4)):
        for _ in range(count):
            tag = numbers.one("<i4")
            numbers.take(3 if dim == 0 else 6, "<f8")
            result[dim, tag] = [abs(int(v)) for v in numbers.take(numbers.one(), "<i4")]
            if dim:
                numbers.take(numbers.one(), "<i4")
    return result


def physical_names(text: bytes) -> dict[int, str]:
    """Physical group of dimension 2 -> its name."""
    found = re.findall(rb'^[ \t]*(\d+)[ \t]+(\d+)[ \t]+"([^"]*)"', text, re.M)
    return {int(tag): name.decode(errors="replace") for dim, tag, name in found if dim == b"2"}


def element_data(section: bytes, binary: bool, blocks: list) -> tuple[str, list[np.ndarray]]:
    """Name and values of an $ElementData, one array per block of elements; nan where no line names the element."""

    def counted(text: bytes) -> tuple[list[bytes], bytes]:
        number, _, rest = text.partition(b"\n")
        *lines, rest = rest.split(b"\n", int(number))
        return lines, rest

    names, rest = counted(section)
    _, rest = counted(rest)
    (_, components, count, *_), rest = (lambda pair: ([int(v) for v in pair[0]], pair[1]))(counted(rest))
    kind = np.dtype([("tag", "<i4"), ("value", "<f8", (components,))])
    if binary:
        rows = np.frombuffer(rest, kind, count)
        tags, values = rows["tag"], rows["value"].reshape(count, components)
    else:
        table = _Numbers(rest, False).take(count * (components + 1), "<f8").reshape(count, components + 1)
        tags, values = table[:, 0].astype(np.int64), table[:, 1:]
    order = np.argsort(tags)
    result = []
    for _, _, block in blocks:
        at = np.minimum(np.searchsorted(tags, block[:, 0], sorter=order), max(count - 1, 0))
        known = tags[order[at]] == block[:, 0] if count else np.zeros(len(block), bool)
        data = np.full((len(block), components), np.nan)
        data[known] = values[order[at[known]]]
        result.append(data[:, 0] if components == 1 else data)
    return names[0].decode(errors="replace").strip().strip('"'), result
