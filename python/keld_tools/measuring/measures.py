"""The answer to each measure of a drawing, on the nominal and on the moulded shape. Called by the programs.

Lengths, angles, flatness and roundness don't depend on how the part lies; position and profile take the aligned one.
"""

from __future__ import annotations

from dataclasses import dataclass, field

import numpy as np

from ..base.findings import BadFile, Findings
from ..meshes import surface
from ..meshes.raw_mesh import named
from . import features
from ..part.drawing import LENGTHS, ZONES, Box, Measure, Place

FAR = 0.25  # of the part's extent: a place farther than this from the mesh is a mistake
BENT = 0.01  # of a face's extent: one that lies farther from a plane in the nominal shape isn't flat


@dataclass
class Shapes:
    """One part in three shapes on one mesh; arrays (N, 3) in mm, triangles (T, 3) from 0."""

    nominal_mm: np.ndarray  # what the drawing shows
    cavity_mm: np.ndarray  # what it is moulded in: the nominal shape unless the cavity was corrected
    moulded_mm: np.ndarray  # as the results give it
    aligned_mm: np.ndarray  # the moulded one laid over the nominal one
    triangles: np.ndarray
    groups: dict[str, np.ndarray] = field(default_factory=dict)  # name -> (T,) mask

    def __post_init__(self):
        self.nodes = np.unique(self.triangles)
        self.extent_mm = float(np.ptp(self.nominal_mm[self.nodes], axis=0).max())
        self.loops: list[np.ndarray] | None = None


@dataclass
class Answer:
    """mm or degrees, as the measure's unit says."""

    measure: Measure
    nominal: float
    moulded: float
    shrinkage_percent: float | None  # of lengths, against the cavity
    nodes: list[int]  # where a label may stand

    @property
    def deviation(self) -> float:
        return self.moulded - self.nominal

    @property
    def within(self) -> bool | None:
        """None where no tolerance is given."""
        if self.measure.tolerance is None:
            return None
        low, high = self.measure.tolerance
        slack = 1e-9 * max(1.0, abs(self.nominal))  # a deviation that equals the tolerance is within it
        return low - slack <= self.deviation <= high + slack


def answers_of(measures: list[Measure], shapes: Shapes, findings: Findings) -> list[Answer]:
    """An answer for each measure that can be taken; the others are faults with their place."""
    answers = []
    for measure in measures:
        try:
            answers.append(answer(measure, shapes, findings))
        except BadFile as error:
            findings.faults.append(str(error))
    return answers


def answer(measure: Measure, shapes: Shapes, findings: Findings) -> Answer:
    value, places = METHODS[measure.kind](measure, shapes)
    drawn = value(shapes.nominal_mm)
    nominal = 0.0 if measure.kind in ZONES else drawn if measure.nominal is None else measure.nominal
    if measure.nominal is not None and abs(drawn - nominal) > allowed(measure):
        findings.warn(
            measure.where,
            f"{measure.name}: nominal {nominal:.6g} {measure.unit}, but the mesh has {drawn:.6g} there; "
            "is it the right place, and the mesh the right part?",
        )
    warn_of_bent_faces(measure, shapes, findings)
    moved = shapes.aligned_mm if measure.kind in ("position", "profile") else shapes.moulded_mm
    shrinkage = None
    if measure.kind in LENGTHS:
        cavity = value(shapes.cavity_mm)
        shrinkage = 100.0 * (cavity - value(shapes.moulded_mm)) / cavity if cavity > 0 else None
    return Answer(measure, nominal, value(moved), shrinkage, places)


def warn_of_bent_faces(measure: Measure, shapes: Shapes, findings: Findings) -> None:
    """Flatness and angle are those of planes: a group round a corner has neither, whatever number comes out."""
    for face in measure.faces if measure.kind in ("flatness", "angle") else []:
        points = shapes.nominal_mm[nodes_of(face, measure, shapes)]
        off = features.flatness_mm(points)
        if off > BENT * float(np.ptp(points, axis=0).max()):
            what = f"group {face!r}" if isinstance(face, str) else f"box {face}"
            findings.warn(
                measure.where,
                f"{measure.name}: the nominal shape of {what} isn't flat, its nodes lie within {off:.4g} mm; "
                f"choose a flat part of it for {'an angle' if measure.kind == 'angle' else 'flatness'}",
            )


def allowed(measure: Measure) -> float:
    """How far the mesh may lie from a drawing's number before it is worth a word."""
    if measure.tolerance is None:
        return 0.01 * abs(measure.nominal or 0.0)
    return 0.5 * (measure.tolerance[1] - measure.tolerance[0])


@dataclass
class Spot:
    """A point of the part that moves with it: a node, or a point within a triangle by the weights of its corners."""

    nodes: np.ndarray
    weights: np.ndarray

    def of(self, points: np.ndarray) -> np.ndarray:
        """(3,) where it is on a shape (N, 3)."""
        return self.weights @ points[self.nodes]

    @property
    def label(self) -> int:
        return int(self.nodes[self.weights.argmax()])


def spot_at(place: Place, measure: Measure, shapes: Shapes) -> Spot:
    """A node by its number, or the point of the nominal surface nearest to a place."""
    if isinstance(place, int):
        return Spot(np.array([node_at(place, measure, shapes)]), np.ones(1))
    triangle, weights = surface.nearest_on(shapes.nominal_mm, shapes.triangles, place)
    spot = Spot(shapes.triangles[triangle], weights)
    distance = float(np.linalg.norm(spot.of(shapes.nominal_mm) - place))
    if distance > FAR * shapes.extent_mm:
        raise BadFile(measure.where, f"{measure.name}: the point {list(place)} mm lies {distance:.4g} mm from the part")
    return spot


