"""Where the tools' package is, and a fixture that runs keld-job."""

import os
import sys
from pathlib import Path

import pytest

os.environ["MPLBACKEND"] = "Agg"
sys.path[:0] = [str(Path(__file__).resolve().parents[2] / "python"), str(Path(__file__).resolve().parent)]


@pytest.fixture
def job(tmp_path, capsys):
    """Run keld-job in tmp_path on a part file's text; returns (status, standard error)."""
    from keld_tools.programs import job_cli

    def call(text, *words):
        (tmp_path / "part.toml").write_text(text)
        status = job_cli.main([str(tmp_path / "part.toml"), "-o", str(tmp_path / "j"), *map(str, words)])
        return status, capsys.readouterr().err

    return call


@pytest.fixture
def no_pictures(monkeypatch):
    """keld-view with a picture of its mark alone, for tests that look at something else: drawing takes most of a run."""
    from keld_tools.report import picture

    monkeypatch.setattr(picture, "draw", lambda path, scene: path.write_text(picture.MADE_BY_VIEW))


@pytest.fixture
def keld():
    """Run keld on a base name; KELD_PROGRAM names the program."""
    import subprocess

    def call(base):
        words = [os.environ["KELD_PROGRAM"], base, "1@", f"{Path(__file__).resolve().parents[2]}/install/", "2@"]
        subprocess.run(words, check=True, stdin=subprocess.DEVNULL, capture_output=True, timeout=120)

    return call
