"""keld-job: what its files hold, every fault at its place, warnings of likely mistakes, and whole families only."""

import os

import numpy as np
import pytest
from keld_tools.base import atomic
from keld_tools.base.findings import Findings
from keld_tools.job import checks
from keld_tools.meshes import surface
from keld_tools.part import polymers
from keld_tools.programs import job_cli
from keld_tools.results.geometry_file import read_geometry, read_prior
from support import PART, plate, write_plate

TILTED = [[0, 0, 0], [40, 0, 0], [40, 30, 30], [0, 30, 30]]


def values_of(path):
    """The values of the lines of .PRC and .CPU, by string number."""
    lines = [line.split("=") for line in path.read_text().splitlines() if line.count("=") == 3]
    return {int(line[1].split()[0]): float(line[3]) for line in lines}


def test_a_job_holds_what_the_part_file_says(tmp_path, job):
    write_plate(tmp_path / "plate.msh", triangles=[[0, 1, 2], [0, 2, 3]], points=TILTED, s1=[4.0, 5.0])
    text = """
title = "tilted */ plate"
[mesh]
file = "plate.msh"
length_unit = "cm"
thickness_inch = 0.1
gate_at_mm = [[401, 299, 300]]
[polymer]
modulus_GPa = [9, 4]
poisson = [0.3, 0.4]
shear_modulus_MPa = 2000
expansion_um_per_m_K = [20, 60]
density_kg_m3 = 1200
[filler]
volume_percent = 20
[conditions]
melt_temperature_K = 573.15
mould_temperature_C = 90
ejection_temperature_lower_C = 120
ejection_temperature_upper_F = 230
[fields]
csv = "rows.csv"
stress1_MPa = { cell_data = "s1" }
stress2_MPa = 2
fibre_direction = [0, 1, 0]
[boundary]
fixed_nodes = [4, 1, 2]
[solver]
method = "multigrid"
cycle_limit = 77
wall_model = "wedge"
"""
    (tmp_path / "rows.csv").write_text("element,stress2_MPa,orientation\n2,-7,0.6\n1,8,0.9\n")

    status, said = job(text)

    part, findings = read_geometry(tmp_path / "j.PG1"), Findings()
    read_prior(tmp_path / "j", part, findings)
    data = part.cell_data
    assert status == 0 and findings.warnings == []
    np.testing.assert_allclose(part.points_mm, 10.0 * np.array(TILTED))
    np.testing.assert_allclose(part.thickness_mm, 2.54)
    assert part.gates.tolist() == [2]
    assert (data["stress1_MPa"].tolist(), data["stress2_MPa"].tolist()) == ([4.0, 5.0], [8.0, -7.0])
    assert data["orientation"].tolist() == [0.9, 0.6] and data["kind_fraction"].tolist() == [1.0, 1.0]
    np.testing.assert_allclose(
        data["fibre_direction"], [[0, 0.5**0.5, 0.5**0.5]] * 2, atol=1e-9
    )  # laid into the wall
    np.testing.assert_allclose(data["temperature_lower_C"], 120.0)
    np.testing.assert_allclose(data["temperature_upper_C"], 110.0)
    axes = np.loadtxt(tmp_path / "j.RS1", skiprows=2)[:, 6:].reshape(-1, 3, 3)
    np.testing.assert_allclose(axes @ axes.transpose(0, 2, 1), np.broadcast_to(np.eye(3), (2, 3, 3)), atol=1e-8)
    np.testing.assert_allclose(axes[:, 2], surface.unit_normals(part.points_mm, part.triangles), atol=1e-8)
    prc, cpu = values_of(tmp_path / "j.PRC"), values_of(tmp_path / "j.CPU")
    assert [prc[n] for n in (20002, 20011, 20012, 20013, 20014, 21001)] == [300, 1, 2, 20, 0, 23]
    assert (cpu[22002], cpu[30500], cpu[31001], cpu[31002], len(prc), len(cpu)) == (1, 77, 1, 2, 16, 12)
    assert (tmp_path / "j.BC1").read_text().split()[1:4] == ["4", "1", "2"]
    mal = {k.strip(): v.split() for k, _, v in (line.partition(" = ") for line in (tmp_path / "j.MAL").open())}
    assert mal["Modulus"] == ["2", "9e+10", "4e+10", "end"] and mal["Expansion"][1:3] == ["2e-05", "6e-05"]
    assert mal["Shear modulus"][1] == "2e+10" and mal["Specific volume"][:2] == ["1", "1.2"]


