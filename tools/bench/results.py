"""What the rounds of a run say: medians, ratios, verdicts, and what moved between two runs.

Each round has its own ratio of ours to the peer's: both ran right after each other, so that the
machine was equally fast for them. The ratio of a row is their median, and its noise the range in
which more rounds would have their median (see `noise`). A row is "at the mark" when the mark lies
within that noise: this run cannot tell on which side. Where a row falls short and the limit does,
too, the verdict tells by how much.
Between two runs a machine drifts more than within one, so a ratio has moved only when the ranges of
all rounds do not meet, or of all but a few where there are many.
"""

import math
import re
import statistics

ENOUGH_ROUNDS = 5  # Fewer do not tell the noise.


def noise(rounds):
    """The range that holds the median with a confidence of 95 %, by the sign test: it asks nothing
    of how the rounds are spread, but that none depends on another. Of five it is the whole range
    (94 %)."""
    ordered, n = sorted(rounds), len(rounds)
    cut = 0  # at either end
    cases = 1 + n  # of 2^n: at most cut + 1 rounds lie below the median; in as many, above it
    while 40 * cases <= 2 ** n:
        cut += 1
        cases += math.comb(n, cut + 1)
    return ordered[cut], ordered[-1 - cut]


def figures(rounds):
    return {"median": statistics.median(rounds), "min": min(rounds), "max": max(rounds),
            "rounds": rounds}


def verdict(row):
    low, high = row["ratio_low"], row["ratio_high"]
    if row["mark"] is None or row["ratio"] is None or not row["better"]:
        return ""
    if low <= row["mark"] <= high:
        said = "at the mark"
    elif (high < row["mark"]) == (row["better"] == "less"):
        return "reached"
    else:
        said = "NOT reached"
    for limit in row["limit"].values():
        ratio = statistics.median(ratios_of(row, limit) or [math.nan])
        if ratio > row["mark"] if row["better"] == "less" else ratio < row["mark"]:
            said += f", limit {ratio:.2f}"
    return said


def judge(program, raw):
    """A row as a program wrote it, with all that follows from its rounds."""
    row = {key: value for key, value in raw.items() if key not in ("contenders", "limit", "against")}
    row["program"] = program
    everybody = {who: figures(rounds) for who, rounds in raw["contenders"].items()}
    row["ours"] = everybody.pop(next(iter(everybody)))
    row["peers"] = everybody
    row["limit"] = {who: figures(rounds) for who, rounds in raw["limit"].items()}
    best = max if row["better"] == "more" else min
    row["best"] = raw["against"] or best(
        everybody, key=lambda who: everybody[who]["median"], default=None)
    row["ratio"] = row["ratio_low"] = row["ratio_high"] = None
    if (ratios := ratios_of(row, row["ours"])):
        row["ratio"] = statistics.median(ratios)
        row["ratio_low"], row["ratio_high"] = noise(ratios)
    row["verdict"] = verdict(row)
    return row


def is_unclear(row):
    """Whether its rounds leave open on which side of the mark it is."""
    return row["verdict"].startswith("at the mark")


def filter_for(names):
    """The filter of a program that finds the rows with these names."""
    return "^(" + "|".join(map(re.escape, names)) + ")$"


def add_rounds(raw, more):
    """Adds to a row as a program wrote it what another run of that program wrote."""
    for kind in ("contenders", "limit"):
        for who, rounds in raw[kind].items():
            rounds += more[kind][who]


def ratios_of(row, figures):
    """To the best peer, one a round; none without a peer or when a time is zero."""
    if row["best"] is None:
        return []
    pairs = list(zip(figures["rounds"], row["peers"][row["best"]]["rounds"]))
    return [time / peer for time, peer in pairs] if min(map(min, pairs)) > 0 else []


def number(value):
    if abs(value) >= 1e6:
        return f"{value / 1e6:,.3g} M" if abs(value) < 1e9 else f"{value / 1e6:,.0f} M"
    return f"{value:,.0f}" if abs(value) >= 100 else f"{value:.3g}"


def scale(unit, value):
    """The unit in which a value reads best, and how many of the given one it is."""
    steps = {"ns": [("s", 1e9), ("ms", 1e6), ("µs", 1e4)], "KiB": [("MiB", 1024)]}
    for name, size in steps.get(unit, []):
        if value >= size:
            return name, 1e3 if name == "µs" else size
    return unit, 1


def cells(row):
    unit, size = scale(row["unit"], row["ours"]["median"])

    def show(value):
        return number(value / size)

    def listed(everybody):
        ordered = sorted(everybody.items(), key=lambda item: item[1]["median"])
        return ", ".join(f"{who} {show(f['median'])}" for who, f in ordered)

    ours = row["ours"]
    spread = f"{show(ours['min'])} to {show(ours['max'])}"
    return [row["row"], f"{show(ours['median'])} {unit}".strip(), spread, listed(row["peers"]),
            listed(row["limit"]), row["best"] or "", ratio_text(row),
            "" if row["mark"] is None else f"{row['mark']:g}", row["verdict"]]


def ratio_text(row):
    if row["ratio"] is None:
        return ""
    return f"{row['ratio']:.2f} ({row['ratio_low']:.2f} to {row['ratio_high']:.2f})"


def table(head, rows):
    """Aligned as text and good as Markdown."""
    widths = [max(len(line[i]) for line in [head, *rows]) for i in range(len(head))]
    lines = [head, ["-" * width for width in widths], *rows]
    return "\n".join(
        "| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |"
        for line in lines)


def result_table(rows):
    head = ["row", "ours", "lowest to highest", "peers", "limit", "against", "ratio (noise)",
            "mark", ""]
    return table(head, [cells(row) for row in rows])


def moved(old, new):
    """The pairs of rows whose ranges of ratios do not meet, the worst first."""
    before = {(row["program"], row["row"]): row for row in old if row["ratio"] is not None}
    pairs = []
    for row in new:
        was = before.get((row["program"], row["row"]))
        if was and row["ratio"] is not None:
            (low, high), (was_low, was_high) = span(row), span(was)
            if low > was_high or high < was_low:
                pairs.append((was, row))
    return sorted(pairs, key=lambda pair: worsening(*pair), reverse=True)


def span(row):
    """The range of the ratios, without a sixth of them at either end where there are many."""
    ordered = sorted(ratios_of(row, row["ours"]))
    odd = len(ordered) // 6
    return ordered[odd], ordered[-1 - odd]


def worsening(was, row):
    """By which factor a ratio became worse; below 1 it became better."""
    factor = row["ratio"] / was["ratio"]
    return 1 / factor if row["better"] == "more" else factor


def comparison(old, new):
    pairs = moved(old, new)
    lines = []
    if pairs:
        lines.append(table(["row", "ratio before", "ratio now", "", ""], [
            [row["row"], ratio_text(was), ratio_text(row),
             ("worse" if worsening(was, row) > 1 else "better")
             + f" by {abs(row['ratio'] / was['ratio'] - 1) * 100:.0f} %",
             row["verdict"] if row["verdict"] == was["verdict"]
             else f"{was['verdict'] or 'no mark'} -> {row['verdict'] or 'no mark'}"]
            for was, row in pairs]))
    names = [{(row["program"], row["row"]) for row in rows} for rows in (old, new)]
    lines.append(f"{len(pairs)} of {len(names[0] & names[1])} rows moved; "
                 f"{len(names[0] - names[1])} are gone, {len(names[1] - names[0])} are new")
    return "\n".join(lines)
