"""VTK poly data (.vtp): polygons, strips and lines, with their cell data. Called by formats.

Data arrays may be text, base64 or appended (base64 or raw), plain or compressed with zlib.
"""

from __future__ import annotations

import base64
import binascii
import re
import zlib
from pathlib import Path
from xml.etree import ElementTree

import numpy as np

from ..base.findings import BadFile
from .raw_mesh import RawMesh, from_cells

TYPES = {
    "Float32": "f4", "Float64": "f8", "Int8": "i1", "UInt8": "u1", "Int16": "i2", "UInt16": "u2",
    "Int32": "i4", "UInt32": "u4", "Int64": "i8", "UInt64": "u8",
}  # fmt: skip
RAW = re.compile(rb"(<AppendedData[^>]*>\s*_)(.*)(</AppendedData>)", re.S)


class _Arrays:
    """The data arrays of one file."""

    def __init__(self, root: ElementTree.Element, appended: bytes):
        self.order = ">" if root.get("byte_order") == "BigEndian" else "<"
        self.head = self.order + TYPES[root.get("header_type", "UInt32")]
        self.compressed = "compressor" in root.attrib
        if self.compressed and root.get("compressor") != "vtkZLibDataCompressor":
            raise ValueError(f"the compression {root.get('compressor')} isn't known; write it with zlib or none")
        block = root.find("AppendedData")
        self.appended = appended
        self.encoded = block is not None and block.get("encoding") != "raw"

    def values(self, array: ElementTree.Element) -> np.ndarray:
        """(n,) or (n, components) of a DataArray."""
        kind = self.order + TYPES[array.get("type", "")]
        form = array.get("format", "ascii")
        text = array.text or ""
        if form == "ascii":
            flat = np.array(text.split(), dtype=kind)
        elif form == "binary":
            flat = np.frombuffer(self.decoded(text.strip().encode()), kind)
        else:
            source = self.appended[int(array.get("offset", "0")) :]
            flat = np.frombuffer(self.decoded(source) if self.encoded else self.unpacked(source), kind)
        width = int(array.get("NumberOfComponents", "1") or 1)
        return flat.reshape(-1, width) if width > 1 else flat

    def decoded(self, text: bytes) -> bytes:
        """Bytes behind base64: the head is encoded by itself where the data are compressed."""
        size = np.dtype(self.head).itemsize
        if not self.compressed:
            first = base64.b64decode(text[: 4 * -(-size // 3)])
            total = size + int(np.frombuffer(first, self.head, 1)[0])
            return base64.b64decode(text[: 4 * -(-total // 3)])[size:total]
        blocks = int(np.frombuffer(base64.b64decode(text[: 4 * -(-size // 3)]), self.head, 1)[0])
        head_text = 4 * -(-size * (3 + blocks) // 3)
        head = base64.b64decode(text[:head_text])[: size * (3 + blocks)]
        packed = int(np.frombuffer(head, self.head)[3:].sum())
        return self.unpacked(head + base64.b64decode(text[head_text : head_text + 4 * -(-packed // 3)]))

    def unpacked(self, data: bytes) -> bytes:
        size = np.dtype(self.head).itemsize
        first = int(np.frombuffer(data, self.head, 1)[0])
        if not self.compressed:
            return data[size : size + first]
        sizes = np.frombuffer(data, self.head, first, 3 * size)
        ends = size * (3 + first) + np.concatenate([[0], np.cumsum(sizes)]).astype(int)
        return b"".join(zlib.decompress(data[a:b]) for a, b in zip(ends[:-1], ends[1:]))


def read(path: Path) -> RawMesh:
    """Raises BadFile for what can't be read."""
    try:
        return read_pieces(path)
    except BadFile:
        raise
    except (ElementTree.ParseError, ValueError, KeyError, IndexError, TypeError, binascii.Error, zlib.error) as error:
        raise BadFile(path, f"can't be read as VTK poly data: {error}") from None


def read_pieces(path: Path) -> RawMesh:
    data = path.read_bytes()
    found = RAW.search(data)
    appended = found[2] if found else b""
    root = ElementTree.fromstring(data[: found.end(1)] + data[found.start(3) :] if found else data)
    if root.get("type") != "PolyData":
        raise ValueError(f"it holds {root.get('type')}, expected PolyData")
    arrays = _Arrays(root, appended)
    points: list[np.ndarray] = []
    cells: list[tuple[str, np.ndarray]] = []
    values: list[dict[str, np.ndarray]] = []
    for piece in root.iter("Piece"):
        block = piece.find("Points/DataArray")
        start = sum(map(len, points))
        points.append(np.zeros((0, 3)) if block is None else arrays.values(block).reshape(-1, 3))
        add_cells(arrays, piece, start, cells, values)
    names = set.intersection(*(set(v) for v in values)) if values else set()
    return from_cells(
        path, np.concatenate([np.zeros((0, 3)), *points]), cells, {name: [v[name] for v in values] for name in names}
    )


def add_cells(arrays: _Arrays, piece: ElementTree.Element, start: int, cells: list, values: list) -> None:
    """Blocks of one kind each. Cell data count verts, lines, strips and polygons in this order."""
    data = {a.get("Name", ""): arrays.values(a) for a in piece.iterfind("CellData/DataArray")}
    first = 0
    for part in ("Verts", "Lines", "Strips", "Polys"):
        arrays_of = {a.get("Name"): arrays.values(a).astype(np.int64) for a in piece.iterfind(f"{part}/DataArray")}
        offsets = arrays_of.get("offsets", np.zeros(0, np.int64))
        nodes = arrays_of.get("connectivity", np.zeros(0, np.int64)) + start
        begins = np.concatenate([[0], offsets[:-1]]).astype(np.int64)
        counts = offsets - begins
        for n in np.unique(counts):
            which = np.flatnonzero(counts == n)
            block = nodes[begins[which][:, None] + np.arange(n)]
            for kind, corners, row in split(part, block):
                cells.append((kind, corners))
                values.append({name: v[first + which[row]] for name, v in data.items()})
        first += len(offsets)


def split(part: str, block: np.ndarray):
    """Kind, corners and row for what a block of verts, lines, strips or polygons of one size becomes."""
    n, rows = block.shape[1], np.arange(len(block))
    if part == "Polys":
        yield {3: "triangle", 4: "quad"}.get(n, "polygon"), block, rows
    elif part == "Verts":
        yield "vertex", block, rows
    elif part == "Lines":
        for k in range(n - 1):
            yield "line", block[:, k : k + 2], rows
    else:  # a strip turns every other triangle round
        for k in range(n - 2):
            yield "triangle", block[:, [k, k + 1, k + 2] if k % 2 == 0 else [k + 1, k, k + 2]], rows
