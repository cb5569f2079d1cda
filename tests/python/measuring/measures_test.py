"""Measures against shapes whose numbers are known from formulas: twisted, folded, oval, moved."""

import numpy as np
import pytest
from keld_tools.base.findings import Findings
from keld_tools.measuring.measures import Shapes, answers_of
from keld_tools.part.drawing import Measure
from support import plate

FLAT, QUADS = plate(12, 12, 60.0, 60.0)
TRIANGLES = np.concatenate([QUADS[:, :3], QUADS[:, [0, 2, 3]]])
LEFT = FLAT[TRIANGLES][:, :, 0].mean(axis=1) < 30


def folded(degrees):
    """The plate with its right half turned up about x = 30, so that the walls stand at `degrees`."""
    turn = np.radians(180 - degrees)
    reach = np.maximum(FLAT[:, 0] - 30, 0)
    return np.column_stack([np.minimum(FLAT[:, 0], 30) + reach * np.cos(turn), FLAT[:, 1], reach * np.sin(turn)])


def answered(measure, nominal, moulded, cavity=None, triangles=TRIANGLES):
    findings = Findings()
    cavity = nominal if cavity is None else cavity
    shapes = Shapes(nominal, cavity, moulded, moulded, triangles, {"left": LEFT, "right": ~LEFT})
    answers = answers_of([measure], shapes, findings)
    return answers[0] if answers else None, findings


TWIST = FLAT + np.outer((FLAT[:, 0] - 30) * (FLAT[:, 1] - 30) * 0.3 / 900, [0, 0, 1])  # corners +- 0.3 mm
BOX = ((0.0, 0.0, -1.0), (60.0, 60.0, 1.0))
ENDS = [(0.0, 0.0, 0.0), (60.0, 0.0, 0.0)]


@pytest.mark.parametrize(
    "measure, nominal, moulded, value, shrinkage, within",
    [
        (Measure("", "distance", 60.2, (-0.9, 0.1), ENDS), FLAT, 0.99 * FLAT, 59.4, 1.0, True),
        (Measure("", "distance", None, (-0.5, 0.5), [1, 157]), FLAT, 0.99 * FLAT, 59.4, 1.0, False),
        (Measure("", "flatness", None, (0.0, 0.6), faces=[BOX]), FLAT, TWIST + [0.0, 9, 9], 0.6, None, True),
        (Measure("", "flatness", None, (0.0, 0.5), faces=["left"]), FLAT, folded(175.0), 0.0, None, True),
        (Measure("", "angle", 90.0, (-0.4, 0.4), faces=["left", "right"]), folded(90), folded(90.5), 90.5, None, False),
        (Measure("", "angle", 90.0, (-0.4, 0.4), faces=["right", "left"]), folded(90), folded(89.7), 89.7, None, True),
        (Measure("", "angle", None, None, faces=["left", "right"]), folded(135), folded(133), 133.0, None, None),
        (
            Measure("", "position", None, (0.0, 0.9), places=[(60.0, 60.0, 0)]),
            FLAT,
            FLAT + [0.3, 0, 0.4],
            1.0,
            None,
            False,
        ),
        (Measure("", "profile", None, (0.0, 0.6)), FLAT, TWIST + [5.0, 0, 0], 0.6, None, True),
    ],
)
def test_values_of_known_shapes(measure, nominal, moulded, value, shrinkage, within):
    answer, findings = answered(measure, nominal, moulded)

    assert answer.moulded == pytest.approx(value, abs=1e-6) and answer.within is within and not findings.warnings
    assert answer.shrinkage_percent == (None if shrinkage is None else pytest.approx(shrinkage))


