#!/usr/bin/python3
"""Computes a whole job of the analysis by itself and writes or checks its expected.txt.

usage: job_answer.py [--check] FOLDER...      a folder holds job.PG1, job.PRC, job.MAL and so on

The model is that of docs/model.md, written anew from its formulas: integration by quadrature, tensors instead of
Voigt's tables, a dense solution with one step of refinement. Python and numpy only; nothing of the program is used.
"""

from __future__ import annotations

import argparse
import sys
from dataclasses import dataclass
from pathlib import Path

import numpy as np

import job_files as files
import job_material
import job_model as model
from answer_text import Answer, differences, read_answer, write_answer


@dataclass
class Restraint:
    basis: np.ndarray  # (2M, 3, 3), columns are the directions of a node's freedoms
    free: np.ndarray  # (2M, 3) whether a freedom is an unknown
    nodes: tuple[int, int, int]  # wedge nodes


def restrain(wedges: model.Wedges, boundary: tuple[int, int, int]) -> Restraint:
    """The first node is held, the second moves along the line to it, the third in the plane of the three."""
    nodes = tuple(wedges.number[n] for n in boundary)
    basis = np.tile(np.eye(3), (len(wedges.points), 1, 1))
    basis[[nodes[1], nodes[2]]] = model.frame(*(wedges.points[n] for n in nodes))
    free = np.ones((len(wedges.points), 3), dtype=bool)
    free[nodes[0]] = False
    free[nodes[1], 1:] = False
    free[nodes[2], 2] = False
    return Restraint(basis, free, nodes)


def assemble(wedges: model.Wedges, restraint: Restraint, matrices: np.ndarray) -> np.ndarray:
    """Dense matrix over all freedoms, in the restraint's directions."""
    size = wedges.points.size
    dofs = (3 * wedges.nodes[:, :, None] + np.arange(3)).reshape(len(wedges.nodes), 18)
    dense = np.zeros((size, size))
    np.add.at(dense, (dofs[:, :, None], dofs[:, None, :]), matrices)
    for n in restraint.nodes[1:]:
        block, basis = slice(3 * n, 3 * n + 3), restraint.basis[n]
        dense[block] = basis.T @ dense[block]
        dense[:, block] = dense[:, block] @ basis
    return dense


def gather(wedges: model.Wedges, restraint: Restraint, loads: np.ndarray) -> np.ndarray:
    whole = np.zeros((len(wedges.points), 3))
    np.add.at(whole, wedges.nodes, loads.reshape(-1, 6, 3))
    return np.einsum("nji,nj->ni", restraint.basis, whole)


def solve(dense: np.ndarray, restraint: Restraint, load: np.ndarray) -> np.ndarray:
    """Displacement (2M, 3) along the global axes."""
    free = restraint.free.ravel()
    reduced, right = dense[np.ix_(free, free)], load.ravel()[free]
    u = np.linalg.solve(reduced, right)
    u += np.linalg.solve(reduced, right - reduced @ u)
    whole = np.zeros(free.size)
    whole[free] = u
    return np.einsum("nij,nj->ni", restraint.basis, whole.reshape(-1, 3))


def stored_entries(wedges: model.Wedges, restraint: Restraint) -> int:
    """Entries of the system when every pair of nodes of an element couples all unknowns of both."""
    near: list[set[int]] = [set() for _ in wedges.points]
    for nodes in wedges.nodes.tolist():
        for n in nodes:
            near[n].update(nodes)
    unknowns = restraint.free.sum(axis=1)
    return int(sum(unknowns[n] * unknowns[list(others)].sum() for n, others in enumerate(near)))


