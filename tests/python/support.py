"""Shared by the tests of the tools: small meshes, a part file, and a results file as keld writes it."""

import re

import meshio
import numpy as np

RNG = np.random.default_rng(6)

PART = """
[mesh]
file = "plate.msh"
thickness_mm = 2
[polymer]
name = "PP"
[conditions]
ambient_temperature_C = 20
"""


def plate(nx=4, ny=3, lx=40.0, ly=30.0):
    """Points (n, 3) in mm and quadrilaterals (q, 4) from 0 of a flat plate."""
    x, y = np.meshgrid(np.linspace(0, lx, nx + 1), np.linspace(0, ly, ny + 1), indexing="ij")
    a = (np.arange(nx)[:, None] * (ny + 1) + np.arange(ny)).ravel()
    return np.column_stack([x.ravel(), y.ravel(), 0 * x.ravel()]), np.column_stack([a, a + ny + 1, a + ny + 2, a + 1])


def write_plate(path, file_format="gmsh22", binary=False, triangles=None, points=None, **cell_data):
    own, quads = plate()
    cells = [("quad", quads)] if triangles is None else [("triangle", np.array(triangles))]
    tags = [np.full(len(cells[0][1]), 1)]
    mesh = meshio.Mesh(
        own if points is None else np.array(points, float),
        cells,
        cell_data={
            "gmsh:physical": tags,
            "gmsh:geometrical": tags,
            **{name: [np.array(v)] for name, v in cell_data.items()},
        },
        field_data={"wall": np.array([1, 2])},
    )
    meshio.write(path, mesh, file_format=file_format, binary=binary)


def results_text(total, sink=None, in_mold=None):
    """A .WR1 of displacements (n, 3) in mm, in the format of keld."""
    n = len(total)
    sink = np.zeros(n) if sink is None else sink

    def rows(vector, *more):
        columns = np.column_stack([vector, np.linalg.norm(vector, axis=1), *more])
        return "".join(f"{i:8d}  " + "".join(f"   {v:.3e}" for v in row) + "\n" for i, row in enumerate(columns, 1))

    def section(tag, numbers, body):
        heads = "".join(f"   StrIndx= {k}  |  Long= {n}  |  Wide= 1  |  NodElm= 1108  |  Color= 0\n" for k in numbers)
        return f"[{tag}]\n   Glength= {n}   |   Npen= 1   |   Item= {len(numbers)}\n{heads}{body}[EOF]\n"

    rule = " " + "-" * 69 + "\n"
    text = rule + " ** KELD/Surface Keldage Results File **\n\n Date/time : now\n File path : j\n" + rule + " \n \n"
    text += f"[Type_ofStyleStr]\n00002\n{int(in_mold is not None)}\n[EOF]\n\n"
    text += section("Keld_ResultsStr", (24001, 24002, 24003, 24005, 24004), rows(total, sink))
    if in_mold is not None:
        text += section("Keld_Residual_ResultsStr", (24301, 24302, 24303, 24305), rows(in_mold))
    thermal = total if in_mold is None else total - in_mold
    return text + section("Keld_Thermal_ResultsStr", (24601, 24602, 24603, 24605), rows(thermal))


def mutations(data, count):
    """Damaged copies: cut, bytes changed, lines lost or doubled, numbers made huge, negative or no number."""
    for _ in range(count):
        kind, at = RNG.integers(5), int(RNG.integers(len(data)))
        lines, numbers = data.split(b"\n"), list(re.finditer(rb"-?\d+(\.\d+)?", data))
        line = int(RNG.integers(len(lines)))
        if kind == 0:
            yield data[:at]
        elif kind == 1:
            yield data[:at] + bytes(RNG.integers(0, 256, 3, dtype=np.uint8)) + data[at + 3 :]
        elif kind == 2:
            yield b"\n".join(lines[:line] + lines[line + 1 :])
        elif kind == 3:
            yield b"\n".join(lines[:line] * 2 + lines[line:])
        elif numbers:
            spot = numbers[int(RNG.integers(len(numbers)))]
            value = [b"-7", b"1e400", b"nan", b"99999999999", b"x", b"", b"0"][int(RNG.integers(7))]
            yield data[: spot.start()] + value + data[spot.end() :]
