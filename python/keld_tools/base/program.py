"""What the mains of keld-job and keld-view share: one run, its findings on the console, its exit status."""

from __future__ import annotations

import functools
import os
import shlex
import sys
from pathlib import Path

from .findings import BadFile, Findings
from .progress import Progress


def run_program(name: str, options, run, subject: str, on_fault: str) -> int:
    """Call run(options, findings, progress), show what it found, print the summary that it returns.

    Exit status 1 with a fault, without one what the findings say (2: a part out of tolerance), 130 when interrupted; a bad file never ends in a traceback.
    """
    if hasattr(sys.stdout, "reconfigure"):
        sys.stdout.reconfigure(errors="backslashreplace")  # a file's name needn't be text
    findings, summary = Findings(), ""
    try:
        with Progress(name) as progress:
            summary = run(options, findings, progress)
    except BadFile as error:
        findings.faults.append(str(error))
    except OSError as error:
        findings.faults.append(f"{error.filename or subject}: can't be written: {error.strerror or error}")
    except MemoryError:
        findings.faults.append(f"{subject}: needs more memory than there is")
    except KeyboardInterrupt:
        print(f"{name}: interrupted", file=sys.stderr)
        return 130
    findings.show()
    if findings.faults:
        count = len(findings.faults)
        print(f"{name}: {count} fault{'s' * (count > 1)}; {on_fault}", file=sys.stderr)
        return 1
    print(summary)
    return findings.status


def next_commands(base: Path) -> str:
    """What to type next for the job at `base`, with its name as the shell wants it."""
    return f"keld {shlex.quote(str(base))} 1@ INSTALL/ 2@   then   {view_command(base)}"


def view_command(base: Path) -> str:
    return f"keld-view {shlex.quote(str(base))}"


def whole_output(main):
    """Decorator of a main: a reader that closes the pipe early (| head -1) ends it without a traceback."""

    @functools.wraps(main)
    def guarded(argv: list[str] | None = None) -> int:
        try:
            try:
                return main(argv)
            finally:
                sys.stdout.flush()
        except BrokenPipeError:
            # Python flushes once more as it ends; it then writes to nowhere.
            os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
            return 0

    return guarded