def node_at(number: int, measure: Measure, shapes: Shapes) -> int:
    """Index of a node by its number."""
    if not 1 <= number <= len(shapes.nominal_mm) or number - 1 not in shapes.nodes:
        raise BadFile(measure.where, f"{measure.name}: node {number} is no node of the part's triangles")
    return number - 1


def nodes_of(face: str | Box, measure: Measure, shapes: Shapes) -> np.ndarray:
    """Node indices of a group, or within a box."""
    if isinstance(face, str):
        group = named(shapes.groups, face)
        if group is None:
            known = ", ".join(shapes.groups) or "none"
            raise BadFile(measure.where, f"{measure.name}: there is no group {face!r}; the job knows {known}")
        return np.unique(shapes.triangles[shapes.groups[group]])
    points = shapes.nominal_mm[shapes.nodes]
    slack = 1e-6 * shapes.extent_mm
    inside = ((points >= np.array(face[0]) - slack) & (points <= np.array(face[1]) + slack)).all(axis=1)
    return shapes.nodes[inside]


def plane_nodes(face: str | Box, measure: Measure, shapes: Shapes) -> np.ndarray:
    nodes = nodes_of(face, measure, shapes)
    if not features.spans_a_plane(shapes.nominal_mm[nodes]):
        what = f"group {face!r}" if isinstance(face, str) else f"box {face}"
        raise BadFile(measure.where, f"{measure.name}: the {len(nodes)} nodes of {what} span no plane")
    return nodes


def distance(measure: Measure, shapes: Shapes):
    a, b = (spot_at(place, measure, shapes) for place in measure.places)
    return (lambda points: float(np.linalg.norm(b.of(points) - a.of(points)))), [a.label, b.label]


def flatness(measure: Measure, shapes: Shapes):
    nodes = plane_nodes(measure.faces[0], measure, shapes)
    return (lambda points: features.flatness_mm(points[nodes])), [middle_of(nodes, shapes)]


def angle(measure: Measure, shapes: Shapes):
    """Of two walls, with normals that keep their side: 89.5 and 90.5 are two answers."""
    nodes = [plane_nodes(face, measure, shapes) for face in measure.faces]
    normals = features.wall_normals(*(shapes.nominal_mm[n] for n in nodes))

    def value(points: np.ndarray) -> float:
        return features.angle_deg(*(features.normal_like(points[n], side) for n, side in zip(nodes, normals)))

    return value, [middle_of(n, shapes) for n in nodes]


def loop_at(measure: Measure, shapes: Shapes) -> np.ndarray:
    """The loop of free edges with the node nearest to the measure's place."""
    if shapes.loops is None:
        shapes.loops = features.edge_loops(shapes.triangles, len(shapes.nominal_mm))
    place = measure.places[0]
    point = np.array(shapes.nominal_mm[node_at(place, measure, shapes)] if isinstance(place, int) else place)
    near = [np.linalg.norm(shapes.nominal_mm[loop] - point, axis=1).min() for loop in shapes.loops]
    if not near or min(near) > FAR * shapes.extent_mm:
        raise BadFile(measure.where, f"{measure.name}: no loop of free edges near {point.tolist()} mm")
    loop = shapes.loops[int(np.argmin(near))]
    if not features.spans_a_plane(shapes.nominal_mm[loop]):
        raise BadFile(
            measure.where, f"{measure.name}: the loop near {point.tolist()} mm has {len(loop)} nodes, no hole"
        )
    return loop


def roundness(measure: Measure, shapes: Shapes):
    loop = loop_at(measure, shapes)
    return (lambda points: features.circle_of(points[loop]).roundness_mm), [int(loop[0])]


def diameter(measure: Measure, shapes: Shapes):
    loop = loop_at(measure, shapes)
    return (lambda points: features.circle_of(points[loop]).diameter_mm), [int(loop[0])]


def position(measure: Measure, shapes: Shapes):
    """Diameter of the zone round the nominal place that holds the point (ISO 1101): twice its distance."""
    spot = spot_at(measure.places[0], measure, shapes)
    start = spot.of(shapes.nominal_mm)
    return (lambda points: 2.0 * float(np.linalg.norm(spot.of(points) - start))), [spot.label]


def profile(measure: Measure, shapes: Shapes):
    """Width of the zone about the nominal surface (ISO 1101): twice the greatest distance along its normals."""
    nodes = nodes_of(measure.faces[0], measure, shapes) if measure.faces else shapes.nodes
    if not len(nodes):
        raise BadFile(measure.where, f"{measure.name}: no node lies in the box {measure.faces[0]}")
    alike = shapes.triangles.copy()
    turn = surface.turned_alike(alike, surface.edges_of(alike))
    alike[turn] = alike[turn][:, [0, 2, 1]]
    normals = features.vertex_normals(shapes.nominal_mm, alike)[nodes]

    def heights(points: np.ndarray) -> np.ndarray:
        return np.abs(np.einsum("ij,ij->i", points[nodes] - shapes.nominal_mm[nodes], normals))

    return (lambda points: 2.0 * float(heights(points).max())), [int(nodes[heights(shapes.aligned_mm).argmax()])]


def middle_of(nodes: np.ndarray, shapes: Shapes) -> int:
    """The node nearest to the centre of some nodes."""
    points = shapes.nominal_mm[nodes]
    return int(nodes[np.linalg.norm(points - points.mean(axis=0), axis=1).argmin()])


METHODS = {
    "distance": distance,
    "diameter": diameter,
    "angle": angle,
    "flatness": flatness,
    "roundness": roundness,
    "position": position,
    "profile": profile,
}
