"""Meshes of every format: the same plate must come out with the same area, thickness and numbers."""

import re

import meshio
import numpy as np
import pytest
from keld_tools.base.findings import BadFile, Findings
from keld_tools.meshes import formats, mesh_input, surface
from keld_tools.part.part_file import MeshRequest
from support import mutations, plate, write_plate

POINTS, QUADS = plate()


def nastran(form):
    """A deck with node n at 10 n, element e at 100 + e, T = 1.5 by PSHELL 7; 3.0 by corners at the last but for large."""
    lines = ["SOL 101", "BEGIN BULK", "$ comment"]
    for n, p in enumerate(POINTS, 1):
        if form == "free":
            lines.append(f"GRID,{10 * n},,{p[0]},{p[1]},{p[2]}")
        elif form == "large":
            lines += [f"GRID*   {10 * n:16d}{'':16}{p[0]:16.8f}{p[1]:16.8f}", f"*       {p[2]:16.8f}"]
        else:
            lines.append(f"GRID    {10 * n:8d}{'':8}{p[0] / 10:6.3f}+1{p[1] / 10:6.3f}+1{p[2]:8.3f}")
    for e, q in enumerate(QUADS, 101):
        nodes = [10 * (n + 1) for n in q]
        last = e == 100 + len(QUADS)
        if form == "free":
            lines.append(
                "CQUAD4," + ",".join(map(str, [e, 7, *nodes])) + ",0.,0." + (",+\n+,,,3.,3.,3.,3." if last else "")
            )
        elif form == "large":
            lines += [f"CQUAD4* {e:16d}{7:16d}{nodes[0]:16d}{nodes[1]:16d}", f"*       {nodes[2]:16d}{nodes[3]:16d}"]
        else:
            lines.append(
                f"CQUAD4  {e:8d}{7:8d}" + "".join(f"{n:8d}" for n in nodes) + ("     0.0     0.0" if last else "")
            )
            lines += [f"{'':24}" + "     3.0" * 4] if last else []
    thickness = {
        "free": "PSHELL,7,1,1.5",
        "large": f"PSHELL* {7:16d}{1:16d}{'1.5':>16}",
        "small": "PSHELL         7       1     1.5",
    }[form]
    return "\n".join([*lines, thickness, "ENDDATA", "garbage behind the end"]) + "\n"


def abaqus(quad="S4", tail=""):
    lines = ["*Heading", "** comment", "*Node, nset=all"]
    lines += [f"{10 * n}, {p[0]}, {p[1]}, {p[2]}" for n, p in enumerate(POINTS, 1)]
    for part, name in ((QUADS[:-1], "WALL"), (QUADS[-1:], "END")):
        lines.append(f"*ELEMENT, type={quad.lower()}, ELSET={name}")
        first = 101 if name == "WALL" else 100 + len(QUADS)
        lines += [f"{e}, " + ", ".join(str(10 * (n + 1)) for n in q) for e, q in enumerate(part, first)]
    lines += [
        "*ELSET, ELSET=both",
        "wall, end",
        "*Shell section, elset=both,",
        " material=m",
        "1.5",
        "*SHELL SECTION, ELSET=End",
        "3.0, 5",
    ]
    return "\n".join(lines) + "\n" + tail


def halves():
    return np.concatenate([QUADS[:, :3], QUADS[:, [0, 2, 3]]])


def stl_text():
    """Behind a blank line, in upper case."""
    lines = ["", "SOLID PLATE"]
    for corners in POINTS[halves()]:
        lines += ["FACET NORMAL 0 0 1", "OUTER LOOP", *(f"VERTEX {x} {y} {z:e}" for x, y, z in corners)]
        lines += ["ENDLOOP", "ENDFACET"]
    return "\n".join([*lines, "ENDSOLID PLATE", ""])


def stl_with_more_bytes(path):
    """A binary one that begins as a text does, with bytes behind its triangles."""
    write_plate(path, "stl", True, triangles=halves())
    path.write_bytes(b"solid".ljust(80) + path.read_bytes()[80:] + b"more")


