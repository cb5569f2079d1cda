"""The frame of a program: a reader that stops early, and names that the shell would split."""

import subprocess
from pathlib import Path

from keld_tools.base.program import next_commands

PROGRAM = Path(__file__).resolve().parents[3] / "python/keld-job"


def test_a_closed_pipe_ends_without_a_traceback():
    for words in ("--polymers", "--help"):
        done = subprocess.run(
            ["bash", "-c", 'set -o pipefail; "$0" "$1" | true', PROGRAM, words], capture_output=True, timeout=60
        )

        assert (done.returncode, done.stderr) == (0, b"")


def test_the_next_commands_survive_the_shell():
    line = next_commands(Path("a part's/cover 1")).split("   then   ")[0]

    words = subprocess.run(["bash", "-c", line.replace("keld", "printf '%s|'", 1)], capture_output=True, text=True)

    assert words.stdout == "a part's/cover 1|1@|INSTALL/|2@|"
