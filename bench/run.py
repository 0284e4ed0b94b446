#!/usr/bin/env python3
"""Runs the benchmark programs, prints a table and writes it with all samples as JSON. Called by scripts/bench, inside a
display of its own. Programs of a pair take turns, so that whatever else the machine does hits both; medians are compared."""

import argparse
import json
import os
import statistics
import subprocess
import sys
import tempfile
import threading

GROUPS = ["load", "glib", "interstitial", "time", "measurement", "rich", "registration", "operations", "tracking", "size", "memory"]
MIB = 1 << 20
LONGEST_RUN = 900  # seconds that one program may take


class Failure(Exception):
    """One line for the person who started the benchmarks."""


class Row:
    """One line of the table. `limit` bounds what `of` names: the ratio to the baseline, the value itself, or the
    difference of the two; a row without limit is for information."""

    def __init__(self, name, unit, value, baseline=None, limit=None, of="ratio", samples=None):
        self.name, self.unit, self.value, self.baseline = name, unit, value, baseline
        self.limit, self.of, self.samples = limit, of, samples or {}
        self.ratio = value / baseline if baseline else None

    @staticmethod
    def of_samples(name, unit, library, bare=None, limit=None, of="ratio"):
        return Row(name, unit, statistics.median(library), statistics.median(bare) if bare else None, limit, of,
                   {"library": library, **({"bare": bare} if bare else {})})

    def ok(self):
        if self.limit is None:
            return None
        measured = {"ratio": self.ratio, "value": self.value}.get(self.of)
        if self.of == "difference":
            measured = self.value - self.baseline
        return measured <= self.limit

    def budget(self):
        if self.limit is None:
            return "-"
        if self.of == "ratio":
            return f"{self.limit:.2f} x"
        return f"{'+' if self.of == 'difference' else ''}{self.limit:g} {self.unit}"

    def cells(self):
        number = lambda n: "-" if n is None else f"{n:.3g}" if abs(n) < 10 else f"{n:,.1f}"
        verdict = {None: "", True: "ok", False: "over"}[self.ok()]
        return [self.name, f"{number(self.value)} {self.unit}",
                "-" if self.baseline is None else f"{number(self.baseline)} {self.unit}",
                "-" if self.ratio is None else f"{self.ratio:.2f}", self.budget(), verdict]

    def record(self):
        return {"name": self.name, "unit": self.unit, "value": self.value, "baseline": self.baseline, "ratio": self.ratio,
                "budget": self.limit, "budgetOf": self.of if self.limit is not None else None, "ok": self.ok(),
                "samples": self.samples}


