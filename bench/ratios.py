#!/usr/bin/env python3
"""Runs the benchmarks, interleaved, and prints one table of ratios. Usage: ratios.py PROGRAM [CASE...]

A ratio is that of two cases of one repetition; shown is the median over the repetitions. The spread is the distance
between the quartiles beside it. What spreads by more than a tenth is measured again, up to three times.
"""

import json
import re
import statistics
import subprocess
import sys

REPETITIONS = 7
LARGEST_SPREAD = 0.10

CURVE, FLOOR_B, QT = "Bench::ParameterCurve", "Bench::LockedCurve", "QtCurve"

LINES = (10000, 100000, 1000000)

ORDERS = (("in order", "linearInOrder"), ("random", "linearAtRandom"))

# Peers that are not in every build.
OPTIONAL = ("osgAnimationAtRandom", "mltAtRandom")

# Row, what, case, beside, wanted, dream. "<" wants at most that part of the other's time, ">" that many times as fast.
ROWS = [
    ("1", "static value / dynamic property", "staticParameter", "staticProperty", "<0.3", "<0.1"),
    *[("2", f"linear, in order, {n} keyframes / floor b", f"linearInOrder<{CURVE}>/{n}",
       f"linearInOrder<{FLOOR_B}>/{n}", "<0.7", "<0.4") for n in (2, 1000, 100000)],
    ("2", "the same, 100000 keyframes / 2", f"linearInOrder<{CURVE}>/100000", f"linearInOrder<{CURVE}>/2", "<1.3",
     "<1.05"),
    *[("3", f"linear, random, {n} keyframes / floor b", f"linearAtRandom<{CURVE}>/{n}",
       f"linearAtRandom<{FLOOR_B}>/{n}", "<0.8", "<0.25") for n in (2, 1000, 100000)],
    ("3", "linear, random, 1000 keyframes, times as fast as QVariantAnimation", f"linearAtRandom<{CURVE}>/1000",
     f"linearAtRandom<{QT}>/1000", ">4", ">8"),
    *[("3", f"linear, random, {n} keyframes, times as fast as osgAnimation", f"linearAtRandom<{CURVE}>/{n}",
       f"osgAnimationAtRandom/{n}", "", "") for n in (2, 1000, 100000)],
    *[("3", f"linear, random, {n} keyframes, times as fast as MLT", f"linearAtRandom<{CURVE}>/{n}",
       f"mltAtRandom/{n}", "", "") for n in (2, 1000)],
    ("4", "Bezier, 2 keyframes / floor a with Newton", "easedParameter/2", "easedFloor/2", "<2.0", "<1.3"),
    *[("4", f"Bezier, {n} keyframes / floor a with Newton", f"easedParameter/{n}", f"easedFloor/{n}", "<1.2", "<0.7")
      for n in (1000, 100000)],
    ("5", "two threads on one curve, times the work of one", "evaluateOnThreads/0/threads:2",
     "evaluateOnThreads/0/threads:1", ">1.6", ">1.95"),
    ("5", "two threads on a curve each", "evaluateOnThreads/1/threads:2", "evaluateOnThreads/1/threads:1", ">1.9",
     ">1.95"),
    *[("6", f"appending {n} keyframes / to a QVector", f"appendToParameter/{n}", f"appendToVector/{n}", "<3.5", "<2.5")
      for n in (1000, 10000, 100000)],
    *[("7", f"emitChange, {n} receivers / bare signal", f"emitChange/{n}", f"emitBare/{n}", *wanted)
      for n, wanted in ((0, ("<1.8", "<1.4")), (1, ("<1.2", "<1.05")), (10, ("<1.1", "<1.02")))],
    *[("8", f"{n} lines written to a file, times as fast as the plain way", f"libraryWrite/{n}", f"plainWrite/{n}",
       ">10", ">20") for n in LINES],
    *[("8", f"{n} lines written / bytes", f"libraryText/{n}", f"bytesText/{n}", "<2.0", "<1.3") for n in LINES],
    *[("9", f"{n} lines read, times as fast as the plain way", f"libraryRead/{n}", f"plainRead/{n}", ">4", ">6")
      for n in LINES],
    *[("9", f"{n} lines read / bytes", f"libraryRead/{n}", f"bytesRead/{n}", "<4", "<2") for n in LINES],
    *[("9", f"{n} lines read, times as fast as QJsonDocument", f"libraryRead/{n}", f"jsonRead/{n}", ">2.5", ">5")
      for n in LINES],
    *[("9", f"{n} lines read, times as fast as {what}", f"libraryRead/{n}", f"{peer}/{n}", "", "")
      for what, peer, sizes in (("it from arrays without names", "shortJsonRead", LINES),
                                ("QXmlStreamReader", "xmlRead", LINES), ("QSettings", "settingsRead", LINES[:2]))
      for n in sizes],
    *[("10", f"snapshot of {n} keyframes, times as fast as a deep copy", f"snapshot/{n}", f"deepCopy/{n}", *wanted)
      for n, wanted in ((1000, ("", "")), (10000, ("", "")), (100000, (">1000", ">2500")))],
    ("11", "bytes of an unwritten parameter / QObject", "unwritten", "bareObject", "<3.0", "<1.6"),
    ("11", "the same with a name of its own", "unwrittenOwnName", "bareObject", "", ""),
    ("11", "bytes of a written parameter / QObject", "written", "bareObject", "<3.5", "<1.9"),
    ("11", "the same with a name of its own", "writtenOwnName", "bareObject", "", ""),
    *[("12", f"{n} parameters at one frame / plain structs", f"comp<{CURVE}>/{n}", f"comp<Bench::PlainCurve>/{n}",
       "<6", "<3") for n in (1000, 10000, 100000)],
    *[("13", f"sampleValues, 1000 frames, {n} keyframes, times as fast as value", f"thousandSamples/{n}",
       f"thousandValues/{n}", ">3", ">10") for n in (10, 100, 1000)],
    *[("14", f"{what}, 8000 / 2000", f"growth<{case}>/8000", f"growth<{case}>/2000", "<6", "<4.5")
      for what, case in (("lines of members in descending order", "linesBackwards"),
                         ("lines of no member", "unknownLines"), ("members found by name", "lookingUp"),
                         ("subsets added and renamed", "renamingSubsets"),
                         ("subsets removed first to last", "removingSubsets"),
                         ("members that die first to last", "membersDying"),
                         ("parameters tied to a master and freed", "tyingMasters"),
                         ("values of views in descending order", "viewsDescending"))],
    *[(number, f"{what}, {order} / NumericParameter<double>", f"{case}<{kind}>/1000",
       f"{case}<{CURVE}>/1000", *wanted)
      for number, what, kind, wanted in (
          ("15", "derived class", "DerivedCurve", ("<1.5", "<1.1")),
          ("16", "derived class with one hook", "HookedCurve", ("<3", "<2")),
          ("17", "Parameter<bool>", "SwitchCurve", ("<1.3", "<1.0")),
          ("17", "PointParameter", "PointCurve", ("<1.3", "<1.0")),
          ("18", "two views with data", "TwoViews", ("<1.5", "<1.2")),
          ("18", "with a master", "ConstrainedCurve", ("<1.5", "<1.2")),
          ("18", "unsplittable, in another view", "UnsplittableCurve", ("<1.5", "<1.2")))
      for order, case in ORDERS],
    *[("19", f"{what}, one slot connected / without, and {signals}", f"editObserved<{act}>",
       f"editAndSignals<{act}>/{signals[0]}", *wanted)
      for what, act, signals, wanted in (
          ("keyframe appended", "Append", "2 bare signals", ("<1.3", "<1.1")),
          ("value set", "SetValue", "2 bare signals", ("<1.3", "<1.1")),
          ("value set", "SetValue", "1 bare signal", ("", "")),
          ("keyframe moved", "Move", "2 bare signals", ("<1.3", "<1.1")))],
    ("20", "10000 parameters, each of two threads with edits, as fast as one alone", "wholeFrame/2/1/0",
     "wholeFrame/1/0/0", ">0.9", ">0.97"),
    ("20", "the same in processor time", "wholeFrame/2/1/1", "wholeFrame/1/0/1", ">0.9", ">0.97"),
    *[("21", f"extentOf, {n} keyframes / a bare signal", f"extentOfChange/{n}", "emitBare/1", "<2", "<1.2")
      for n in (1000, 100000)],
    ("22", "a window of 100 of 100000 keyframes / copying 100 keyframes", "windowOfKeyframes", "copyOfKeyframes", "<5",
     "<2"),
    *[("23", f"800 pixels of {n} of 100000 keyframes, times as fast as 8000 values", f"curvePolyline/{n}",
       f"curveValues/{n}", *wanted) for n, wanted in ((80, (">20", ">100")), (80000, ("", "")))],
    *[("24", f"{n} keyframes simplified / their values read", f"simplifiedWave/{n}", f"keyframeValuesOfWave/{n}",
       *wanted) for n, wanted in ((10000, ("", "")), (1000000, ("<40", "<20")))],
]