def obj():
    faces = "".join("f " + " ".join(f"{n + 1}/1/1" for n in q) + "\n" for q in QUADS[:-1])
    last = "f " + " ".join(f"{n - len(POINTS)}//1" for n in QUADS[-1]) + "\n"  # counted back
    return "vn 0 0 1\nvt 0 0\n" + "".join(f"v {x} {y} {z}\n" for x, y, z in POINTS) + "g wall\n" + faces + last


def poly_data(path, binary, compression):
    """A grid as meshio writes it, renamed: PolyData holds the same arrays under other names."""
    meshio.vtu.write(path, meshio.Mesh(POINTS, [("quad", QUADS)]), binary=binary, compression=compression)
    text = path.read_text().replace("UnstructuredGrid", "PolyData").replace("NumberOfCells", "NumberOfPolys")
    path.write_text(re.sub(r"(</?)Cells>", r"\1Polys>", text))


def universal(code=94, quads=QUADS, more=""):
    lines = ["    -1", "  2411"]
    for n, p in enumerate(POINTS, 1):
        lines += [f"{n:10d}         1         1        11", "".join(f"{c:25.16E}".replace("E", "D") for c in p)]
    lines += ["    -1", "    -1", "  2412"]
    for e, q in enumerate(quads, 1):
        lines += [f"{e:10d}{code:10d}         1         1         7{len(q):10d}", "".join(f"{n + 1:10d}" for n in q)]
    return "\n".join([*lines, "    -1", more])


def read(path, **request):
    findings = Findings()
    mesh = mesh_input.build(formats.read_raw(path), MeshRequest(path=path, **request), findings)
    return mesh, findings


@pytest.mark.parametrize(
    "name, write",
    [
        ("a.msh", lambda p: write_plate(p)),
        ("a.msh", lambda p: write_plate(p, "gmsh", True)),
        ("a.vtu", lambda p: write_plate(p, "vtu")),
        ("a.stl", lambda p: write_plate(p, "stl", True, triangles=np.concatenate([QUADS[:, :3], QUADS[:, [0, 2, 3]]]))),
        ("a.bdf", lambda p: p.write_text(nastran("small"))),
        ("a.nas", lambda p: p.write_text(nastran("large"))),
        ("a.dat", lambda p: p.write_text(nastran("free"))),
        ("a.inp", lambda p: p.write_text(abaqus())),
        ("b.msh", lambda p: write_plate(p, "gmsh")),
        ("c.msh", lambda p: write_plate(p, "gmsh", True)),
        ("b.stl", lambda p: p.write_text(stl_text())),
        ("c.stl", lambda p: p.write_text(stl_text().lower())),
        ("d.stl", stl_with_more_bytes),
        ("a.obj", lambda p: p.write_text(obj())),
        ("a.vtp", lambda p: poly_data(p, False, None)),
        ("b.vtp", lambda p: poly_data(p, True, None)),
        ("c.vtp", lambda p: poly_data(p, True, "zlib")),
        ("a.unv", lambda p: p.write_text(universal())),
    ],
)
def test_every_format_gives_the_same_plate(tmp_path, name, write):
    write(tmp_path / name)

    mesh, findings = read(tmp_path / name)

    cross = surface.crosses(mesh.points_mm, mesh.triangles)
    assert len(mesh.triangles) == 24 and len(mesh.points_mm) == 20
    assert cross[:, 2].sum() / 2 == pytest.approx(1200.0) and (cross[:, 2] > 0).all()
    assert findings.warnings == findings.faults == []
    if name.endswith((".bdf", ".dat", ".nas", ".inp")):
        assert sorted(set(mesh.node_numbers)) == list(range(10, 201, 10))
        assert sorted(set(mesh.numbers)) == list(range(101, 113))
        expected = [1.5] * 11 + [1.5 if name.endswith(".nas") else 3.0]
        assert mesh.card_thickness_mm.tolist() == expected