class Bench:
    def __init__(self, build, quick):
        build = os.path.abspath(build)
        self.programs = os.path.join(build, "bench")
        self.sandbox_program = os.path.join(build, "tools", "sandbox", "velto-sandbox")
        self.source = os.path.dirname(os.path.abspath(__file__))
        self.quick = quick
        self.sandbox = None

    # --- running programs

    def start(self, words, errors, environment=None):
        path = words[0] if os.path.isabs(words[0]) else os.path.join(self.programs, words[0])
        try:
            return subprocess.Popen([path, *map(str, words[1:])], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                    stderr=errors, text=True, env={**os.environ, **(environment or {})})
        except OSError as error:
            raise Failure(f"{path}: {error.strerror}") from error

    def run(self, *words, environment=None, on_pause=None):
        """The JSON lines that a program prints; for {"pause": n} calls on_pause(n, its process number) and lets it go on."""
        lines = []
        with tempfile.TemporaryFile("w+") as errors:
            process = self.start(words, errors, environment)
            watchdog = threading.Timer(LONGEST_RUN, process.kill)
            watchdog.start()
            for text in process.stdout:
                line = json.loads(text)
                if "pause" not in line:
                    lines.append(line)
                    continue
                on_pause(line["pause"], process.pid)
                process.stdin.write("\n")
                process.stdin.flush()
            code = process.wait()
            watchdog.cancel()
            if code != 0:
                errors.seek(0)
                last = (errors.read().strip().splitlines() or ["it said nothing"])[-1]
                raise Failure(f"{words[0]} ended with {code}: {last}")
        return lines

    def start_sandbox(self, folder):
        words = [self.sandbox_program, "--data", folder, "--log", "/dev/null",
                 "--scenario", os.path.join(self.source, "sandbox.json")]
        self.sandbox = self.start(words, None)
        first = self.sandbox.stdout.readline()
        if not first:
            raise Failure("the sandbox server did not start")
        listening = json.loads(first)
        self.server = [listening["port"], listening["ca"]]

    def stop_sandbox(self):
        if self.sandbox:
            self.sandbox.terminate()
            self.sandbox.wait()

    def in_turns(self, rounds, library, bare):
        """Calls both as often, alternating which goes first; each gives a list of samples."""
        samples = ([], [])
        for i in range(rounds):
            for side in ((0, 1) if i % 2 == 0 else (1, 0)):
                samples[side].extend((library, bare)[side]())
        return samples

    # --- the groups of rows

    def load(self):
        def loads(program, key, count):
            return lambda: self.run(program, *self.server, key, count)[-1 if count == 1 else 1:]

        def pair(key, count, rounds):
            return self.in_turns(rounds, loads("velto-bench-load", key, count), loads("velto-bench-bare-load", key, count))

        def times(samples, what):
            return [[sample[what] for sample in side] for side in samples]

        rounds = 7 if self.quick else 15
        first = pair("bench", 1, rounds)
        late = pair("bench-late", 1, rounds)
        later = pair("bench", 10, 3) if self.quick else pair("bench", 40, 3)
        row = Row.of_samples
        early = []
        for after, limit in ((0, 1.00), (300, 0.50), (1000, 0.15)):
            environment = {"VELTO_BENCH_AFTER": str(after)}
            one = lambda program: lambda: self.run(program, *self.server, "bench", 1, environment=environment)
            samples = self.in_turns(rounds, one("velto-bench-load"), one("velto-bench-bare-load"))
            early.append(row(f"first load, {after} ms after the first frame", "ms", *times(samples, "ms"), limit=limit))
        return [row("first load of a process, server at once", "ms", *times(first, "ms"), limit=1.00),
                row("first load, server after 200 ms", "ms", *times(late, "ms"), limit=0.65),
                *early,
                row("later load, server at once", "ms", *times(later, "ms"), limit=0.12),
                row("  main thread in a first load, engine included", "ms", *times(first, "cpuMs")),
                row("  main thread in a later load, engine included", "ms", *times(later, "cpuMs"))]

    def glib(self):
        """The widget of the GObject library against the C++ interface below it."""
        if not os.path.exists(os.path.join(self.programs, "velto-bench-glib-load")):
            return []
        loads = lambda program: lambda: [sample["ms"] for sample in self.run(program, *self.server, "bench", 30)[1:]]
        widget, own = self.in_turns(3 if self.quick else 7, loads("velto-bench-glib-load"), loads("velto-bench-slot-load"))
        return [Row.of_samples("later load, GObject library over C++", "ms", widget, own, limit=1.02)]

    def interstitial(self):
        rounds = 3 if self.quick else 6

        def rows_of(program):
            return lambda: [self.run(program, *self.server, "bench-full", rounds)]

        library, bare = self.in_turns(3 if self.quick else 7, rows_of("velto-bench-interstitial"),
                                      rows_of("velto-bench-bare-interstitial"))
        first = lambda side, what: [run[0][what] for run in side]
        later = lambda side, what: [sample[what] for run in side for sample in run[1:]]
        row = lambda name, pick, what, base=True: Row.of_samples(name, "ms", pick(library, what),
                                                                 pick(bare, what) if base else None)
        return [row("interstitial, load to ready, first of a process", first, "readyMs"),
                row("interstitial, load to ready, later", later, "readyMs"),
                row("interstitial, show to its page loaded, first of a process", first, "pageMs"),
                row("interstitial, show to its page loaded, later", later, "pageMs"),
                row("  show to DidAppear but for the transition's 0.9 s, first", first, "shownMs", False),
                row("  show to DidAppear but for the transition's 0.9 s, later", later, "shownMs", False)]

    def time(self):
        first, later = [], []
        for _ in range(5 if self.quick else 15):
            (line,) = self.run("velto-bench-library-time", os.path.join(self.source, "ad.html"), 40)
            first.append(line["firstMs"])
            later.append(statistics.median(line["laterMs"]))
        return [Row.of_samples("library's time in a first load, engine excluded", "ms", first, limit=1, of="value"),
                Row.of_samples("library's time in a later load, engine excluded", "ms", later, limit=1, of="value")]

    def measurement(self):
        (line,) = self.run("velto-bench-injection", os.path.join(self.source, "ad.html"), 40 if self.quick else 150)
        return [Row.of_samples("load of a page with the measurement service, and without", "ms", line["withMs"],
                               line["withoutMs"], limit=3, of="difference")]

    def rich(self):
        (line,) = self.run("velto-bench-rich-media", 200 if self.quick else 1000)
        return [Row.of_samples("rich media: command to the new state in the page", "ms", line["libraryMs"], line["bareMs"],
                               limit=1.2)]

    def registration(self):
        def once(program):
            with tempfile.TemporaryDirectory() as folder:
                return self.run(program, folder)

        library, bare = self.in_turns(9 if self.quick else 25, lambda: once("velto-bench-registration"),
                                      lambda: once("velto-bench-bare-registration"))
        pick = lambda side, what: [sample[what] for sample in side]
        return [Row.of_samples("registration, first on an installation", "ms", pick(library, "ms"), pick(bare, "ms"),
                               limit=5, of="value"),
                Row.of_samples("  processor time of it", "ms", pick(library, "cpuMs"), pick(bare, "cpuMs")),
                Row.of_samples("  installing the platform before it", "ms", pick(library, "installMs"))]

    def operations(self):
        words = ["velto-bench-operations", "--benchmark_format=json", "--benchmark_min_time=0.05",
                 f"--benchmark_repetitions={5 if self.quick else 15}", "--benchmark_enable_random_interleaving=true"]
        process = self.start(words, subprocess.DEVNULL)
        output, _ = process.communicate(timeout=LONGEST_RUN)
        if process.returncode != 0:
            raise Failure(f"{words[0]} ended with {process.returncode}")
        samples = {}
        for entry in json.loads(output)["benchmarks"]:
            if entry.get("error_occurred"):
                raise Failure(f"{entry['name']}: {entry['error_message']}")
            if entry["run_type"] == "iteration":
                samples.setdefault(entry["run_name"], []).append(entry["cpu_time"] / 1000)  # from nanoseconds
        pair = lambda what: (samples[f"BM_{what}ByLibrary"], samples[f"BM_{what}ByHand"])
        return [Row.of_samples("building one ad request", "us", *pair("Request")),
                Row.of_samples("layout pass of 100 banners in one view", "us", *pair("Layout")),
                Row.of_samples("timeline of one load", "us", samples["BM_TimelineByLibrary"], None, limit=20, of="value")]

    def tracking(self):
        def with_waiting(count):
            with tempfile.TemporaryDirectory() as folder:
                return self.run("velto-bench-tracking", folder, count)

        many, few = self.in_turns(3 if self.quick else 9, lambda: with_waiting(10000), lambda: with_waiting(10))
        pick = lambda side, what: [statistics.median(sample[what]) for sample in side]
        start = lambda side: [sample["startMs"] for sample in side]
        return [Row.of_samples("adding one track, 10,000 waiting over 10", "us", pick(many, "addUs"), pick(few, "addUs"), limit=3),
                Row.of_samples("deleting one track, 10,000 waiting over 10", "us", pick(many, "deleteUs"),
                               pick(few, "deleteUs"), limit=3),
                Row.of_samples("starting with 10,000 tracks waiting, main thread", "ms", start(many), start(few), limit=50,
                               of="value")]

    def size(self):
        rows = []

        def stripped(library):
            with tempfile.NamedTemporaryFile() as result:
                source = os.path.join(self.programs, library)
                if subprocess.run(["strip", "--strip-all", "-o", result.name, source], check=False).returncode != 0:
                    raise Failure(f"{source} cannot be stripped")
                return os.path.getsize(result.name)

        whole = stripped("libvelto_gtk_weighed.so")
        for name, size, limit in [("library, stripped, without the GTK platform", stripped("libvelto_weighed.so"), 0.8),
                                  ("library, stripped, with the GTK platform", whole, 1.3)]:
            rows.append(Row(name, "MiB", size / MIB, limit=limit, of="value"))
        glib = os.path.join("..", "glib", "libvelto-glib-1.0.so.0")
        if os.path.exists(os.path.join(self.programs, glib)):
            rows.append(Row("GObject library, stripped, over that", "KiB", stripped(glib) / 1024, whole / 1024, limit=150,
                            of="difference"))
        # As the build embeds them.
        resources = os.path.join(os.path.dirname(__file__), "..", "velto", "resources")
        for name, script, limit in [("script put into rich-media pages", "mraid/mraid.js", 18),
                                    ("script put into measured pages", "measurement/omsdk-v1.js", None)]:
            words = ["esbuild", os.path.join(resources, script), "--bundle", "--minify", "--format=iife", "--target=es2020"]
            bundled = subprocess.run(words, stdout=subprocess.PIPE, check=False)
            if bundled.returncode != 0:
                raise Failure(f"{script} cannot be bundled")
            rows.append(Row(name, "KiB", len(bundled.stdout) / 1024, limit=limit, of="value"))
        return rows

    def memory(self):
        counts = [1, 100, 200] if self.quick else [1, 100, 1000]

        def measure(program):
            own, private, engine = {}, {}, {}

            def look(load, process):
                own[load] = resident(process, "VmRSS") / MIB
                private[load] = resident(process, "RssAnon") / MIB
                engine[load] = sum(proportional(child) for child in descendants(process)) / MIB

            self.run(program, *self.server, "bench", counts[-1], *counts, environment={"VELTO_BENCH_RELATED": "1"},
                     on_pause=look)
            return own, private, engine

        own, private, engine = measure("velto-bench-load")
        bare_own, bare_private, bare_engine = measure("velto-bench-bare-load")
        _, middle, last = counts
        loads = lambda count: f"{count:,} load{'s' if count > 1 else ''}"
        rows = [Row(f"resident memory after {loads(count)}", "MiB", own[count], bare_own[count], 4, "difference")
                for count in counts]
        rows.append(Row(f"  growth from {middle} to {loads(last)}", "MiB", own[last] - own[middle],
                        bare_own[last] - bare_own[middle], 0.5, "difference"))
        # Without the pages of program files, which every process that maps them shares.
        rows += [Row(f"  of it private, after {loads(count)}", "MiB", private[count], bare_private[count])
                 for count in counts]
        rows += [Row(f"  engine's processes after {loads(count)}", "MiB", engine[count], bare_engine[count])
                 for count in counts]
        return rows


