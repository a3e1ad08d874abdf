"""Reads the animations of binary glTF files with nothing but Python's own library, so that the application's reader and
writer have something to be compared with."""
import json
import struct

import poses

COMPONENTS = {"SCALAR": 1, "VEC3": 3, "VEC4": 4}
RESTS = {"translation": (0, 0, 0), "rotation": (0, 0, 0, 1), "scale": (1, 1, 1)}


def rows_of(document, binary, index):
    accessor = document["accessors"][index]
    assert accessor["componentType"] == 5126, "only floats are read"
    view = document["bufferViews"][accessor["bufferView"]]
    width = COMPONENTS[accessor["type"]]
    start = view.get("byteOffset", 0) + accessor.get("byteOffset", 0)
    stride = view.get("byteStride", 4 * width)
    return [struct.unpack_from("<%df" % width, binary, start + i * stride) for i in range(accessor["count"])]


def value_at(times, rows, kind, seconds):
    """The value of a sampler; between linear rotations there is none."""
    if seconds <= times[0]:
        i, part = 0, 0.0
    elif seconds >= times[-1]:
        i, part = len(times) - 1, 0.0
    else:
        i = max(k for k, time in enumerate(times) if time <= seconds)
        part = (seconds - times[i]) / (times[i + 1] - times[i])
    if kind == "CUBICSPLINE":
        if part == 0:
            return rows[3 * i + 1]
        span, t = times[i + 1] - times[i], part
        factors = (2 * t**3 - 3 * t**2 + 1, span * (t**3 - 2 * t**2 + t), 3 * t**2 - 2 * t**3, span * (t**3 - t**2))
        parts = rows[3 * i + 1], rows[3 * i + 2], rows[3 * i + 4], rows[3 * i + 3]
        return [sum(f * p[c] for f, p in zip(factors, parts)) for c in range(len(rows[0]))]
    if kind == "STEP" or part == 0:
        return rows[i]
    assert len(rows[0]) == 3, "linear rotations are known at their keys alone"
    return [a + (b - a) * part for a, b in zip(rows[i], rows[i + 1])]


def read(path, between=()):
    """{object name: {seconds: local matrix}} at the key times of the file; `between` names objects of which the middle of
    each two keys is wanted too."""
    with open(path, "rb") as file:
        data = file.read()
    length = struct.unpack_from("<I", data, 12)[0]
    document, binary = json.loads(data[20:20 + length]), data[28 + length:]
    samplers = {}
    for channel in document["animations"][0]["channels"]:
        sampler = document["animations"][0]["samplers"][channel["sampler"]]
        times = [row[0] for row in rows_of(document, binary, sampler["input"])]
        samplers.setdefault(channel["target"]["node"], {})[channel["target"]["path"]] = (
            times, rows_of(document, binary, sampler["output"]), sampler.get("interpolation", "LINEAR"))
    found = {}
    for index, channels in samplers.items():
        node = document["nodes"][index]
        times = sorted({time for channel in channels.values() for time in channel[0]})
        if node["name"] in between:
            times = sorted(times + [(a + b) / 2 for a, b in zip(times, times[1:])])
        found[node["name"]] = {}
        for seconds in times:
            value = {field: value_at(*channels[field], seconds) if field in channels else node.get(field, rest)
                     for field, rest in RESTS.items()}
            found[node["name"]][seconds] = poses.compose(
                value["translation"], poses.from_quaternion(*value["rotation"]), value["scale"])
    return found
