"""Runs inside the application: makes channels by chance, on the timeline and in a clip, and tells what is shown of them."""
import json
import random

import exported
import kxAnimWidgets as tools
import kxHost as host

KINDS = "translation.X", "translation.Y", "scale.Z", "rotation.X", "rotation.Y", "rotationOrientation.Z", "turn"
CLIP = "Clip"
BEFORE = 4  # seconds


def keys_of(dice, kind, end):
    """Their seconds and values, and how far the values go to one side."""
    turns = kind.startswith(("rotation", "turn"))
    most = dice.choice([30, 90, 180, 360]) if turns else 10 ** dice.uniform(-1 if kind == "scale.Z" else -2, 3)
    middle = 0 if turns or kind == "scale.Z" else dice.choice([-5, -1, 0, 0, 1, 5]) * most
    seconds, step, keys = dice.uniform(-0.4, 0.8) * end, 10 ** dice.uniform(-1.2, 0.3), {}
    for _ in range(dice.choice([2, 3, 5, 9, 20])):
        keys[seconds] = middle + dice.uniform(-most, most)
        seconds += step * dice.choice([0.3, 0.7, 1, 1, 2]) * dice.uniform(0.5, 1.5)
    if dice.random() < 0.3:
        keys = {round(at * exported.FPS) / exported.FPS: value for at, value in keys.items()}
    return sorted(keys.items()), most


def handles(dice, keys, most):
    """A function of a key's index for both of its sides: types, vectors, or vectors that reach far."""
    style, same = dice.choice(["types", "same", "free", "extreme"]), dice.choice(exported.TYPES)

    def side(way, gap):
        if style == "same":
            return same
        if style == "types" or dice.random() < 0.3:
            return dice.choice(exported.TYPES)
        share = dice.choice([0, 0.001, 0.02, 0.5, 0.98, 1]) if style == "extreme" else dice.random()
        return way * gap * share, dice.uniform(-most, most)

    def sides(i):
        before = keys[i][0] - keys[i - 1][0] if i else 1
        return side(-1, before), side(1, keys[i + 1][0] - keys[i][0] if i + 1 < len(keys) else 1)
    return sides


def timing_of(dice, keys, end):
    timing = {}
    if dice.random() < 0.5:
        timing["start"] = dice.uniform(-0.3, 0.5) * end
    if dice.random() < 0.5:
        timing["stretch"] = dice.uniform(0.2, 2)
    if dice.random() < 0.3:
        timing["flipped"] = True
    if dice.random() < 0.3:
        first = dice.uniform(keys[0][0] - 2, keys[-1][0])
        timing["range"] = first, dice.uniform(first, keys[-1][0] + 2)
    return timing, dice.choice([0, 0, 1, 3, -1])


def place(node, timing, cycles):
    if timing:
        host.setTiming(node, **timing)
    host.setCycles(node, cycles)


def add(dice, end, clip):
    kind = dice.choice(KINDS)
    keys, most = keys_of(dice, kind, end)
    if len(keys) < 2:
        return
    thing, about, channel = None, None, kind
    if kind == "turn":
        thing = exported.keyed("", "rotation.Z", [(0.5, 0.0), (end * 0.7, dice.uniform(-800, 800))], "linear")
        about, channel = exported.TURN, "rotation.X"
    thing = exported.keyed(kind, channel, keys, handles(dice, keys, most), about, thing)
    if dice.random() < 0.5:
        host.setInfinity(thing, channel, dice.choice(exported.MODES), dice.choice(exported.MODES))
    if dice.random() < 0.5:
        return
    tools.createAnimationBlockForNode(thing, True)
    block = tools.findAnimBlock(thing.name)
    if dice.random() < 0.5:
        exported.copy(clip, block, int(dice.uniform(-0.3, 0.8) * end * exported.FPS))
        exported.cases[-1] += (CLIP,)
        block = clip.children[-1]
    place(block, *timing_of(dice, keys, end))


def tell(out, seed, channels, samples):
    dice = random.Random(seed)
    start, end = dice.choice([0.0, 0.0, -1.5]), dice.choice([6.0, 20.0])
    host.setFrameRange(int(start * exported.FPS), int(end * exported.FPS))
    clip = tools.createAnimClip(CLIP, None)
    for _ in range(channels):
        add(dice, end, clip)
    if dice.random() < 0.5:
        place(clip, *timing_of(dice, [(0, 0), (end, 0)], end))
    told = []
    for animation in "Scene", CLIP:
        wanted = [case for case in exported.cases if (animation == CLIP) == (CLIP in case[3:])]
        early = BEFORE if animation == CLIP else 0  # what it shows before it begins
        frames = sorted(dice.uniform(start - early, end) * exported.FPS for _ in range(samples))
        columns = exported.values(animation, [case[1:3] for case in wanted], frames)
        told += [{"kind": case[0], "name": case[1].name, "channels": case[2], "animation": animation, "values": column,
                  "seconds": [exported.shown_at(frame) for frame in frames]} for case, column in zip(wanted, columns)]
    tools.setCurrentFrame(0.0)
    with open(out, "w") as file:
        json.dump(told, file)