@pytest.mark.parametrize(
    "share, percent",
    [("weight_percent = 30", 100 * (30 / 2.5) / (30 / 2.5 + 70 / 1.2)), ("volume_percent = 30", 30)],
)
def test_a_filler_counts_by_volume(tmp_path, job, share, percent):
    """Of glass of 2.5 g/cm3, keld's own, in a polymer of 1.2."""
    write_plate(tmp_path / "plate.msh")
    polymer = "[polymer]\nmodulus_GPa = 2\npoisson = 0.4\nexpansion_per_K = 7e-5\ndensity_g_cm3 = 1.2\n"
    mesh = '[mesh]\nfile = "plate.msh"\nthickness_mm = 2\n'
    warm = "[conditions]\nmelt_temperature_C = 280\nmould_temperature_C = 80\nejection_temperature_C = 120\n"

    status, said = job(mesh + polymer + warm + f"[filler]\n{share}\n[fields]\nfibre_direction = [1, 0, 0]\n")
    assert status == 0, said

    prc = values_of(tmp_path / "j.PRC")
    assert (prc[20011], prc[20012]) == (1, 2) and prc[20013] == pytest.approx(percent, rel=1e-9)


def test_the_library_names_a_source_for_every_number():
    library = polymers.library()
    numbers = [
        entry
        for name in polymers.names()
        for table in (library[name], library[name].get("filler", {}))
        for entry in table.values()
        if isinstance(entry, dict) and "value" in entry
    ]

    assert len(polymers.names()) == 16 and len(numbers) == 12 * 7 + 4 * 9
    assert all(entry["source"] in library["sources"] for entry in numbers)
    for name in polymers.names():
        (along, across), shrinkage = polymers.published_shrinkage(name), library[name]["shrinkage_percent"]
        assert (
            0 < along[0] < along[1] and along[0] <= across[0] < across[1] and shrinkage["source"] in library["sources"]
        )
    assert all(source in polymers.listing() for source in library["sources"].values())


@pytest.mark.parametrize("name", polymers.names())
def test_every_material_of_the_library_makes_a_job(tmp_path, job, name):
    write_plate(tmp_path / "plate.msh")

    status, said = job(PART.replace('"PP"', f'"{name}"\n[fields]\nfibre_direction = [1, 0, 0]'))

    assert (status, said) == (0, "")
    if name.endswith("GF30"):
        np.testing.assert_allclose(np.loadtxt(tmp_path / "j.RS1", skiprows=2)[:, 5], 0.65)  # not full alignment


@pytest.mark.parametrize(
    "name, key, low, high",
    [
        ("PC", "poisson", 0.37, 0.38),
        ("PP", "expansion_per_K", 1.4e-4, 1.6e-4),  # over 23 to 80 C
        ("PA66-GF30", "expansion_per_K", [22e-6, 80e-6], [28e-6, 100e-6]),
        ("PA6-GF30", "expansion_per_K", [22e-6, 80e-6], [28e-6, 100e-6]),
        ("PBT-GF30", "expansion_per_K", [22e-6, 80e-6], [28e-6, 100e-6]),
    ],
)
def test_values_of_the_library_lie_where_data_sheets_have_them(name, key, low, high):
    value = np.array(polymers.library()[name][key]["value"])

    assert (low <= value).all() and (value <= high).all()


