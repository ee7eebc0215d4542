"""Uses the program at random for minutes while its feeds' servers misbehave, and listens for the first complaint."""

import collections
import random
import re
import select
import threading
import time
from pathlib import Path

from . import feedserver
from .reader import CHECK_AT_STARTUP, UNREAD, Reader
from .xwindows import Place, Screen

PING_EVERY = 0.05  # seconds
SLOW_ANSWER = 0.1  # seconds; counted
LONGEST_ANSWER = 1.0  # seconds; a window that takes longer is taken for hung by its user
LONGEST_START = 15.0  # seconds
LONGEST_TITLES = 1000
LATEST_ACTIONS = 6  # told with a complaint
MENU_BAR = 30  # pixels from the upper edge of the window's inside to the tree
FIRST_ROW = 45  # pixels to the middle of the tree's first row
TREE_WIDTH = 250  # pixels
SITES = tuple(feedserver.PATHS)

# What others say on the program's error output.
NOISE = re.compile(
    # The engine's network process, which has no name, of a page whose server gives it a negative length.
    r"^\(process:\d+\): GLib-GObject-WARNING \*\*: [\d:.]+: value \"-5\" of type 'gint64' is invalid "
    r"or out of range for property 'content-length' of type 'gint64'$")

ODD_TITLES = ("", " ", "<b>bold</b>", "&amp;&lt;&#0;", "\u202eright to left\u202c", "\0zero\0", "a\nb\tc",
              "\ufeff\uffff", "e" + "\u0301" * 500, "\U0001f600" * 40, "x" * 100000, "%s%n%5BTITLE%5D[TITLE]",
              "\ud800 alone", "]]>", "\u200b\u200d\u2028", "Grüße, Ελληνικά, 日本語, עברית")


class Feeds:
    """What the servers send: lists that change and grow, in a manner that each request draws anew."""

    def __init__(self, seed):
        self._seed = seed
        self._requests = collections.Counter()
        self._lock = threading.Lock()
        self.server = feedserver.FeedServer(self._behave)

    def count(self):
        return sum(self._requests[path] for path in feedserver.PATHS.values())

    def _behave(self, path):
        plain = path.split("?")[0]
        with self._lock:
            self._requests[plain] += 1
            number = self._requests[plain]
        chance = random.Random(f"{self._seed} {plain} {number}")
        manner = feedserver.whole if chance.random() < 0.5 else chance.choice(feedserver.MISBEHAVIOURS)
        if plain not in feedserver.PATHS.values():
            return manner, b"<html><body>" + b"<p><a href='/page/1'>A page.</a></p>" * 50 + b"</body></html>"
        return manner, feedserver.document(self._titles(chance, number), self.server.address)

    @staticmethod
    def _titles(chance, number):
        count = LONGEST_TITLES if chance.random() < 0.05 else chance.randrange(60)
        odd = chance.sample(ODD_TITLES, chance.randrange(4))
        return odd + [f"Story {number + at}" for at in range(count, 0, -1)]


class Pings(threading.Thread):
    """Asks the window for signs of life and notes how long each takes."""

    def __init__(self, window, every=PING_EVERY):
        super().__init__(daemon=True)
        self._window = window
        self._every = every
        self._screen = Screen()
        self._screen.watch_answers()
        self._sent = {}
        self._complained = 0.0
        self._slow_until = 0.0
        self._began = time.monotonic()
        self.holds = []  # when the window was slow, and for how long
        self._ending = threading.Event()
        self.times = []
        self.complaints = collections.deque()

    def run(self):
        number = 0
        while not self._ending.is_set():
            number += 1
            self._sent[number] = time.monotonic()
            self._screen.ping(self._window, number)
            self._listen(self._sent[number] + self._every)

    def _listen(self, until):
        while (left := until - time.monotonic()) > 0:
            self._note_answers()
            select.select([self._screen], [], [], left)
        self._note_answers()

    def _note_answers(self):
        for number in self._screen.answered_pings():
            sent = self._sent.pop(number, None)
            if sent:
                self._take(sent, time.monotonic())

    def _take(self, sent, answered):
        """The pings that were sent while the window hung make one complaint."""
        self.times.append(answered - sent)
        if answered - sent > SLOW_ANSWER and sent > self._slow_until:
            self._slow_until = answered
            self.holds.append(f"{sent - self._began:.1f} s: {(answered - sent) * 1000:.0f} ms")
        if answered - sent > LONGEST_ANSWER and sent > self._complained:
            self._complained = answered
            self.complaints.append(f"the window hung for {answered - sent:.1f} s")

    def end(self):
        """Those that have no answer by now count as answered now."""
        self._ending.set()
        self.join()
        for sent in self._sent.values():
            self._take(sent, time.monotonic())

    def summary(self):
        times = sorted(self.times) or [0.0]
        slow = sum(taken > SLOW_ANSWER for taken in times)
        return (f"{len(self.times)} pings: longest {times[-1] * 1000:.0f} ms, 99 % within "
                f"{times[len(times) * 99 // 100] * 1000:.0f} ms, {slow} over {SLOW_ANSWER * 1000:.0f} ms"
                + "".join(f"\n  {hold}" for hold in self.holds))


