"""keld-view: the grid's data, the picture's geometry, the corrected cavity, and damaged files of every kind."""

import re
from pathlib import Path

import matplotlib.image
import meshio
import numpy as np
import pytest
from keld_tools.base.ownership import is_own
from keld_tools.programs import job_cli, view_cli
from keld_tools.report import picture
from keld_tools.results import compensate
from keld_tools.results.geometry_file import read_geometry
from support import PART, mutations, plate, results_text, write_plate

RNG = np.random.default_rng(6)
TOTAL = np.round(RNG.uniform(-0.3, 0.3, (20, 3)), 3)
IN_MOLD = np.round(0.3 * TOTAL, 3)
SINK = np.linspace(0, 0.019, 20).round(3)


@pytest.fixture
def base(tmp_path, job):
    """A job with results, made by keld-job from a plate with stress."""
    write_plate(tmp_path / "plate.msh")
    assert job(PART + "[fields]\nstress1_MPa = 3\nfibre_direction = [0, 1, 0]\n")[0] == 0
    (tmp_path / "j.WR1").write_text(results_text(TOTAL, SINK, IN_MOLD))
    return tmp_path / "j"


@pytest.mark.parametrize("words", [[], ["--ascii"]])
def test_the_grid_holds_every_field_with_its_unit(base, words):
    assert view_cli.main([str(base), *words]) == 0

    grid = meshio.read(f"{base}.vtu")
    data, cells = grid.point_data, {name: blocks[0] for name, blocks in grid.cell_data.items()}
    assert (b'format="ascii"' in (base.parent / "j.vtu").read_bytes()) == (words == ["--ascii"])
    np.testing.assert_allclose(grid.points, plate()[0])
    np.testing.assert_allclose(data["displacement_total_mm"], TOTAL, atol=5e-4)
    np.testing.assert_allclose(data["displacement_in_mold_mm"], IN_MOLD, atol=5e-4)
    np.testing.assert_allclose(data["displacement_thermal_mm"], TOTAL - IN_MOLD, atol=5e-4)
    np.testing.assert_allclose(data["displacement_length_mm"], np.linalg.norm(TOTAL, axis=1), atol=5e-4)
    np.testing.assert_allclose(data["sink_mark_mm"], SINK, atol=5e-6)
    assert set(cells["thickness_mm"]) == {2.0} and set(cells["stress1_MPa"]) == {3.0}
    assert set(cells["temperature_lower_C"]) == set(cells["temperature_upper_C"]) == {80.0}
    np.testing.assert_allclose(cells["fibre_direction"], [[0, 1, 0]] * 24)
    assert matplotlib.image.imread(f"{base}.png").std() > 0.05
    assert all(is_own(Path(f"{base}{suffix}")) for suffix in (".vtu", ".png"))


@pytest.mark.usefixtures("no_pictures")
@pytest.mark.parametrize(
    "field, view, greatest",
    [
        ("x", "top", np.abs(TOTAL[:, 0]).max()),
        ("in-mold", "-60,-30", np.linalg.norm(IN_MOLD, axis=1).max()),
        ("thermal", "front", np.linalg.norm(TOTAL - IN_MOLD, axis=1).max()),
        ("sink", "iso", 0.019),
    ],
)
def test_the_greatest_value_of_a_field_is_told(base, capsys, field, view, greatest):
    words = ["--field", field, "--view", view, "--scale", "3", "--align", "boundary", "-o", f"{base}-out"]
    assert view_cli.main([str(base), *words]) == 0

    told = float(re.search(r"greatest [^:]*: (\S+) mm", capsys.readouterr().out)[1])
    assert abs(told) == pytest.approx(greatest, abs=2e-3) and (base.parent / "j-out.png").exists()


@pytest.mark.parametrize("greatest, scale", [(0.004, 1000), (1.0, 5), (100.0, 1), (0.0, 1)])
def test_automatic_scale(greatest, scale):
    assert picture.automatic_scale(np.array([[0.0, 0, 0], [50, 0, 0]]), np.array([[0, 0, greatest]])) == scale


