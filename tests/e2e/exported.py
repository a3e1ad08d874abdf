"""Runs inside the application: makes a scene with every kind of motion, and tells what it shows at many times."""
import itertools
import json
import random
import struct

import kxAnimWidgets as tools
import kxHost as host

FPS, END = 24.0, 6.0
RANGES = {"Far": (200.03, 200.12)}  # seconds of an animation, where it isn't the timeline's
KEYS = [(1.0, 2.0), (1.75, 5.0), (2.5, -3.0), (3.0, 4.0)]
MODES = "constant", "linear", "loop", "loop with offset", "oscillate"
TYPES = "constant", "linear", "flat", "hermite", "following"
PLACE = ["translation.X"]
TURN = ["%s.%s" % (field, axis) for field in ("rotation", "rotationOrientation") for axis in "XYZ"]
cases = []  # (kind, object, channels), and the clip where there is one


def keyed(kind, channel="translation.X", keys=KEYS, tangents="hermite", about=None, thing=None):
    """An object with one keyed channel; `tangents` is one for all sides, or a function of the key's index."""
    thing = thing or host.addObject("group", "object %d" % len(cases))
    for seconds, value in keys:
        host.setKey(thing, channel, seconds, value)
    for i, (seconds, _value) in enumerate(keys):
        sides = tangents(i) if callable(tangents) else (tangents, tangents)
        host.setTangents(thing, channel, seconds, *sides)
    if about is None:
        about = TURN if channel.startswith("rotation") else [channel]
    if kind:
        cases.append((kind, thing, about))
    return thing


def block(kind, timing=None, cycles=0, **more):
    thing = keyed(kind, **more)
    tools.createAnimationBlockForNode(thing, True)
    found = tools.findAnimBlock(thing.name)
    if timing:
        host.setTiming(found, **timing)
    if cycles:
        host.setCycles(found, cycles)
    return found


def copy(clip, original, frame=0, cycles=0, **timing):
    tools.addToAnimClip(clip, original, frame)
    placed = clip.children[-1]
    if timing:
        host.setTiming(placed, **timing)
    if cycles:
        host.setCycles(placed, cycles)
    return placed


def make():
    host.setFrameRange(0, int(END * FPS))
    for before, after in itertools.product(TYPES, TYPES):
        keyed("tangents of all types", tangents=lambda i: (before, after))
    handles = (-0.2, 1.0), (0.31, 4.0)
    for handle in ([(-0.05, -3.0), (0.6, 2.0)], [(-0.7, 6.0), (0.02, -8.0)], [(-0.4, 0.0), (0.45, 0.0)]):
        keyed("weighted handles", tangents=lambda i: handle)
    for handle in ([(0.0, -3.0), (0.0, 4.0)], [(-0.5, 0.0), (0.0, -5.0)], [(-0.75, 3.0), (0.75, -3.0)]):
        keyed("vertical and longest handles", tangents=lambda i: handle)
    angles = [(1.0, 20.0), (1.75, 150.0), (2.5, -60.0), (3.0, 300.0)]
    for channel in ("rotation.Y", "rotationOrientation.Z"):
        for tangents in ("linear", "constant", "hermite", lambda i: handles):
            keyed("turns about one axis", channel, angles, tangents)
    for orientation in ("constant", "hermite"):
        thing = keyed("", "rotation.X", angles)
        keyed("", "rotation.Z", [(0.5, 0.0), (3.5, 1000.0)], "linear", thing=thing)
        keyed("turns with a rotation orientation", "rotationOrientation.Y", angles, orientation, TURN, thing)
    for pre, post in itertools.product(MODES, MODES):
        for tangents in ("linear", lambda i: handles):
            host.setInfinity(keyed("25 pairs of infinity modes", tangents=tangents), "translation.X", pre, post)
        host.setInfinity(keyed("25 pairs of infinity modes, turns", "rotation.Y", angles), "rotation.Y", pre, post)
    seam = KEYS[:2]
    timings = [dict(start=0.5, stretch=0.6), dict(flipped=True), dict(start=-0.7, range=(1.2, 2.1)),
               dict(stretch=0.7, flipped=True, range=(1.2, 2.6))]
    turn = dict(channel="rotation.Y", keys=angles)
    for timing in timings:
        for cycles in (0, 2, -1):
            block("blocks stretched, repeated, endless, flipped, cut", timing, cycles, keys=KEYS)
            block("the same, turns", timing, cycles, **turn)
    for cycles in (3, -1):
        block("a jump at the seam of a repeat", dict(stretch=0.55), cycles, keys=seam, tangents="linear")
    block("a jump at the seam of a repeat", None, 3, channel="rotation.Y", keys=angles[:2])
    for timing in timings:
        block("steps before their block and after it", dict(timing, start=1.5), 1, tangents="constant")
    make_clips(timings, turn)
    make_values()


