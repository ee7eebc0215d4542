"""Closes the program at random instants, by every road, and looks at what it leaves behind."""

import random
import shutil
import signal
import sqlite3
import time
from pathlib import Path

from . import feedserver
from .reader import CHECK_AT_STARTUP, READ, UNREAD, Reader, Store
from .xwindows import Screen

LATEST = 2.0  # seconds after the start at which the program is closed
LONGEST_END = 5.0  # seconds
LONGEST_START = 15.0  # seconds; nothing is promised here, it only ends the waiting
LONGEST_PAUSE = 0.6  # seconds before and after what the driver does
STEP = 0.005  # seconds between two looks

PHASES = ("start-up", "check", "merge", "display", "popup", "options", "message box")
ROADS = ("close button", signal.SIGTERM, signal.SIGINT, signal.SIGHUP)
SITES = tuple(feedserver.PATHS)

# Off the screen and too small, so that a place that was saved can be told from it.
STORED_PLACE = {"frmMainLeft": 60000, "frmMainTop": 60000, "frmMainWidth": 150, "frmMainHeight": 150}
LARGEST_PLACE = 1280 * 15  # twips: the width of the screen


class Closing:
    """One run. Two runs with one seed differ in nothing but the time things take."""

    def __init__(self, seed, screen, home):
        self._chance = random.Random(seed)
        # 7 phases and 4 roads: any 28 seeds in a row have every pair.
        self._phase = PHASES[seed % len(PHASES)]
        self._road = ROADS[seed % len(ROADS)]
        self._screen = screen
        self._window = None
        self._asked = None
        self._seen = []
        count = 2000 if self._phase == "merge" else 40
        self._old = {site: [f"{site} story {number}" for number in range(count)] for site in SITES}
        self._new = {site: [f"{site} fresh story {number}" for number in range(5)] + self._old[site] for site in SITES}
        self._read = {title for titles in self._old.values() for title in titles if self._chance.random() < 0.5}
        lists = {site: [(title, READ if title in self._read else UNREAD) for title in titles]
                 for site, titles in self._old.items()}
        self._server = feedserver.FeedServer(self._behave)
        self._manners = {path: self._manner() for path in feedserver.PATHS.values()}
        if self._phase == "message box":
            self._manners[feedserver.PATHS["XBINS"]] = feedserver.not_found
        self._reader = Reader(home, self._server.address, {**CHECK_AT_STARTUP, **STORED_PLACE}, lists)

    def run(self):
        """What went wrong, in one line; None when nothing did."""
        self._reader.start()
        self._wait_for_the_instant()
        if self._reader.runs():
            self._close()
        self._wait(LONGEST_END, lambda: not self._reader.runs())
        if self._reader.runs():
            self._seen.append(f"still ran {LONGEST_END:.0f} s later")
            self._reader.process.kill()
            self._reader.process.wait()
        else:
            self._look_at_the_end()
        self._look_at_the_files()
        return f"{self._phase}, {self._words()}: {'; '.join(self._seen)}" if self._seen else None

    def _manner(self):
        if self._phase == "start-up":
            return feedserver.stall
        if self._phase == "check":
            return feedserver.drip
        if self._phase == "message box":
            return self._chance.choice((feedserver.not_found, feedserver.whole, feedserver.slow))
        return self._chance.choice((feedserver.whole, feedserver.whole, feedserver.slow))

    def _behave(self, path):
        for site, feed in feedserver.PATHS.items():
            if path == feed:
                return self._manners[path], feedserver.document(self._new[site], self._server.address)
        return feedserver.whole, b"A page."

    def _wait_for_the_instant(self):
        if self._phase in ("start-up", "check", "merge"):
            self._pause(self._chance.uniform(0, LATEST))
            return
        before, after = (self._chance.uniform(0, LONGEST_PAUSE) for _ in range(2))
        self._await_window()
        if self._phase == "message box":
            self._wait(LATEST, lambda: self._screen.dialogs(self._reader.pid))
        elif self._window:
            self._pause(before)
            self._act()
        self._pause(after)

    def _act(self):
        place = self._screen.place(self._window)
        if not place:
            return
        row = (place.left + 80, place.top + 45)
        if self._phase == "popup":
            self._screen.click(*row, button=3)
        elif self._phase == "options":
            self._screen.press("m", "Alt_L")
            self._screen.press("s")
        else:
            self._screen.click(*row)
            for key in ("Right", "Down", "Return"):
                self._screen.press(key)

    def _close(self):
        """A signal to a program that has no handler yet would be answered by the system, so it waits for one, but no
        longer than until the window stands; the close button is there with the window."""
        if self._road == "close button":
            self._await_window()
        else:
            self._wait(LONGEST_START, lambda: self._find_window() or self._reader.catches(self._road))
        self._asked = self._reader.age()
        if not self._reader.runs():
            return
        if self._road != "close button":
            self._reader.process.send_signal(self._road)
        elif self._window:
            self._screen.close(self._window)
        else:
            self._seen.append("showed no window")

    def _find_window(self):
        self._window = self._window or self._screen.main_window(self._reader.pid)
        return self._window

    def _await_window(self):
        self._wait(LONGEST_START, self._find_window)

    def _wait(self, seconds, condition):
        """Ends early when the condition holds or the program has ended."""
        end = time.monotonic() + seconds
        while time.monotonic() < end and self._reader.runs() and not condition():
            time.sleep(STEP)

    def _pause(self, seconds):
        self._wait(seconds, lambda: False)

    def _words(self):
        road = self._road if self._road == "close button" else self._road.name
        return f"{road} at {self._asked:.2f} s" if self._asked else f"{road} not yet used"

    def _look_at_the_end(self):
        end = self._reader.end()
        if end:
            self._seen.append(end)
            lines = self._reader.errors.read_text(errors="replace").splitlines()
            self._seen.extend(line.strip() for line in lines[-1:])
        elif self._asked is None:
            self._seen.append("ended unasked")

    def _look_at_the_files(self):
        left = [str(file) for file in self._reader.traces()]
        if left:
            self._seen.append(f"left behind: {', '.join(left)}")
        try:
            store = Store(self._reader.store_file)
        except sqlite3.Error as error:
            self._seen.append(f"the store cannot be read: {error}")
            return
        if store.integrity != "ok" or store.orphans:
            self._seen.append(f"the store is damaged: {store.integrity}, {len(store.orphans)} orphans")
        if self._window:
            self._look_at_the_place(store)
        for site in SITES:
            self._look_at_the_list(site, store.items(site))

    def _look_at_the_place(self, store):
        place = {name: store.setting(name) for name in STORED_PLACE}
        unsaved = [name for name, twips in place.items()
                   if twips in (None, STORED_PLACE[name]) or not 0 <= twips <= LARGEST_PLACE]
        if unsaved:
            self._seen.append(f"not saved: {', '.join(unsaved)}")

    def _look_at_the_list(self, site, items):
        titles = [title for title, _ in items]
        if titles not in (self._old[site], self._new[site]):
            self._seen.append(f"the list of {site} is neither the old nor the new one ({len(titles)} items)")
        lost = [title for title, tag in items if title in self._read and tag != READ]
        if lost:
            self._seen.append(f"{len(lost)} read marks of {site} are lost")


def run_lane(seeds):
    """Makes the runs of these seeds one after the other, on the display there is. Prints a line for each."""
    # A shell has the programs it starts in the background ignore SIGINT, and what they start inherits that.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    screen = Screen()
    for seed in seeds:
        home = Path(f"closing-{seed}").resolve()
        home.mkdir()
        failure = Closing(seed, screen, home).run()
        print(f"seed {seed}: {failure or 'ok'}", flush=True)
        shutil.rmtree(home, ignore_errors=True)
    return True
