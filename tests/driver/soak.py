"""Checks feeds and shows pages, and holds memory, descriptors and files to what they were early on."""

import os
import time
from pathlib import Path

from . import feedserver, processes
from .reader import Reader
from .xwindows import Screen

LOOKS = 20  # times that the program is looked at, in equal parts of the run; the first quarter warms it up
SETTLING = 2.0  # seconds before a look
MOST_GROWTH = 1.1  # of memory, from the end of the first quarter to any look of the second half
LATE = 4  # descriptors opened after the first quarter, and once: /dev/urandom when the engine comes to it
LONGEST_START = 15.0  # seconds
LONGEST_WAIT = 45.0  # seconds for one check or one page; a connection may take 30
KEPT = 20  # items of a feed; each check brings another one
STEP = 0.005  # seconds between two looks at a condition
SITES = tuple(feedserver.PATHS)


class Soak:
    def __init__(self, home, settings=None):
        self._served = 0
        self._newest = KEPT
        self.checks = self.displays = 0
        server = feedserver.FeedServer(self._behave)
        self._address = server.address
        home.mkdir()
        self._reader = Reader(home, server.address, settings or {}, {site: [] for site in SITES})
        self._screen = Screen()
        self._reader.start()
        self._window = self._screen.await_main_window(self._reader.pid, LONGEST_START)
        if not self._window:
            raise RuntimeError("the window did not come")
        self._wait(lambda: self._folder() and self._stands_empty(), "the first page")

    def _behave(self, path):
        if path not in feedserver.PATHS.values():
            return feedserver.not_found, b""
        self._served += 1
        titles = [f"Story {number}" for number in range(self._newest, self._newest - KEPT, -1)]
        return feedserver.whole, feedserver.document(titles, self._address)

    def check(self):
        self._newest += 1
        due = self._served + len(SITES)
        self._do(("Home", "Menu", "Down", "Return"), lambda: self._served >= due and self._stands_empty(), "a check")
        self.checks += 1

    def display(self):
        before = self._folder().stat().st_mtime_ns
        self._do(("Home", "Right", "Down", "Return"),
                 lambda: self._folder().stat().st_mtime_ns != before and self._stands_empty(), "a page")
        self.displays += 1

    def look(self):
        """Of all processes their own memory in MiB and their descriptors, and the files in the program's folder."""
        time.sleep(SETTLING)
        pids = processes.tree(self._reader.pid)
        descriptors = sum(len(os.listdir(f"/proc/{pid}/fd")) for pid in pids)
        return processes.own_mebibytes(pids), descriptors, len(list(self._folder().iterdir()))

    def end(self):
        """What was left behind, and how the program ended when that was not well."""
        self._reader.process.terminate()
        self._reader.process.wait(LONGEST_WAIT)
        end = self._reader.end()
        return [*map(str, self._reader.traces()), *([end] if end else [])]

    def _do(self, keys, done, what):
        self._press(*keys)
        self._wait(done, what)

    def _press(self, *keys):
        self._screen.activate(self._window)
        for key in keys:
            self._screen.press(key)
            time.sleep(0.03)

    def _wait(self, done, what):
        end = time.monotonic() + LONGEST_WAIT
        while not done():
            if time.monotonic() > end or not self._reader.runs():
                raise RuntimeError(f"waited in vain for {what}, after {self.checks} checks and {self.displays} pages; "
                                   f"the program said: {self._reader.errors.read_text()}")
            time.sleep(STEP)

    def _folder(self):
        return next(self._reader.cache.glob("run-*"), None)

    def _stands_empty(self):
        return not any(self._folder().iterdir())


def run(checks, displays):
    soak = Soak(Path.cwd() / "home")
    looks = []
    print("checks  pages     MiB  descriptors  files")
    for look in range(1, LOOKS + 1):
        while soak.checks < checks * look // LOOKS or soak.displays < displays * look // LOOKS:
            if soak.checks * displays <= soak.displays * checks:
                soak.check()
            else:
                soak.display()
        looks.append(soak.look())
        print("%6d %6d %7.1f %12d %6d" % (soak.checks, soak.displays, *looks[-1]), flush=True)
    warm, later = looks[LOOKS // 4 - 1], looks[LOOKS // 2:]
    faults = [f"left behind: {trace}" for trace in soak.end()]
    if max(memory for memory, _, _ in later) > warm[0] * MOST_GROWTH:
        faults.append("memory grew")
    if max(descriptors for _, descriptors, _ in later) > warm[1] + LATE:
        faults.append("descriptors grew")
    if any(files for _, _, files in looks):
        faults.append("files stayed in the program's folder")
    print(*faults or ["all level"], sep="\n")
    return not faults