@pytest.mark.parametrize(
    "corners, expected",
    [
        # the shorter diagonal is 2-4
        ([[0, 0], [4, 0], [5, 3], [1, 2]], {(0, 1, 3), (1, 2, 3)}),
        # equal diagonals: 1-3
        ([[0, 0], [1, 0], [1, 1], [0, 1]], {(0, 1, 2), (0, 2, 3)}),
        # re-entrant corner 4: the shorter diagonal 1-3 (3.9 against 4.1) would lie outside
        ([[0, 0], [4.2, -0.5], [0.0, 3.9], [0.5, 1.6]], {(0, 1, 3), (1, 2, 3)}),
    ],
)
def test_quadrilaterals_are_cut_along_the_shorter_diagonal_inside(corners, expected):
    points = np.column_stack([np.array(corners, float), np.zeros(4)])

    triangles, source = mesh_input.cut(points, np.array([[0, 1, 2, 3]]))

    assert {tuple(sorted(t)) for t in triangles.tolist()} == expected and source.tolist() == [0, 0]


def test_second_order_by_corners_runners_and_loose_nodes(tmp_path):
    points = [[0, 0, 0], [10, 0, 0], [0, 10, 0], [5, 0, 0], [5, 5, 0], [0, 5, 0], [0, 0, 9], [1, 1, 1]]
    mesh = meshio.Mesh(np.array(points, float), [("triangle6", [[0, 1, 2, 3, 4, 5]]), ("line", [[0, 1], [0, 6]])])
    meshio.write(tmp_path / "a.msh", mesh, file_format="gmsh22", binary=False)

    built, findings = read(tmp_path / "a.msh")

    assert built.triangles.tolist() == [[0, 1, 2]] and built.runners.tolist() == [
        [0, 3]
    ]  # 0-1 is an edge, 0-6 a runner
    assert built.node_numbers.tolist() == [1, 2, 3, 7]
    assert len(findings.warnings) == 1 and "1 loose node (8)" in findings.warnings[0]


def test_card_decks_give_runner_diameters_and_leave_solids_out(tmp_path):
    deck = nastran("free").replace(
        "ENDDATA",
        "GRID,900,,0.,0.,50.\nCBAR,5,9,10,900,1.,0.,0.\nPBARL,9,1,,ROD,,,,,+\n"
        "+,2.5\nCTETRA,6,1,10,20,60,900\nENDDATA",
    )
    (tmp_path / "a.bdf").write_text(deck)
    inp = abaqus(
        tail="*NODE\n900,0,0,50\n*ELEMENT,TYPE=B31,ELSET=R\n5,10,900\n*BEAM SECTION,ELSET=R,SECTION=CIRC\n2.5\n"
    )
    (tmp_path / "a.inp").write_text(inp)

    nas, findings = read(tmp_path / "a.bdf", leave_out=True)
    abq, _ = read(tmp_path / "a.inp")

    assert nas.diameter_mm.tolist() == abq.diameter_mm.tolist() == [5.0]
    assert nas.notes == ["elements left out: 1 of kind CTETRA"] and findings.faults == []


def test_merging_and_turning(tmp_path):
    points = [[0, 0, 0], [10, 0, 0], [0, 10, 0], [10, 1e-4, 0], [1e-4, 10, 0], [10, 10, 0]]
    write_plate(
        tmp_path / "a.msh", triangles=[[0, 1, 2], [3, 4, 5]], points=points
    )  # the second is turned the other way

    mesh, _ = read(tmp_path / "a.msh", merge_tolerance_mm=1e-3, orient=True)

    assert len(mesh.points_mm) == 4
    assert (surface.unit_normals(mesh.points_mm, mesh.triangles)[:, 2] == [1.0, 1.0]).all()


