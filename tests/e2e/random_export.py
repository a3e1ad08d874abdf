#!/usr/bin/env python3
"""Exports channels that are made by chance, and measures them as e2e_export.py does. Ends with 1 where one isn't within the
tolerance and the log doesn't name it.

random_export.py <application> <unused folder> [--seed N] [--scenes N] [--channels N] [--samples N]
"""
import argparse
import os
import sys

import e2e_export as measured
import player
import poses

ROUNDING = 4  # steps of a float by which a jump may come late
FIELDS = {"t": "translation", "s": "scale", "r": "rotation"}


def shown_in(shown, case, seconds):
    field, shift = FIELDS[case["channels"][0][0]], shown.shifts[case["animation"]]
    value = shown.value(case["animation"], pointer_of(shown, case), seconds + shift, player.RESTS[field])
    return poses.from_quaternion(*value) if field == "rotation" else value["XYZ".index(case["channels"][0][-1])]


def pointer_of(shown, case):
    return "/nodes/%d/%s" % (shown.index[case["name"]], FIELDS[case["channels"][0][0]])


def all_in(shown, case):
    """The values of all keys that a file has."""
    sampler = shown.animations[case["animation"]].get(pointer_of(shown, case))
    rows = sampler.rows[1::3] if sampler.kind == "CUBICSPLINE" else sampler.rows
    return [row["XYZ".index(case["channels"][0][-1])] for row in rows]


def off(shown, case):
    """The largest difference as a share of the tolerance, and when; next to a jump any value of its sides is right."""
    turns = len(case["channels"]) == 6
    column = [row[0] for row in case["values"]]
    found = [shown_in(shown, case, seconds) for seconds in case["seconds"]]
    both = column if turns else column + all_in(shown, case)
    # Neither side is nearer than its floats lie.
    limit = measured.DEGREES if turns else \
        max(measured.SHARE * (max(both) - min(both)), 1.5e-7 * max(map(abs, both)), 1e-12)

    def distance(there, row):
        return (measured.degrees_between(there, measured.turned(row)) if turns else abs(there - row[0])) / limit

    def nearest(there, row, seconds):
        far = distance(there, row)
        step = max(abs(seconds + shown.shifts[case["animation"]]), 1) * 2.0**-23
        return far if far <= 1 else min([far] + [distance(shown_in(shown, case, seconds + i * step), row)
                                                 for i in range(-ROUNDING, ROUNDING + 1)])
    return max((nearest(*each), each[2]) for each in zip(found, case["values"], case["seconds"])
               if each[2] + shown.shifts[case["animation"]] >= 0)


def run(options, seed):
    """How many channels there were, how many the log names, and a line for each that is off."""
    told, target = os.path.join(options.folder, "told.json"), os.path.join(options.folder, "%d.glb" % seed)
    script = os.path.join(options.folder, "inside.py")
    with open(script, "w") as file:
        file.write("import sys; sys.path.insert(0, %r); import random_scene; random_scene.tell(%r, %d, %d, %d)\n"
                   % (measured.HERE, told, seed, options.channels, options.samples))
    code, output = measured.desktop.run_headless(options.application, options.folder, "--script", script, "--export",
                                                 target, seconds=600)
    assert code == 0, output
    shown, cases, named, missed = player.Player(target), measured.told_in(options.folder), 0, []
    for case in cases:
        worst, seconds = off(shown, case)
        if worst > 1 and "'%s': '" % case["name"] in output:
            named += 1
        elif worst > 1:
            missed.append("seed %d: %s of '%s' in '%s' is off by %.3g times the tolerance at %.9g s"
                          % (seed, case["kind"], case["name"], case["animation"], worst, seconds))
    return len(cases), named, missed


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("application", type=os.path.abspath)
    parser.add_argument("folder", type=os.path.abspath)
    for name, preset in (("seed", 1), ("scenes", 10), ("channels", 100), ("samples", 300)):
        parser.add_argument("--" + name, type=int, default=preset)
    options = parser.parse_args()
    os.makedirs(options.folder, exist_ok=True)
    count, named, missed = 0, 0, []
    for seed in range(options.seed, options.seed + options.scenes):
        results = run(options, seed)
        count, named, missed = count + results[0], named + results[1], missed + results[2]
        print("\n".join(results[2] + ["seed %d: %d channels so far, %d of them named by the log, %d off"
                                      % (seed, count, named, len(missed))]), flush=True)
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