@pytest.mark.usefixtures("no_pictures")
def test_the_cavity_turns_the_displacement_round_and_repeats(base, capsys):
    points, nodes = plate()[0], base.parent
    assert view_cli.main([str(base), "--compensate"]) == 0
    part = read_geometry(nodes / "j-cavity1.PG1")
    np.testing.assert_allclose(part.points_mm, points - TOTAL, atol=5e-4)
    stl = meshio.read(nodes / "j-cavity1.stl")
    np.testing.assert_allclose(np.sort(stl.points[:, 0]), np.sort(part.points_mm[:, 0]), atol=1e-5)
    for suffix in (".PRC", ".CPU", ".MAL", ".RS1", ".PT1"):
        assert (nodes / f"j-cavity1{suffix}").read_bytes() == (nodes / f"j{suffix}").read_bytes()

    moved = np.round(0.9 * TOTAL, 4)  # the second run moves a little less
    (nodes / "j-cavity1.WR1").write_text(results_text(moved))
    assert view_cli.main([f"{base}-cavity1", "--compensate", "--factor", "0.5"]) == 0

    deviation = meshio.read(nodes / "j-cavity1.vtu").point_data["remaining_deviation_mm"]
    np.testing.assert_allclose(deviation, moved - TOTAL, atol=1e-3)
    np.testing.assert_allclose(
        read_geometry(nodes / "j-cavity2.PG1").points_mm, points - TOTAL - 0.5 * (moved - TOTAL), atol=1e-3
    )
    np.testing.assert_allclose(read_geometry(nodes / "j-cavity2.nominal.PG1").points_mm, points)
    assert (nodes / "j-cavity2.BC1").read_bytes() == (nodes / "j-cavity1.BC1").read_bytes()


def test_the_cavity_keeps_all_but_the_coordinates(tmp_path):
    source = (
        "/* t */\r\n3 4 0.1 0.2\r\n2 1 2 3 2 -1 1 0 0.9\n1 4 1 0 5 0 1 0\n3 2 4 3 2 0 1 0\n"
        "4 5 0 5 1 1 2 3 4 5\n1 0 0 0 0\n3 0 5 0 0\n2 5 0 0 0\n"
    )
    (tmp_path / "j.PG1").write_text(source)
    part = read_geometry(tmp_path / "j.PG1")

    text = compensate.moved(part.path, part.points_mm + [2.0, 0, 0], ["made"]).decode().splitlines()

    np.testing.assert_allclose(part.points_mm[0:2], [[0, 0, 0], [10, 0, 0]])
    assert part.gates.tolist() == [3] and part.runners.tolist() == [[3, 0]] and part.triangle_numbers.tolist() == [2, 3]
    assert text[2:5] == ["2 1 2 3 2 -1 1 0 0.9", "1 4 1 0 5 0 1 0", "3 2 4 3 2 0 1 0"]
    assert text[5:] == ["4 6 0 5 1 1 2 3 4 5", "1 1 0 0 0", "3 1 5 0 0", "2 6 0 0 0"]


@pytest.mark.usefixtures("no_pictures")
@pytest.mark.parametrize("suffix", [".vtu", ".png", "-cavity1.PG1", "-cavity1.WR1", "-cavity1.stl", "-cavity1.PRC"])
def test_a_foreign_file_is_replaced_on_request_alone(base, capsys, suffix):
    words, foreign = [str(base), "--compensate"], Path(f"{base}{suffix}")
    foreign.write_text("the user's own")

    assert view_cli.main(words) == 1
    assert "--overwrite" in capsys.readouterr().err and foreign.read_text() == "the user's own"
    assert [p for p in base.parent.glob("j-*") if p != foreign] == []
    assert view_cli.main([*words, "-o", f"{base}-out"]) == 0
    assert (base.parent / "j-out-cavity1.PG1").exists() and foreign.read_text() == "the user's own"
    assert view_cli.main([*words, "--overwrite"]) == 0
    assert view_cli.main(words) == 0  # its own files it replaces


@pytest.mark.usefixtures("no_pictures")
@pytest.mark.parametrize("suffix", [".WR1", ".PG1", ".vtu"])
def test_a_file_of_the_job_stands_for_its_base_name(base, capsys, suffix):
    assert view_cli.main([str(base)]) == 0 and view_cli.main([f"{base}{suffix}"]) == 0
    assert f"written: {base}.vtu" in capsys.readouterr().out


