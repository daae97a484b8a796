"""Draws how costs grow, an SVG a plot, with gnuplot."""

import subprocess

# By the plot's name: what it says, which axes are logarithmic, where y starts, and whether costs are
# shown for one of what x counts.
PLOTS = {
    "text-length": {"title": "Texts: time of an operation by length", "x": "UTF-16 units",
                    "y": "ns", "log": "xy", "from": 0.5},
    "format-markers": {"title": "Formatting: time of a message by its markers", "x": "markers",
                       "y": "ns", "log": "xy"},
    "log-producers": {"title": "Logging: records through the queue into the file",
                      "x": "threads that log", "y": "records/s", "log": "x"},
    "log-message-length": {"title": "Logging: time of a record until the file holds it",
                           "x": "bytes of the message", "y": "ns", "log": "xy"},
    "log-context-pairs": {"title": "Logging: time of a call and its line by the session's context",
                          "x": "pairs of the context", "y": "ns", "log": ""},
    "log-slow-disk": {"title": "Logging: time of a call in a burst of 12,000 by the disk's speed",
                      "x": "microseconds that the disk takes for a record", "y": "ns a call",
                      "log": "xy"},
    "directory-entries": {"title": "Directories: time of a listing by entries", "x": "entries",
                          "y": "ns an entry", "log": "xy", "each": True},
    "keys": {"title": "Look-ups by the number of keys", "x": "keys", "y": "ns", "log": "xy"},
}

# Told apart by most eyes, whatever colours these see.
COLOURS = ["#0072B2", "#D55E00", "#009E73", "#CC79A7", "#E69F00", "#56B4E9"]


def lines_of(rows, each):
    """The lines of a plot: by curve and contender a list of points, the limits last."""
    lines, limits = {}, {}
    for row in rows:
        named = [("ours", row["ours"], lines), *((who, f, lines) for who, f in row["peers"].items()),
                 *((who, f, limits) for who, f in row["limit"].items())]
        for who, figures, into in named:
            value = figures["median"] / (row["x"] if each else 1)
            into.setdefault((row["curve"], who), []).append((row["x"], value))
    return lines, limits


def styles(lines, limits):
    """A colour a curve, or a contender where there is one curve; a dash a contender."""
    curves = list(dict.fromkeys(curve for curve, _ in lines))
    contenders = list(dict.fromkeys(who for _, who in lines))
    for curve, who in lines:
        colour = curves.index(curve) if len(curves) > 1 else contenders.index(who)
        dash = 1 if who == "ours" else 2
        points = "pt 7 ps 0.5" if who == "ours" else "pt 6 ps 0.5"
        yield f'lc rgb "{COLOURS[colour % len(COLOURS)]}" dt {dash} lw 1.6 {points}'
    for _ in limits:
        yield 'lc rgb "#808080" dt 3 lw 1.6 pt 2 ps 0.3'


def script(plot, rows, path):
    about = PLOTS[plot]
    lines, limits = lines_of(rows, about.get("each"))
    everything = list(lines.items()) + list(limits.items())
    places = sorted({x for _, points in everything for x, _ in points})
    commands = ['set terminal svg size 800,420 font "sans-serif,12" background "white"',
                f'set output "{path}"', f'set title "{about["title"]}"', "set grid lt 1 lc rgb '#dddddd'",
                f'set xlabel "{about["x"]}"', f'set ylabel "{about["y"]}"',
                "set key outside right center Left reverse", 'set format x "%.0s %c"']
    commands.append(f'set format y "%.{0 if "y" in about["log"] else 1}s %c"')
    commands += [f"set logscale {axis}" for axis in about["log"]]
    commands.append(f"set xrange [{places[0]}:{places[-1]}]")
    if "y" not in about["log"] or "from" in about:
        commands.append(f"set yrange [{about.get('from', 0)}:*]")
    zero = None
    if "x" in about["log"]:
        if places[0] == 0:  # half of the first place stands for it
            zero = places[1] / 2
            commands += [f'set xtics add ("0" {zero})', f"set xrange [{zero}:{places[-1]}]"]
        if places[-1] <= 128:
            commands.append("set xtics (" + ", ".join(f'"{x:g}" {x or zero}' for x in places) + ")")
    several = len({curve for curve, _ in lines}) > 1
    drawn = []
    for i, (((curve, who), points), style) in enumerate(zip(everything, styles(lines, limits))):
        data = "\n".join(f"{zero if zero and x == 0 else x:.6g} {y:.6g}" for x, y in sorted(points))
        commands.append(f"$line{i} << EOD\n{data}\nEOD")
        name = f"{curve}, {who}" if several else who
        drawn.append(f'$line{i} with linespoints {style} title "{name}" noenhanced')
    commands.append("plot " + ", ".join(drawn))
    return "\n".join(commands) + "\n"


def draw(rows, folder):
    folder.mkdir(parents=True, exist_ok=True)
    for plot in PLOTS:
        chosen = [row for row in rows if row.get("plot") == plot]
        if chosen:
            path = folder / f"{plot}.svg"
            subprocess.run(["gnuplot"], input=script(plot, chosen, path), text=True, check=True)
            print(f"drew {path}")
