"""Plays binary glTF files as their format says, with nothing but Python's own library: what another program shows of an
export. Shares no code with the application."""
import bisect
import json
import math
import struct

import poses

WIDTHS = {"SCALAR": 1, "VEC2": 2, "VEC3": 3, "VEC4": 4}
CODES = {5126: "f", 5121: "B"}
RESTS = {"translation": (0, 0, 0), "rotation": (0, 0, 0, 1), "scale": (1, 1, 1)}


def slerp(a, b, part):
    dot = sum(x * y for x, y in zip(a, b))
    sign, dot = (1, dot) if dot >= 0 else (-1, -dot)
    angle = math.acos(min(1.0, dot))
    if angle < 1e-4:
        mixed = [x + (sign * y - x) * part for x, y in zip(a, b)]
    else:
        sine = math.sin(angle)
        u, v = math.sin((1 - part) * angle) / sine, sign * math.sin(part * angle) / sine
        mixed = [x * u + y * v for x, y in zip(a, b)]
    length = math.sqrt(sum(x * x for x in mixed))
    return [x / length for x in mixed]


class Sampler:
    def __init__(self, times, rows, kind):
        self.times, self.rows, self.kind = times, rows, kind
        assert all(a < b for a, b in zip(times, times[1:])), "times don't increase"
        assert len(rows) == len(times) * (3 if kind == "CUBICSPLINE" else 1)

    def value(self, seconds, rotates):
        values = self.rows[1::3] if self.kind == "CUBICSPLINE" else self.rows
        i = bisect.bisect_right(self.times, seconds) - 1
        if i < 0 or i + 1 == len(self.times):
            return values[max(i, 0)]
        if self.kind == "STEP":
            return values[i]
        span = self.times[i + 1] - self.times[i]
        t = (seconds - self.times[i]) / span
        if self.kind == "LINEAR":
            return slerp(values[i], values[i + 1], t) if rotates else \
                [a + (b - a) * t for a, b in zip(values[i], values[i + 1])]
        factors = 2 * t**3 - 3 * t**2 + 1, span * (t**3 - 2 * t**2 + t), 3 * t**2 - 2 * t**3, span * (t**3 - t**2)
        parts = self.rows[3 * i + 1], self.rows[3 * i + 2], self.rows[3 * i + 4], self.rows[3 * i + 3]
        mixed = [sum(f * p[c] for f, p in zip(factors, parts)) for c in range(len(parts[0]))]
        length = math.sqrt(sum(x * x for x in mixed)) if rotates else 1
        return [x / length for x in mixed]


class Player:
    def __init__(self, path):
        with open(path, "rb") as file:
            data = file.read()
        length = struct.unpack_from("<I", data, 12)[0]
        self.document, self._binary = json.loads(data[20:20 + length]), data[28 + length:]
        self.nodes = self.document["nodes"]
        self.index = {node["name"]: i for i, node in enumerate(self.nodes)}
        self._parent = {child: i for i, node in enumerate(self.nodes) for child in node.get("children", [])}
        self.animations, self.shifts = {}, {}  # seconds by which an animation lies later in the file
        for animation in self.document.get("animations", []):
            samplers = [Sampler([row[0] for row in self._rows(s["input"])], self._rows(s["output"]),
                                s.get("interpolation", "LINEAR")) for s in animation["samplers"]]
            self.shifts[animation["name"]] = animation.get("extras", {}).get("shift", 0)
            assert animation["name"] not in self.animations, "two animations are called " + animation["name"]
            self.animations[animation["name"]] = {self._target(c["target"]): samplers[c["sampler"]]
                                                  for c in animation["channels"]}

    def _rows(self, index):
        accessor = self.document["accessors"][index]
        view, width = self.document["bufferViews"][accessor["bufferView"]], WIDTHS[accessor["type"]]
        values = struct.unpack_from("<%d%s" % (width * accessor["count"], CODES[accessor["componentType"]]),
                                    self._binary, view.get("byteOffset", 0) + accessor.get("byteOffset", 0))
        return [values[i:i + width] for i in range(0, len(values), width)]

    @staticmethod
    def _target(target):
        if target["path"] == "pointer":
            assert "node" not in target, "a pointer has no node"
            return target["extensions"]["KHR_animation_pointer"]["pointer"]
        return "/nodes/%d/%s" % (target["node"], target["path"])

    def value(self, animation, pointer, seconds, rest=None):
        """What a JSON pointer names, at a time of an animation; `rest` where the file says nothing."""
        sampler = self.animations[animation].get(pointer)
        if sampler:
            value = sampler.value(seconds, pointer.endswith("/rotation"))
            return value[0] if len(value) == 1 else value
        value = self.document
        for word in pointer.split("/")[1:]:
            value = value[int(word)] if isinstance(value, list) else value.get(word, rest)
        return value

    def world(self, animation, name, seconds):
        """The matrix of a node with those above it."""
        matrix, index = poses.scaling(1, 1, 1), self.index[name]
        while index is not None:
            place, turn, size = (self.value(animation, "/nodes/%d/%s" % (index, path), seconds, rest)
                                 for path, rest in RESTS.items())
            matrix = poses.product(poses.compose(place, poses.from_quaternion(*turn), size), matrix)
            index = self._parent.get(index)
        return matrix

    def keys(self, animation):
        return sum(len(sampler.times) for sampler in self.animations[animation].values())
