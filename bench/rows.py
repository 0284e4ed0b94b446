"""The rows of the table that bench/run.py prints, and the table."""

import math
import statistics


class Row:
    """One line of the table. `limit` bounds what `of` names: the ratio to the baseline, the value itself, or the
    difference of the two; a row without limit is for information."""

    def __init__(self, name, unit, value, baseline=None, limit=None, of="ratio", samples=None):
        self.name, self.unit, self.value, self.baseline = name, unit, value, baseline
        self.limit, self.of, self.samples = limit, of, samples or {}
        self.ratio = value / baseline if baseline else None
        self.busy = False  # others used the machine meanwhile

    def spread(self, side="library"):
        """Half the distance of the quartiles of one side's samples."""
        samples = self.samples.get(side, [])
        if len(samples) < 4:
            return None
        low, _, high = statistics.quantiles(samples, n=4)
        return (high - low) / 2

    @staticmethod
    def of_samples(name, unit, library, bare=None, limit=None, of="ratio"):
        return Row(name, unit, statistics.median(library), statistics.median(bare) if bare else None, limit, of,
                   {"library": library, **({"bare": bare} if bare else {})})

    def measured(self):
        """What the limit bounds."""
        if self.of == "difference":
            return self.value - self.baseline
        return self.value if self.of == "value" else self.ratio

    def ok(self):
        return None if self.limit is None else self.measured() <= self.limit

    def budget(self):
        if self.limit is None:
            return "-"
        if self.of == "ratio":
            return f"{self.limit:.2f} x"
        return f"{'+' if self.of == 'difference' else ''}{self.limit:g} {self.unit}"

    def cells(self):
        verdict = {None: "", True: "ok", False: "over"}[self.ok()]
        return [self.name, figure(self.value, self.unit, self.spread()),
                figure(self.baseline, self.unit, self.spread("bare")),
                "-" if self.ratio is None else f"{self.ratio:.2f}", self.budget(), verdict + (" *" if self.busy else "")]

    def record(self):
        return {"name": self.name, "unit": self.unit, "value": self.value, "baseline": self.baseline, "ratio": self.ratio,
                "spread": self.spread(), "measured": self.measured(), "busy": self.busy, "budgetText": self.budget(),
                "budget": self.limit, "budgetOf": self.of if self.limit is not None else None, "ok": self.ok(),
                "samples": self.samples}


def number(value):
    return f"{value:.3g}" if abs(value) < 10 else f"{value:,.1f}"


def figure(value, unit, spread=None):
    return "-" if value is None else number(value) + (f" ±{spread:.2g}" if spread else "") + f" {unit}"


def growth_row(name, samples, bare=None):
    """From milliseconds by size. With those of bare work that grows as much, that is what it is compared with: caches end,
    and a budget of 2.2 leaves a tenth over work that exactly doubles."""
    costs = sorted((size, statistics.median(spent)) for size, spent in samples.items())
    grown = [point for point in costs if point[1] >= 1.5 * costs[0][1]]
    grown = grown if len(grown) > 4 else costs
    ratios = [(late / early) ** (1 / math.log2(more / less))
              for (less, early), (more, late) in zip(grown, grown[4:])]
    name, baseline = "cost per doubling: " + name, growth_row(name, bare).value if bare else None
    of, limit = ("ratio", 1.1) if bare and baseline > 2 else ("value", 2.2)
    return Row(name, "x", max(ratios), baseline, limit, of,
               {"bySize": {str(size): samples[size] for size, _ in costs}, "ratios": ratios})


def merged(turns):
    """The rows of several turns, put together."""
    if len(turns) == 1:
        return turns[0]
    rows = []
    for same in zip(*turns):
        values = [row.value for row in same]
        baselines = [row.baseline for row in same if row.baseline is not None]
        samples = {}
        for side in ("library", "bare"):
            samples[side] = sum((row.samples.get(side, []) for row in same), [])
        samples = samples if samples["library"] else {"library": values}
        first = same[0]
        rows.append(Row(first.name, first.unit, statistics.median(values),
                        statistics.median(baselines) if baselines else None, first.limit, first.of, samples))
    return rows


def print_table(heads, lines):
    lines = [heads] + lines
    widths = [max(len(line[column]) for line in lines) for column in range(len(lines[0]))]
    for place, line in enumerate(lines):
        cells = [cell.ljust(width) if column in (0, len(heads) - 1) else cell.rjust(width)
                 for column, (cell, width) in enumerate(zip(line, widths))]
        print("  ".join(cells).rstrip())
        if place == 0:
            print("-" * (sum(widths) + 2 * (len(widths) - 1)))


def compared(rows, others):
    """Lines of both revisions side by side; what only one of them has stands alone."""
    known = {row.name: row for row in others}
    lines = []
    for row in rows:
        other = known.get(row.name)
        change = "-" if not other or not other.value else f"{100 * (row.value / other.value - 1):+.0f} %"
        ratio = lambda one: "-" if not one or one.ratio is None else f"{one.ratio:.2f}"
        lines.append([row.name, figure(other and other.value, row.unit, other and other.spread()), ratio(other),
                      figure(row.value, row.unit, row.spread()), ratio(row), change, *row.cells()[-2:]])
    return lines