@pytest.mark.parametrize(
    "name, text, words",
    [
        ("a.bdf", "GRID,1,,0.,0.,zero\n", "a.bdf:1: card GRID"),
        ("a.bdf", "GRID,1,5,0.,0.,0.\n", "coordinate system"),
        ("a.bdf", "GRID,1,,0.,0.,0.\nCTRIA3,8,1,1,2,3\n", "element 8 has the node 2"),
        ("a.bdf", "GRID,1,,0.,0.,0.\nGRID,1,,0.,0.,1.\n", "given twice"),
        ("a.inp", "*NODE\n1,0,0,0\n*ELEMENT,TYPE=S3\n1,1,x,3\n", "a.inp:4:"),
        ("a.inp", "*NODE\n1,0,0,0\n*ELEMENT,TYPE=S3\n1,1,2,3\n", "element 1 has the node 2"),
        ("a.inp", "*INCLUDE, INPUT=a.inp\n", "includes itself"),
        ("a.inp", "*INCLUDE, INPUT=none.inp\n", "a.inp:1: .*'none.inp' that it includes isn't there"),
        ("a.inp", "*ASSEMBLY\n*INSTANCE, NAME=i, PART=p\n*END INSTANCE\n", "instance i is of the part 'p'"),
        ("a.inp", "*NODE\n1,0,0,0\n1,1,0,0\n", "given twice, 1 among them"),
        ("a.inp", "*ELGEN\n1,5\n", "a.inp:1: .*ELGEN in this form"),
        ("a.inp", "*NODE, SYSTEM=C\n1,5,90\n", "a.inp:1: .*NODE in this form"),
        ("a.unv", "    -1\n   164\n 1 m 2\n 0.0\n    -1\n", "a.unv:2: the data set 164"),
        ("a.inp", "*NODE, INPUT=none.inp\n", "a.inp:1: .*'none.inp' that it includes isn't there"),
        (
            "a.bdf",
            "GRID,1,,0.,0.,0.\nINCLUDE 'none.bdf'\n",
            "a.bdf:2: the file 'none.bdf' that it includes isn't there",
        ),
        ("a.bdf", "INCLUDE a.bdf\n", "includes itself"),
        ("a.msh", "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n1\n", "can't be read as a mesh"),
        (
            "a.msh",
            "$MeshFormat\n4.1 0 8\n$EndMeshFormat\n$Nodes\n1 4 1 4\n2 1 0 4\n1\n$EndNodes\n$Elements\n0 0 0 0\n$EndElements\n",
            "4.1: ends too early",
        ),
        ("a.stl", "solid\n", "is neither a text STL nor a binary one"),
        ("a.stl", "\n", "is empty"),
        ("a.stl", stl_text()[:400], "is cut off or damaged: 9 corners in 2 whole triangles"),
        ("a.stl", "x" * 80 + "\x05\0\0\0" + "\0" * 100, "is cut off: 5 triangles are announced, 2 are there"),
        ("a.obj", "v 0 0 0\nf 1 2\n", "a.obj:2: .*a face of 2 corners"),
        ("a.obj", "v 0 0 0\nf 1 2 3\n", "has a node that isn't in the file"),
        ("a.vtp", "<VTKFile type='ImageData'></VTKFile>", "it holds ImageData"),
        ("a.unv", "    -1\n  2411\n", "a.unv: isn't a whole universal file"),
        ("a.unv", "    -1\n  2412\n  1 94 1 1 7 4\n 1 2\n    -1\n", "a.unv:2: the data set 2412"),
        ("a.xyz", "", r"the ending '.xyz' isn't one of Gmsh \(.msh\), STL"),
    ],
)
def test_damaged_meshes_are_named(tmp_path, name, text, words):
    (tmp_path / name).write_text(text)

    with pytest.raises(BadFile, match=words):
        read(tmp_path / name)


def nine_nodes():
    """The plate's nodes in a finer grid as one 9-node quadrilateral (12 x 9 mm), with a triangle of six nodes."""
    x, y = np.meshgrid([0.0, 6.0, 12.0], [0.0, 4.5, 9.0], indexing="ij")
    points = np.column_stack([x.ravel(), y.ravel(), 0 * x.ravel()])
    return points, [0, 6, 8, 2, 3, 7, 5, 1, 4], [6, 8, 0, 7, 4, 3]