@pytest.mark.parametrize("kind, value", [("diameter", 10.0 - 0.05), ("roundness", 0.1)])
def test_a_hole_that_becomes_oval(kind, value):
    angle = np.linspace(0, 2 * np.pi, 49)[:-1]
    ring = np.column_stack([np.cos(angle), np.sin(angle), 0 * angle])
    points = np.concatenate([5 * ring, 12 * ring])
    i, j = np.arange(48), (np.arange(48) + 1) % 48
    triangles = np.concatenate([np.column_stack([i, i + 48, j]), np.column_stack([j, i + 48, j + 48])])
    oval = points * [1.0, 0.99 - 1e-300, 1.0]  # half axes 5 and 4.95

    measure = Measure("", kind, places=[(0.0, 0.0, 0.0)])
    findings = Findings()
    answer = answers_of([measure], Shapes(points, points, oval, oval, triangles), findings)[0]

    assert answer.moulded == pytest.approx(value / (2 if kind == "roundness" else 1), rel=2e-3)


@pytest.mark.parametrize("height", [0.0, 1.25, -1.25])
def test_a_point_between_nodes_moves_with_its_triangle(height):
    """On the plate stretched by x^2 a point within a 5 mm edge moves linearly between its ends, and so its distance."""
    stretched = FLAT + 1e-3 * FLAT**2 * [1.0, 0, 0]
    measure = Measure("", "distance", places=[(0.0, 0.0, 0.0), (22.0, 0.0, height)])

    answer, _ = answered(measure, FLAT, stretched)

    assert answer.nominal == pytest.approx(22.0)  # of the surface below the point
    assert answer.moulded - 22.0 == pytest.approx(1e-3 * (0.6 * 20**2 + 0.4 * 25**2))
    of_node, _ = answered(Measure("", "distance", places=[1, 4 * 13 + 1]), FLAT, stretched)
    assert of_node.nominal == 20.0 and of_node.moulded == pytest.approx(20.4)


def test_shrinkage_counts_from_the_cavity_and_deviation_from_the_drawing():
    answer, _ = answered(Measure("", "distance", 60.0, places=ENDS), FLAT, FLAT * 1.0001, cavity=FLAT / 0.99)

    assert answer.deviation == pytest.approx(0.006) and answer.shrinkage_percent == pytest.approx(0.99, abs=1e-2)


@pytest.mark.parametrize(
    "measure, words",
    [
        (Measure("far", "distance", places=[(0.0, 0, 0), (900.0, 0, 0)]), "840 mm from the part"),
        (Measure("none", "position", places=[9999]), "node 9999"),
        (Measure("thin", "flatness", faces=[((0.0, 0, 0), (60.0, 0, 0))]), "span no plane"),
        (Measure("who", "flatness", faces=["lid"]), "no group 'lid'; the job knows left, right"),
        (Measure("gap", "diameter", places=[(30.0, 30.0, 200.0)]), "no loop of free edges near"),
    ],
)
def test_what_cannot_be_measured_is_named(measure, words):
    answer, findings = answered(measure, FLAT, FLAT)

    assert answer is None and words in findings.faults[0] and measure.name in findings.faults[0]


@pytest.mark.parametrize("kind, faces, warned", [
    ("flatness", ["all"], 1), ("angle", ["Left", "all"], 1), ("angle", ["LEFT", "right"], 0), ("profile", ["all"], 0),
])  # fmt: skip
def test_a_group_round_a_corner_is_no_plane(kind, faces, warned):
    findings, corner = Findings(), folded(90)
    shapes = Shapes(corner, corner, corner, corner, TRIANGLES, {"left": LEFT, "right": ~LEFT, "all": LEFT | True})

    answers_of([Measure("m", kind, faces=faces)], shapes, findings)

    assert findings.faults == [] and sum("'all' isn't flat" in text for text in findings.warnings) == warned


def test_a_drawing_that_is_not_of_this_mesh_is_warned_of():
    _, findings = answered(Measure("", "distance", 66.0, (-1.0, 1.0), ENDS), FLAT, FLAT)

    assert "nominal 66 mm, but the mesh has 60" in findings.warnings[0]
