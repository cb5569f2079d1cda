#!/usr/bin/python3
"""Writes cover.msh: a vaulted cover with side walls and two ribs, quadrilaterals in the groups "shell" and "rib".

Run by hand when the example's shape changes; cover.toml reads the mesh.
"""

from pathlib import Path

import meshio
import numpy as np

LENGTH, WIDTH, WALL, VAULT = 120.0, 70.0, 18.0, 4.0  # mm
NX, NY, NZ = 30, 18, 5


def height(x, y):
    """The vault of the top, 0 at its border."""
    return VAULT * np.sin(np.pi * x / LENGTH) * np.sin(np.pi * y / WIDTH)


def patch(points, nu, nv):
    """Quadrilaterals of a grid of (nu + 1) x (nv + 1) points, as point coordinates."""
    grid = points.reshape(nu + 1, nv + 1, 3)
    return np.stack([grid[:-1, :-1], grid[1:, :-1], grid[1:, 1:], grid[:-1, 1:]], axis=2).reshape(-1, 4, 3)


def surface(point, nu, nv):
    u, v = np.meshgrid(np.arange(nu + 1) / nu, np.arange(nv + 1) / nv, indexing="ij")
    return patch(np.stack(point(u.ravel(), v.ravel()), axis=1), nu, nv)


def main():
    top = surface(lambda u, v: (LENGTH * u, WIDTH * v, height(LENGTH * u, WIDTH * v)), NX, NY)
    walls = [
        surface(lambda u, v: (LENGTH * u, 0 * u, -WALL * v), NX, NZ)[:, ::-1],
        surface(lambda u, v: (LENGTH * u, WIDTH + 0 * u, -WALL * v), NX, NZ),
        surface(lambda u, v: (0 * u, WIDTH * u, -WALL * v), NY, NZ),
        surface(lambda u, v: (LENGTH + 0 * u, WIDTH * u, -WALL * v), NY, NZ)[:, ::-1],
    ]
    ribs = [
        surface(lambda u, v, x=x: (x + 0 * u, WIDTH * u, (1 - v) * height(x + 0 * u, WIDTH * u) - 12.0 * v), NY, 4)
        for x in (LENGTH / 3, 2 * LENGTH / 3)
    ]
    blocks = [np.concatenate([top, *walls]), np.concatenate(ribs)]
    every = np.concatenate([b.reshape(-1, 3) for b in blocks])
    places, index = np.unique(np.round(every, 6) + 0.0, axis=0, return_inverse=True)
    split = np.split(index, [4 * len(blocks[0])])
    cells = [("quad", part.reshape(-1, 4)) for part in split]
    tags = [np.full(len(c), tag) for tag, (_, c) in enumerate(cells, 1)]
    mesh = meshio.Mesh(
        places,
        cells,
        cell_data={"gmsh:physical": tags, "gmsh:geometrical": tags},
        field_data={"shell": np.array([1, 2]), "rib": np.array([2, 2])},
    )
    meshio.write(Path(__file__).with_name("cover.msh"), mesh, file_format="gmsh22", binary=False, float_fmt=".10g")


if __name__ == "__main__":
    main()
