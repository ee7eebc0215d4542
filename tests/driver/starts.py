"""Starts the program while another of it starts, closes, waits for its store or runs on another store, and looks whether
one window is there for each store, with its folder and with all that was stored."""

import functools
import os
import sqlite3
import time

from . import crashes
from .crashes import Crashes

LANES = 8  # runs that are made at a time; most of one is waiting. Has no factor in common with the number of phases
LONGEST_MARK = 1.0  # seconds until a mark is stored
MOST_MARKS = 8  # tries; half of the items are read
KEYS_APART = 0.03  # seconds


class Starts(Crashes):
    """A mark is made in the window that is left, and stored, unless the store was held for too long."""

    PHASES = ("two starts", "start during closing", "store held for a second", "store held for half a minute",
              "two stores")

    def run(self, seed):
        with sqlite3.connect(self._reader.store_file) as database:
            database.execute("UPDATE reg_value SET data = iif((key_id + ?) % 2, '<UNREAD>', '<READ>') WHERE name = 'Tag'",
                             (seed,))
        database.close()
        self._read.clear()
        return super().run(seed)

    def _two_starts(self):
        super()._two_starts()
        self._mark_in_the_window()

    def _start_during_closing(self):
        self._reader.start()
        self._mark_in_the_window()
        self._close_and_start()
        self._mark_in_the_window()

    def _store_held_for_a_second(self):
        self._start_held("EXCLUSIVE", 1)
        self._expect_one_window()
        self._mark_in_the_window()

    def _store_held_for_half_a_minute(self):
        self._start_held("EXCLUSIVE", 30)
        self._expect_one_window()

    def _two_stores(self):
        """They share the folder in which each has one for its run."""
        self._others = [self._reader.another(data="data of another")]
        self._reader.start()
        self._await_window()
        if not self._wait(crashes.LONGEST_START, lambda: self._screen.main_window(self._others[0].pid)):
            self._seen.append("the other store has no window")
        self._expect_folders()

    def _expect_one_window(self):
        super()._expect_one_window()
        left = [process for process in (self._reader.process, *self._others) if process.poll() is None]
        if not left:
            raise RuntimeError(f"no program is left: {self._reader.errors.read_text(errors='replace')}")
        self._reader.process, self._others = left[0], left[1:]
        self._expect_folders()

    def _expect_folders(self):
        """Each program has its own, and those of the killed ones are gone."""
        folders = sorted(str(folder) for folder in self._reader.cache.glob("run-*"))
        held = sorted(_folder_of(process) for process in (self._reader.process, *self._others))
        if folders != held:
            self._seen.append(f"folders are {folders}, held are {held}")

    def _mark_in_the_window(self):
        """By keys, which are lost while the list is not there yet."""
        self._await_window()
        before = self._marks_stored()
        for item in range(1, MOST_MARKS + 1):
            self._screen.activate(self._window)
            for key in ("Home", "Right", *["Down"] * item, "Return"):
                self._screen.press(key)
                time.sleep(KEYS_APART)
            if self._wait(LONGEST_MARK, lambda: self._marks_stored() > before):
                return self._look()
        self._seen.append("no mark is stored")


def _folder_of(process):
    """The folder of the run, by its lock; it ends with " (deleted)" when it has been removed."""
    links = f"/proc/{process.pid}/fd"
    files = [os.path.realpath(f"{links}/{number}") for number in os.listdir(links)]
    return next((file for file in files if "/run-" in file), "none")


run_lane = functools.partial(crashes.run_lane, runs=Starts)
