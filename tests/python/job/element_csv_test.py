"""CSV of values by element or by place: mapping, tensors in a wall, and the spellings that spreadsheets write."""

import numpy as np
import pytest
from keld_tools.base.findings import Findings
from keld_tools.job import element_csv
from keld_tools.meshes import formats, mesh_input
from keld_tools.part.part_file import MeshRequest
from support import write_plate

TILT = np.array([[0, 0, 0], [40, 0, 0], [40, 30, 30], [0, 30, 30]])  # its plane holds x and (0, 1, 1)


@pytest.fixture
def values(tmp_path):
    """Write rows.csv, read it onto the plate of 24 triangles (or another mesh); returns values, findings, notes."""

    def call(text, mapping=None, **mesh):
        write_plate(tmp_path / "plate.msh", **mesh)
        request, findings = MeshRequest(path=tmp_path / "plate.msh"), Findings()
        job = mesh_input.build(formats.read_raw(request.path), request, findings)
        (tmp_path / "rows.csv").write_text(text(job) if callable(text) else text, encoding="utf-8-sig")
        notes = []
        return element_csv.read_values(tmp_path / "rows.csv", mapping, job, findings, notes), findings, notes

    return call


def at_centres(job):
    """Each triangle's number at its centre, in cm and from back to front."""
    centres = job.points_mm[job.triangles].mean(axis=1) / 10.0
    return "stress1_MPa,x_cm,y_cm,z_cm\n" + "".join(
        f"{i},{x:.17g},{y:.17g},{z:.17g}\n" for i, (x, y, z) in reversed(list(enumerate(centres)))
    )


@pytest.mark.parametrize("mapping", ["nearest", "inverse_distance", None])
def test_a_point_at_an_elements_centre_gives_it_its_value(values, mapping):
    found, findings, notes = values(at_centres, mapping)

    np.testing.assert_allclose(found["stress1"], np.arange(24) * 1e7, rtol=1e-6, atol=100)
    assert "24 points of rows.csv" in notes[0] and findings.faults == findings.warnings == []


def test_inverse_distance_of_four_by_hand(values):
    """One triangle with its centre in (1, 1, 0): points at distances 1, 2, 4, 4 and a fifth that doesn't count."""
    rows = "x_mm,y_mm,z_mm,stress1_MPa\n2,1,0,8\n1,3,0,4\n1,1,4,4\n1,1,-4,0\n1,1,5,1000\n"

    found, findings, notes = values(rows, triangles=[[0, 1, 2]], points=[[0, 0, 0], [3, 0, 0], [0, 3, 0]])

    assert found["stress1"] == pytest.approx([1e7 * (8 + 4 / 2 + 4 / 4) / (1 + 1 / 2 + 1 / 4 + 1 / 4)])
    assert "greatest distance of an element from its nearest point is 1 mm" in notes[0]
    assert "1 mm from the nearest point" in findings.warnings[0]


def test_opposite_directions_are_one_direction(values):
    rows = "x_mm,y_mm,z_mm,fibre_x,fibre_y,fibre_z\n0,0,0,1,0,0\n3,0,0,-2,0,0\n0,3,0,1,0.1,0\n3,3,0,1,-0.1,0\n"

    found, _, _ = values(rows, triangles=[[0, 1, 2]], points=[[0, 0, 0], [3, 0, 0], [0, 3, 0]])

    assert np.abs(found["fibre_direction"][0] @ [1, 0, 0]) > 0.999


IN_WALL = np.array([[1, 0, 0], [0, 0.5**0.5, 0.5**0.5], [0, -(0.5**0.5), 0.5**0.5]])  # two axes and the normal


@pytest.mark.parametrize(
    "shares, expected",
    [((0.8, 0.2, 0.0), (0, 0.8)), ((0.1, 0.6, 0.3), (1, 6 / 7)), ((1 / 3, 1 / 3, 1 / 3), (None, 0.5))],
)
def test_a_tensor_becomes_direction_and_share_in_the_wall(values, shares, expected):
    a = sum(s * np.outer(v, v) for s, v in zip(shares, IN_WALL))
    head = "element,a11,a22,a33,a12,a13,a23\n"
    six = ",".join(f"{v:.12g}" for v in (a[0, 0], a[1, 1], a[2, 2], a[0, 1], a[0, 2], a[1, 2]))

    found, findings, _ = values(f"{head}1,{six}\n2,{six}\n", triangles=[[0, 1, 2], [0, 2, 3]], points=TILT)

    np.testing.assert_allclose(found["orientation"], expected[1], atol=1e-9)
    assert findings.faults == []
    if expected[0] is not None:
        np.testing.assert_allclose(np.abs(found["fibre_direction"] @ IN_WALL[expected[0]]), 1.0, atol=1e-9)


@pytest.mark.parametrize(
    "text",
    ["element;stress1_MPa;stress2_MPa\n1;1,5;\n2;;-3\n;;\n", "element\tstress1_MPa\tstress2_MPa\n1\t1.5\t\n2\t\t-3"],
)
def test_semicolons_decimal_commas_and_blank_cells(values, text):
    found, findings, _ = values(text, triangles=[[0, 1, 2], [0, 2, 3]], points=TILT)

    np.testing.assert_array_equal(found["stress1"], [1.5e7, np.nan])
    np.testing.assert_array_equal(found["stress2"], [np.nan, -3e7])
    assert findings.faults == []


@pytest.mark.parametrize(
    "rows, mapping, words",
    [
        ("x_mm,y_mm,stress1_MPa\n1,1,1\n", None, "no column element, nor x, y and z"),
        ("element,stress1_MPa\n1,1\n", "nearest", "has no columns x, y and z"),
        ("element,stress1_MPa\n , \n", None, "has no row of values"),
        ("x,y_mm,z_mm\n1,2,3\n", None, "'x' is not known"),
        ("x_mm,y_mm,z_mm,stress1_MPa\n1,1,,1\n", None, "rows.csv:2: has a point without its x, y or z"),
        ("element,a11,a22\n1,1,0\n", None, "needs a11, a22 and a12"),
        ("element,a11,a22,a12,orientation\n1,1,0,0,1\n", None, "gives the orientation twice"),
        ("element,a11,a22,a33,a12\n1,1,1,0,0\n", None, "rows.csv:2: a11 + a22 + a33 of an orientation tensor is 1"),
        ("element,stress1_MPa\n1,nan\n", None, "expected a finite number, found 'nan'"),
    ],
)
def test_faults_of_points_and_tensors(values, rows, mapping, words):
    _, findings, _ = values(rows, mapping)

    assert words in findings.faults[0]
