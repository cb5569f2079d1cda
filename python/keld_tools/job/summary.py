"""What keld-job tells of a job that it has written: size, wall, and what the wall model makes of the mesh."""

from __future__ import annotations

import numpy as np

from ..base.program import next_commands
from ..meshes import surface
from ..meshes.mesh_input import JobMesh
from ..part.part_file import Part
from . import free_shrinkage
from .job_files import JobFiles

BEST = 2.5  # mean edge over thickness at which a wedge bends nearest to the truth
FINE, COARSE = 1.3, 4.0  # beyond these its curvature is some 30 % off
LONGEST = 7.0  # edges over thickness up to which facets were measured against bricks


def summary_of(part: Part, mesh: JobMesh, files: JobFiles, runs: bool = False) -> str:
    """runs: keld runs next without being asked."""
    size = np.ptp(mesh.points_mm[np.unique(mesh.triangles)], axis=0)
    ratio = edge_over_wall(mesh, files.thickness_mm)
    thickness = f"{files.thickness_mm.min():.4g}"
    if files.thickness_mm.max() > files.thickness_mm.min():
        thickness += f" to {files.thickness_mm.max():.4g}"
    lines = [
        f"{part.base}: {len(mesh.triangles)} triangles, {len(mesh.runners)} runners, {len(mesh.points_mm)} nodes",
        f"size: {size[0]:.4g} x {size[1]:.4g} x {size[2]:.4g} mm, wall {thickness} mm",
        f"mean edge over wall thickness: {ratio:.3g}; {words_on(part.wall_model, ratio)}",
        f"walls: {part.wall_model}",
    ]
    fraction = free_shrinkage.filler_volume_fraction(part)
    for polymer in [part.polymer] + ([part.second] if part.second else []):
        lines.append(f"polymer: {polymer.title}")
        lines.append(free_shrinkage.words_on(polymer, part.filler, fraction, *files.shrinking))
    lines += [f"note: {note}" for note in mesh.notes]
    lines.append("written: " + " ".join(sorted(files.contents)))
    lines += [] if runs else [f"next: {next_commands(part.base)}"]
    return "\n".join(lines)


def edge_over_wall(mesh: JobMesh, thickness: np.ndarray) -> float:
    """Mean over the triangles' sides of length over the wall's thickness, weighted by area."""
    p = mesh.points_mm[mesh.triangles]
    edge = np.linalg.norm(p - p[:, [1, 2, 0]], axis=2).mean(axis=1)
    area = np.linalg.norm(surface.crosses(mesh.points_mm, mesh.triangles), axis=1)
    return float(np.average(edge / thickness, weights=area if area.any() else None))


def words_on(wall_model: str, ratio: float) -> str:
    """What a wedge, one linear layer through the wall, or a facet needs: docs/model.md has their tables."""
    if wall_model == "facet":
        if ratio > LONGEST:
            return f"longer than the {LONGEST:g} walls up to which facets were measured: a finer mesh is safer"
        return f"facets suit edges of up to {LONGEST:g} walls"
    if ratio > COARSE:
        return f"warpage from a temperature difference comes out too small, edges of about {BEST:g} walls suit best"
    if ratio < FINE:
        return f"warpage from a temperature difference comes out too large, edges of about {BEST:g} walls suit best"
    return f"edges of about {BEST:g} walls suit best, where warpage from a temperature difference matters"
