"""keld-view: grid, picture, measures, report and corrected cavity of a finished job. Called by the executable."""

from __future__ import annotations

import argparse
from pathlib import Path

from ..base import ownership
from ..base.findings import Findings
from ..base.program import run_program, whole_output
from ..base.progress import Progress
from ..report import shown as shown_fields
from ..results.finished_job import read_job
from . import view_options
from .view_outputs import OUTPUTS, Request, answers_of, write_cavity


@whole_output
def main(argv: list[str] | None = None) -> int:
    """Exit status: 0 when everything is written, 1 for a file or an option that can't be used, 2 out of tolerance."""
    options = view_options.arguments(argv)
    options.base = str(view_options.base_of(options.base))
    return run_program("keld-view", options, run, options.output or options.base, "stopped")


def run(options: argparse.Namespace, findings: Findings, progress: Progress) -> str:
    """Read and check all, then write; returns the summary."""
    view = view_options.view_angles(options.view)
    view_options.check_numbers(options)
    job = read_job(Path(options.base), findings, progress)
    drawing = view_options.drawing_for(options, job, findings)
    datum = job.nodes_at(view_options.datum_of(options) or drawing.datum)
    fit = shown_fields.Fit(options.align, options.remove_shrinkage, datum)
    shown = shown_fields.shown(job, options.field or ("remaining" if job.corrected else "total"), fit)
    measuring = options.measure is not None or options.report
    answers = answers_of(drawing, job, fit, findings) if measuring and not findings.faults else []
    request = Request(options, job, drawing, fit, shown, view, findings, progress, answers)
    outputs = [output for output in OUTPUTS if output.wanted(options)]
    paths = [path for output in outputs for path in output.paths(request)]
    ownership.refuse_foreign(paths, options.overwrite, findings)
    if findings.faults:
        return ""
    lines = [line for output in outputs for line in output.write(request)]
    written = [path for output in outputs if output.write is not write_cavity for path in output.paths(request)]
    return "\n".join([*lines, "written: " + " ".join(map(str, written))])
