"""Moves the ground under one run of the program: its engine's processes, its network, the clock, its descriptors."""

import os
import resource
import signal
import subprocess
import time
from pathlib import Path

from . import feedserver, processes
from .soak import SITES, Soak

MOST_GROWTH = 1.1  # of memory from the tenth kill to the last
LATE = 4  # descriptors opened after the tenth kill
PROCESSES = ("WebKitNetworkPr", "WebKitWebProces")  # as the kernel cuts their names
MINUTE = 60.0  # seconds
EVERY = 2  # minutes between two checks that are asked for every minute
LATEST = 10.0  # seconds that a check may be late
FEW_DESCRIPTORS = 64
# Takes the network away, and brings it back: connections fail at once, or are not answered.
UNREACHABLE = ("address del 127.0.0.1/8 dev lo", "address add 127.0.0.1/8 dev lo")
SILENT = ("link set lo down", "link set lo up")

# Moves the wall clock by up to 20 days, forward or back, every five seconds; what counts time from the machine's start
# is left alone.
CLOCK = """
#define _GNU_SOURCE
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>
int clock_gettime(clockid_t clock, struct timespec *now) {
    int result = syscall(SYS_clock_gettime, clock, now);
    struct timespec run;
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)
        && syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &run) == 0)
        now->tv_sec += ((long)(run.tv_sec / 5 * 2654435761u % 41) - 20) * 86400;
    return result;
}
int gettimeofday(struct timeval *restrict now, void *restrict zone) {
    struct timespec time;
    int result = clock_gettime(CLOCK_REALTIME, &time);
    *now = (struct timeval){time.tv_sec, time.tv_nsec / 1000};
    return result;
}
time_t time(time_t *to) {
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return to ? *to = now.tv_sec : now.tv_sec;
}
"""


class Ground(Soak):
    def __init__(self, settings=None):
        self.pictures = 0
        self.check_times = []
        super().__init__(Path.cwd() / "home", settings)

    def _behave(self, path):
        self.pictures += path.startswith("/picture")
        if path == next(iter(feedserver.PATHS.values())):
            self.check_times.append(time.monotonic())
        return super()._behave(path)

    def show(self):
        """Until the picture has been asked for."""
        before = self.pictures
        self.display()
        self._wait(lambda: self.pictures > before, "a picture")

    def kill(self, name):
        """A page whose process died comes back by itself."""
        before = self.pictures
        pids = [pid for pid in processes.named(name) if pid in processes.tree(self._reader.pid)]
        for pid in pids:
            os.kill(pid, signal.SIGKILL)
        if name == PROCESSES[1]:
            self._wait(lambda: self.pictures > before, "a picture after a kill")
        return len(pids)

    def has_loaded(self, name):
        return name in Path(f"/proc/{self._reader.pid}/maps").read_text()

    def stop(self, seconds):
        os.kill(self._reader.pid, signal.SIGSTOP)
        time.sleep(seconds)
        os.kill(self._reader.pid, signal.SIGCONT)

    def ask_offline(self):
        """A check of which no server hears; each news site's failure is told in a box."""
        self._press("Home", "Menu", "Down", "Return")
        self._wait(lambda: self._screen.dialogs(self._reader.pid), "a box")

    def close_boxes(self):
        def none():
            for box in self._screen.dialogs(self._reader.pid):
                self._screen.close(box)
                time.sleep(0.2)
            return not self._screen.dialogs(self._reader.pid)

        self._wait(none, "the last box's end")


def kills(count="100"):
    """Kills a process of the engine, then shows a page, and so on."""
    ground = Ground()
    ground.check()
    killed = 0
    for number in range(1, int(count) + 1):
        ground.show()
        killed += ground.kill(PROCESSES[number % 2])
        if number == int(count) // 10:
            warm = ground.look()
    ground.show()
    late = ground.look()
    print(f"{killed} killed, {ground.pictures} pictures; MiB, descriptors, files: {warm}, then {late}")
    level = late[0] < warm[0] * MOST_GROWTH and late[1] <= warm[1] + LATE and not late[2]
    return [*ground.end(), *([] if level else ["not level"]), *([] if killed == int(count) else ["too few were killed"])]


def clock():
    """Jumps with the clock, then stops the program for longer than from one check to the next."""
    Path("clock.c").write_text(CLOCK)
    subprocess.run(["cc", "-O2", "-shared", "-fPIC", "-o", "clock.so", "clock.c"], check=True)
    os.environ["LD_PRELOAD"] = str(Path("clock.so").resolve())
    ground = Ground({"Check Interval": 1, "Check Interval Minutes": 1})
    began = time.monotonic()
    time.sleep(2 * EVERY * MINUTE + LATEST)
    faults = [] if ground.has_loaded("clock.so") else ["the clock did not jump"]
    if len(ground.check_times) != 2:
        faults.append("not two checks while the clock jumped")
    ground.stop(2 * EVERY * MINUTE)
    woken, before = time.monotonic(), len(ground.check_times)
    time.sleep(EVERY * MINUTE + LATEST)
    first = [at for at in ground.check_times[before:] if at < woken + MINUTE]
    if len(first) > 1 or len(ground.check_times) == before:
        faults.append("not one check after the stop")
    print("checks after", *(f"{at - began:.0f}" for at in ground.check_times), f"s; went on after {woken - began:.0f} s")
    return faults + ground.end()


def network(count="20"):
    """Takes the network away and brings it back. To be run in a network of its own, which it takes away."""
    ground = Ground()
    for number in range(int(count)):
        away, back = SILENT if number % 10 == 9 else UNREACHABLE
        subprocess.run(["ip", *away.split()], check=True)
        ground.ask_offline()
        ground.close_boxes()
        subprocess.run(["ip", *back.split()], check=True)
        ground.check()
    print(f"{count} times without a network and with one again")
    return ground.end()


def descriptors():
    """A whole run with few of them."""
    resource.setrlimit(resource.RLIMIT_NOFILE, (FEW_DESCRIPTORS, FEW_DESCRIPTORS))
    ground = Ground()
    for _ in range(3):
        ground.check()
        ground.show()
    print("MiB, descriptors of all processes, files:", ground.look())
    return ground.end()


def run(trial, *numbers):
    try:
        faults = {"kills": kills, "clock": clock, "network": network, "descriptors": descriptors}[trial](*numbers)
    except RuntimeError as error:
        faults = [str(error)]
    print(*faults or ["all well"], sep="\n")
    return not faults
