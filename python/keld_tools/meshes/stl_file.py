"""STL, binary and text, one or several solids; each becomes a group. Called by formats.

A file is text when it begins with "solid", in any case and behind blanks, and soon has a facet.
"""

from __future__ import annotations

import re
from pathlib import Path

import numpy as np

from ..base.findings import BadFile
from .raw_mesh import RawMesh, from_cells

HEAD = 84  # bytes before the triangles of a binary file
RECORD = np.dtype([("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("attribute", "<u2")])
VERTEX = re.compile(rb"\bvertex\s+(\S+)\s+(\S+)\s+(\S+)", re.I)
SOLID = re.compile(rb"^[ \t]*solid\b[ \t]*([^\r\n]*)", re.I | re.M)


def read(path: Path) -> RawMesh:
    """Triangles with nodes of their own each. Raises BadFile for an empty, cut or damaged file."""
    data = path.read_bytes()
    if not data.strip():
        raise BadFile(path, "is empty")
    count = int.from_bytes(data[HEAD - 4 : HEAD], "little") if len(data) >= HEAD else 0
    text = data.lstrip()[:5].lower() == b"solid" and re.search(rb"\bfacet\b", data[:4096], re.I)
    corners, groups = text_triangles(path, data) if text else (binary_triangles(path, data, count), {})
    triangles = np.arange(3 * len(corners)).reshape(-1, 3)
    raw = from_cells(path, corners.reshape(-1, 3), [("triangle", triangles)], groups=groups)
    raw.shares_nodes = False
    return raw


def binary_triangles(path: Path, data: bytes, count: int) -> np.ndarray:
    """(T, 3, 3) corners; bytes behind the last triangle are passed over."""
    if len(data) < HEAD:
        raise BadFile(path, f"is neither a text STL nor a binary one: it has {len(data)} bytes, a head alone is {HEAD}")
    held = (len(data) - HEAD) // RECORD.itemsize
    if held < count:
        raise BadFile(path, f"is cut off: {count} triangles are announced, {held} are there")
    if not count:
        raise BadFile(path, "holds no triangle")
    return np.frombuffer(data, RECORD, count, HEAD)["corners"].astype(float)


def text_triangles(path: Path, data: bytes) -> tuple[np.ndarray, dict[str, list[np.ndarray]]]:
    """(T, 3, 3) corners, and the mask of each solid that has a name."""
    vertices = VERTEX.findall(data)
    facets = len(re.findall(rb"\bendfacet\b", data, re.I))
    if not vertices:
        raise BadFile(path, "holds no triangle")
    ended = data.lower().rfind(b"endsolid") > data.lower().rfind(b"endfacet")
    if len(vertices) != 3 * facets or not ended:
        why = f"{len(vertices)} corners in {facets} whole triangles" + ("" if ended else ", no endsolid behind them")
        raise BadFile(path, f"is cut off or damaged: {why}")
    try:
        corners = np.array(vertices, dtype="S").astype(float).reshape(-1, 3, 3)
    except ValueError as error:
        raise BadFile(path, f"has a corner that is no number: {error}") from None
    return corners, named_solids(data, len(corners))


def named_solids(data: bytes, count: int) -> dict[str, list[np.ndarray]]:
    heads = list(SOLID.finditer(data))
    if len(heads) < 2:
        return {}
    ends = np.array([m.end() for m in re.finditer(rb"\bendfacet\b", data, re.I)])
    solid = np.searchsorted([h.start() for h in heads], ends) - 1
    names = [h[1].decode(errors="replace").strip() for h in heads]
    every = {name: np.isin(solid, [i for i, n in enumerate(names) if n == name]) for name in names if name}
    return {name: [mask] for name, mask in every.items() if len(mask) == count}
