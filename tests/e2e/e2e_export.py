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


def turned(values):
    return poses.product(poses.from_euler(*values[:3]), poses.from_euler(*values[3:]))


def in_the_file(shown, told):
    """For each time what a file shows: a matrix of a turn, or a number."""
    animation, channel, place = told["animation"], told["channels"][0], "/nodes/%d/" % shown.index.get(told["name"], -1)
    if len(told["channels"]) == 6:
        return [poses.from_quaternion(*shown.value(animation, place + "rotation", s, player.RESTS["rotation"]))
                for s in told["seconds"]]
    if channel == "choice":
        pointers = [pointer_of(shown, shown.nodes[child]["name"], *POINTERS["visible"][:2])
                    for child in shown.nodes[shown.index[told["name"]]]["children"]]
        return [[shown.value(animation, pointer, s) for pointer in pointers].index(1) for s in told["seconds"]]
    kind, what, unit, part = POINTERS.get(channel, ("node", "translation", 1, 0))
    pointer = pointer_of(shown, told["name"], kind, what)
    if channel.startswith("emissive"):
        unit = shown.value(animation, pointer.replace(what, "extensions/KHR_materials_emissive_strength"),
                           0)["emissiveStrength"]
    values = [shown.value(animation, pointer, s, player.RESTS.get(what)) for s in told["seconds"]]
    return [float(value if part is None else value[part]) * unit for value in values]


def worst_of(told, found):
    """The largest difference: degrees, or a share of the range."""
    if len(told["channels"]) == 6:
        return max(degrees_between(there, turned(values)) for there, values in zip(found, told["values"]))
    column = [row[0] for row in told["values"]]
    return max(abs(there - value) for there, value in zip(found, column)) / ((max(column) - min(column)) or 1.0)


def compare(cases_told, found_of):
    """Prints the largest difference of each kind."""
    rows = {}
    for case in cases_told:
        turns = len(case["channels"]) == 6
        try:
            worst = worst_of(case, found_of(case))
        except (AttributeError, LookupError, TypeError, ValueError) as error:
            worst, case["name"] = math.inf, "%s: %r" % (case["name"], error)
        kind = case["kind"]
        if kind.startswith("clip") and case["animation"] == "Scene":
            kind = "the blocks of these clips on the timeline"
        rows.setdefault((kind, turns), []).append((worst, case["name"]))
    missed = []
    for (kind, turns), entries in rows.items():
        worst, name = max(entries)
        print("| %s | %d | %s |" % (kind, len(entries), "%.3f degrees" % worst if turns else "%.1e" % worst))
        if worst > (DEGREES if turns else SHARE):
            missed.append("%s (%s)" % (kind, name))
    assert not missed, "not as shown: " + ", ".join(missed)


def run_inside(folder, statement, *arguments):
    script = os.path.join(folder, "inside.py")
    with open(script, "w") as file:
        file.write("import sys; sys.path.insert(0, %r); import exported; exported.%s\n" % (HERE, statement))
    code, output = desktop.run_headless(HOST, folder, "--script", script, *arguments)
    assert code == 0, output


def told_in(folder):
    with open(os.path.join(folder, "told.json")) as file:
        return json.load(file)


def is_what_is_shown(folder):
    told, target = os.path.join(folder, "told.json"), os.path.join(folder, "out.glb")
    run_inside(folder, "tell(%r, %d)" % (told, SAMPLES), "--export", target)
    shown = player.Player(target)
    compare(told_in(folder), lambda case: in_the_file(shown, case))


def comes_back(folder):
    """Opened again, all of it plays as before."""
    run_inside(folder, "tell_again(%r, %r)" % (os.path.join(folder, "told.json"), os.path.join(folder, "out.glb")))
    compare(told_in(folder), lambda case: [turned(row) if len(row) == 6 else row[0] for row in case["again"]])


def is_valid(folder):
    """Of every model that can be opened, and of the scene above."""
    if not (shutil.which("node") and os.path.isdir(VALIDATOR) and os.path.isdir(MODELS)):
        print("skipped: ./setup --tests installs the validator where there is npm, and the models")
        return
    script = os.path.join(folder, "all.py")
    with open(script, "w") as file:
        file.write(EXPORT_ALL % {"models": MODELS, "target": folder})
    code, output = desktop.run_headless(HOST, folder, "--script", script, seconds=240)  # with sanitizers, beside others
    assert code == 0, output
    files = sorted(os.path.join(folder, name) for name in os.listdir(folder) if name.endswith(".glb"))
    assert len(files) > 200, "only %d models were exported" % len(files)
    done = subprocess.run(["node", os.path.join(HERE, "validate.js"), os.path.realpath(VALIDATOR), *files],
                          capture_output=True, text=True, timeout=60)
    assert done.returncode == 0 and not done.stdout, done.stdout[:2000] + done.stderr


if __name__ == "__main__":
    cases.limited(lambda folder: cases.run([is_what_is_shown, comes_back, is_valid], folder))