HIGHER = {
    ".bdf": lambda p, q, t: "".join(f"GRID,{n},,{x},{y},{z}\n" for n, (x, y, z) in enumerate(p, 1))
    + "CQUAD,1,1," + ",".join(str(n + 1) for n in q[:6]) + "\n,"  + ",".join(str(n + 1) for n in q[6:]) + "\n"
    + "CTRIA6,2,1," + ",".join(str(n + 1) for n in t) + "\n",
    ".inp": lambda p, q, t: "*NODE\n" + "".join(f"{n},{x},{y},{z}\n" for n, (x, y, z) in enumerate(p, 1))
    + "*ELEMENT,TYPE=S9R5\n1," + ",".join(str(n + 1) for n in q) + "\n*ELEMENT,TYPE=STRI65\n2,"
    + ",".join(str(n + 1) for n in t) + "\n",
    ".vtu": lambda p, q, t: meshio.Mesh(p, [("quad9", [q]), ("triangle6", [t])]),
    ".msh": lambda p, q, t: meshio.Mesh(p, [("quad9", [q]), ("triangle6", [t])]),
}  # fmt: skip


@pytest.mark.parametrize("suffix", HIGHER)
def test_higher_elements_are_taken_by_their_corners_and_counted(tmp_path, suffix):
    made = HIGHER[suffix](*nine_nodes())
    path = tmp_path / f"a{suffix}"
    path.write_text(made) if isinstance(made, str) else made.write(
        path, file_format="gmsh22" if suffix == ".msh" else None
    )

    mesh, findings = read(path)

    area = surface.crosses(mesh.points_mm, mesh.triangles)[:, 2] / 2
    assert np.abs(area).tolist() == [54.0] * 3 and findings.faults == findings.warnings == []
    assert len(mesh.notes) == 2 and all(note.startswith("1 of kind ") for note in mesh.notes)


LEFT_OUT = {
    "a.bdf": (lambda: nastran("free").replace("ENDDATA", "RBE2,9,10,123,20,30\nCELAS1,11,1,10,1,20,1\nCONM2,12,10\n"), 2),
    "a.inp": (lambda: abaqus(tail="*ELEMENT,TYPE=CONN3D2\n900,10,20\n*ELEMENT,TYPE=MASS\n901,10\n"), 1),
    "a.unv": (lambda: universal(115, [[0, 1, 2, 3, 4, 5, 6, 7]]), 1),
}  # fmt: skip


@pytest.mark.parametrize("name", LEFT_OUT)
def test_elements_that_can_be_no_wall_are_a_fault_unless_left_out_on_request(tmp_path, name):
    text, kinds = LEFT_OUT[name]
    (tmp_path / name).write_text(text())

    _, findings = read(tmp_path / name)
    mesh, asked = read(tmp_path / name, leave_out=True)

    assert len(findings.faults) == 1 and findings.faults[0].count("1 of kind") == kinds
    assert asked.faults == [] and mesh.notes[0].count("1 of kind") == kinds


def test_decks_are_read_with_the_files_that_they_include(tmp_path):
    """The nodes, the elements and the last line lie in files of their own, one in a folder."""
    (tmp_path / "more").mkdir()
    bulk = nastran("free").splitlines(keepends=True)
    first = next(i for i, line in enumerate(bulk) if line.startswith("CQUAD4"))
    (tmp_path / "more/grid.bdf").write_text("".join(bulk[3:first]) + "include 'last one.bdf'\n")
    (tmp_path / "more/last one.bdf").write_text(bulk[-3])
    (tmp_path / "a.bdf").write_text("SOL 101\nBEGIN BULK\nINCLUDE 'more/\n  grid.bdf'\n" + "".join(bulk[first:-3]))
    deck = abaqus().split("*")
    nodes = next(part for part in deck if part.startswith("Node"))
    (tmp_path / "more/nodes.txt").write_text(nodes.split("\n", 1)[1])
    (tmp_path / "more/rest.inp").write_text("*" + "*".join(deck[deck.index(nodes) + 1 :]))
    (tmp_path / "a.inp").write_text('*NODE, INPUT="more/nodes.txt"\n*Include, input=more/rest.inp\n')

    for name in ("a.bdf", "a.inp"):
        mesh, findings = read(tmp_path / name)

        assert len(mesh.triangles) == 24 and findings.faults == findings.warnings == []
        assert mesh.card_thickness_mm.tolist() == [1.5] * 11 + [3.0]


