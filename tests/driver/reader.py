"""The program under test: its folders, its store and its process."""

import os
import signal
import sqlite3
import subprocess
import time
from pathlib import Path

_ROOT = "HKEY_LOCAL_MACHINE\\Software\\Vantro"
_TABLES = """
    CREATE TABLE reg_key  (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE COLLATE NOCASE);
    CREATE TABLE reg_value(key_id INTEGER NOT NULL REFERENCES reg_key(id) ON DELETE CASCADE,
                           name TEXT NOT NULL COLLATE NOCASE, type INTEGER NOT NULL, data NOT NULL,
                           PRIMARY KEY (key_id, name)) WITHOUT ROWID;
    PRAGMA application_id = 1449225844;
    PRAGMA user_version = 1;
"""
CHECK_AT_STARTUP = {"Check At Startup": 1}  # settings
UNREAD, READ = "<UNREAD>", "<READ>"


def write_store(file, settings, lists):
    """Lays down a new store. `lists` has for each site its items as pairs of title and tag."""
    database = sqlite3.connect(file)
    database.executescript(_TABLES)

    def add(path, values):
        key = database.execute("INSERT INTO reg_key(path) VALUES (?)", (path,)).lastrowid
        database.executemany("INSERT INTO reg_value VALUES (?, ?, ?, ?)",
                             [(key, name, 4 if isinstance(data, int) else 1, data) for name, data in values.items()])

    add("HKEY_LOCAL_MACHINE", {})
    add("HKEY_LOCAL_MACHINE\\Software", {})
    add(_ROOT, settings)
    for site, items in lists.items():
        add(f"{_ROOT}\\{site}", {"TotalItems": len(items)})
        for number, (title, tag) in enumerate(items, 1):
            add(f"{_ROOT}\\{site}\\{number}", {"Title": title, "Tag": tag})
    database.commit()
    database.close()


class Store:
    """What stands in a store that no program holds. Raises sqlite3.Error for a file that cannot be read."""

    def __init__(self, file):
        database = sqlite3.connect(f"file:{file}?mode=ro", uri=True)
        self.integrity = database.execute("PRAGMA integrity_check").fetchone()[0]
        self.orphans = database.execute("PRAGMA foreign_key_check").fetchall()
        self._values = {}
        for path, name, data in database.execute(
                "SELECT path, name, data FROM reg_key JOIN reg_value ON id = key_id"):
            self._values[path, name] = data
        database.close()

    def setting(self, name):
        return self._values.get((_ROOT, name))

    def settings(self):
        return {name: data for (path, name), data in self._values.items() if path == _ROOT}

    def items(self, site):
        """Pairs of title and tag, in the order of the list."""
        count = self._values.get((f"{_ROOT}\\{site}", "TotalItems"), 0)
        keys = [f"{_ROOT}\\{site}\\{number}" for number in range(1, count + 1)]
        return [(self._values.get((key, "Title")), self._values.get((key, "Tag"))) for key in keys]


class Reader:
    """One run of the program in folders of its own below `home`, which exists."""

    def __init__(self, home, address, settings, lists):
        self.home = home
        self.store_file = home / "data/vantro/registry.db"
        self.cache = home / "cache/vantro"
        self.errors = home / "errors"
        for folder in ("config/vantro", "data/vantro", "cache"):
            (home / folder).mkdir(parents=True)
        hosts = "".join(f"{site}={address}\n" for site in lists)
        (home / "config/vantro/vantro.ini").write_text("[Hosts]\n" + hosts)
        write_store(self.store_file, settings, lists)

    def start(self, command=None):
        """Another program than the one under test may be started in its place."""
        self.started = time.monotonic()
        self.process = self.another(command)

    def another(self, command=None, data="data"):
        """A further process, on the same store unless told otherwise, which is the caller's to end."""
        environment = dict(os.environ, XDG_CONFIG_HOME=str(self.home / "config"),
                           XDG_DATA_HOME=str(self.home / data), XDG_CACHE_HOME=str(self.home / "cache"))
        with self.errors.open("wb") as errors:
            return subprocess.Popen([command or program()], env=environment, cwd=self.home, stdin=subprocess.DEVNULL,
                                    stdout=errors, stderr=errors)

    def traces(self):
        """What the run has left beside its store, its settings and what the starter of this keeps."""
        kept = (self.home / "config/vantro/vantro.ini", self.errors)
        files = [file for file in self.home.rglob("*")
                 if file.is_file() and file not in kept and not file.name.startswith("registry.db")]
        sandboxes = Path(os.environ.get("XDG_RUNTIME_DIR", self.home)) / ".flatpak"
        return [*files, *self.cache.glob("*"), *sandboxes.glob(f"webkit-{self.pid}-*")]

    @property
    def pid(self):
        return self.process.pid

    def age(self):
        """Seconds since the start."""
        return time.monotonic() - self.started

    def runs(self):
        return self.process.poll() is None

    def catches(self, number):
        """Whether the process has a handler for a signal by now."""
        try:
            status = Path(f"/proc/{self.pid}/status").read_text()
        except OSError:
            return False
        caught = next((line.split()[1] for line in status.splitlines() if line.startswith("SigCgt:")), "0")
        return bool(int(caught, 16) >> (number - 1) & 1)

    def end(self):
        """How the process ended, in words; None when it ended with status 0. It has ended."""
        status = self.process.returncode
        if status < 0:
            return f"ended by {signal.Signals(-status).name}"
        return f"ended with status {status}" if status else None


def program():
    """The program to start; VANTRO_PROGRAM names another than the release build's."""
    return os.environ.get("VANTRO_PROGRAM") or str(Path(__file__).resolve().parents[2] / "build/vantro")
