"""Pictures: colours are those of the bar and stand where their values are; a constant field; what is marked."""

import matplotlib.pyplot as pyplot
import numpy as np
import pytest
from keld_tools.report import furnishing, picture
from support import plate

POINTS, QUADS = plate(8, 6)
TRIANGLES = np.concatenate([QUADS[:, :3], QUADS[:, [0, 2, 3]]])


def scene(values, **more):
    still = np.zeros_like(POINTS)
    return picture.Scene(POINTS, TRIANGLES, still, values, "mm", "t", [], 1.0, picture.VIEWS["top"], **more)


def drawn(values, **more):
    figure = picture.compose(scene(values, **more), 60)
    figure.canvas.draw()
    pixels = np.asarray(figure.canvas.buffer_rgba())[:, :, :3].copy()
    texts = [t.get_text() for axes in figure.axes for t in (*axes.texts, *axes.get_yticklabels())]
    pyplot.close(figure)
    return pixels, texts


def test_colours_are_those_of_the_bar_where_the_values_are():
    pixels, _ = drawn(POINTS[:, 0] / 40)

    rows, columns = pixels.shape[:2]
    part = pixels[round(0.5 * rows), round(0.1 * columns) : round(0.75 * columns)]
    bar = furnishing.colouring(np.array([0.0, 1.0])).cmap(range(furnishing.BANDS), bytes=True)[:, :3].tolist()
    bands = [bar.index(p) for p in part.tolist() if p in bar]
    assert len(bands) > 0.9 * len(part) and bands == sorted(bands) and {0, 7, 15} <= set(bands)


@pytest.mark.parametrize("value", [0.0, 0.25])
def test_a_constant_field_has_one_colour_and_its_own_value_at_the_bar(value):
    pixels, texts = drawn(np.full(len(POINTS), value))

    assert f"{value:.4g}" in texts and "0.5" not in texts
    middle = pixels[pixels.shape[0] // 2, 150:400]
    assert (middle == middle[0]).all()


def test_boundary_nodes_gates_and_the_greatest_value_are_marked():
    _, texts = drawn(POINTS[:, 0], boundary=[0, 8, 20], gates=[30])

    assert {"1", "2", "3", "gate", "40 mm"} <= set(texts)
