"""What bench/run.py asks the machine: memory of other processes, in bytes, and who else is at work."""

import os
import time


def resident(process, field):
    with open(f"/proc/{process}/status", encoding="utf-8") as file:
        return next(int(line.split()[1]) * 1024 for line in file if line.startswith(field + ":"))


def proportional(process):
    """Shared pages count by their share; nothing for a process that has just ended."""
    try:
        with open(f"/proc/{process}/smaps_rollup", encoding="utf-8") as file:
            return next(int(line.split()[1]) * 1024 for line in file if line.startswith("Pss:"))
    except (OSError, StopIteration):
        return 0


def private(process):
    """What no other process has a share of."""
    try:
        with open(f"/proc/{process}/smaps_rollup", encoding="utf-8") as file:
            return sum(int(line.split()[1]) * 1024 for line in file if line.startswith(("Private_Clean:", "Private_Dirty:")))
    except OSError:
        return 0


def descendants(process):
    found = []
    for thread in os.listdir(f"/proc/{process}/task"):
        with open(f"/proc/{process}/task/{thread}/children", encoding="utf-8") as file:
            children = file.read().split()
        for child in children:
            try:
                found += [child, *descendants(child)]
            except OSError:  # it ended meanwhile
                pass
    return found


def use_of_others():
    """How much of one processor is used while nothing of ours runs."""
    def used():
        with open("/proc/stat", encoding="utf-8") as file:
            user, nice, system, _, _, interrupt, soft, steal = map(int, file.readline().split()[1:9])
        return (user + nice + system + interrupt + soft + steal) / os.sysconf("SC_CLK_TCK")

    before, began = used(), time.monotonic()
    time.sleep(0.5)
    return (used() - before) / (time.monotonic() - began)


def wakes(process, seconds):
    """How often the threads of a process woke up in that time, with its milliseconds of processor time; the same for the
    processes below it. Threads and processes that ended meanwhile do not count."""
    def threads(one):
        found = {}
        for thread in os.listdir(f"/proc/{one}/task"):
            try:
                with open(f"/proc/{one}/task/{thread}/status", encoding="utf-8") as file:
                    switches = next(int(line.split()[1]) for line in file if line.startswith("voluntary"))
                with open(f"/proc/{one}/task/{thread}/schedstat", encoding="utf-8") as file:
                    found[one, thread] = switches, int(file.read().split()[0]) / 1e6  # from nanoseconds
            except OSError:
                pass
        return found

    def now():
        below = {}
        for one in descendants(process):
            try:
                below |= threads(one)
            except OSError:
                pass
        return threads(process), below

    def between(first, last):
        pairs = [(first.get(thread, (0, 0)), count) for thread, count in last.items()]
        return [sum(after[what] - before[what] for before, after in pairs) for what in (0, 1)]

    own, below = now()
    time.sleep(seconds)
    own_after, below_after = now()
    return [*between(own, own_after), *between(below, below_after)]
