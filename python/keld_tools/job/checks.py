"""What is wrong, or probably wrong, with a job: faults and warnings on mesh, thickness, polymer and conditions.

Called by job_cli before anything is written. Bounds of the warnings are those of ordinary injection moulding.
"""

from __future__ import annotations

import math

import numpy as np

from ..base.findings import Findings, count_of
from ..base.units import CM_PER_MM, DYN_CM2_PER_MPA
from ..meshes import surface
from ..meshes.mesh_input import JobMesh
from ..part.part_file import Part
from ..part.polymers import Polymer

SHORTEST, LONGEST = 5.0, 2000.0  # mm, greatest length of a part along an axis
SLENDER = 1e-4  # height over longest side below which a triangle spoils the equations


def check_mesh(mesh: JobMesh, thickness: np.ndarray, place: str, findings: Findings) -> None:
    """Everything that needs triangles and their thickness (mm)."""
    if not len(mesh.triangles):
        findings.fault(place, "has no triangle and no quadrilateral")
        return
    if mesh.extent_mm <= 0:
        findings.fault(place, "all nodes lie at one place")
        return
    edges = surface.edges_of(mesh.triangles)
    check_sizes(mesh, thickness, place, findings)
    check_duplicates(mesh, place, findings)
    check_bodies(mesh, edges, place, findings)
    check_turning(mesh, edges, place, findings)
    check_slender(mesh, thickness, place, findings)
    if (edges.count >= 2).all() and len(mesh.triangles) > 3:
        findings.warn(
            place,
            "the triangles form a closed skin; KELD wants the mid-surface of the wall, with the "
            "thickness as a number (right only for a hollow body meshed on its mid-surface)",
        )
    unknown = np.isnan(mesh.diameter_mm)
    if unknown.any():
        findings.fault(
            place,
            f"{count_of(mesh.runner_numbers[unknown], 'two-node element')} without a diameter; "
            "give runner_diameter_mm, or runners = false to leave them out",
        )


def check_sizes(mesh: JobMesh, thickness: np.ndarray, place: str, findings: Findings) -> None:
    extent = mesh.extent_mm
    if extent < SHORTEST or extent > LONGEST:
        findings.warn(
            place,
            f"the part is {extent:.6g} mm long, {'below' if extent < SHORTEST else 'beyond'} the usual "
            f"{SHORTEST:g} to {LONGEST:g} mm; is length_unit right?",
        )
    thick = thickness > 0.25 * extent
    if thick.any():
        findings.warn(
            place,
            f"the wall is thicker than a quarter of the part ({thickness.max():.4g} mm against "
            f"{extent:.4g} mm) in {count_of(np.unique(mesh.numbers[thick]), 'element')}; are the units "
            "of mesh and thickness right?",
        )
    elif thickness.max() > 30.0 or thickness[thickness > 0].min(initial=1.0) < 0.05:
        findings.warn(place, f"the wall is {thickness.min():.4g} to {thickness.max():.4g} mm thick; is the unit right?")


def check_duplicates(mesh: JobMesh, place: str, findings: Findings) -> None:
    keys = np.sort(mesh.triangles, axis=1)
    order = np.lexsort(keys.T)
    again = order[1:][(keys[order][1:] == keys[order][:-1]).all(axis=1)]
    if len(again):
        findings.warn(
            place,
            f"{count_of(np.sort(mesh.numbers[again]), 'duplicate triangle')}: the same three nodes as "
            "another one, which makes the wall twice as stiff there",
        )


def check_bodies(mesh: JobMesh, edges: surface.Edges, place: str, findings: Findings) -> None:
    """Parts that hang together at no node, and parts that hang together at single nodes only."""
    t = mesh.triangles
    by_node = surface.components(
        len(mesh.points_mm), np.concatenate([t[:, 0], t[:, 0]]), np.concatenate([t[:, 1], t[:, 2]])
    )
    bodies = np.unique(by_node[t[:, 0]])
    if len(bodies) > 1:
        where = [f"near node {mesh.node_numbers[b]}" for b in bodies]
        findings.warn(
            place,
            f"{len(bodies)} bodies that share no node ({', '.join(where[:5])}"
            f"{', ...' if len(bodies) > 5 else ''}): each is held by itself, wherever the others move; "
            "merge_tolerance_mm in [mesh] joins nodes of one place",
        )
    # Sides in the order of their edge: neighbours in that order with the same edge belong together.
    order = np.argsort(edges.of_side, kind="stable")
    same = edges.of_side[order][1:] == edges.of_side[order][:-1]
    by_edge = surface.components(len(t), edges.triangle[order[:-1][same]], edges.triangle[order[1:][same]])
    patches = len(np.unique(by_edge))
    if patches > len(bodies):
        findings.warn(
            place,
            f"the triangles form {patches} patches that hang together at single nodes only, as on a "
            "hinge; KELD holds each patch by itself, which strains the hinges",
        )


