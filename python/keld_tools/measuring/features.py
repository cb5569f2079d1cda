"""What a measuring machine makes of points: planes, zones, circles, and the loops of free edges round holes.

Pure functions of (N, 3) points in mm; the fits are scipy's. Called by measures.
"""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
from scipy.optimize import least_squares, linprog
from scipy.sparse import coo_matrix
from scipy.sparse.csgraph import connected_components
from scipy.spatial import ConvexHull, QhullError

from ..meshes import surface

FLAT = 1e-9  # of the extent: points that lie nearer to a plane are on it
LEAST_SINE = 1e-6  # of the angle below which two planes are parallel


@dataclass
class Plane:
    """Least-squares plane of some points."""

    centre_mm: np.ndarray  # (3,)
    axes: np.ndarray  # (3, 3) rows: two directions in the plane, then the normal
    extent_mm: float

    def local(self, points_mm: np.ndarray) -> np.ndarray:
        """(N, 3) coordinates along the axes; the last is the height above the plane."""
        return (points_mm - self.centre_mm) @ self.axes.T


@dataclass
class Circle:
    """Least-squares circle of the points of a loop, in their plane."""

    centre_mm: np.ndarray  # (3,)
    diameter_mm: float
    roundness_mm: float  # greatest less least radius about the centre


def plane_of(points_mm: np.ndarray) -> Plane:
    centre = points_mm.mean(axis=0)
    axes = np.linalg.eigh((points_mm - centre).T @ (points_mm - centre))[1].T[::-1]  # the flattest direction last
    return Plane(centre, axes, float(np.ptp(points_mm, axis=0).max()))


def spans_a_plane(points_mm: np.ndarray) -> bool:
    """Whether there are three points that don't lie on one line."""
    if len(points_mm) < 3:
        return False
    sizes = np.linalg.svd(points_mm - points_mm.mean(axis=0), compute_uv=False)
    return bool(sizes[1] > 1e-6 * sizes[0])


def flatness_mm(points_mm: np.ndarray) -> float:
    """Distance of the two nearest parallel planes that hold all points (minimum zone, ISO 12781).

    Chebyshev fit of a plane over the least-squares plane as a linear programme; the slope left after that fit is
    small, so that heights over it are distances. Only corners of the convex hull can touch a plane.
    """
    local = plane_of(points_mm).local(points_mm)
    extent, spread = float(np.ptp(local[:, :2])), float(np.ptp(local[:, 2]))
    if spread <= FLAT * extent:
        return spread
    unit = local / [extent, extent, spread]  # a flat body to a round one, as the hull wants it
    try:
        unit = unit[ConvexHull(unit).vertices]
    except QhullError:
        pass  # three points, or points on one plane across: all of them count
    ones, half = np.ones(len(unit)), -np.ones(len(unit))
    tilt = np.column_stack([unit[:, :2], ones])
    rows = np.vstack([np.column_stack([tilt, half]), np.column_stack([-tilt, half])])
    fit = linprog(
        [0, 0, 0, 1], rows, np.concatenate([unit[:, 2], -unit[:, 2]]), bounds=[(None, None)] * 3 + [(0, None)]
    )
    if not fit.success:
        return spread
    slope = np.hypot(*fit.x[:2]) * spread / extent
    return float(2.0 * fit.x[3] * spread / np.hypot(1.0, slope))


def wall_normals(first_mm: np.ndarray, second_mm: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """Unit normals of two flat walls, turned so that their angle is the one between the walls as seen from the joint.

    With d the direction within a wall from the line where both planes meet to its middle, and L along that line, the
    normals are L x d. Where a middle lies on that line (a rib on its base) or the planes are parallel, 0 to 90 degrees.
    """
    one, two = plane_of(first_mm), plane_of(second_mm)
    a, b = one.axes[2], two.axes[2]
    line = np.cross(a, b)
    sine = np.linalg.norm(line)
    if sine > LEAST_SINE:
        line /= sine
        rows, sides = np.array([a, b, line]), [a @ one.centre_mm, b @ two.centre_mm, line @ one.centre_mm]
        joint = np.linalg.solve(rows, sides)
        ways = [plane.centre_mm - joint for plane in (one, two)]
        ways = [way - (way @ line) * line for way in ways]
        if all(np.linalg.norm(way) > 1e-3 * plane.extent_mm for way, plane in zip(ways, (one, two))):
            a, b = (np.cross(line, way) / np.linalg.norm(way) for way in ways)
            return a, b
    return a, b if a @ b >= 0 else -b


def normal_like(points_mm: np.ndarray, side: np.ndarray) -> np.ndarray:
    """Unit normal of the points' plane, on the same side as another normal."""
    normal = plane_of(points_mm).axes[2]
    return normal if normal @ side >= 0 else -normal


def angle_deg(first: np.ndarray, second: np.ndarray) -> float:
    """Angle of two directions, 0 to 180."""
    return float(np.degrees(np.arctan2(np.linalg.norm(np.cross(first, second)), first @ second)))


def circle_of(points_mm: np.ndarray) -> Circle:
    """Gaussian circle (ISO 4291): least squares of the radial distances in the plane of the points."""
    plane = plane_of(points_mm)
    flat = plane.local(points_mm)[:, :2]
    matrix = np.column_stack([2.0 * flat, np.ones(len(flat))])  # algebraic circle as the first guess
    guess = np.linalg.lstsq(matrix, np.einsum("ij,ij->i", flat, flat), rcond=None)[0]
    radius = np.sqrt(max(guess[2] + guess[0] ** 2 + guess[1] ** 2, 0.0))
    fit = least_squares(
        lambda c: np.hypot(flat[:, 0] - c[0], flat[:, 1] - c[1]) - c[2], [guess[0], guess[1], radius], xtol=1e-14
    )
    radii = np.hypot(flat[:, 0] - fit.x[0], flat[:, 1] - fit.x[1])
    centre = plane.centre_mm + fit.x[:2] @ plane.axes[:2]
    return Circle(centre, float(2.0 * radii.mean()), float(np.ptp(radii)))


def edge_loops(triangles: np.ndarray, node_count: int) -> list[np.ndarray]:
    """Nodes of each connected set of free edges: the outline of the part and the rims of its holes."""
    edges = surface.edges_of(triangles)
    free = edges.nodes[edges.count == 1]
    if not len(free):
        return []
    graph = coo_matrix((np.ones(len(free)), (free[:, 0], free[:, 1])), shape=(node_count, node_count))
    _, label = connected_components(graph, directed=False)
    nodes = np.unique(free)
    nodes = nodes[np.argsort(label[nodes], kind="stable")]
    return np.split(nodes, np.flatnonzero(np.diff(label[nodes])) + 1)


def vertex_normals(points_mm: np.ndarray, triangles: np.ndarray) -> np.ndarray:
    """(N, 3) unit normals, weighted by area; zero at a node without triangles."""
    normals = np.zeros_like(points_mm)
    crosses = surface.crosses(points_mm, triangles)
    for corner in range(3):
        for axis in range(3):
            normals[:, axis] += np.bincount(triangles[:, corner], crosses[:, axis], len(points_mm))
    length = np.linalg.norm(normals, axis=1, keepdims=True)
    return np.divide(normals, length, out=np.zeros_like(normals), where=length > 0)
