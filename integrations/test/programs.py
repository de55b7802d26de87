"""Finds the programs that the tests in this folder start."""

import os
import shutil
import sys
from pathlib import Path

SKIPPED = 77  # CTest reports a test with this exit code as "skipped"

# `./dev test` unpacks rsyslog and syslog-ng here, because they cannot be installed at the same time.
UNPACKED = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "vorelCore" / "shippers"


def need(name):
    """The path of a program. If the program is not installed, ends the test as skipped."""
    folders = [str(UNPACKED / "usr" / "sbin"), os.environ.get("PATH", ""), "/usr/sbin"]
    found = shutil.which(name, path=os.pathsep.join(folders))
    if not found:
        print(f"{name} is not installed; `./dev setup` installs it")
        sys.exit(SKIPPED)
    return found


def unpacked(pattern):
    """The folders in UNPACKED that match `pattern`."""
    return [str(folder) for folder in sorted(UNPACKED.glob(pattern))]