def test_a_tensor_of_cell_data_becomes_direction_and_orientation(tmp_path, job):
    """Nine values row by row; 0.7 along (0, 1, 1), 0.3 along x in the tilted plate."""
    u, v = np.array([0, 1, 1]) / 2**0.5, np.array([1, 0, 0])
    tensor = (0.7 * np.outer(u, u) + 0.3 * np.outer(v, v)).ravel()
    write_plate(tmp_path / "plate.msh", triangles=[[0, 1, 2], [0, 2, 3]], points=TILTED, A=[tensor, tensor])
    text = PART + '[fields]\norientation_tensor = { cell_data = "A" }\n'

    assert job(text)[0] == 0
    assert "a tensor says both" in job(text + "orientation = 0.6\n")[1]

    rows = np.loadtxt(tmp_path / "j.RS1", skiprows=2)
    np.testing.assert_allclose(rows[:, 5], 0.7, atol=1e-8)
    np.testing.assert_allclose(np.abs(rows[:, 6:9] @ u), 1.0, atol=1e-8)


FAULTS = {
    "unknown key": (
        "thickness_mm = 2",
        "thicknes_mm = 2",
        ["part.toml:4: [mesh] thicknes_mm", "did you mean thickness_mm"],
    ),
    "no unit": ("thickness_mm = 2", "thickness = 2", ["part.toml:4: [mesh] thickness: has no unit"]),
    "wrong type": ('name = "PP"', "name = 5", ["part.toml:6: [polymer] name: expected"]),
    "not in the library": ('"PP"', '"XX"', ["part.toml:6:", "which has PP, "]),
    "nearly in the library": ('"PP"', '"pa66gf30"', ["part.toml:6:", "nearest: PA66-GF30", "1 fault;"]),
    "no mesh's name": ("plate.msh", "", ["part.toml:3: [mesh] file: has no file", "1 fault;"]),
    "a folder": ('"plate.msh"', '"."', ["1 fault;"]),
    "a folder with a name": ("plate.msh", "../", ["1 fault;"]),
    "expansion twice": (
        '"PP"',
        '"PP"\nexpansion_per_K = 1e-4\nshrinkage_percent = 1.5',
        ["part.toml:8: [polymer] shrinkage_percent: both an expansion", "1 fault;"],
    ),
    "nothing shrinks": (
        'name = "PP"\n[conditions]\nambient_temperature_C = 20',
        'name = "PP"\nshrinkage_percent = 1.5\n[conditions]\nambient_temperature_C = 95',
        ["needs an ejection temperature above the ambient one"],
    ),
    "no direction": (
        '"PP"',
        '"PP"\nshrinkage_percent = [1.5, 1.8]\n[fields]\norientation = 0.51',
        ["the mean orientation of 0.51 has next to no direction"],
    ),
    "across below along": (
        '"PP"',
        '"PP"\nshrinkage_percent = [1.8, 1.5]',
        ["along the fibres is above the one across"],
    ),
    "out of range": ('"PP"', '"PP"\npoisson = 0.5', ["part.toml:7: [polymer] poisson: 0.5 is out of range"]),
    "given twice": (
        "ambient_temperature_C = 20",
        "ambient_temperature_C = 20\nambient_temperature_K = 300",
        ["second time"],
    ),
    "no TOML": ("[mesh]", "[mesh", ["part.toml: is no TOML", "line 2"]),
    "no mesh": ("plate.msh", "none.msh", ["none.msh: there is no such mesh file", "part.toml:3"]),
    "no thickness": ("thickness_mm = 2", "", ["12 elements (1, 2, 3, 4, 5, ...) without a thickness"]),
    "no group": ("thickness_mm = 2", "thickness_by_group_mm = { rib = 1 }", ["no group 'rib'; it has 1, wall"]),
    "negative thickness": ("thickness_mm = 2", "thickness_mm = -2", ["above 0"]),
    "no cell data": ("[polymer]", '[fields]\nstress1_MPa = { cell_data = "s" }\n[polymer]', ["no cell data 's'"]),
    "shear missing": ('"PP"', '"PP"\nmodulus_MPa = [9000, 4000]', ["no shear_modulus_MPa"]),
    "not definite": (
        '"PP"',
        '"PP"\nmodulus_MPa = [400, 399]\nshear_modulus_MPa = 90\npoisson = [-0.95, 0.4]',
        ["isn't positive definite"],
    ),
    "two sides missing": (
        "ambient_temperature_C = 20",
        "ejection_temperature_lower_C = 90",
        ["ejection_temperature_upper_C is missing"],
    ),
    "boundary in a line": (
        "[polymer]",
        "[boundary]\nfixed_nodes = [1, 2, 3]\n[polymer]",
        ["[boundary]", "on one line"],
    ),
    "boundary twice": ("[polymer]", "[boundary]\nfixed_nodes = [1, 2, 2]\n[polymer]", ["three different nodes"]),
    "no such node": ("[polymer]", "[boundary]\nfixed_nodes = [1, 2, 99]\n[polymer]", ["boundary node 99 is no node"]),
    "point far away": (
        "[polymer]",
        "[boundary]\nfixed_at_mm = [[0,0,0],[40,0,0],[0,0,90]]\n[polymer]",
        ["from the nearest node"],
    ),
    "wall model": ("[polymer]", '[solver]\nwall_model = "solid"\n[polymer]', ['expected "facet" or "wedge"']),
    "cycles": ("[polymer]", "[solver]\ncycle_limit = 0\n[polymer]", ["[solver] cycle_limit: 0"]),
    "section no table": ("[mesh]", "solver = 3\n[mesh]", ["[solver]: expected a table"]),
    "second polymer": ("[conditions]", '[second_polymer]\nname = "PC"\n[conditions]', ["second_melt_temperature"]),
    "infinite": ("ambient_temperature_C = 20", "ambient_temperature_C = inf", ["expected finite numbers"]),
    "several at once": (
        '"PP"\n[conditions]',
        '"XX"\n[solver]\nmethod = "magic"\n[conditions]\nmelt_temperature_C = "hot"',
        ["'XX'", "'magic'", "'hot'", "nothing is written"],
    ),
}