def test_an_assembly_may_have_reference_points(tmp_path):
    text = abaqus().replace("*Node", "*PART, NAME=p\n*Node", 1)
    text += "*End Part\n*Assembly, name=A\n*Instance, name=p-1, part=p\n*End Instance\n*Node\n10, 99., 99., 99.\n"
    (tmp_path / "a.inp").write_text(text + "*End Assembly\n")

    mesh, findings = read(tmp_path / "a.inp")

    assert len(mesh.points_mm) == 20 and mesh.points_mm.max() == 40.0 and findings.faults == findings.warnings == []


def test_the_instance_stands_where_the_assembly_puts_it(tmp_path):
    """Shifted by (1, 2, 3), then a quarter turn about the line x = 1, y = 2 along z: (x, y, 0) -> (1 - y, 2 + x, 3)."""
    text = abaqus().replace("*Node", "*PART, NAME=p\n*Node", 1)
    text += "*End Part\n*Assembly, name=A\n*Instance, name=p-1, part=p\n1., 2., 3.\n1., 2., 0., 1., 2., 5., 90.\n"
    (tmp_path / "a.inp").write_text(text + "*End Instance\n*End Assembly\n")

    mesh, _ = read(tmp_path / "a.inp")

    expected = np.column_stack([1 - POINTS[:, 1], 2 + POINTS[:, 0], 3 + POINTS[:, 2]])
    np.testing.assert_allclose(mesh.points_mm, expected, atol=1e-12)


ASSEMBLY = """*PART, NAME=wall
*NODE
1, 0, 0, 0
2, 10, 0, 0
3, 10, 10, 0
4, 0, 10, 0
*ELEMENT, TYPE=S3, ELSET=first
5, 1, 2, 3
*ELEMENT, TYPE=S3
6, 1, 3, 4
*SHELL SECTION, ELSET=first
2.5
*END PART
*PART, NAME=rib
*NODE
1, 0, 0, 0
2, 5, 0, 0
3, 0, 5, 0
*ELEMENT, TYPE=S3, ELSET=all
5, 1, 2, 3
*SHELL SECTION, ELSET=all
1.5
*END PART
*ASSEMBLY, NAME=a
*INSTANCE, NAME=Wall-1, PART=Wall
*END INSTANCE
*INSTANCE, NAME=Wall-2, PART=WALL
0, 0, 20
*END INSTANCE
*INSTANCE, NAME=Rib-1, PART=rib
1, 2, 3
1, 2, 3, 2, 2, 3, 90
*END INSTANCE
*NODE
1, 99, 99, 99
*ELSET, ELSET=upper, INSTANCE=Wall-2
5
*ELSET, ELSET=some
upper, Rib-1.all
*ELEMENT, TYPE=MASS
1, Rib-1.1
*END ASSEMBLY
"""


def test_instances_of_an_assembly_are_one_mesh(tmp_path):
    """The rib is shifted by (1, 2, 3), then turned by a quarter about the line along x there: its y becomes z."""
    (tmp_path / "a.inp").write_text(ASSEMBLY)

    mesh, findings = read(tmp_path / "a.inp")

    corners = mesh.points_mm[mesh.triangles]
    assert findings.faults == findings.warnings == [] and len(mesh.points_mm) == 11
    np.testing.assert_allclose(corners[2:4], corners[:2] + [0, 0, 20])
    np.testing.assert_allclose(corners[4], [[1, 2, 3], [6, 2, 3], [1, 2, 8]], atol=1e-12)
    assert mesh.node_numbers.tolist() == [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11] and mesh.numbers.tolist() == [
        5,
        6,
        11,
        12,
        17,
    ]
    np.testing.assert_array_equal(mesh.card_thickness_mm, [2.5, np.nan, 2.5, np.nan, 1.5])
    groups = {name: np.flatnonzero(mask).tolist() for name, mask in mesh.groups.items()}
    assert groups["FIRST"] == [0, 2] and groups["WALL-2.FIRST"] == groups["UPPER"] == [2]
    assert groups["WALL-2"] == [2, 3] and groups["SOME"] == [2, 4]
    assert "RIB-1 from node 9, element 13" in mesh.notes[0]