def make_clips(timings, turn):
    flat = tools.createAnimClip("Flat", None)
    for timing in timings:
        for cycles in (0, 2, -1):
            for more in ({}, turn):
                copy(flat, block("clip: blocks stretched, repeated, endless, flipped, cut", **more), 12, cycles,
                     **dict(timing, start=timing.get("start", 0.2)))
                cases[-1] += ("Flat",)
    two = block("clip: of two bars the one that counts")
    copy(flat, two, 6), copy(flat, two, 90, stretch=0.5)
    cases[-1] += ("Flat",)
    held = block("clip: ends that are held, one after the other")
    copy(flat, held, 6, range=(1.0, 1.0)), copy(flat, held, 30, range=(2.5, 2.5)), copy(flat, held, 90, stretch=0.5)
    cases[-1] += ("Flat",)
    for more in ({}, dict(channel="visible", keys=[(0.0, 0.0), (1.0, 1.0), (2.0, 0.0), (3.0, 1.0)])):
        copy(flat, block("clip: steps, flipped, before their bar", tangents="constant", **more), 48, flipped=True)
        cases[-1] += ("Flat",)
    outer = tools.createAnimClip("Outer", None)
    inner = tools.createAnimClip("Inner", outer)
    for more in ({}, turn):
        copy(inner, block("clip: nested, flipped, stretched, repeated, switched off", **more), 10, 1, stretch=0.4)
        cases[-1] += ("Outer",)
    host.setTiming(inner, start=0.3, stretch=0.8, flipped=True)
    host.setCycles(inner, 1)
    tools.setAnimClipActive(outer, False)
    far = tools.createAnimClip("Far", None)
    for more in (dict(tangents="linear"), dict(tangents="hermite"), turn):
        copy(far, block("clip: fast, and far from 0", **more), int(200 * FPS), stretch=0.0371)
        cases[-1] += ("Far",)


def make_values():
    """What goes out by pointers."""
    lamp, camera = host.addObject("spot light", "lamp"), host.addObject("camera", "eye")
    for channel, low, high in (("intensity", 2.0, 9.0), ("coneAngle", 20.0, 90.0), ("color.G", 0.1, 0.9)):
        keyed("lights", channel, [(1.0, low), (2.0, high), (3.0, low)], thing=lamp)
    for channel, low, high in (("fieldOfView", 20.0, 70.0), ("near", 0.1, 2.0), ("far", 100.0, 900.0)):
        keyed("lens, near and far", channel, [(1.0, low), (2.0, high), (3.0, low)], thing=camera)
    paint = host.addMaterial("paint")
    body = host.addObject("box", "body", material=paint)
    for channel, most in (("baseColor.R", 1), ("opacity", 1), ("metallic", 1), ("roughness", 1), ("emissive.B", 5)):
        keyed("materials", channel, [(1.0, 0.1), (2.0, 0.8 * most), (3.0, 0.3)], thing=paint)
    keyed("visible", "visible", [(0.0, 1.0), (1.0, 0.0), (2.5, 1.0)], thing=body)
    doors = host.addVariantSet([host.addObject("box", name) for name in ("open", "shut", "gone")], "door")
    keyed("choice", "choice", [(0.0, 0.0), (1.0, 2.0), (2.5, 1.0)], thing=doors)


def sampled(animation, count):
    """Frames all over the range, and those of the keys."""
    dice, (start, end) = random.Random(animation), RANGES.get(animation, (0.0, END))
    times = [dice.uniform(start, end) for _ in range(count)] + [s for s, _ in KEYS if start <= s] + [start, end]
    return sorted(seconds * FPS for seconds in times)


def shown_at(frame):
    """The time that is shown at a frame: seconds have the digits of a float."""
    return struct.unpack("f", struct.pack("f", frame / FPS))[0]


def values(animation, objects, frames):
    """What is shown at each frame, for each (object, channels)."""
    clip = None if animation == "Scene" else tools.findAnimClip(animation)
    rows = []
    for frame in frames:
        host.showAnimation(clip, frame) if clip else tools.setCurrentFrame(frame)
        rows.append([[host.channelValue(thing, channel) for channel in channels] for thing, channels in objects])
    return [list(column) for column in zip(*rows)]


def tell(out, count):
    make()
    told = []
    for animation in ["Scene", "Flat", "Outer", "Far"]:
        wanted = [case for case in cases if animation == "Scene" or animation in case[3:]]
        frames = sampled(animation, count)
        columns = values(animation, [case[1:3] for case in wanted], frames)
        told += [{"kind": case[0], "name": case[1].name, "channels": case[2], "animation": animation,
                  "seconds": [shown_at(frame) for frame in frames], "values": column}
                 for case, column in zip(wanted, columns)]
    tools.setCurrentFrame(0.0)
    with open(out, "w") as file:
        json.dump(told, file)


def tell_again(told, scene):
    """The same of a file that was exported, into the same list, at one time of four."""
    with open(told) as file:
        entries = json.load(file)
    for entry in entries:
        entry["seconds"], entry["values"] = entry["seconds"][::4], entry["values"][::4]
    host.openScene(scene)
    find = {True: host.findMaterial, False: host.findNode}
    for animation in ["Scene", "Flat", "Outer", "Far"]:
        wanted = [entry for entry in entries if entry["animation"] == animation]
        objects = [(find[entry["kind"] == "materials"](entry["name"]), entry["channels"]) for entry in wanted]
        for entry, column in zip(wanted, values(animation, objects, [s * FPS for s in wanted[0]["seconds"]])):
            entry["again"] = column
    with open(told, "w") as file:
        json.dump(entries, file)
