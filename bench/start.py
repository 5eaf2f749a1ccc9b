"""Counts what one short command costs from start to end. The figures do not depend on the machine's load."""

import re
import subprocess
import tempfile


def counted(words, pattern):
    """Runs a command that prints a figure on standard error, and returns the figure."""
    run = subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
    found = re.search(pattern, run.stderr)
    # 3 means that a check has found something wrong.
    if run.returncode not in (0, 3) or not found:
        raise RuntimeError(f"{' '.join(words[:9])}: {run.stderr}")
    return int(found[1].replace(",", ""))


def instructions(words):
    return counted(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *words], r"Collected : (\d+)")


def heap(words):
    """Returns the most bytes that a command has allocated at one time."""
    return counted(["valgrind", "--tool=dhat", "--dhat-out-file=/dev/null", *words], r"At t-gmax: ([\d,]+) bytes")


def system_calls(words):
    return counted(["strace", "--follow-forks", "--summary-only", "--summary-columns=calls,name", *words],
                   r"(\d+) total")


def figures(tree):
    """Yields the instructions of `boardctl temp` and of an empty program, then the system calls of both."""
    with tempfile.TemporaryDirectory() as folder:
        board = folder + "/board"
        boardctl = tree + "/bin/boardctl"
        subprocess.run([boardctl, "sim", "create", board], stdout=subprocess.DEVNULL, check=True)
        for measure in (instructions, system_calls):
            yield measure([boardctl, "--board", board + "/board.toml", "temp"]), measure([tree + "/bin/empty"])
