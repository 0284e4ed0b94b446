"""The table that bench/run.py writes, as a page with one chart: all in one file, light and dark, without scripts."""

import math
from html import escape

from rows import figure

WIDTH, LEFT, BAR_LEFT, BUDGET_AT, RIGHT = 1160, 16, 490, 750, 890  # where the columns are; bars end before the last
HEAD, STEP, BAR = 56, 34, 12

STYLE = """
:root { color-scheme: light dark; --back: #fff; --text: #1c2024; --faint: #667079; --line: #d8dde2;
  --ok: #2f7fd0; --over: #c8372d; --plain: #8b96a1; --other: #b9c2cb; --budget: #1c2024; }
@media (prefers-color-scheme: dark) { :root { --back: #16191d; --text: #e6e9ec; --faint: #98a2ac; --line: #333a41;
  --ok: #5aa5ef; --over: #ff7468; --plain: #77828d; --other: #4d5761; --budget: #e6e9ec; } }
body { margin: 24px auto; max-width: 1192px; padding: 0 16px; background: var(--back); color: var(--text);
  font: 14px/1.5 system-ui, sans-serif; }
h1 { font-size: 20px; margin: 0 0 4px; }
p { margin: 0 0 12px; color: var(--faint); }
svg { width: 100%; height: auto; }
text { font: 13px system-ui, sans-serif; fill: var(--text); }
.faint { fill: var(--faint); font-size: 12px; }
.end { text-anchor: end; }
.middle { text-anchor: middle; }
.ok { fill: var(--ok); } .over { fill: var(--over); } .plain { fill: var(--plain); } .other { fill: var(--other); }
text.over { font-weight: 600; }
line { stroke: var(--line); } line.budget { stroke: var(--budget); stroke-dasharray: 4 3; }
line.spread { stroke: var(--text); stroke-width: 1.5; } line.baseline { stroke: var(--text); stroke-width: 2; }
"""


def page(result):
    rows = result["rows"]
    against = result.get("against")
    others = {row["name"]: row for row in against["rows"]} if against else {}
    over = sum(row["ok"] is False for row in rows)
    bounded = sum(row["ok"] is not None for row in rows)
    words = [f"{bounded - over} of {bounded} rows within budget", f"{result['processors']} processors",
             "fewer samples" if result["quick"] else "all samples"]
    if against:
        words.append(f"grey bars: {against['revision']}")
    if any(row["busy"] for row in rows):
        words.append("* measured on a busy machine")
    height = HEAD + STEP * len(rows) + 16
    lines = "\n".join(line(row, others.get(row["name"]), HEAD + STEP * place) for place, row in enumerate(rows))
    return f"""<!DOCTYPE html>
<html lang="en">
<head><meta charset="utf-8"><meta name="viewport" content="width=device-width"><title>Benchmarks</title>
<style>{STYLE}</style></head>
<body>
<h1>Benchmarks</h1>
<p>{escape("; ".join(words))}. A bar is the part of its budget that a row uses; without a budget it is shown beside its
baseline, which stands at the dashed line.</p>
<svg viewBox="0 0 {WIDTH} {height}" role="img" aria-label="{over} of {bounded} rows are over their budget">
<text class="faint middle" x="{BUDGET_AT}" y="20">budget</text>
<text class="faint end" x="{WIDTH - LEFT}" y="20">value, baseline</text>
<line class="budget" x1="{BUDGET_AT}" x2="{BUDGET_AT}" y1="28" y2="{height - 8}"/>
{lines}
</svg>
</body>
</html>
"""


def scale(row):
    """Makes of a number in the row's unit one in which the dashed line is at 1; nothing where there is nothing to compare."""
    budget, baseline = row["budget"], row["baseline"]
    if budget is None or row["budgetOf"] == "ratio":
        return (lambda value: value / baseline / (budget or 1)) if baseline else None
    less = baseline if row["budgetOf"] == "difference" else 0
    # Of a budget of nothing, nothing is all and anything too much.
    return lambda value: (value - less) / budget if budget else math.inf if value > less else 0


def place(part):
    """Where it lies in the picture; what is far over its budget ends at the edge."""
    return BAR_LEFT + min(max(part, 0) * (BUDGET_AT - BAR_LEFT), RIGHT - BAR_LEFT)


def bar(row, part, y, height, kind):
    return f'<rect class="{kind}" x="{BAR_LEFT}" y="{y}" width="{max(1, place(part) - BAR_LEFT):.1f}" height="{height}" rx="2"/>'


def line(row, other, y):
    kind = {None: "plain", True: "ok", False: "over"}[row["ok"]]
    middle = y + STEP // 2
    budget = "" if row["budget"] is None else f", budget {row['budgetText']}"
    baseline = "" if row["baseline"] is None else f", {figure(row['baseline'], row['unit'])}"
    parts = [f"<g><title>{escape(row['name'].strip() + budget)}</title>",
             f'<line x1="{LEFT}" x2="{WIDTH - LEFT}" y1="{y}" y2="{y}"/>',
             f'<text x="{LEFT + 12 * row["name"].startswith(" ")}" y="{middle + 4}">'
             f"{escape(row['name'].strip())}{' *' if row['busy'] else ''}</text>",
             f'<text class="end {"over" if row["ok"] is False else ""}" x="{WIDTH - LEFT}" y="{middle - 1}">'
             f"{escape(figure(row['value'], row['unit'], row['spread']) + baseline)}</text>",
             f'<text class="faint end" x="{WIDTH - LEFT}" y="{middle + 13}">'
             f"{'over ' if row['ok'] is False else ''}{escape('' if row['budget'] is None else row['budgetText'])}</text>"]
    to_part = scale(row)
    if to_part:
        top = middle - BAR // 2
        if other:
            parts.append(bar(other, to_part(other["value"]), top + BAR, 5, "other"))
        parts.append(bar(row, to_part(row["value"]), top, BAR, kind))
        if row["spread"]:
            low, high = (place(to_part(row["value"] + sign * row["spread"])) for sign in (-1, 1))
            parts.append(f'<line class="spread" x1="{low:.1f}" x2="{high:.1f}" y1="{middle}" y2="{middle}"/>')
        if row["baseline"] is not None and row["budget"] is not None:
            at = place(to_part(row["baseline"]))
            parts.append(f'<line class="baseline" x1="{at:.1f}" x2="{at:.1f}" y1="{top - 3}" y2="{top + BAR + 3}"/>')
        if to_part(row["value"]) * (BUDGET_AT - BAR_LEFT) > RIGHT - BAR_LEFT:
            parts.append(f'<text class="over" x="{RIGHT + 4}" y="{middle + 4}">›</text>')
    return "".join(parts) + "</g>"
