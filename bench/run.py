#!/usr/bin/env python3
"""Runs the benchmark programs, prints a table and writes it with all samples as JSON, and as a chart. Called by
scripts/bench, inside a display of its own. Programs of a pair take turns, so that whatever else the machine does hits
both; medians are compared, and half the distance of the quartiles is their spread."""

import argparse
import concurrent.futures
import json
import math
import os
import statistics
import subprocess
import sys
import tempfile
import threading
import time

import chart
from far import far_server
from machine import descendants, private, proportional, resident, use_of_others, wakes
from rows import Row, compared, growth_row, merged, print_table

GROUPS = ["load", "many", "idle", "glib", "interstitial", "video", "time", "measurement", "rich", "registration", "operations", "tracking", "growth",
          "fleet", "size", "memory"]
MIB = 1 << 20
LONGEST_RUN = 900  # seconds that one program may take
MOST_OF_OTHERS = 0.25  # of a processor that others may use while rows are measured; more is marked


class Failure(Exception):
    """One line for the person who started the benchmarks."""


class Bench:
    def __init__(self, build, quick, lenient=False):
        self.lenient = lenient  # what a program of another revision cannot do is left out
        build = os.path.abspath(build)
        self.programs = os.path.join(build, "bench")
        self.sandbox_program = os.path.join(build, "tools", "sandbox", "velto-sandbox")
        self.source = os.path.dirname(os.path.abspath(__file__))
        self.quick = quick
        self.sandbox = None

    def rows_of(self, group):
        try:
            return getattr(self, group)()
        except (Failure, KeyError) as failure:
            if not self.lenient:
                raise
            print(f"not measured in the other revision: {group} ({failure})", file=sys.stderr)
            return []

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
            try:
                for text in process.stdout:
                    line = json.loads(text)
                    if "pause" not in line:
                        lines.append(line)
                        continue
                    on_pause(line["pause"], process.pid)
                    process.stdin.write("\n")
                    process.stdin.flush()
                code = process.wait()
            finally:
                watchdog.cancel()
                process.kill()
            if code != 0:
                errors.seek(0)
                last = (errors.read().strip().splitlines() or ["it said nothing"])[-1]
                raise Failure(f"{words[0]} ended with {code}: {last}")
        return lines

    def run_with_first_frame(self, *words, environment):
        """The one load of a program that tells when it had drawn its first frame, with the time from its start to that."""
        began = time.monotonic() * 1000
        frame, load = self.run(*words, environment=environment)
        return [{**load, "firstFrameMs": frame["firstFrameAt"] - began}]

    def start_sandbox(self, folder):
        words = [self.sandbox_program, "--data", folder, "--log", "/dev/null",
                 "--scenario", os.path.join(self.source, "sandbox.json"), "--serve", folder]
        self.folder = folder
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
        early, first_frames = [], ([], [])
        for after, limit in ((0, 1.00), (300, 0.50), (1000, 0.15)):
            environment = {"VELTO_BENCH_AFTER": str(after)}
            one = lambda program: lambda: self.run_with_first_frame(program, *self.server, "bench", 1, environment=environment)
            samples = self.in_turns(rounds, one("velto-bench-load"), one("velto-bench-bare-load"))
            for side, found in zip(first_frames, times(samples, "firstFrameMs")):
                side.extend(found)
            early.append(row(f"first load, {after} ms after the first frame", "ms", *times(samples, "ms"), limit=limit))
            if after == 0:
                early.append(row("  the processors' time that the whole machine uses in it", "ms", *times(samples, "busyMs")))
        turns = times(samples, "turnToFirstMs")
        environment["VELTO_BENCH_ANIMATED"] = "1"
        missed = times(self.in_turns(rounds, one("velto-bench-load"), one("velto-bench-bare-load")), "missedFrames")
        asked = {after: [] for after in (0, 1000)}
        bare_first, bare_open = [], []
        with far_server(*self.server, 100) as far:
            for _ in range(rounds):
                for after, found in asked.items():
                    found += self.run_with_first_frame("velto-bench-load", *far, "bench", 1, environment={"VELTO_BENCH_AFTER": str(after)})
                early_bare, late_bare = self.run("velto-bench-bare-load", *far, "bench", 2)
                bare_first.append(early_bare)
                bare_open.append(late_bare)
        requests = lambda samples: [sample["requestMs"] for sample in samples]
        return [row("first load of a process, server at once", "ms", *times(first, "ms"), limit=1.00),
                row("first load, server after 200 ms", "ms", *times(late, "ms"), limit=0.65),
                *early,
                row("first request, 100 ms of round trip, 1000 ms after the first frame, over one on an open connection", "ms",
                    requests(asked[1000]), requests(bare_open), limit=1.15),
                row("  at the first frame, over the bare program's first", "ms", requests(asked[0]), requests(bare_first)),
                row("start of the program to its window's first frame", "ms", *first_frames, limit=1.02),
                row("later load, server at once", "ms", *times(later, "ms"), limit=0.12),
                row("frames that an animation misses in a first load, 1000 ms after its first", "frames", *missed, limit=0, of="value"),
                row("longest turn of the main loop, from the first frame to the first ad", "ms", *turns),
                row("longest turn of the main loop in a later load", "ms", *times(later, "turnMs"), limit=4, of="value"),
                row("  main thread in a first load, engine included", "ms", *times(first, "cpuMs")),
                row("  main thread in a later load, engine included", "ms", *times(later, "cpuMs"))]

    def many(self):
        """Banners in a list: what each further one holds of its own, in the application and all its processes; and how the
        list scrolls. Bare views have a process each for the memory, and scroll in one."""
        if not os.path.exists(os.path.join(self.programs, "velto-bench-many")):
            return []
        run = lambda *words, **more: self.run("velto-bench-many", *self.server, "bench", *words, **more)
        held = {"library": {}, "bare": {}}
        for _ in range(1 if self.quick else 3):
            for count in (1, 5, 20):
                for side, found in held.items():
                    def look(_, process, samples=found.setdefault(count, [])):
                        samples.append(sum(map(private, (process, *descendants(process)))) / MIB)
                    run(side, "memory", count, on_pause=look)

        def further(side, count):
            return [(many - one) / (count - 1) for many, one in zip(held[side][count], held[side][1])]

        library, bare = self.in_turns(1 if self.quick else 3, lambda: [run("library", "scroll", 50)],
                                      lambda: [run("bare", "scroll", 50)])
        pick = lambda side, what: [line[what] for lines in side for line in lines if what in line]
        return [Row.of_samples("private memory with one banner", "MiB", held["library"][1], held["bare"][1]),
                *(Row.of_samples(f"  for each further of {count} banners", "MiB", further("library", count), further("bare", count),
                                 limit=12, of="value") for count in (5, 20)),
                Row.of_samples("frames missed while a list of 50 banners scrolls", "frames", pick(library, "missed"),
                               pick(bare, "missed"), limit=0, of="value"),
                Row.of_samples("a banner that scrolls back, until it is drawn", "ms", pick(library, "returnMs"),
                               pick(bare, "returnMs"), limit=30, of="value")]

    def idle(self):
        """A minute beside an ad while nothing happens: how often a thread wakes up, and what that takes of the processor.
        The engine looks at the memory that is left every five seconds, with or without an ad. All programs rest in the same
        minute; none comes or goes in it, which would have the others draw."""
        length = 15 if self.quick else 60
        cases = [("a banner", "static", "IN_VIEW", 4), ("a banner that is measured", "measured", "IN_VIEW", 4),
                 ("a rich-media banner", "rich", "IN_VIEW", 4), ("a banner in a hidden window", "static", "HIDDEN", 4),
                 ("an animated page in a hidden window", "animated", "HIDDEN", 4),
                 ("an animated page, scrolled away", "animated", "OUT_OF_VIEW", 4)]
        sides = ("library", "bare")
        together = threading.Barrier(len(cases) * len(sides), timeout=LONGEST_RUN)

        def rest(side, kind, place):
            counts = []

            def look(_, process):
                together.wait()
                counts.extend(wakes(process, length))
                together.wait()

            try:
                self.run("velto-bench-idle", side, kind, place, on_pause=look)
            except threading.BrokenBarrierError as broken:
                raise Failure("a window with an ad did not come to rest") from broken
            except Failure:
                together.abort()
                raise
            return counts

        with concurrent.futures.ThreadPoolExecutor(together.parties) as threads:
            resting = [[threads.submit(rest, side, kind, place) for side in sides] for _, kind, place, _ in cases]
            failures = [one.exception() for one in sum(resting, []) if one.exception()]
        if failures:
            raise min(failures, key=lambda one: isinstance(one.__cause__, threading.BrokenBarrierError))
        rows = []
        for (name, _, _, limit), pair in zip(cases, resting):
            (own, own_ms, page, page_ms), (bare, bare_ms, bare_page, bare_page_ms) = (one.result() for one in pair)
            rows += [Row(f"{length} s of {name}: wake-ups of the application", "", own, bare, limit, "difference"),
                     Row("  and of the web processes", "", page, bare_page),
                     Row("  processor time of both", "ms", own_ms + page_ms, bare_ms + bare_page_ms)]
        return rows

    def glib(self):
        """The widget of the GObject library against the C++ interface below it."""
        if not os.path.exists(os.path.join(self.programs, "velto-bench-glib-load")):
            return []
        loads = lambda program: lambda: [sample["ms"] for sample in self.run(program, *self.server, "bench", 60)[1:]]
        # Loads differ by a tenth from each other: it takes some hundreds of them to tell a hundredth.
        widget, own = self.in_turns(3 if self.quick else 15, loads("velto-bench-glib-load"), loads("velto-bench-slot-load"))
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

    def video(self):
        """From asking for a document to the first picture on the screen, in a process of its own and in one that has shown some;
        without the library the same document and the same file."""
        if not os.path.exists(os.path.join(self.programs, "velto-bench-video")):
            return []
        film = os.path.join(self.folder, "film.webm")
        words = ("gst-launch-1.0 -q videotestsrc num-buffers=500 ! video/x-raw,width=640,height=360,framerate=25/1 ! "
                 "vp8enc deadline=1 ! webmmux ! filesink location=").split()
        words[-1] += film
        if not os.path.exists(film) and subprocess.run(words, check=False).returncode != 0:
            raise Failure("no film can be made")
        loads = lambda program, count: lambda: self.run(program, *self.server, "bench", count)[1 if count > 1 else 0:]
        pair = lambda count, rounds: self.in_turns(rounds, loads("velto-bench-video", count), loads("velto-bench-bare-video", count))
        first = pair(1, 7 if self.quick else 15)
        later = pair(10, 2 if self.quick else 5)
        pick = lambda samples, what: [[sample[what] for sample in side] for side in samples]
        row = Row.of_samples
        return [row("video ad: document to first frame, over the player library's own", "ms", *pick(first, "ms"), limit=1.15),
                row("  the same, later in a process", "ms", *pick(later, "ms"), limit=1.15),
                row("longest turn of the main loop while a video ad starts", "ms", *pick(first, "turnMs"), limit=4, of="value"),
                row("  the same, later in a process", "ms", *pick(later, "turnMs"), limit=4, of="value")]

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
        (line,) = self.run("velto-bench-rich-media", 2500 if self.quick else 10000)
        return [Row.of_samples("rich media: command to the new state in the page", "ms", line["libraryMs"], line["bareMs"],
                               limit=1.1),
                Row.of_samples("  twenty commands in one turn, over one", "ms", line["twentyMs"], line["libraryMs"],
                               limit=2)]

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
        samples = self.in_microseconds("velto-bench-operations")
        pair = lambda what: (samples[f"BM_{what}ByLibrary"], samples[f"BM_{what}ByHand"])
        return [Row.of_samples("building one ad request", "us", *pair("Request"), limit=1.5),
                *self.layout(),
                Row.of_samples("timeline of one load", "us", samples["BM_TimelineByLibrary"], None, limit=20, of="value")]

    def layout(self):
        """A window with a hundred banners gets another size; the toolkit places as many widgets by alignment."""
        if not os.path.exists(os.path.join(self.programs, "velto-bench-layout")):
            return []
        samples = self.in_microseconds("velto-bench-layout")
        return [Row.of_samples("layout of 100 banners in a window, over the toolkit's", "us", samples["BM_LayoutByLibrary"],
                               samples["BM_LayoutByToolkit"], limit=2)]

    def in_microseconds(self, program):
        """The samples of each benchmark in a program of benchmarks."""
        words = [program, "--benchmark_format=json", "--benchmark_min_time=0.05",
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
        return samples

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

    def growth(self):
        """What each doubling of the work costs. Four doublings in a row count, so that noise does not, from where the work
        costs more than what is always there; the worst four of them are the figure."""
        halves = lambda most, least: sorted(most >> n for n in range(int(math.log2(most / least)) + 1))
        rounds = 3 if self.quick else 9
        sizes = halves(100000, 10)
        kinds = [("markup, 10 KiB to 5 MiB", "velto-bench-growth", ["markup"], rounds, halves(5 << 20, 10 << 10)),
                 ("mediation, 10 to 10,000 items", "velto-bench-growth", ["mediation"], rounds, halves(10000, 10)),
                 ("1 to 100 placements at once", "velto-bench-growth", ["placements"], rounds, halves(100, 1)),
                 ("10 to 100,000 tracks stored and sent", "velto-bench-growth", ["tracks"], 1 if self.quick else 3, sizes),
                 ("polling with 10 to 100,000 pending tracks", "velto-bench-growth", ["polling"], 1 if self.quick else 3, sizes),
                 ("1 to 1,000 listeners in a page", "velto-bench-listeners", [], rounds, halves(1000, 1))]
        rows = []
        for name, program, words, count, sizes in kinds:
            if os.path.exists(os.path.join(self.programs, program)):
                measure = lambda kind: {line["size"]: line["ms"] for line in self.run(program, *kind, count, *sizes)}
                rows.append(growth_row(name, measure(words), measure(["texts"]) if words == ["tracks"] else None))
        if os.path.exists(os.path.join(self.programs, "velto-bench-tracking")):
            starts = {size: [] for size in halves(100000, 1000)}
            for size in [size for _ in range(1 if self.quick else 3) for size in starts]:
                with tempfile.TemporaryDirectory() as folder:
                    starts[size] += [line["startMs"] for line in self.run("velto-bench-tracking", folder, size)]
            rows.append(growth_row("a start with 1,000 to 100,000 tracks in the store", starts))
        return rows

    def fleet(self):
        lines = self.run("velto-bench-fleet", 20000 if self.quick else 100000)
        after = lambda away: next(line for line in lines if line["hour"] == "after" and line["away"] == away)
        return [Row(f"  {what} back after an hour: requests in the highest second over the mean", "a second",
                    after(away)["highest"], after(away)["mean"], 3)
                for away, what in (("all", "servers"), ("tracking", "tracking servers"))]

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
            # It holds video ads, too; an older one does not.
            with_video_ads = "libvelto_vast_weighed.so"
            has_video_ads = os.path.exists(os.path.join(self.programs, with_video_ads))
            held = stripped(with_video_ads) if has_video_ads else whole
            rows.append(Row("GObject library, stripped, over that", "KiB", stripped(glib) / 1024, held / 1024, limit=150,
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


def measured(benches, group):
    """The group's rows of each bench. Two benches take turns, and what they found in each is put together."""
    print(f"measuring: {group}", file=sys.stderr, flush=True)
    others = use_of_others()
    turns = [benches, benches[::-1], benches] if len(benches) > 1 else [benches]
    found = {bench: [] for bench in benches}
    for turn in turns:
        for bench in turn:
            found[bench].append(bench.rows_of(group))
    others = max(others, use_of_others())
    rows = [merged(found[bench]) for bench in benches]
    for row in sum(rows, []):
        row.busy = others > MOST_OF_OTHERS
    return rows


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__)
    parser.add_argument("--build", required=True, help="build folder")
    parser.add_argument("--out", required=True, help="file for the table and all samples, as JSON; the chart goes beside it")
    parser.add_argument("--quick", action="store_true", help="fewer samples, 200 refreshes")
    parser.add_argument("--against", nargs=2, metavar=("REV", "FOLDER"), help="another revision, and its build folder")
    parser.add_argument("groups", nargs="*", metavar="GROUP", help="which rows: " + ", ".join(GROUPS) + " (all)")
    arguments = parser.parse_args()
    unknown = [group for group in arguments.groups if group not in GROUPS]
    if unknown:
        parser.error(f"there is no group {unknown[0]!r}; there are {', '.join(GROUPS)}")

    benches = [Bench(arguments.build, arguments.quick)]
    if arguments.against:
        benches.append(Bench(arguments.against[1], arguments.quick, lenient=True))
    load_before = os.getloadavg()[0]
    rows = [[] for _ in benches]
    folders = [tempfile.TemporaryDirectory() for _ in benches]
    try:
        for bench, folder in zip(benches, folders):
            bench.start_sandbox(folder.name)
        for group in arguments.groups or GROUPS:
            for all_rows, more in zip(rows, measured(benches, group)):
                all_rows += more
    except Failure as failure:
        print(f"bench: {failure}", file=sys.stderr)
        return 1
    finally:
        for bench, folder in zip(benches, folders):
            bench.stop_sandbox()
            folder.cleanup()

    own = rows[0]
    if arguments.against:
        heads = ["", arguments.against[0], "ratio", "this one", "ratio", "change", "budget", ""]
        print_table(heads, compared(own, rows[1]))
    else:
        print_table(["", "library", "bare", "ratio", "budget", ""], [row.cells() for row in own])
    if any(row.busy for row in own):
        print("\n* The machine was busy with something else before or after these.")
    elif load_before > os.cpu_count() / 2:
        print(f"\nThe machine was busy before this began (load {load_before:.1f} on {os.cpu_count()} processors).")
    result = {"quick": arguments.quick, "processors": os.cpu_count(), "loadBefore": load_before,
              "rows": [row.record() for row in own]}
    if arguments.against:
        result["against"] = {"revision": arguments.against[0], "rows": [row.record() for row in rows[1]]}
    os.makedirs(os.path.dirname(os.path.abspath(arguments.out)), exist_ok=True)
    with open(arguments.out, "w", encoding="utf-8") as file:
        json.dump(result, file, indent=1)
        file.write("\n")
    with open(os.path.splitext(arguments.out)[0] + ".html", "w", encoding="utf-8") as file:
        file.write(chart.page(result))
    return 0


if __name__ == "__main__":
    sys.exit(main())