# --- memory of other processes, in bytes


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


# --- the table


def print_table(rows):
    lines = [["", "library", "bare", "ratio", "budget", ""]] + [row.cells() for row in rows]
    widths = [max(len(line[column]) for line in lines) for column in range(len(lines[0]))]
    for number, line in enumerate(lines):
        cells = [cell.ljust(width) if column in (0, 5) else cell.rjust(width)
                 for column, (cell, width) in enumerate(zip(line, widths))]
        print("  ".join(cells).rstrip())
        if number == 0:
            print("-" * (sum(widths) + 2 * (len(widths) - 1)))


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__)
    parser.add_argument("--build", required=True, help="build folder")
    parser.add_argument("--out", required=True, help="file for the table and all samples, as JSON")
    parser.add_argument("--quick", action="store_true", help="fewer samples, 200 refreshes")
    parser.add_argument("groups", nargs="*", metavar="GROUP", help="which rows: " + ", ".join(GROUPS) + " (all)")
    arguments = parser.parse_args()
    unknown = [group for group in arguments.groups if group not in GROUPS]
    if unknown:
        parser.error(f"there is no group {unknown[0]!r}; there are {', '.join(GROUPS)}")

    bench = Bench(arguments.build, arguments.quick)
    load_before = os.getloadavg()[0]
    rows = []
    try:
        with tempfile.TemporaryDirectory() as folder:
            bench.start_sandbox(folder)
            for group in arguments.groups or GROUPS:
                print(f"measuring: {group}", file=sys.stderr, flush=True)
                rows += getattr(bench, group)()
    except Failure as failure:
        print(f"bench: {failure}", file=sys.stderr)
        return 1
    finally:
        bench.stop_sandbox()

    print_table(rows)
    if load_before > os.cpu_count() / 2:
        print(f"\nThe machine was busy before this began (load {load_before:.1f} on {os.cpu_count()} processors).")
    os.makedirs(os.path.dirname(os.path.abspath(arguments.out)), exist_ok=True)
    with open(arguments.out, "w", encoding="utf-8") as file:
        json.dump({"quick": arguments.quick, "processors": os.cpu_count(), "loadBefore": load_before,
                   "rows": [row.record() for row in rows]}, file, indent=1)
        file.write("\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