class Hand:
    """Does one thing after the other at random, never one that closes the main window."""

    def __init__(self, seed, screen, pid, window):
        self._chance = random.Random(seed)
        self._screen = screen
        self._pid = pid
        self._window = window
        self._due = {}  # when each dialog will be closed
        self.closed = 0  # dialogs
        self.latest = collections.deque(maxlen=LATEST_ACTIONS)
        self._actions = {self._click_tree: 6, self._click_page: 2, self._click_dialog: 4, self._type: 6,
                         self._choose_from_popup: 3, self._choose_from_menu: 1, self._check: 4, self._turn_wheel: 2,
                         self._resize: 1, self._open_options: 1, self._rest: 3}

    def act(self):
        self._close_due_dialogs()
        action = self._chance.choices(list(self._actions), self._actions.values())[0]
        self._note(action.__name__.strip("_").replace("_", " "))
        action()
        time.sleep(self._chance.expovariate(10))

    def _note(self, text):
        self.latest.append(text)

    def _close_due_dialogs(self):
        now = time.monotonic()
        dialogs = self._screen.dialogs(self._pid)
        self._due = {dialog: self._due.get(dialog, now + self._chance.uniform(0.1, 3)) for dialog in dialogs}
        for dialog, due in self._due.items():
            if due < now:
                self._note("close a dialog")
                self.closed += 1
                self._screen.close(dialog)
                self._due[dialog] = now + 1

    def _click(self, left, top, right, bottom):
        """Somewhere between two corners, which count from the inside of the main window."""
        place = self._screen.place(self._window) or Place(0, 0, 0, 0)
        x = place.left + self._chance.randint(left, max(left, min(right, place.width - 1)))
        y = place.top + self._chance.randint(top, max(top, min(bottom, place.height - 1)))
        self._screen.click(x, y, self._chance.choice((1, 1, 1, 3)))

    def _click_tree(self):
        self._click(0, MENU_BAR, TREE_WIDTH, self._chance.choice((120, 2000)))

    def _click_page(self):
        self._click(TREE_WIDTH, MENU_BAR, 2000, 2000)

    def _click_dialog(self):
        for dialog in self._screen.dialogs(self._pid):
            place = self._screen.place(dialog)
            if place:
                self._screen.activate(dialog)
                self._screen.click(place.left + self._chance.randrange(place.width),
                                   place.top + self._chance.randrange(place.height))

    def _type(self):
        keys = ("Up", "Down", "Left", "Right", "Return", "space", "Home", "End", "Prior", "Next", "Tab", "Escape",
                "Menu", "F5", "F10", "a", "7", "BackSpace", "Delete")
        for key in self._chance.choices(keys, k=self._chance.randint(1, 6)):
            self._screen.press(key, *self._chance.choice(((), (), (), ("Shift_L",))))

    def _choose(self, highest):
        for _ in range(self._chance.randint(1, highest)):
            self._screen.press("Down")
        time.sleep(self._chance.choice((0, 0.05, 0.3)))
        self._screen.press(self._chance.choice(("Return", "Return", "Escape")))

    def _choose_from_popup(self):
        self._screen.press("Menu")
        time.sleep(0.1)
        self._choose(6)

    def _choose_from_menu(self):
        self._screen.press("m", "Alt_L")
        self._choose(4)

    def _check(self):
        """The entry that updates the lists is the first that can be chosen on a site and the second on an item."""
        place = self._screen.place(self._window)
        if place:
            self._screen.press("Escape")
            self._screen.click(place.left + TREE_WIDTH // 2, place.top + FIRST_ROW, button=3)
            time.sleep(0.15)
            for _ in range(self._chance.randint(1, 2)):
                self._screen.press("Down")
            self._screen.press("Return")

    def _turn_wheel(self):
        place = self._screen.place(self._window)
        if place:
            x, y = place.left + self._chance.randrange(place.width), place.top + place.height // 2
            for _ in range(self._chance.randint(1, 20)):
                self._screen.click(x, y, self._chance.choice((4, 5)))

    def _resize(self):
        if self._chance.random() < 0.3:
            self._screen.toggle_maximized(self._window)
        else:
            self._screen.move_resize(self._window, (self._chance.randint(0, 200), self._chance.randint(0, 200),
                                                    self._chance.randint(300, 1250), self._chance.randint(200, 1000)))

    def _open_options(self):
        self._screen.press("Escape")
        self._screen.press("m", "Alt_L")
        self._screen.press("s")

    def _rest(self):
        time.sleep(self._chance.uniform(0, 1))


def _lay_a_browser(home):
    """The program that links are opened with. Does nothing."""
    (home / "data/applications").mkdir(parents=True)
    (home / "data/applications/none.desktop").write_text(
        "[Desktop Entry]\nType=Application\nName=None\nExec=true %u\n")
    (home / "config/mimeapps.list").write_text("[Default Applications]\n" + "".join(
        f"x-scheme-handler/{scheme}=none.desktop\n" for scheme in ("http", "https", "mailto")))


def run(seconds, seed):
    """Prints each complaint when it comes and what the pings showed; true when there was nothing to complain of."""
    screen = Screen()
    home = Path("clicks").resolve()
    home.mkdir()
    feeds = Feeds(seed)
    stored = {site: [(f"Story {number}", UNREAD) for number in range(30)] for site in SITES}
    program = Reader(home, feeds.server.address, CHECK_AT_STARTUP, stored)
    _lay_a_browser(home)
    print(f"seed {seed}, {seconds:.0f} s", flush=True)
    program.start()
    while not (window := screen.main_window(program.pid)):
        if not program.runs() or program.age() > LONGEST_START:
            print("The window did not come.")
            program.process.kill()
            return False
        time.sleep(0.05)
    watch = Watch(program, Hand(seed, screen, program.pid, window), Pings(window))
    watch.run(seconds)
    if program.runs():
        program.process.kill()
        program.process.wait()
    print(f"{watch.pings.summary()}; {feeds.count()} feeds asked for, {watch.hand.closed} dialogs closed")
    print(f"{watch.faults} faults (seed {seed})")
    return watch.faults == 0


class Watch:
    """Lets the hand act and tells what goes wrong meanwhile."""

    def __init__(self, program, hand, pings):
        self.hand = hand
        self.pings = pings
        self.faults = 0
        self._program = program
        self._errors = program.errors.open(errors="replace")

    def run(self, seconds):
        self.pings.start()
        while self._program.age() < seconds and self._program.runs():
            self.hand.act()
            self._tell()
        ended = not self._program.runs()
        self.pings.end()
        if ended:
            self.pings.complaints.clear()
            self._fault(self._program.end() or "ended unasked")
        self._tell()

    def _tell(self):
        for line in self._errors:
            if line.strip() and not NOISE.search(line.strip()):
                self._fault(line.strip())
        while self.pings.complaints:
            self._fault(self.pings.complaints.popleft())

    def _fault(self, text):
        self.faults += 1
        print(f"{self._program.age():.1f} s: {text}   [after: {', '.join(self.hand.latest)}]", flush=True)
