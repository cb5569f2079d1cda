"""What keld-view writes besides: the user's mesh with moved nodes in every kind of deck, an animation, a comparison."""

import re

import numpy as np
import pytest
from keld_tools.meshes import formats
from keld_tools.programs import view_cli
from keld_tools.report import animation
from meshes.mesh_input_test import abaqus, nastran
from PIL import Image
from support import PART, plate, results_text, write_plate

SHIFT = np.round(np.random.default_rng(9).uniform(-0.4, 0.4, (20, 3)), 3)


def finished(folder, job, name, text=None):
    """A job of a mesh file, with results; returns its base."""
    if text is not None:
        (folder / name).write_text(text)
    assert job(PART.replace("plate.msh", name))[0] == 0
    (folder / "j.WR1").write_text(results_text(SHIFT))
    return folder / "j"


@pytest.mark.usefixtures("no_pictures")
@pytest.mark.parametrize(
    "name, text",
    [
        ("p.bdf", nastran("small")),
        ("p.bdf", nastran("large")),
        ("p.bdf", nastran("free")),
        ("p.inp", abaqus()),
        ("p.msh", None),
    ],
)
def test_a_mesh_comes_back_with_its_nodes_moved(tmp_path, job, name, text):
    if text is None:
        write_plate(tmp_path / name)
    base = finished(tmp_path, job, name, text)
    before = formats.read_raw(tmp_path / name)

    out = tmp_path / f"out{name[1:]}"
    assert view_cli.main([str(base), "--align", "boundary", "--export", str(out)]) == 0

    after = formats.read_raw(out)
    used = np.unique(before.shells[before.shells >= 0])
    moved = after.points[used] - before.points[used]
    assert np.allclose(sorted(map(tuple, moved.round(3))), sorted(map(tuple, SHIFT)), atol=2e-3)
    assert (after.shells == before.shells).all() and sorted(after.groups) == sorted(before.groups)
    np.testing.assert_array_equal(after.node_numbers, before.node_numbers)


@pytest.mark.usefixtures("no_pictures")
def test_what_cannot_be_exported_is_told(tmp_path, job, capsys):
    base = finished(tmp_path, job, "p.bdf", nastran("small"))
    assert view_cli.main([str(base), "--export", str(tmp_path / "out.inp")]) == 1
    assert "choose .stl or .bdf" in capsys.readouterr().err

    (tmp_path / "p.bdf").write_text(re.sub(r"(?m)^GRID.*\n", "", nastran("small"), count=4))
    assert view_cli.main([str(base), "--export", str(tmp_path / "out.bdf")]) == 1
    assert "has 16 of the 20 nodes" in capsys.readouterr().err and not (tmp_path / "out.bdf").exists()


@pytest.mark.usefixtures("no_pictures")
def test_the_animation_swings_from_the_nominal_shape_and_back(tmp_path, job, monkeypatch):
    monkeypatch.setattr(animation, "DOTS_PER_INCH", 30)
    write_plate(tmp_path / "plate.msh")
    base = finished(tmp_path, job, "plate.msh")

    assert view_cli.main([str(base), "--animate"]) == 0

    with Image.open(f"{base}.gif") as picture:
        frames = []
        for number in range(picture.n_frames):
            picture.seek(number)
            frames.append(np.asarray(picture.convert("L"), int))
        assert picture.info["loop"] == 0
    apart = [int((np.abs(frame - frames[0]) > 40).sum()) for frame in frames]
    assert apart[1:] == apart[:0:-1] and 0 < apart[1] < apart[4] < apart[8]  # there, and the same way back


def test_two_runs_are_compared(tmp_path, job, capsys):
    write_plate(tmp_path / "plate.msh")
    base = finished(tmp_path, job, "plate.msh")
    for suffix in (".PG1", ".PRC", ".CPU", ".MAL", ".PT1"):
        (tmp_path / f"k{suffix}").write_bytes((tmp_path / f"j{suffix}").read_bytes())
    (tmp_path / "k.WR1").write_text(results_text(SHIFT + np.outer(plate()[0][:, 0] / 40, [0, 0, 0.25])))

    assert view_cli.main([str(base), "--align", "boundary", "--compare", str(tmp_path / "k")]) == 0

    assert re.search(r"greatest k less j: 0\.25\d* mm at node (17|18|19|20) ", capsys.readouterr().out)
    assert (tmp_path / "j.compare.png").stat().st_size > 10000
