"""Kills the program at random instants, starts it again, and looks whether all that it had shown or stored is there."""

import itertools
import random
import signal
import sqlite3
import time
from pathlib import Path

from . import feedserver
from .reader import CHECK_AT_STARTUP, READ, UNREAD, Reader, Store
from .xwindows import Place, Screen

LATEST = 1.5  # seconds after the start, or after the window is there, at which the program is killed
LONGEST_START = 15.0  # seconds; nothing is promised here, it only ends the waiting
LONGEST_LOCK = 4.0  # seconds for which another program holds the store; the program waits for 2
SETTLED = 0.15  # seconds after which a picture changes no more
STEP = 0.005  # seconds between two looks

CHECKED = ("start-up", "check", "merge", "mark on the screen", "closing")  # phases that begin with a check
SITES = tuple(feedserver.PATHS)
ITEMS = 100
MARKS = 6  # at most, in one run
ROW = Place(20, 30, 200, 12)  # of the first site in the tree, in the window
NO_ANIMATION = "[Settings]\ngtk-enable-animations=0\ngtk-cursor-blink=0\n"


def is_read(tag):
    return tag is not None and READ in tag


class Crashes:
    """Runs of the program on one store, each of which ends with a kill."""

    PHASES = ("start-up", "check", "merge", "marks", "mark on the screen", "options", "option on the screen", "closing",
              "two starts", "start during closing", "held store")

    def __init__(self, screen, home):
        self._screen = screen
        self._server = feedserver.FeedServer(self._behave)
        self._lists = {site: [f"{site} story {number}" for number in range(ITEMS)] for site in SITES}
        self._fresh = {}
        self._reader = Reader(home, self._server.address, CHECK_AT_STARTUP,
                              {site: [(title, UNREAD) for title in titles] for site, titles in self._lists.items()})
        settings = home / "config/gtk-3.0/settings.ini"
        settings.parent.mkdir()
        settings.write_text(NO_ANIMATION)
        self._read = set()  # titles that were seen to be stored as read
        self._settings = {}  # as they were last seen, stored or on the screen

    def run(self, seed):
        """What went wrong, in one line; None when nothing did."""
        self._chance = random.Random(seed)
        self._seen = []
        self._others = []
        self._phase = self.PHASES[seed % len(self.PHASES)]
        self._fresh = {site: [f"{site} {seed} {number}" for number in range(5)] + titles
                       for site, titles in self._lists.items()}
        with sqlite3.connect(self._reader.store_file) as database:
            database.execute("UPDATE reg_value SET data = ? WHERE name = 'Check At Startup'",
                             (int(self._phase in CHECKED),))
            # The box for the minutes stays out of the keyboard's way.
            database.execute("UPDATE reg_value SET data = 0 WHERE name = 'Check Interval'")
        database.close()
        self._settings, self._known = self._options_stored(), True
        self._look(True)
        try:
            getattr(self, "_" + self._phase.replace(" ", "_").replace("-", "_"))()
        except RuntimeError as error:
            self._seen.append(str(error))
        self._kill()
        self._look(True)
        if self._known and self._options_stored() != self._settings:
            self._seen.append(f"settings are {self._options_stored()} instead of {self._settings}")
        return f"{self._phase}: {'; '.join(dict.fromkeys(self._seen))}" if self._seen else None

    def _behave(self, path):
        for site, feed in feedserver.PATHS.items():
            if path == feed:
                manner = feedserver.drip if self._phase == "check" else feedserver.whole
                return manner, feedserver.document(self._fresh[site], self._server.address)
        return feedserver.whole, b"A page."

    # The phases, up to the instant of the kill.

    def _start_up(self):
        self._reader.start()
        self._pause(self._chance.uniform(0, LATEST / 3))

    def _check(self):
        self._merge()

    def _merge(self):
        self._reader.start()
        self._await_window()
        self._pause(self._chance.uniform(0, LATEST / 2))

    def _marks(self):
        self._to_the_items()
        for _ in range(self._chance.randrange(MARKS)):
            self._mark()
            self._pause(self._chance.uniform(0, 0.2))

    def _mark_on_the_screen(self):
        """A mark is on the disk when the number of unread items beside the site's name changes."""
        place = self._to_the_items()
        row = Place(place.left + ROW.left, place.top + ROW.top, ROW.width, ROW.height)
        for _ in range(MARKS):
            marks, before = self._settled(lambda: (self._marks_stored(), self._screen.picture(row)))
            self._mark()
            if self._wait(1, lambda: self._screen.picture(row) != before):
                self._kill()
                if self._marks_stored() <= marks:
                    self._seen.append(f"a mark that was shown is not stored ({marks})")
                return
            if self._marks_stored() != marks:
                break
        self._seen.append("the caption did not change")

    def _options(self):
        self._open_options()
        for _ in range(self._chance.randrange(8)):
            before = self._options_stored()
            self._screen.press("space")
            self._known = self._known and self._chance.random() < 0.7 and self._wait(1, lambda: self._options_stored() != before)
            self._settings = self._options_stored()

    def _option_on_the_screen(self):
        """A setting is on the disk when its box changes."""
        dialog = self._open_options()
        states = {}  # what is stored, by the picture
        for _ in range(4):
            self._screen.press("space")
            self._pause(SETTLED)
            picture, stored = self._settled(lambda: (self._screen.picture(dialog), self._options_stored()))
            states[picture] = stored
        if len(states) != 2 or len({str(state) for state in states.values()}) != 2:
            return self._seen.append(f"a box has {len(states)} states")
        for _ in range(self._chance.randrange(1, 6)):
            before = self._screen.picture(dialog)
            self._screen.press("space")
            if not self._wait(2, lambda: (shown := self._screen.picture(dialog)) != before and shown in states):
                return self._seen.append("the box did not change any more")
            shown = next(picture for picture in states if picture != before)
        self._settings = states[shown]

    def _closing(self):
        self._to_the_items()
        self._mark()
        self._screen.close(self._window)
        self._pause(self._chance.uniform(0, 0.3))

    def _two_starts(self):
        self._others = [self._reader.another() for _ in range(2)]
        self._reader.start()
        self._expect_one_window()

    def _start_during_closing(self):
        self._reader.start()
        self._await_window()
        self._close_and_start()

    def _held_store(self):
        self._start_held("IMMEDIATE", self._chance.uniform(0, LONGEST_LOCK))
        self._expect_one_window()

    # What the phases are made of.

    def _close_and_start(self):
        self._screen.close(self._window)
        time.sleep(self._chance.uniform(0, 0.2))
        self._others = [self._reader.another()]
        self._expect_one_window()

    def _start_held(self, lock, seconds):
        """Starts twice while another program holds the store, which ends with this."""
        holder = sqlite3.connect(self._reader.store_file, isolation_level=None)
        holder.execute(f"BEGIN {lock}")
        until = time.monotonic() + seconds
        self._reader.start()
        self._others = [self._reader.another()]
        while time.monotonic() < until:
            time.sleep(STEP)
        holder.close()

    def _expect_one_window(self):
        """Of the programs one is left, and has a window; its marks are kept or not, as the others see it."""
        def running():
            return [process for process in (self._reader.process, *self._others) if process.poll() is None]

        end = time.monotonic() + LONGEST_START
        while time.monotonic() < end and not (
                len(running()) == 1 and self._screen.main_window(running()[0].pid)):
            time.sleep(STEP)
        windows = [self._screen.main_window(process.pid) for process in running()]
        if len(windows) != 1 or not windows[0]:
            self._seen.append(f"{len(windows)} programs with windows {windows}")
        bad = [process.returncode for process in (self._reader.process, *self._others) if process.poll()]
        if bad:
            self._seen.append(f"ended with status {bad}")

    def _to_the_items(self):
        """Starts, and opens the first site in the tree."""
        self._reader.start()
        self._await_window()
        if self._phase == "mark on the screen":  # there are unread items then
            self._wait(LONGEST_START, lambda: self._lists == self._fresh)
        self._pause(2 * SETTLED)
        place = self._screen.place(self._window)
        self._screen.click(place.left + 80, place.top + 45)
        self._screen.click(place.left - 80, place.top + 45)  # on the desktop, so that no row is lit
        self._screen.press("Right")
        self._pause(SETTLED)
        self._screen.press("Home")  # unfolded, the tree has scrolled
        for _ in range(self._chance.randint(1, 3)):
            self._screen.press("Down")
        self._pause(2 * SETTLED)
        return place

    def _mark(self):
        self._screen.press("Down")
        self._screen.press("Return")

    def _open_options(self):
        """Where the dialog is, with one of its boxes focused."""
        self._reader.start()
        self._await_window()
        for _ in range(5):  # a key that comes before the window has the focus is lost
            self._pause(SETTLED)
            self._screen.press("m", "Alt_L")
            self._screen.press("s")
            if self._wait(2, lambda: self._screen.dialogs(self._reader.pid)):
                break
        self._pause(SETTLED)
        for _ in range(self._chance.randrange(3)):
            self._screen.press("Tab")
        self._pause(SETTLED)
        for dialog in self._screen.dialogs(self._reader.pid):
            return self._screen.place(dialog)
        raise RuntimeError("showed no options")

    def _await_window(self):
        self._window = None

        def find():
            self._window = self._screen.main_window(self._reader.pid)
            return self._window

        if not self._wait(LONGEST_START, find):
            raise RuntimeError("showed no window")

    def _wait(self, seconds, condition):
        """Whether the condition held by then. Takes a look at the store now and then."""
        end = time.monotonic() + seconds
        for step in itertools.count(1):
            if condition():
                return True
            if time.monotonic() > end or not self._reader.runs():
                return False
            if step % 8 == 0:
                self._look()
            time.sleep(STEP)

    def _pause(self, seconds):
        self._wait(seconds, lambda: False)

    def _settled(self, look):
        """What a look finds twice, so that nothing of earlier is still to be shown."""
        found = None
        while found != (found := look()):
            self._pause(SETTLED)
        return found

    def _kill(self):
        for process in (self._reader.process, *self._others):
            process.kill()
            process.wait()

    def _stored(self):
        return Store(self._reader.store_file)

    def _marks_stored(self):
        store = self._stored()
        return sum(is_read(tag) for site in SITES for _, tag in store.items(site))

    def _options_stored(self):
        return {name: value for name, value in self._stored().settings().items() if not name.startswith("frm")}

    def _look(self, dead=False):
        """What was in the store once must be in it ever after."""
        try:
            store = self._stored()
        except sqlite3.Error as error:
            if dead:
                self._seen.append(f"the store cannot be read: {error}")
            return
        if store.integrity != "ok" or store.orphans:
            self._seen.append(f"the store is damaged: {store.integrity}, {len(store.orphans)} orphans")
        for site in SITES:
            items = store.items(site)
            titles = [title for title, _ in items]
            if titles not in (self._lists[site], self._fresh[site]):
                self._seen.append(f"the list of {site} is neither the old nor the new one ({len(titles)} items)")
            elif titles == self._fresh[site] or dead:
                self._lists[site] = titles
            read = {title for title, tag in items if is_read(tag)}
            if lost := (self._read & set(titles)) - read:
                self._seen.append(f"{len(lost)} read marks of {site} are lost")
            self._read |= read
        aside = [file.name for file in self._reader.store_file.parent.glob("*damaged*")]
        if aside:
            self._seen.append(f"set aside: {aside}")


def run_lane(seeds, runs=Crashes):
    """Makes the runs of these seeds one after the other, on the display there is. Prints a line for each."""
    signal.signal(signal.SIGINT, signal.default_int_handler)
    home = Path(f"crashes-{seeds.start}").resolve()
    home.mkdir()
    crashes = runs(Screen(), home)
    for seed in seeds:
        print(f"seed {seed}: {crashes.run(seed) or 'ok'}", flush=True)
    return True