@pytest.mark.parametrize("said, given, extent, words", [
    ("1000", {}, 40.0, "note"), ("1.0D0", {}, 40000.0, "note"), ("1.0", {"to_mm": 1.0}, 40.0, "length_unit"),
    ("39.37007874", {"to_mm": 25.4}, 1016.0, ""),
])  # fmt: skip
def test_a_universal_file_tells_its_unit_unless_the_user_does(tmp_path, said, given, extent, words):
    head = f"    -1\n   164\n         1units of a length           2\n {said} 1.0 1.0 273.15\n    -1\n"
    (tmp_path / "a.unv").write_text(head + universal())

    mesh, findings = read(tmp_path / "a.unv", **given)

    assert mesh.extent_mm == pytest.approx(extent) and mesh.to_mm == pytest.approx(extent / 40)
    assert bool(mesh.notes) == (words == "note") and bool(findings.warnings) == (words == "length_unit")


SAVE_ALL = """$MeshFormat
4.1 0 8
$EndMeshFormat
$PhysicalNames
1
2 7 "wall"
$EndPhysicalNames
$Entities
1 1 2 0
1 0 0 0 0
1 0 0 0 1 0 0 0 0
1 0 0 0 1 1 0 1 7 1 1
2 0 0 0 1 1 0 0 1 -1
$EndEntities
$Nodes
1 4 1 9
2 1 0 4
9
2
3
4
0 0 0
1 0 0
1 1 0
0 1 0
$EndNodes
$Elements
3 3 1 30
1 1 1 1
5 9 2
2 1 2 1
30 9 2 3
2 2 2 1
20 9 3 4
$EndElements
$ElementData
1
"s"
1
0.0
3
0
1
2
20 4.0
30 3.0
$EndElementData
"""


def test_gmsh_with_entities_in_no_physical_group(tmp_path):
    """As "save all" writes it; node and element numbers rise nowhere, element data are given by number."""
    (tmp_path / "a.msh").write_text(SAVE_ALL)

    mesh, findings = read(tmp_path / "a.msh")

    assert mesh.triangles.tolist() == [[0, 1, 2], [0, 2, 3]] and findings.faults == []
    assert mesh.groups["wall"].tolist() == mesh.groups["7"].tolist() == [True, False]
    assert mesh.cell_data["s"].tolist() == [3.0, 4.0]


def test_groups_of_universal_files_and_of_several_solids(tmp_path):
    group = "    -1\n  2467\n 1 0 0 0 0 0 0 2\nEND WALL\n 8 1 0 0 8 12 0 0\n    -1\n"
    (tmp_path / "a.unv").write_text(universal(more=group))
    (tmp_path / "a.stl").write_text(stl_text() + stl_text().replace("PLATE", "LID"))

    assert np.flatnonzero(read(tmp_path / "a.unv")[0].groups["END WALL"]).tolist() == [0, 11]
    assert np.flatnonzero(read(tmp_path / "a.stl")[0].groups["LID"]).tolist() == list(range(24, 48))


DAMAGED = {
    "a.obj": lambda p: p.write_text(obj()),
    "a.unv": lambda p: p.write_text(universal()),
    "b.stl": lambda p: p.write_text(stl_text()),
    "a.vtp": lambda p: poly_data(p, False, None),
    "b.vtp": lambda p: poly_data(p, True, "zlib"),
    "a.msh": lambda p: p.write_text(SAVE_ALL),
    "b.msh": lambda p: write_plate(p, "gmsh", True),
}


@pytest.mark.parametrize("name", DAMAGED)
@pytest.mark.filterwarnings("ignore")
def test_no_damage_ends_in_anything_but_a_mesh_or_a_named_fault(tmp_path, name):
    DAMAGED[name](tmp_path / name)
    for damaged in mutations((tmp_path / name).read_bytes(), 60):
        (tmp_path / name).write_bytes(damaged)
        try:
            mesh, _ = read(tmp_path / name)
            assert mesh.triangles.max(initial=-1) < len(mesh.points_mm)
        except BadFile as fault:
            assert name in str(fault)
