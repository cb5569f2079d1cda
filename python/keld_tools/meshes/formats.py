"""Which reader takes which mesh file. Called by job_cli."""

from __future__ import annotations

from pathlib import Path
from types import ModuleType

from ..base.findings import BadFile
from . import abaqus_deck, gmsh_file, meshio_file, nastran_deck, obj_file, stl_file, unv_file, vtp_file
from .raw_mesh import RawMesh

READERS: dict[str, ModuleType] = {
    ".msh": gmsh_file,
    ".stl": stl_file,
    ".bdf": nastran_deck,
    ".nas": nastran_deck,
    ".fem": nastran_deck,
    ".dat": nastran_deck,
    ".inp": abaqus_deck,
    ".obj": obj_file,
    ".vtp": vtp_file,
    ".unv": unv_file,
}
BY_MESHIO = (
    *(
        ".vtu",
        ".vtk",
        ".ply",
        ".off",
        ".med",
        ".mesh",
        ".meshb",
        ".xdmf",
        ".xmf",
        ".mdpa",
        ".su2",
        ".e",
        ".ex2",
        ".exo",
    ),
    *(".cgns", ".h5m", ".ugrid", ".vol", ".tec"),
)
KNOWN = (
    "Gmsh (.msh), STL (.stl), NASTRAN (.bdf .nas .fem .dat), Abaqus and CalculiX (.inp), OBJ (.obj), VTK (.vtp .vtu "
    ".vtk), universal files (.unv), PLY (.ply), OFF (.off), MED (.med), Medit (.mesh .meshb), XDMF (.xdmf .xmf), Kratos (.mdpa), "
    "SU2 (.su2), Exodus (.e .ex2 .exo), CGNS (.cgns), MOAB (.h5m), AFLR (.ugrid), Netgen (.vol), Tecplot (.tec)"
)


def read_raw(path: Path) -> RawMesh:
    """The mesh of a file. Raises BadFile for whatever can't be read."""
    if not path.name:
        raise BadFile("mesh", "has no file name")
    if not path.is_file():
        raise BadFile(path, "is no file; a mesh is one" if path.exists() else "there is no such mesh file")
    suffix = path.suffix.lower()
    if suffix not in READERS and suffix not in BY_MESHIO:
        raise BadFile(path, f"can't be read as a mesh: the ending {suffix!r} isn't one of {KNOWN}")
    try:
        return READERS.get(suffix, meshio_file).read(path)
    except (OSError, MemoryError) as error:
        raise BadFile(path, f"can't be read: {error}") from None
