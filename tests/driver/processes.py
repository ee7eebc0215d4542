"""What processes have used: those of a program are it and all that it has started."""

import os
import re
import time
from pathlib import Path

_TICK = os.sysconf("SC_CLK_TCK")


def tree(pid):
    """The process and all below it."""
    parents = {}
    for entry in os.scandir("/proc"):
        if entry.name.isdigit():
            try:
                parents[int(entry.name)] = int(_stat(entry.name)[1])
            except OSError:
                pass  # it has ended
    found = [pid]
    for above in found:
        found.extend(child for child, parent in parents.items() if parent == above)
    return found


def cpu_seconds(pids):
    """Of these processes with all their threads, to the nanosecond, and to a hundredth of those below that have ended."""
    # The number of a process's clock is made as clock_getcpuclockid() makes it.
    own = sum(time.clock_gettime(~pid << 3 | 2) for pid in pids)
    return own + sum(int(ticks) for pid in pids for ticks in _stat(pid)[13:15]) / _TICK


def pss_mebibytes(pids):
    """What is shared with other processes counts in parts."""
    return _mebibytes(pids, "Pss")


def own_mebibytes(pids):
    """What the processes have filled themselves. Unlike the above, no other program's start or end changes it."""
    return _mebibytes(pids, "Anonymous")


def waits(pid):
    """How often each thread of a process has waited for something."""
    return {thread: int(_line(f"/proc/{pid}/task/{thread}/status", "voluntary_ctxt_switches"))
            for thread in os.listdir(f"/proc/{pid}/task")}


def wakeups(before, after):
    """How often the threads of a process went on between two looks at their waits. One that has ended did so for it."""
    return (sum(count - before.get(thread, 0) for thread, count in after.items())
            + sum(thread not in after for thread in before))


def named(name):
    """All processes of the machine that the kernel knows by this name."""
    return [int(file.parts[2]) for file in Path("/proc").glob("[0-9]*/comm") if file.read_text() == name + "\n"]


def _mebibytes(pids, key):
    return sum(int(_line(f"/proc/{pid}/smaps_rollup", key)) for pid in pids) / 1024


def _stat(pid):
    """The fields after the name, which may hold anything: the state first, then the parent."""
    return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()


def _line(file, key):
    return re.search(rf"^{key}:\s+(\d+)", Path(file).read_text(), re.M)[1]
