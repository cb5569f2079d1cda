"""BASE.html: the result as one page that needs no network. Called by view_cli with --report.

Numbers travel as base64 of little-endian arrays; viewer.js draws them with three.js, which is put into the page.
"""

from __future__ import annotations

import base64
import io
from datetime import datetime
from pathlib import Path

import numpy as np
from jinja2 import Environment, FileSystemLoader, select_autoescape
from markupsafe import Markup
from matplotlib import pyplot

from ..base import atomic
from ..base.findings import BadFile
from ..base.ownership import MADE_BY_VIEW
from ..measuring import listing
from ..measuring.measures import Answer
from ..results import job_values
from ..results.finished_job import FinishedJob
from . import furnishing, picture
from .shown import FIELDS, Fit, Shown, notes_of, scene_of, shown

THREE = Path("/usr/share/javascript/three")  # of libjs-three
SCRIPTS = (THREE / "three.min.js", THREE / "examples/js/controls/OrbitControls.js")
VIEWS = ("iso", "top", "front", "right")
PRINT_DOTS = 80  # per inch, of the pictures for print


def write_page(path: Path, job: FinishedJob, fit: Fit, answers: list[Answer], causes: str = "") -> None:
    """Write the page. BadFile where a library that goes into it isn't installed."""
    here = Path(__file__).parent
    templates = Environment(loader=FileSystemLoader(here), autoescape=select_autoescape())
    scripts = [(name.name, script(name)) for name in (*SCRIPTS, here / "viewer.js")]
    main = shown(job, "remaining" if job.corrected else "total", fit)
    name = job.base.name.encode(errors="replace").decode()
    text = templates.get_template("page.html").render(
        made_by=MADE_BY_VIEW,
        title=job.origin.title or name,
        subtitle=f"{name}, {len(job.part.triangles)} triangles; {main.words}; written {datetime.now():%Y-%m-%d %H:%M}",
        columns=[name.replace("_percent", " %") for name in listing.COLUMNS],
        rows=[listing.cells(answer) for answer in answers],
        measured_how=f"Lengths in mm, angles in degrees; position and profile {fit.words}. Click a row to see its place.",
        causes=Markup(causes),
        tables=job_values.tables(job),
        pictures=[(view, printed(job, main, view)) for view in VIEWS],
        data=data_of(job, fit, main, answers),
        scripts=[(name, Markup(text)) for name, text in scripts],
    )
    atomic.write_file(path, lambda place: place.write_text(text, encoding="utf-8"))


def script(path: Path) -> str:
    try:
        text = path.read_text(encoding="utf-8")
    except OSError as error:
        raise BadFile(path, f"can't be read: {error.strerror}; --report needs the package libjs-three") from None
    return text.replace("</script", "<\\/script")


def packed(values: np.ndarray, kind: str = "<f4") -> str:
    return base64.b64encode(np.ascontiguousarray(values, kind).tobytes()).decode()


def data_of(job: FinishedJob, fit: Fit, main: Shown, answers: list[Answer]) -> dict:
    """What viewer.js reads: arrays by name, and what can be chosen."""
    vectors = vectors_of(job, fit, main)
    start = picture.automatic_scale(main.points_mm[job.nodes], main.displacement_mm[job.nodes])
    eyes = [(view, picture.frame(picture.VIEWS[view])[2].tolist()) for view in picture.VIEWS]
    turbo = furnishing.colouring(np.array([0.0, 1.0])).cmap(np.arange(furnishing.BANDS), bytes=True)
    part = main.points_mm[job.nodes]
    return {
        "points": packed(main.points_mm),
        "triangles": packed(job.part.triangles, "<u4"),
        "edges": packed(job.edges, "<u4"),
        "vectors": {name: packed(vector) for name, (vector, _) in vectors.items()},
        "scalars": {"sink": packed(job.results.sink_mm), "length": packed(job.results.length_mm)},
        "fields": fields_of(vectors),
        "told": [["raw", "displacement in the results"], ["length", "its length"], ["sink", "sink mark"]],
        "colours": packed(turbo, "u1"),
        "box": [*part.min(axis=0).tolist(), *part.max(axis=0).tolist()],
        "start": start,
        "most": 2.0 * start,
        "views": eyes,
        "labels": labels_of(job, answers),
    }


def vectors_of(job: FinishedJob, fit: Fit, main: Shown) -> dict[str, tuple[np.ndarray, str]]:
    """Name -> (N, 3) mm and words. Thermal and in-mold shapes are laid over the nominal one for themselves."""
    vectors = {"main": (main.displacement_mm, main.words), "raw": (job.results.total_mm, "displacement in the results")}
    for name in ("thermal", "in-mold"):
        if name == "thermal" or job.results.in_mold_mm is not None:
            part = shown(job, name, fit)
            vectors[name] = (part.displacement_mm, part.words)
    return vectors


def fields_of(vectors: dict[str, tuple[np.ndarray, str]]) -> list[dict]:
    fields: list[dict] = []
    for name, (_, words) in vectors.items():
        fields.append({"vector": name, "component": None, "scalar": None, "words": words})
        if name in ("main", "raw"):
            fields += [
                {"vector": name, "component": i, "scalar": None, "words": f"{words}, along {axis}"}
                for i, axis in enumerate("xyz")
            ]
    return [*fields, {"vector": "main", "component": None, "scalar": "sink", "words": FIELDS["sink"][2]}]


def labels_of(job: FinishedJob, answers: list[Answer]) -> list[dict]:
    """Measures at their places, with their row of the table; boundary nodes and gates."""
    labels = [
        {"node": node, "text": answer.measure.name, "kind": "out" if answer.within is False else "", "row": row}
        for row, answer in enumerate(answers)
        for node in answer.nodes
    ]
    labels += [{"node": n, "text": f"boundary {i}", "kind": "fixed", "row": -1} for i, n in enumerate(job.boundary, 1)]
    return labels + [{"node": int(n), "text": "gate", "kind": "fixed", "row": -1} for n in job.part.gates]


def printed(job: FinishedJob, main: Shown, view: str) -> str:
    """A standard view as base64 of a PNG."""
    scale = picture.automatic_scale(main.points_mm[job.nodes], main.displacement_mm[job.nodes])
    title = f"{view}: {main.words}"
    scene = scene_of(job, main, title, notes_of(main, job.nodes), scale, None, picture.VIEWS[view])
    figure, stream = picture.compose(scene, PRINT_DOTS), io.BytesIO()
    figure.savefig(stream, format="png", facecolor="white")
    pyplot.close(figure)
    return base64.b64encode(stream.getvalue()).decode()
