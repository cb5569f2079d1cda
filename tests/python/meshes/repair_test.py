"""Collapsing short edges: what is left of meshes drawn by hand, and of a fine grid."""

import numpy as np
import pytest
from keld_tools.base.findings import Findings
from keld_tools.meshes import formats, mesh_input, repair, surface
from keld_tools.part.part_file import MeshRequest
from support import write_plate

#   3 ----- 2      4 lies 0.01 beside 5, both inside
#   |  4 5  |
#   0 ----- 1
SQUARE = np.array([[0, 0, 0], [10, 0, 0], [10, 10, 0], [0, 10, 0], [5, 5, 0], [5.01, 5, 0]], float)
FAN = np.array([[0, 1, 4], [1, 5, 4], [1, 2, 5], [2, 4, 5], [2, 3, 4], [3, 0, 4]])


def area(points, triangles):
    return surface.crosses(points, triangles)[:, 2].sum() / 2


def test_a_needle_goes_and_the_area_stays():
    done = repair.collapse_short_edges(SQUARE, FAN, 0.05)

    left = done.node[FAN][done.kept]
    assert done.edges == 1 and done.kept.tolist() == [True, False, True, False, True, True]
    assert area(SQUARE, left) == pytest.approx(100.0) and (surface.crosses(SQUARE, left)[:, 2] > 0).all()


def test_a_node_on_the_border_stays_and_one_inside_gives_way():
    points = SQUARE.copy()
    points[4] = [5, 0.01, 0]
    border = np.vstack([points, [5, 0, 0]])  # 6 lies on the border under 4
    triangles = np.array([[0, 6, 4], [6, 1, 4], [1, 2, 4], [2, 3, 4], [3, 0, 4]])

    done = repair.collapse_short_edges(border, triangles, 0.05)

    assert done.node[4] == 6 and done.kept.tolist() == [False, False, True, True, True]
    assert area(border, done.node[triangles][done.kept]) == pytest.approx(100.0)


def test_triangles_that_fall_together_are_one():
    points = np.array([[0, 0, 0], [10, 0, 0], [5, 5, 0], [5, 5, 0.01]])
    flap = np.array([[0, 1, 2], [1, 0, 3]])

    done = repair.collapse_short_edges(points, flap, 0.05)

    assert done.edges == 0 and done.kept.all()  # no edge joins 2 and 3
    closed = np.vstack([flap, [[1, 2, 3], [0, 3, 2]]])
    assert repair.collapse_short_edges(points, closed, 0.05).kept.sum() == 1


def test_a_row_of_short_edges_is_thinned_and_keeps_its_shape():
    """A strip of 100 x 1 mm in steps of 0.25 mm: nothing runs into one point, area and ends stay."""
    n = 401
    points = np.array([[0.25 * i, y, 0] for i in range(n) for y in (0.0, 1.0)])
    a = np.arange(n - 1) * 2
    strip = np.vstack([np.column_stack([a, a + 2, a + 3]), np.column_stack([a, a + 3, a + 1])])

    done = repair.collapse_short_edges(points, strip, 0.6)

    left = done.node[strip][done.kept]
    edges = surface.edges_of(left).nodes
    length = np.linalg.norm(points[edges[:, 0]] - points[edges[:, 1]], axis=1)
    assert length.min() >= 0.6 and length.max() < 2.0
    assert area(points, left) == pytest.approx(100.0, abs=0.7)


def test_the_job_counts_what_was_repaired(tmp_path):
    write_plate(tmp_path / "a.msh", triangles=FAN, points=SQUARE)
    request, findings = MeshRequest(path=tmp_path / "a.msh", repair_below_mm=0.05), Findings()

    mesh = mesh_input.build(formats.read_raw(request.path), request, findings)

    assert "repair: 1 edges below 0.05 mm collapsed, 2 empty triangles left out" in mesh.notes
    assert len(mesh.triangles) == 4 and len(mesh.points_mm) == 5 and mesh.numbers.tolist() == [1, 3, 5, 6]
    assert findings.faults == findings.warnings == []