@pytest.mark.parametrize("old, new, words", FAULTS.values(), ids=FAULTS)
def test_faults_are_told_and_nothing_is_written(tmp_path, job, old, new, words):
    write_plate(tmp_path / "plate.msh")
    assert old in PART

    status, said = job(PART.replace(old, new))

    assert status == 1 and list(tmp_path.glob("j.*")) == []
    for word in words:
        assert word in said


CSV = {
    "head": ("nr,stress1_MPa\n1,2\n", "'nr' is not known"),
    "no element": ("stress1_MPa\n1\n", "no column element"),
    "text": ("element,stress1_MPa\n1,2\n2,x\n", "rows.csv:3: expected a finite number, found 'x'"),
    "short": ("element,stress1_MPa\n1\n", "rows.csv:2"),
    "strange": ("element,stress1_MPa\n99,1\n", "1 row (99) for elements"),
    "twice": ("element,stress1_MPa\n1,1\n1,2\n", "two rows"),
    "few": ("element,stress1_MPa\n1,1\n", "no value for 11 elements"),
    "empty": ("", "is empty"),
    "range": ("element,orientation\n" + "".join(f"{i},2\n" for i in range(1, 13)), "must be 0 to 1"),
}


@pytest.mark.parametrize("rows, words", CSV.values(), ids=CSV)
def test_faults_of_a_csv(tmp_path, job, rows, words):
    write_plate(tmp_path / "plate.msh")
    (tmp_path / "rows.csv").write_text(rows)

    status, said = job(PART + '[fields]\ncsv = "rows.csv"\n')

    assert status == 1 and words in said and list(tmp_path.glob("j.*")) == []