def check_turning(mesh: JobMesh, edges: surface.Edges, place: str, findings: Findings) -> None:
    a, _, same = edges.pairs()
    if same.any():
        bad = np.unique(mesh.numbers[edges.triangle[a[same]]])
        findings.warn(
            place,
            f"neighbours are turned the opposite way at {same.sum()} edges ({count_of(bad, 'element')}): "
            "lower and upper side change places there, and the wall is twisted; orient_triangles = true "
            "in [mesh] (or --orient) turns them",
        )


def check_slender(mesh: JobMesh, thickness: np.ndarray, place: str, findings: Findings) -> None:
    """Triangles whose element determinant fails, and those that come near it."""
    p = mesh.points_mm[mesh.triangles] * CM_PER_MM
    sides = np.linalg.norm(p - p[:, [1, 2, 0]], axis=2).max(axis=1)
    twice_area = np.linalg.norm(surface.crosses(mesh.points_mm, mesh.triangles), axis=1) * CM_PER_MM**2
    slender = twice_area < SLENDER * sides**2
    if not slender.any():
        return
    index = np.flatnonzero(slender)
    fails = wedge_determinants(p[index], thickness[index] * CM_PER_MM).min(axis=1) <= 0
    failed = np.unique(mesh.numbers[index[fails]])
    if len(failed):
        findings.warn(
            place,
            f"{count_of(failed, 'triangle')} so thin that the element's determinant fails (D5015, D5016): "
            "KELD puts a mean in its place, and the result near them is wrong",
        )
    if not fails.all():
        findings.warn(
            place,
            f"{count_of(np.unique(mesh.numbers[index[~fails]]), 'triangle')} with a height below "
            f"{SLENDER:g} of the longest side: they spoil the accuracy of the solution; --repair MM collapses short edges",
        )


def wedge_determinants(corners: np.ndarray, thickness: np.ndarray) -> np.ndarray:
    """(n, 6) determinant of each wedge at its nodes, in KELD's own arithmetic: corners -+ half the wall (cm).

    The lower and the upper triangle stand half a thickness below and above the corners, along the normal.
    """
    c = np.cross(corners[:, 1] - corners[:, 0], corners[:, 2] - corners[:, 0])
    c[np.abs(c) < 1e-30] = 0.0
    length = np.linalg.norm(c, axis=1)
    flat = length < 1e-30
    offset = thickness[:, None] * np.where(flat[:, None], c, c / (2.0 * np.where(flat, 1.0, length))[:, None])
    low, high = corners - offset[:, None], corners + offset[:, None]
    result = []
    for layer in (low, high):
        for corner in range(3):
            base = np.cross(layer[:, 1] - layer[:, 0], layer[:, 2] - layer[:, 0])
            result.append(np.einsum("ij,ij->i", base, 0.5 * (high[:, corner] - low[:, corner])))
    return np.stack(result, axis=1)


def check_polymer(polymer: Polymer, filled: bool, place: str, findings: Findings) -> None:
    """Elastic data from which no stiffness can be formed are faults, unlikely numbers are warnings."""
    for name, values, low, high, unit, factor in (
        ("modulus", polymer.modulus_dyn_cm2, 50.0, 1e5, "MPa", DYN_CM2_PER_MPA),
        (
            "shear_modulus",
            [polymer.shear_modulus_dyn_cm2] if polymer.shear_modulus_dyn_cm2 else [],
            10.0,
            5e4,
            "MPa",
            DYN_CM2_PER_MPA,
        ),
        ("expansion", polymer.expansion_per_k, 1e-6, 5e-4, "1/K", 1.0),
    ):
        odd = [v / factor for v in values if not low <= v / factor <= high]
        if odd:
            findings.warn(
                place,
                f"{name} of {odd[0]:g} {unit} is no usual polymer's ({low:g} to {high:g} {unit}); "
                "is the unit right?",
            )
    if not polymer.modulus_dyn_cm2 or not polymer.poisson:
        return  # its fault is told already
    for name, values, falling in (
        ("modulus", polymer.modulus_dyn_cm2, True),
        ("poisson", polymer.poisson, False),
        ("expansion", polymer.expansion_per_k, False),
    ):
        if values and list(polymer.pair(values, falling)) != (values * 2)[:2]:
            findings.warn(
                place,
                f"{name}: KELD puts two entries in {'falling' if falling else 'rising'} order; the first "
                f"is that along the fibres, {values[1]:g} after the change",
            )
    check_stiffness(polymer, filled, place, findings)
    if len(polymer.specific_volume_cgs) == 1 and not 0.5 <= polymer.specific_volume_cgs[0] <= 3.0:
        findings.warn(
            place, f"a density of {polymer.specific_volume_cgs[0]:g} g/cm3 is no usual polymer's; is the unit right?"
        )