DAMAGE = {
    "no title": (".PG1", r"\*/", "", "no title block"),
    "count": (".PG1", r"(?m)^24 20", "9999999 20", "ends too early"),
    "no count": (".PG1", r"(?m)^24 20", "x 20", "expected a finite number in the header"),
    "factor": (".PG1", r"0\.1 0\.1", "0.1 0", "all above 0"),
    "fields": (".PG1", r"(?m)^5 ", "5 5 5 ", "has 10 fields"),
    "node": (".PG1", r"(?m)^1 \d+ ", "1 21 ", "node that isn't 1 to 20"),
    "twice": (".PG1", r"(?m)^2 ", "1 ", "each once"),
    "nan": (".PG1", r"0 0\n$", "nan 0\n", ".PG1:47: expected a finite number in a node record, found 'nan'"),
    "no section": (".WR1", r"\[Keld_ResultsStr\]", "", "no section [Keld_ResultsStr]"),
    "cut": (".WR1", r"(?s)\[Keld_Thermal.*", "", "cut off"),
    "open end": (".WR1", r"\[EOF\]\s*$", "", "cut off"),
    "row": (".WR1", r"(?m)^       7  .*\n", "", "has 19 rows"),
    "order": (".WR1", r"(?m)^       7  ", "       8  ", "expected row 7"),
    "text": (".WR1", r"(?m)^(       7  +)\S+", r"\1-x-", "found '-x-'"),
    "other mesh": (".WR1", None, results_text(TOTAL[:9]), "another mesh"),
    "infinite": (".WR1", r"(?m)^(       7  +)\S+", r"\1inf", "found 'inf'"),
}


@pytest.mark.parametrize("suffix, old, new, words", DAMAGE.values(), ids=DAMAGE)
def test_damaged_results_are_named(base, capsys, suffix, old, new, words):
    path = base.parent / f"j{suffix}"
    path.write_text(new if old is None else re.sub(old, new, path.read_text(), count=1))

    assert view_cli.main([str(base)]) == 1
    assert (
        words in capsys.readouterr().err
        and not (base.parent / "j.vtu").exists()
        and not (base.parent / "j.png").exists()
    )


@pytest.mark.parametrize(
    "words, said",
    [
        (["--field", "remaining"], "isn't a corrected cavity"),
        (["--view", "up"], "AZIMUTH"),
        (["--scale", "-1"], "above 0"),
        (["--factor", "nan", "--compensate"], "above 0"),
        (["-o", "/nonexistent/x"], "can't be written"),
    ],
)
def test_options_that_cannot_be_met(base, capsys, words, said):
    assert view_cli.main([str(base), *words]) == 1 and said in capsys.readouterr().err


@pytest.mark.usefixtures("no_pictures")
def test_prior_files_that_do_not_fit_are_left_out_and_told(base, capsys):
    (base.parent / "j.RS1").write_text("/* t */\n1 2 3\n")

    assert view_cli.main([str(base)]) == 0
    assert "j.RS1: has 1 records, the mesh 24 elements; left out" in capsys.readouterr().err
    assert "stress1_MPa" not in meshio.read(f"{base}.vtu").cell_data


@pytest.mark.usefixtures("no_pictures")
@pytest.mark.parametrize(
    "name",
    ["plate.msh", "bin.msh", "plate.stl", "plate.bdf", "plate.inp", "part.toml", "rows.csv", "j.PG1", "j.WR1", "j.RS1"],
)
def test_no_damage_ends_in_anything_but_a_message(base, capsys, name):
    from meshes.mesh_input_test import abaqus, nastran

    folder = base.parent
    quads = plate()[1]
    write_plate(folder / "bin.msh", "gmsh", True)
    write_plate(folder / "plate.stl", "stl", True, triangles=np.concatenate([quads[:, :3], quads[:, [0, 2, 3]]]))
    (folder / "plate.bdf").write_text(nastran("small"))
    (folder / "plate.inp").write_text(abaqus())
    (folder / "rows.csv").write_text(
        "element,stress1_MPa,thickness_mm\n" + "".join(f"{i},{i}.5,2\n" for i in range(1, 13))
    )
    part = PART.replace("plate.msh", name) if name.startswith(("plate", "bin")) else PART
    (folder / "part.toml").write_text(part + '[fields]\ncsv = "rows.csv"\n' * (name == "rows.csv"))
    view = name.startswith("j.")
    whole = (folder / name).read_bytes()

    for damaged in mutations(whole, 60):
        (folder / name).write_bytes(damaged)
        for old in [] if view else folder.glob("k.*"):
            old.unlink()
        status = (
            view_cli.main([str(base)]) if view else job_cli.main([str(folder / "part.toml"), "-o", str(folder / "k")])
        )
        said = capsys.readouterr().err
        assert status in (0, 1) and (status == 0 or "fault:" in said), damaged
        if not view:
            assert (folder / "k.PG1").exists() == (status == 0) and not list(folder.glob("*.new-*"))