WARNINGS = {
    "thick wall": (PART.replace("_mm = 2", "_mm = 12"), {}, "thicker than a quarter of the part"),
    "length unit": (PART.replace("thickness_mm", 'length_unit = "m"\nthickness_mm'), {}, "40000 mm"),
    "small": (PART, {"triangles": [[0, 1, 2]], "points": [[0, 0, 0], [4.9, 0, 0], [0, 4.9, 0]]}, "below the usual 5"),
    "large": (PART, {"triangles": [[0, 1, 2]], "points": [[0, 0, 0], [2001, 0, 0], [0, 900, 0]]}, "beyond the usual"),
    "modulus": (PART.replace('"PP"', '"PP"\nmodulus_MPa = 2'), {}, "modulus of 2 MPa"),
    "expansion": (PART.replace('"PP"', '"PP"\nexpansion_per_K = 70'), {}, "expansion of 70 1/K"),
    "density": (PART.replace('"PP"', '"PP"\ndensity_g_cm3 = 905'), {}, "density of 905"),
    "cold": (PART.replace("= 20", "= 95"), {}, "nothing shrinks"),
    "kelvin as celsius": (PART + "melt_temperature_C = 503\n", {}, "melt temperature of 503 C"),
    "stress": (PART + "[fields]\nstress1_MPa = 6e6\n", {}, "above any polymer's strength"),
    "order": (
        PART.replace('"PP"', '"PP"\nexpansion_per_K = [9e-5, 3e-5]'),
        {},
        "KELD puts two entries in rising order",
    ),
    "no direction": (PART.replace('"PP"', '"PA66-GF30"'), {}, "global x axis"),
    "duplicates": (PART, {"triangles": [[0, 1, 2], [0, 2, 3], [2, 0, 1]]}, "1 duplicate triangle (3)"),
    "two bodies": (
        PART,
        {"triangles": [[0, 1, 2], [3, 4, 5]], "points": [*TILTED[:3], [0, 0, 9], [40, 0, 9], [0, 9, 9]]},
        "2 bodies that share no node",
    ),
    "hinge": (PART, {"triangles": [[0, 1, 2], [2, 3, 4]], "points": [*TILTED, [0, 60, 30]]}, "2 patches"),
    "turned": (PART, {"triangles": [[0, 1, 2], [0, 3, 2]]}, "turned the opposite way at 1 edges"),
    "flat": (
        PART,
        {"triangles": [[0, 1, 2], [0, 1, 3]], "points": [[0, 0, 0], [40, 0, 0], [0, 40, 0], [20, 0, 0]]},
        "1 triangle (2) so thin that the element's determinant fails",
    ),
    "slender": (
        PART,
        {"triangles": [[0, 1, 2], [0, 1, 3]], "points": [[0, 0, 0], [40, 0, 0], [0, 40, 0], [20, 1e-3, 0]]},
        "height below 0.0001",
    ),
    "collapsed": (PART, {"triangles": [[0, 1, 2], [0, 2, 2]]}, "a corner twice left out"),
    "closed skin": (
        PART,
        {
            "triangles": [[0, 2, 1], [0, 1, 3], [1, 2, 3], [2, 0, 3]],
            "points": [[0, 0, 0], [40, 0, 0], [0, 40, 0], [0, 0, 40]],
        },
        "closed skin",
    ),
}


@pytest.mark.parametrize("text, mesh, words", WARNINGS.values(), ids=WARNINGS)
def test_likely_mistakes_are_warned_of(tmp_path, job, text, mesh, words):
    write_plate(tmp_path / "plate.msh", **({"points": TILTED} | mesh if mesh else {}))

    status, said = job(text)

    assert status == 0 and words in said and (tmp_path / "j.PG1").exists()


def test_triangles_are_turned_on_request(tmp_path, job):
    write_plate(tmp_path / "plate.msh", **({"points": TILTED} | WARNINGS["turned"][1]))

    status, said = job(PART, "--orient")

    normals = surface.unit_normals((part := read_geometry(tmp_path / "j.PG1")).points_mm, part.triangles)
    assert (status, said) == (0, "") and normals[0] @ normals[1] > 0.9


@pytest.mark.parametrize("mark", ["", "\ufeff"], ids=["plain", "byte order mark"])
def test_a_plain_plate_has_no_warning(tmp_path, job, mark):
    write_plate(tmp_path / "plate.msh")

    assert job(mark + PART) == (0, "")


