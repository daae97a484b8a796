#!/usr/bin/env python3
"""Runs benchmark programs, judges what they measured, keeps it, and compares runs.

`./dev bench` builds what `--list-programs` prints and then calls this script with the same
arguments.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import subprocess
import sys
import tempfile
import time

import plots
import results

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Of rows whose rounds leave open on which side of their marks they are. The memory of a process is
# laid out anew in each run.
MORE_RUNS = 3
ROUNDS_AGAIN = 4


def arguments():
    parser = argparse.ArgumentParser(prog="./dev bench", allow_abbrev=False, description=(
        "--benchmark_filter=REGEX and other --benchmark_... options go to the programs, and for a "
        "quick look --records=N."))
    parser.add_argument("names", nargs="*", metavar="NAME",
                        help="text, files, ...: the program bench_NAME; all but scaling without")
    parser.add_argument("--rounds", type=int, default=5, metavar="N",
                        help="of five or more: followed by others of rows at their marks")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE", help="keep the run")
    parser.add_argument("--compare", type=pathlib.Path, nargs="+", metavar="FILE",
                        help="OLD [NEW]: show what moved since a kept run; without NEW, run now")
    parser.add_argument("--plot", type=pathlib.Path, metavar="FILE",
                        help="draw the plots of a kept run of scaling again")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/release",
                        help=argparse.SUPPRESS)
    parser.add_argument("--list-programs", action="store_true", help=argparse.SUPPRESS)
    # The parser would take what has a blank in it for a name.
    theirs = [a for a in sys.argv[1:] if a.startswith(("--benchmark_", "--records="))]
    options = parser.parse_args([a for a in sys.argv[1:] if a not in theirs])
    options.rest = theirs
    if options.compare and len(options.compare) > 2:
        parser.error("--compare takes one or two files")
    return options


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def programs_of(options):
    """The names of the programs that have to run."""
    if options.plot or (options.compare and len(options.compare) == 2):
        return []
    known = (options.build / "benchmarks.txt").read_text(encoding="utf-8").split()
    if not options.names and options.compare:
        return list(dict.fromkeys(row["program"] for row in load(options.compare[0])["rows"]))
    chosen = ["bench_" + name.replace("-", "_") for name in options.names]
    unknown = [name for name in chosen if name not in known]
    if unknown:
        sys.exit(f"bench: no program {unknown[0]}; there are: {' '.join(known)}")
    return chosen or [name for name in known if name != "bench_scaling"]


def output_of(*command):
    try:
        done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=True)
        return done.stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return ""


def cpu_model():
    try:
        for line in open("/proc/cpuinfo", encoding="utf-8"):
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return output_of("sysctl", "-n", "machdep.cpu.brand_string") or platform.machine()


def machine(build):
    cache = {}
    for line in (build / "CMakeCache.txt").read_text(encoding="utf-8").splitlines():
        name, _, value = line.partition("=")
        cache[name.partition(":")[0]] = value
    build_type = cache.get("CMAKE_BUILD_TYPE", "")
    flags = (cache.get("CMAKE_CXX_FLAGS", ""), cache.get(f"CMAKE_CXX_FLAGS_{build_type.upper()}", ""))
    return {"cpu": cpu_model(), "cores": os.cpu_count(),
            "kernel": f"{platform.system()} {platform.release()}",
            "compiler": output_of(cache.get("CMAKE_CXX_COMPILER", "c++"), "--version").split("\n")[0],
            "flags": " ".join(" ".join(flags).split()),
            "version": output_of("git", "describe", "--always", "--dirty")}


def measured(options, program, rounds, *more):
    """The rows that a program writes, by their names."""
    with tempfile.NamedTemporaryFile("r", suffix=".json", encoding="utf-8") as lines:
        # A curve has many points, each of which may be less exact than a row.
        short = ["--benchmark_repetitions=1"] if program == "bench_scaling" else []
        command = [options.build / program, f"--rounds={rounds}", f"--json={lines.name}", *short,
                   *options.rest, *more]
        if subprocess.run(command, check=False).returncode != 0:
            sys.exit(f"bench: {program} failed")
        return {row["row"]: row for row in map(json.loads, lines)}


def judged(options, program):
    """The rows of a program, with more rounds of those that are unclear."""
    raw = measured(options, program, options.rounds)
    unclear = [name for name, row in raw.items() if results.is_unclear(results.judge(program, row))]
    if unclear and options.rounds >= results.ENOUGH_ROUNDS:
        print(f"-- {len(unclear)} of {len(raw)} rows are unclear", file=sys.stderr, flush=True)
        for _ in range(MORE_RUNS):
            again = measured(options, program, ROUNDS_AGAIN,
                             f"--benchmark_filter={results.filter_for(unclear)}")
            for name in set(unclear) & set(again):  # a few rows come with others only
                results.add_rounds(raw[name], again[name])
    return [results.judge(program, row) for row in raw.values()]


def run(options, programs):
    start, load_before = time.time(), os.getloadavg()
    rows = []
    for program in programs:
        print(f"== {program}", file=sys.stderr, flush=True)
        rows += judged(options, program)
    return {"machine": machine(options.build),
            "date": datetime.datetime.fromtimestamp(start, datetime.timezone.utc).isoformat(
                timespec="seconds"),
            "seconds": round(time.time() - start), "rounds": options.rounds,
            "load_before": load_before, "load_after": os.getloadavg(), "rows": rows}


def rounds_text(kept):
    most = max(len(row["ours"]["rounds"]) for row in kept["rows"])
    return f"{kept['rounds']} rounds, up to {most} runs of a task,"


def heading(kept):
    about = kept["machine"]
    loads = " and ".join(f"{kept[key][0]:.2f}" for key in ("load_before", "load_after"))
    lines = [f"{about['cpu']}, {about['cores']} cores, {about['kernel']}",
             f"{about['compiler']}; {about['flags']}",
             f"{about['version'] or 'no version'}, {kept['date']}, {rounds_text(kept)} "
             f"in {kept['seconds']} s; load before and after {loads}"]
    if kept["load_before"][0] > about["cores"] / 2:
        lines.append("The machine was busy with something else before.")
    if kept["rounds"] < results.ENOUGH_ROUNDS:
        lines.append("Fewer than five rounds do not tell the noise: the verdicts mean little.")
    return "\n".join(lines)


def keep(kept, path):
    path.write_text(json.dumps(kept, indent=1, ensure_ascii=False) + "\n", encoding="utf-8")


def main():
    options = arguments()
    programs = programs_of(options)
    if options.list_programs:
        print("\n".join(programs))
        return
    folder = ROOT / "docs/plots"
    if options.plot:
        plots.draw(load(options.plot)["rows"], folder)
        return
    old = load(options.compare[0]) if options.compare else None
    new = load(options.compare[1]) if not programs else run(options, programs)
    if programs:
        if options.json:
            keep(new, options.json)
        rows = [row for row in new["rows"] if "plot" not in row]
        if rows:
            print(heading(new), results.result_table(rows), sep="\n\n")
        if len(rows) < len(new["rows"]):
            plots.draw(new["rows"], folder)
    if old:
        print("", "before:", heading(old), "", "now:", heading(new), "",
              results.comparison(old["rows"], new["rows"]), sep="\n")


if __name__ == "__main__":
    main()
