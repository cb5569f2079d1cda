"""Mesh files that meshio reads, as a RawMesh. Called by formats.

meshio's readers end in every kind of exception on a bad file, and one asks for all the memory there is.
"""

from __future__ import annotations

import contextlib
import io
import re
import resource
import warnings
from pathlib import Path

import meshio
import numpy as np

from ..base.findings import BadFile
from .raw_mesh import RawMesh, from_cells


def read(path: Path) -> RawMesh:
    """Any format of meshio. Raises BadFile, whatever its reader ends in, even in an exit."""
    said = io.StringIO()
    try:
        with (
            contextlib.redirect_stdout(said),
            contextlib.redirect_stderr(said),
            warnings.catch_warnings(),
            limited_memory(2**30 + 60 * path.stat().st_size),
        ):
            # NumPy only warns of text in place of a number and of numbers beyond an integer's range.
            warnings.filterwarnings("error", "string or file could not be read", DeprecationWarning)
            warnings.filterwarnings("error", "NumPy will stop allowing conversion", DeprecationWarning)
            mesh = meshio.read(path)
            raw = from_blocks(mesh, path)
    except (Exception, SystemExit) as error:
        if isinstance(error, BadFile):
            raise
        words = " ".join((said.getvalue() if isinstance(error, SystemExit) else str(error)).split())
        raise BadFile(path, f"can't be read as a mesh: {words[:200] or type(error).__name__}") from None
    return raw


@contextlib.contextmanager
def limited_memory(more: int):
    """Let the process grow by `more` bytes at most: a damaged count makes meshio ask for all the memory there is."""
    soft, hard = resource.getrlimit(resource.RLIMIT_AS)
    pages = int(Path("/proc/self/statm").read_text().split()[0])
    wanted = pages * resource.getpagesize() + more
    resource.setrlimit(resource.RLIMIT_AS, (wanted if soft < 0 else min(soft, wanted), hard))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_AS, (soft, hard))


def from_blocks(mesh: meshio.Mesh, path: Path) -> RawMesh:
    if path.suffix.lower() == ".msh" and any(not name.startswith("gmsh:") for name in mesh.cell_data):
        check_element_data_order(path)
    cells = [(block.type, block.data) for block in mesh.cells]
    return from_cells(path, mesh.points, cells, mesh.cell_data, gmsh_groups(mesh))


def gmsh_groups(mesh: meshio.Mesh) -> dict[str, list[np.ndarray]]:
    """Physical groups of surfaces by name, and by number: one mask per block of cells."""
    groups = {}
    if tags := mesh.cell_data.get("gmsh:physical"):
        every = np.unique(np.concatenate([np.zeros(0, int), *tags]))
        groups = {str(tag): [block == tag for block in tags] for tag in every}
        groups |= {name: [block == tag for block in tags] for name, (tag, dim) in mesh.field_data.items() if dim == 2}
    for name, blocks in mesh.cell_sets.items():
        if name in mesh.field_data and mesh.field_data[name][1] == 2:
            groups[name] = [np.isin(np.arange(len(cell.data)), of) for cell, of in zip(mesh.cells, blocks)]
    return groups


def check_element_data_order(path: Path) -> None:
    """meshio takes $ElementData by order, whatever elements its lines name: only rising numbers are safe."""
    for block in re.finditer(rb"\$ElementData\s(.*?)\$EndElementData", path.read_bytes(), re.S):
        lines = block[1].split(b"\n")
        try:
            texts = int(lines[0])
            reals = int(lines[1 + texts])
            whole = int(lines[2 + texts + reals])
            rows = lines[3 + texts + reals + whole :]
            numbers = np.array([int(row.split(None, 1)[0]) for row in rows if row.strip()])
        except (ValueError, IndexError):
            return  # binary: meshio itself refuses another order
        if (np.diff(numbers) <= 0).any():
            raise BadFile(path, "the elements of $ElementData don't stand in rising order; give the values as a CSV")
