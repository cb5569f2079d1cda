"""A job that keld has run: part, results, nominal shape and origin, read once. Called by the programs and the report."""

from __future__ import annotations

from dataclasses import dataclass
from functools import cached_property
from pathlib import Path
from shlex import quote

import numpy as np

from ..base.findings import BadFile, Findings
from ..job.origin import Origin, read_origin
from ..measuring.measures import Shapes
from ..meshes import feature_lines
from ..part.drawing import Place
from . import compensate
from .geometry_file import PartGeometry, read_geometry, read_prior
from .results_file import Results, read_results


@dataclass
class FinishedJob:
    """Arrays (N, 3) in mm by node number; triangles and nodes from 0."""

    base: Path
    part: PartGeometry
    results: Results
    nominal_mm: np.ndarray  # the shape that the part should have
    corrected: bool  # the cavity differs from it
    origin: Origin
    nodes: np.ndarray  # of triangles
    boundary: list[int]  # indices of the three nodes that were held

    @cached_property
    def edges(self) -> np.ndarray:
        """(F, 2) nodes of the edges that draw the part."""
        return feature_lines.feature_edges(self.nominal_mm, self.part.triangles)

    @property
    def moulded_mm(self) -> np.ndarray:
        return self.part.points_mm + self.results.total_mm

    @property
    def remaining_mm(self) -> np.ndarray | None:
        """What a part out of a corrected cavity differs by, as the results stand."""
        return self.moulded_mm - self.nominal_mm if self.corrected else None

    def shapes(self, aligned_mm: np.ndarray) -> Shapes:
        return Shapes(
            self.nominal_mm, self.part.points_mm, self.moulded_mm, aligned_mm, self.part.triangles, self.origin.groups
        )

    def nodes_at(self, places: list[Place] | None) -> list[int] | None:
        """Indices of nodes by number, or nearest to a point."""
        if places is None:
            return None
        found = []
        for place in places:
            if isinstance(place, int):
                if place - 1 not in self.nodes:
                    raise BadFile("datum", f"node {place} is no node of the part's triangles")
                found.append(place - 1)
            else:
                distance = np.linalg.norm(self.nominal_mm[self.nodes] - place, axis=1)
                found.append(int(self.nodes[distance.argmin()]))
        return found


def read_job(base: Path, findings: Findings, progress) -> FinishedJob:
    """BASE.PG1, BASE.WR1 and what lies beside them. BadFile for what is missing or damaged."""
    geometry, results_path = Path(f"{base}.PG1"), Path(f"{base}.WR1")
    progress("reading the part")
    part = read_geometry(geometry)
    if not len(part.triangles):
        raise BadFile(geometry, "has no triangle")
    progress("reading the results")
    if not results_path.is_file():
        raise BadFile(results_path, f"isn't there; run keld {quote(str(base))} 1@ INSTALL/ 2@ first")
    results = read_results(results_path, len(part.points_mm))
    if results_path.stat().st_mtime < geometry.stat().st_mtime:
        findings.warn(str(results_path), "is older than the mesh: is it the result of this job?")
    read_prior(base, part, findings)
    nominal = compensate.nominal_points(base, part)
    return FinishedJob(
        base,
        part,
        results,
        part.points_mm if nominal is None else nominal,
        nominal is not None,
        read_origin(base, len(part.triangles)),
        np.unique(part.triangles),
        [node - 1 for node in compensate.held_nodes(base, part)],
    )