def check_stiffness(polymer: Polymer, filled: bool, place: str, findings: Findings) -> None:
    e1, e2 = polymer.pair(polymer.modulus_dyn_cm2, falling=True)
    nu12, nu23 = polymer.pair(polymer.poisson)
    if filled and abs(e1 - e2) < 1.0:
        return  # KELD mixes polymer and filler
    if filled:
        findings.warn(
            place,
            "two moduli that differ together with a filler: KELD takes the moduli as those of the filled "
            "polymer, and the filler for the density alone",
        )
    if polymer.shear_modulus_dyn_cm2 is None and abs(e1 - e2) >= 1.0:
        findings.fault(place, "has two moduli that differ, but no shear_modulus_MPa")
    compliance = (
        np.array([[1 / e1, -nu12 / e1, -nu12 / e1], [-nu12 / e1, 1 / e2, -nu23 / e2], [-nu12 / e1, -nu23 / e2, 1 / e2]])
        * e2
    )
    if np.linalg.eigvalsh(compliance).min() <= 0:
        findings.fault(
            place,
            f"no stiffness can be formed from the moduli {e1:g}, {e2:g} dyn/cm2 and the Poisson ratios "
            f"{nu12:g}, {nu23:g}: their compliance isn't positive definite",
        )


def check_conditions(part: Part, ejection: np.ndarray, findings: Findings) -> None:
    """Temperatures in degrees Celsius; `ejection` those of both sides of all elements."""
    place, c = part.places["conditions"], part.conditions
    if ejection.max() <= c.ambient_temperature_c:
        findings.warn(
            place, f"no ejection temperature is above the ambient {c.ambient_temperature_c:g} C: nothing shrinks"
        )
    elif ejection.min() < c.ambient_temperature_c:
        findings.warn(
            place,
            f"some ejection temperatures are below the ambient {c.ambient_temperature_c:g} C; KELD counts them as ambient",
        )
    if ejection.max() >= c.melt_temperature_c:
        findings.warn(
            place,
            f"an ejection temperature of {ejection.max():g} C isn't below the melt temperature of "
            f"{c.melt_temperature_c:g} C; is the unit right?",
        )
    for name, value, low, high in (
        ("melt", c.melt_temperature_c, 100, 450),
        ("mould", c.mould_temperature_c, -20, 250),
        ("ambient", c.ambient_temperature_c, -60, 100),
    ):
        if not low <= value <= high and not math.isnan(value):  # nan: its fault is told already
            findings.warn(
                place, f"a {name} temperature of {value:g} C is unusual ({low} to {high} C); is the unit right?"
            )


def check_fields(
    part: Part, stress: np.ndarray, orientation: np.ndarray, fraction: np.ndarray, findings: Findings
) -> None:
    place = part.places["fields"]
    if stress.size and np.abs(stress).max() > 200.0 * DYN_CM2_PER_MPA:
        findings.warn(
            place,
            f"a frozen-in stress of {np.abs(stress).max() / DYN_CM2_PER_MPA:g} MPa is above any polymer's "
            "strength; is the unit right?",
        )
    for name, values in (("orientation", orientation), ("kind_fraction", fraction)):
        if values.size and (values.min() < 0 or values.max() > 1):
            findings.fault(place, f"{name} must be 0 to 1, found {values.min():g} to {values.max():g}")
    directed = part.csv is not None or bool({"fibre_direction", "orientation_tensor"} & set(part.fields))
    if (part.filler or part.polymer.anisotropic or part.second and part.second.anisotropic) and not directed:
        findings.warn(
            place,
            "the polymer has a direction, but no fibre_direction is given: the global x axis, laid into "
            "each wall, is taken",
        )


def check_boundary(mesh: JobMesh, nodes: list[int], place: str, findings: Findings) -> None:
    if len(nodes) != 3 or len(set(nodes)) != 3:
        findings.fault(place, f"expected three different nodes, found {[int(mesh.node_numbers[n]) for n in nodes]}")
        return
    a, b, c = mesh.points_mm[nodes]
    area = 0.5 * float(np.linalg.norm(np.cross(b - a, c - a)))
    longest = max(np.linalg.norm(b - a), np.linalg.norm(c - a), np.linalg.norm(c - b))
    if area * CM_PER_MM**2 <= 1e-8:
        findings.fault(place, "the three nodes lie on one line and can't hold the part (D5014)")
    elif area < 0.01 * longest**2:
        findings.warn(place, "the three nodes lie nearly on one line; displacements turn about that line")