def sink_mark(wedges: model.Wedges, volume: np.ndarray, moved: np.ndarray) -> np.ndarray:
    """cm at the lower nodes (M,): what the wall loses in thickness, spread over the nodes by volume."""
    u = moved[wedges.nodes]
    wall = np.linalg.norm(2.0 * wedges.half + u[:, 3:].mean(axis=1) - u[:, :3].mean(axis=1), axis=1)
    h = wedges.thickness
    lost = h * wedges.area / 3.0 * (np.minimum(wall, h) - h)
    mark = np.zeros(len(volume) // 2)
    for k in range(3):
        np.add.at(mark, wedges.nodes[:, k], -lost / volume[wedges.nodes[:, k]])
    return mark


def report_lines(mesh: files.Mesh, process: files.Process, wedges: model.Wedges, boundary: tuple[int, ...]) -> list[str]:
    """What the report tells of mesh and restraint."""
    side = mesh.points[mesh.nodes[mesh.part()]]
    a, b, c = (np.linalg.norm(side[:, (k + 1) % 3] - side[:, k], axis=1) for k in range(3))
    s = (a + b + c) / 2.0
    slender = int(np.sum(a * b * c / (4.0 * (s - a) * (s - b) * (s - c)) >= 10.0))
    runners = mesh.runners()
    ends = mesh.points[mesh.nodes[runners, :2]].reshape(-1, 2, 3)
    short = int(np.sum(np.linalg.norm(ends[:, 1] - ends[:, 0], axis=1) / (2.0 * mesh.thickness[runners]) <= 10.0))
    extent = np.ptp(mesh.points[1:], axis=0).max()
    unmapped = {int(n) for n in mesh.nodes[runners, :2].flat} - wedges.number.keys()
    lines = [f"BC_node {k}= {n}" for k, n in enumerate(process.boundary, 1)] if process.boundary_given else []
    return lines + [
        f"# Thickness Correction= {int(mesh.corrected):2d}",
        f"The # of tri-element with aspect ratio > 10 = {slender}",
        f"The # of runner-element with aspect ratio < 10  = {short}",
        f"No. of nodes...................= {len(mesh.points) - 1}",
        "Input Gate  No. ...............= 0",
        f"No. of elements................= {len(mesh.order)}",
        f"No. of Part Elements.......= {len(mesh.part())}",
        f"No. of Sprue/Runer Elements= {len(runners)}",
        f"Thickness  Factor..............= {mesh.factors[0]:.2f}",
        f"Coordinate factor..............= {mesh.factors[1]:.2f}",
        f"Part Max. Extent= {extent:.2f}  cm",
        *(f"Boundary node {k}=   {n}" for k, n in enumerate(boundary, 1)),
        f"Degree of freedom = {3 * (len(mesh.points) - 1 + len(wedges.number))}",
    ]


def summary_of(rows: np.ndarray, mark: np.ndarray) -> list[float]:
    """mm: spreads of x, y, z, greatest length, least and greatest sink mark; rows (N, 3) and marks (N,) in cm."""
    spreads = np.maximum(rows.max(axis=0), 1e-20) - np.minimum(rows.min(axis=0), 1e20)
    length = np.linalg.norm(rows, axis=1).max()
    return [10.0 * x for x in (*spreads, length, mark.min(), max(mark.max(), 1e-20))]


def node_rows(wedges: model.Wedges, count: int, of_wedge: np.ndarray) -> np.ndarray:
    """(N, ...) by geometry node: mean of its two wedge nodes, zeros for a node of no triangle."""
    layers = of_wedge.reshape(2, -1, *of_wedge.shape[1:]).mean(axis=0)
    rows = np.zeros((count, *of_wedge.shape[1:]))
    for node, wedge in wedges.number.items():
        rows[node - 1] = layers[wedge]
    return rows


def compute(folder: Path) -> Answer:
    base = folder / "job"
    process, mesh = files.read_process(base), files.read_mesh(base)
    polymers, filler = files.read_polymers(base, process.two_kinds)
    fields = files.read_fields(base, mesh)
    kinds = job_material.material(process, polymers, filler)
    boundary = model.boundary_nodes(mesh, process)
    wedges = model.make_wedges(mesh)
    at = model.integrate(wedges)
    restraint = restrain(wedges, boundary)
    materials = model.element_materials(kinds, fields)
    dense = assemble(wedges, restraint, model.element_matrices(at, materials[0]))
    values = model.node_values(wedges, at, fields)
    cooling = process.ambient - values.temperature

    def displaced(by_cooling: np.ndarray | None) -> np.ndarray:
        loads = model.element_loads(wedges, at, fields, materials, by_cooling)
        return solve(dense, restraint, gather(wedges, restraint, loads))

    total = displaced(cooling)
    in_mold = displaced(None) if fields.stress_valid else np.zeros_like(total)
    count = len(mesh.points) - 1
    mark = sink_mark(wedges, values.volume, total + in_mold)
    rows, marks = node_rows(wedges, count, total), node_rows(wedges, count, np.tile(mark, 2))
    return Answer(
        boundary=list(boundary),
        free=int(restraint.free.sum()),
        entries=stored_entries(wedges, restraint),
        valid=int(fields.stress_valid),
        cool=int(fields.from_cool),
        volume=float(at.factor.sum()),
        jacobian=float(at.determinant[:, -1].mean()),
        stiffness=[list(kind.stiffness.ravel()) for kind in kinds],
        expansion=[[kind.along, kind.across] for kind in kinds],
        report=report_lines(mesh, process, wedges, boundary) + fields.warnings,
        summary=summary_of(rows, marks),
        node=np.hstack([rows, node_rows(wedges, count, in_mold), marks[:, None]]),
    )


def main() -> int:
    parser = argparse.ArgumentParser(description="Computes jobs by itself; writes or checks their expected.txt.")
    parser.add_argument("--check", action="store_true", help="compare with expected.txt, write nothing")
    parser.add_argument("folder", nargs="+", type=Path)
    options = parser.parse_args()
    wrong = 0
    for folder in options.folder:
        answer, path = compute(folder), folder / "expected.txt"
        if not options.check:
            write_answer(path, answer)
            continue
        faults = differences(answer, read_answer(path))
        print("\n".join(f"{path}: {fault}" for fault in faults) or f"{path}: agrees")
        wrong += bool(faults)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
