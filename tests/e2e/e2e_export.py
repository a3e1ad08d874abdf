"""What a file that the application exports shows in another program, measured against what the application shows: a player
made from the format's text alone samples every animated channel between its keys too. All exports are valid, where the
validator is installed.

Prints the table of bench/README.md.

e2e_export.py <application> <unused folder>
"""
import json
import math
import os
import shutil
import subprocess
import sys

import cases
import desktop
import player
import poses

HOST = sys.argv[1]
HERE = os.path.dirname(os.path.abspath(__file__))
SAMPLES = 1000
SHARE, DEGREES = 1e-4, 0.1  # of the curve's range; of a turn
DEGREE = math.radians(1)
MODELS = "/usr/share/assimp/models"
VALIDATOR = os.path.join(HERE, "../../build/tools/node_modules/gltf-validator")
EXPORT_ALL = """
import os, kxHost
for i, path in enumerate(os.path.join(place, name) for place, _, names in os.walk(%(models)r) for name in names):
    if os.path.getsize(path) > 400000 or "OutOfMemory" in path:
        continue
    try:
        kxHost.openScene(path)
    except OSError:
        continue
    kxHost.exportScene(os.path.join(%(target)r, "%%d %%s.glb" %% (i, os.path.basename(path))))
"""
POINTERS = {  # channel: of which list, what, how many of its units are one of ours, which component
    "intensity": ("light", "intensity", 1, None), "coneAngle": ("light", "spot/outerConeAngle", 2 / DEGREE, None),
    "color.G": ("light", "color", 1, 1), "fieldOfView": ("camera", "perspective/yfov", 1 / DEGREE, None),
    "near": ("camera", "perspective/znear", 1, None), "far": ("camera", "perspective/zfar", 1, None),
    "baseColor.R": ("material", "pbrMetallicRoughness/baseColorFactor", 1, 0),
    "opacity": ("material", "pbrMetallicRoughness/baseColorFactor", 1, 3),
    "metallic": ("material", "pbrMetallicRoughness/metallicFactor", 1, None),
    "roughness": ("material", "pbrMetallicRoughness/roughnessFactor", 1, None),
    "emissive.B": ("material", "emissiveFactor", 1, 2),
    "visible": ("node", "extensions/KHR_node_visibility/visible", 1, None)}


def pointer_of(shown, name, kind, what):
    document = shown.document
    if kind == "material":
        return "/materials/%d/%s" % ([m["name"] for m in document["materials"]].index(name), what)
    node = shown.nodes[shown.index[name]]
    if kind == "camera":
        return "/cameras/%d/%s" % (node["camera"], what)
    if kind == "light":
        light = node["extensions"]["KHR_lights_punctual"]["light"]
        return "/extensions/KHR_lights_punctual/lights/%d/%s" % (light, what)
    return "/nodes/%d/%s" % (shown.index[name], what)


def degrees_between(a, b):
    """Of two matrices without scale, exact for small turns too."""
    off = poses.product([list(column) for column in zip(*a)], b)
    axis = off[2][1] - off[1][2], off[0][2] - off[2][0], off[1][0] - off[0][1]
    sine, cosine = math.sqrt(sum(x * x for x in axis)) / 2, (off[0][0] + off[1][1] + off[2][2] - 1) / 2
    return math.degrees(math.atan2(sine, cosine))


def worst_of(shown, told):
    """The largest difference of one case: degrees, or a share of the range."""
    turns = len(told["channels"]) == 6
    if not turns:
        column = [row[0] for row in told["values"]]
        extent = max(column) - min(column) or 1.0
        kind, what, unit, part = POINTERS.get(told["channels"][0], ("node", "translation", 1, 0))
        pointer = pointer_of(shown, told["name"], kind, what)
    worst, at = 0.0, 0.0
    for seconds, values in zip(told["seconds"], told["values"]):
        if turns:
            there = shown.value(told["animation"], "/nodes/%d/rotation" % shown.index[told["name"]], seconds,
                                player.RESTS["rotation"])
            off = degrees_between(poses.from_quaternion(*there),
                                  poses.product(poses.from_euler(*values[:3]), poses.from_euler(*values[3:])))
        else:
            there = shown.value(told["animation"], pointer, seconds, player.RESTS.get(what))
            off = abs(float(there if part is None else there[part]) * unit - values[0]) / extent
        if off > worst:
            worst, at = off, seconds
    return turns, worst, at


def is_what_is_shown(folder):
    script, answer, target = (os.path.join(folder, name) for name in ("make.py", "told.json", "out.glb"))
    with open(os.path.join(HERE, "exported.py")) as source, open(script, "w") as file:
        file.write("OUT, SAMPLES = %r, %d\n%s" % (answer, SAMPLES, source.read()))
    code, output = desktop.run_headless(HOST, folder, "--script", script, "--export", target)
    assert code == 0, output
    shown = player.Player(target)
    with open(answer) as file:
        told = json.load(file)
    rows = {}
    for case in told:
        try:
            turns, worst, at = worst_of(shown, case)
        except (AttributeError, LookupError, TypeError, ValueError) as error:
            turns, worst, at = False, math.inf, repr(error)
        if case["kind"].startswith("clip") and case["animation"] == "Scene":
            case["kind"] = "the blocks of these clips on the timeline"
        row = rows.setdefault((case["kind"], turns), [0, 0.0, None])
        row[0] += 1
        if worst >= row[1]:
            row[1:] = worst, "%s at %s" % (case["name"], at)
    missed = []
    for (kind, turns), (count, worst, where) in rows.items():
        good = worst <= (DEGREES if turns else SHARE)
        print("| %s | %d | %s |" % (kind, count, "%.3f degrees" % worst if turns else "%.1e" % worst))
        missed += [] if good else ["%s (%s)" % (kind, where)]
    assert not missed, "not as shown: " + ", ".join(missed)


def is_valid(folder):
    """Of every model that can be opened, and of the scene above."""
    if not (shutil.which("node") and os.path.isdir(VALIDATOR) and os.path.isdir(MODELS)):
        print("skipped: ./setup --tests installs the validator where there is npm, and the models")
        return
    script = os.path.join(folder, "all.py")
    with open(script, "w") as file:
        file.write(EXPORT_ALL % {"models": MODELS, "target": folder})
    code, output = desktop.run_headless(HOST, folder, "--script", script)
    assert code == 0, output
    files = sorted(os.path.join(folder, name) for name in os.listdir(folder) if name.endswith(".glb"))
    assert len(files) > 200, "only %d models were exported" % len(files)
    done = subprocess.run(["node", os.path.join(HERE, "validate.js"), os.path.realpath(VALIDATOR), *files],
                          capture_output=True, text=True, timeout=60)
    assert done.returncode == 0 and not done.stdout, done.stdout[:2000] + done.stderr


cases.limited(lambda folder: cases.run([is_what_is_shown, is_valid], folder))