@pytest.mark.parametrize(
    "model, wall, words",
    [
        ("wedge", 2, "too small"),
        ("wedge", 4, "suit best, where"),
        ("wedge", 10, "too large"),
        ("facet", 2, "facets suit"),
        ("facet", 1, "a finer mesh is safer"),
    ],
)
def test_the_summary_tells_size_wall_and_edge_over_wall(tmp_path, capsys, model, wall, words):
    """Triangles of sides 10, 10 and 14.14 mm."""
    write_plate(tmp_path / "plate.msh")
    solver = "" if model == "facet" else f'\n[solver]\nwall_model = "{model}"\n'  # the facet is the default
    (tmp_path / "part.toml").write_text(PART.replace("_mm = 2", f"_mm = {wall}") + solver)

    assert job_cli.main([str(tmp_path / "part.toml")]) == 0

    said = capsys.readouterr().out
    assert f"size: 40 x 30 x 0 mm, wall {wall} mm\n" in said and "24 triangles" in said
    assert f"mean edge over wall thickness: {(20 + 200**0.5) / 3 / wall:.3g}; " in said and words in said
    assert f"\nwalls: {model}\n" in said


def test_determinant_is_twice_the_area_times_half_the_wall():
    corners = np.array([[[0.0, 0, 0], [3, 0, 0], [0, 4, 0]], [[0, 0, 0], [1, 0, 0], [2, 0, 0]]])

    determinants = checks.wedge_determinants(corners, np.array([0.2, 0.2]))

    np.testing.assert_allclose(determinants, [[12 * 0.1] * 6, [0.0] * 6], rtol=1e-14)


def test_a_family_replaces_its_own_and_no_other(tmp_path, job):
    write_plate(tmp_path / "plate.msh")
    assert (
        job(PART + "ejection_temperature_lower_C = 90\nejection_temperature_upper_C = 80\n[fields]\nstress1_MPa = 1\n")[
            0
        ]
        == 0
    )
    assert job(PART)[0] == 0
    files = {p.name for p in tmp_path.glob("j.*")}
    for suffix in (".PG1", ".CT1", ".BC1"):  # one that would be replaced, two that would be removed
        (tmp_path / f"j{suffix}").write_text("/* another application's */\n")

        status, said = job(PART)

        assert status == 1 and f"j{suffix}: is there and not made by" in said and "--overwrite" in said
        assert (tmp_path / f"j{suffix}").read_text().startswith("/* another")
        assert job(PART, "--overwrite")[0] == 0
    assert files == {"j.CPU", "j.MAL", "j.PG1", "j.PRC", "j.PT1", "j.origin.json"}  # no .RS1 or .CT1 of the first one


@pytest.mark.parametrize("blocked", [".PG1", ".MAL"])
def test_a_write_that_fails_leaves_the_old_family(tmp_path, blocked, monkeypatch):
    for suffix in (".PG1", ".MAL", ".RS1"):
        (tmp_path / f"j{suffix}").write_text("old")
    rename = os.rename

    def failing(a, b):
        if str(b).endswith(blocked) and ".new-" in str(a):
            raise OSError(28, "No space left on device")
        rename(a, b)

    monkeypatch.setattr(os, "rename", failing)
    with pytest.raises(OSError):
        atomic.write_family(tmp_path / "j", {".PG1": b"new", ".MAL": b"new"}, (".RS1",), last=".PG1")

    assert {p.name: p.read_text() for p in tmp_path.iterdir()} == {"j.PG1": "old", "j.MAL": "old", "j.RS1": "old"}


@pytest.mark.parametrize(
    "words, said",
    [
        (
            [],
            "a.msh: 12 elements (1, 2, 3, 4, 5, ...) without a thickness; give thickness_mm in [mesh] (or --thickness)",
        ),
        (["--thickness", "-1"], "above 0"),
        (["--thickness", "2", "--repair", "0"], "--repair 0 isn't above 0"),
        (["--thickness", "2", "--polymer", "X"], "not in the library"),
    ],
)
def test_a_first_try_tells_what_it_needs(tmp_path, capsys, words, said):
    write_plate(tmp_path / "a.msh")
    base = ["-o", str(tmp_path / "j")]

    assert job_cli.main([str(tmp_path / "a.msh"), *words, *base]) == 1
    assert said in capsys.readouterr().err and not (tmp_path / "j.PG1").exists()
    assert job_cli.main([str(tmp_path / "a.msh"), "--thickness", "2", *base]) == 0
    assert len(read_geometry(tmp_path / "j.PG1").triangles) == 2 * len(plate()[1])
