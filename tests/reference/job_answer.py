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


def restrain(wedges: model.Wedges, boundary: tuple[int, ...]) -> Restraint:
    """The first node is held, the second moves along the line to it, the third in the plane of the three."""
    first, second, third = (wedges.number[n] for n in boundary)
    basis = np.tile(np.eye(3), (len(wedges.points), 1, 1))
    basis[[second, third]] = model.frame(*wedges.points[[first, second, third]])
    free = np.ones((len(wedges.points), 3), dtype=bool)
    free[first] = False
    free[second, 1:] = False
    free[third, 2] = False
    return Restraint(basis, free, (first, second, third))


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


def report_lines(mesh: files.Mesh, process: files.Process, boundary: tuple[int, ...]) -> list[str]:
    """What the report tells of mesh and restraint."""
    side = mesh.points[mesh.nodes[mesh.part()]]
    a, b, c = (np.linalg.norm(side[:, (k + 1) % 3] - side[:, k], axis=1) for k in range(3))
    s = (a + b + c) / 2.0
    slender = int(np.sum(a * b * c / (4.0 * (s - a) * (s - b) * (s - c)) >= 10.0))
    runners = mesh.runners()
    ends = mesh.points[mesh.nodes[runners, :2]].reshape(-1, 2, 3)
    short = int(np.sum(np.linalg.norm(ends[:, 1] - ends[:, 0], axis=1) / (2.0 * mesh.thickness[runners]) <= 10.0))
    extent = np.ptp(mesh.points[1:], axis=0).max()
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
        f"Degree of freedom = {3 * (len(mesh.points) - 1 + len(np.unique(mesh.nodes[mesh.part()])))}",
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


@dataclass
class Job:
    """A job with its system formed."""

    process: files.Process
    mesh: files.Mesh
    fields: files.Fields
    kinds: list[job_material.Constants]
    boundary: tuple[int, ...]  # three geometry nodes
    wedges: model.Wedges
    at: model.PointValues
    materials: tuple[np.ndarray, np.ndarray]
    restraint: Restraint
    dense: np.ndarray  # over all freedoms, in the restraint's directions
    values: model.NodeValues
    cooling: np.ndarray  # (2M,) K, ambient less node temperature

    def load(self, cooling: np.ndarray | None) -> np.ndarray:
        """(2M, 3) in the restraint's directions: frozen-in stress, with cooling where it is given."""
        loads = model.element_loads(self.wedges, self.at, self.fields, self.materials, cooling)
        return gather(self.wedges, self.restraint, loads)


def prepare(folder: Path) -> Job:
    base = folder / "job"
    process, mesh = files.read_process(base), files.read_mesh(base)
    fields = files.read_fields(base, mesh)
    polymers, filler = files.read_polymers(base, process.two_kinds)
    kinds = job_material.material(process, polymers, filler)
    boundary = model.boundary_nodes(mesh, process)
    wedges = model.make_wedges(mesh)
    at = model.integrate(wedges)
    materials = model.element_materials(kinds, fields)
    restraint = restrain(wedges, boundary)
    dense = assemble(wedges, restraint, model.element_matrices(at, materials[0]))
    values = model.node_values(wedges, at, fields)
    cooling = process.ambient - values.temperature
    return Job(process, mesh, fields, kinds, boundary, wedges, at, materials, restraint, dense, values, cooling)


def compute(folder: Path) -> Answer:
    job = prepare(folder)
    mesh, wedges, valid = job.mesh, job.wedges, job.fields.stress_valid
    total = solve(job.dense, job.restraint, job.load(job.cooling))
    in_mold = solve(job.dense, job.restraint, job.load(None)) if valid else np.zeros_like(total)
    count = len(mesh.points) - 1
    mark = sink_mark(wedges, job.values.volume, total + in_mold)
    rows, marks = node_rows(wedges, count, total), node_rows(wedges, count, np.tile(mark, 2))
    return Answer(
        boundary=list(job.boundary),
        free=int(job.restraint.free.sum()),
        entries=stored_entries(wedges, job.restraint),
        valid=int(valid),
        cool=int(job.fields.from_cool),
        volume=float(job.at.factor.sum()),
        jacobian=float(job.at.determinant[:, -1].mean()),
        stiffness=[list(kind.stiffness.ravel()) for kind in job.kinds],
        expansion=[[kind.along, kind.across] for kind in job.kinds],
        report=report_lines(mesh, job.process, job.boundary) + job.fields.warnings,
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