def plain_name(name):
    """Without what the library of the benchmarks appends."""
    return re.sub(r"/(real_time|manual_time|iterations:\d+|repeats:\d+|keyframes:|random:|apart:|present:|renderers:|"
                  r"edited:|measured:)",
                  lambda part: "/" if part[1].endswith(":") else "", name)


def is_there(program, row):
    peer = row[3].split("/")[0]
    if peer not in OPTIONAL:
        return True
    found = subprocess.run([program, f"--benchmark_filter=^{peer}/", "--benchmark_list_tests=true"],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    return peer.encode() in found.stdout


def measure(program, cases):
    """The figures of each case, one for each repetition: bytes, work per second of several threads, or time."""
    pattern = "^(" + "|".join(sorted({re.escape(case.split("/")[0]) for case in cases})) + ")(/|$)"
    result = subprocess.run(
        [program, f"--benchmark_filter={pattern}", f"--benchmark_repetitions={REPETITIONS}",
         "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.02", "--benchmark_format=json"],
        check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    figures = {}
    for run in json.loads(result.stdout)["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        name = plain_name(run["name"])
        if run.get("error_occurred"):
            sys.exit(f"ratios.py: {name}: {run['error_message']}")
        if "threads:" in name:
            figure = 1 / run["items_per_second"]
        else:
            figure = run.get("bytes") or (run["real_time"] if "manual_time" in run["name"] else run["cpu_time"])
        figures.setdefault(name, {})[run["repetition_index"]] = figure
    return figures


def ratios_of(row, figures):
    case, beside = figures[row[2]], figures[row[3]]
    as_fast = row[4].startswith(">") or "times" in row[1]
    return [beside[i] / case[i] if as_fast else case[i] / beside[i] for i in case.keys() & beside.keys()]


def spread(ratios):
    lower, _, upper = statistics.quantiles(ratios, n=4)
    return (upper - lower) / statistics.median(ratios)


def is_met(wish, ratio):
    return not wish or (ratio >= float(wish[1:]) if wish[0] == ">" else ratio <= float(wish[1:]))


def main(program, words):
    rows = [row for row in ROWS if not words or any(word in (row[0], row[2].split("/")[0]) for word in words)]
    rows = [row for row in rows if is_there(program, row)]
    results, left = {}, rows
    for _ in range(3):
        figures = measure(program, [case for row in left for case in row[2:4]])
        for row in left:
            ratios = ratios_of(row, figures)
            if row not in results or spread(ratios) < spread(results[row]):
                results[row] = ratios
        left = [row for row in left if spread(results[row]) > LARGEST_SPREAD]
        if not left:
            break
    print(f"{'row':>3}  {'case':72} {'ratio':>8} {'wanted':>7} {'dream':>7} {'spread':>6}")
    for row in rows:
        ratio = statistics.median(results[row])
        note = "" if is_met(row[4], ratio) else "  not reached"
        print(f"{row[0]:>3}  {row[1]:72} {ratio:8.2f} {row[4]:>7} {row[5]:>7} {spread(results[row]):6.0%}{note}")


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2:])
