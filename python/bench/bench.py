"""Measures calls beside their floors: an empty method of pybind11 with the same arguments, and the call in C++.

    ./dev python bench
"""

import time
import timeit

import numpy as np

import _floor
import prm


ROUNDS = 40


def least(call, number):
    """The least processor time of a call, so that other programs count little."""
    return min(timeit.Timer(call, timer=time.thread_time).repeat(repeat=3, number=number)) / number


def beside(measured, floor):
    """The least of both, measured in turn."""
    pairs = [(measured(), floor()) for _ in range(ROUNDS)]
    return min(pair[0] for pair in pairs), min(pair[1] for pair in pairs)


def row(title, limit, measured, floor):
    measured, floor = beside(measured, floor)
    verdict = "" if measured / floor <= limit else "  ABOVE"
    print(f"{title:42} {measured * 1e9:12.0f} ns {floor * 1e9:12.0f} ns {measured / floor:6.2f} of {limit}{verdict}")


def main():
    print(f"{'':42} {'measured':>15} {'floor':>15}  ratio")
    opacity = prm.Number("opacity")
    opacity.keys = [(24.0 * i, i % 5, "Bezier", 0.3, 0, 0.7, 1) for i in range(1000)]
    empty = _floor.Empty()
    for title, arguments in [("value(time)", (1234.5,)), ("value(time, view)", (1234.5, 0))]:
        value, nothing = opacity.value, empty.method
        row(title, 1.5, lambda: least(lambda: value(*arguments), 5000), lambda: least(lambda: nothing(*arguments), 5000))
    times = np.linspace(0, 24000, 100000)
    row("sample of 100 000 frames", 1.2, lambda: least(lambda: opacity.sample(times), 1), lambda: _floor.sample(1000, times))


if __name__ == "__main__":
    main()
