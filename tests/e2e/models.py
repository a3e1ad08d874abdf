"""Reads the animations of model files with nothing but Python's own library, so that the application's readers have
something to be compared with.

Each reader gives {object name: {seconds: local matrix}} at the key times of the file.
"""
import base64
import json
import os
import re
import struct
import subprocess
import xml.etree.ElementTree as ElementTree
import zlib

import poses


def folder():
    """The folder of the models that the Debian package assimp-testmodels installs."""
    listed = subprocess.run(["dpkg", "-L", "assimp-testmodels"], stdout=subprocess.PIPE, text=True, check=True).stdout
    return next(line for line in listed.splitlines() if line.endswith("/models"))


# glTF

COMPONENTS = {"SCALAR": 1, "VEC3": 3, "VEC4": 4}
RESTS = {"translation": (0, 0, 0), "rotation": (0, 0, 0, 1), "scale": (1, 1, 1)}


def gltf_parts(path):
    with open(path, "rb") as file:
        data = file.read()
    if data[:4] != b"glTF":
        return json.loads(data), None
    length = struct.unpack_from("<I", data, 12)[0]
    return json.loads(data[20:20 + length]), data[28 + length:]


def gltf_buffer(document, index, path, binary):
    uri = document["buffers"][index].get("uri")
    if uri is None:
        return binary
    if uri.startswith("data:"):
        return base64.b64decode(uri.split(",", 1)[1])
    with open(os.path.join(os.path.dirname(path), uri), "rb") as file:
        return file.read()


def gltf_rows(document, index, path, binary):
    accessor = document["accessors"][index]
    assert accessor["componentType"] == 5126, "only floats are read"
    view = document["bufferViews"][accessor["bufferView"]]
    width = COMPONENTS[accessor["type"]]
    start = view.get("byteOffset", 0) + accessor.get("byteOffset", 0)
    stride = view.get("byteStride", 4 * width)
    data = gltf_buffer(document, view["buffer"], path, binary)
    return [struct.unpack_from("<%df" % width, data, start + i * stride) for i in range(accessor["count"])]


def gltf_value(times, rows, kind, seconds):
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


def read_gltf(path, name_of=lambda index, node: node["name"], between=()):
    """`between`: names of objects of which the middle of each two keys is wanted too."""
    document, binary = gltf_parts(path)
    samplers = {}
    for channel in document["animations"][0]["channels"]:
        sampler = document["animations"][0]["samplers"][channel["sampler"]]
        times = [row[0] for row in gltf_rows(document, sampler["input"], path, binary)]
        samplers.setdefault(channel["target"]["node"], {})[channel["target"]["path"]] = (
            times, gltf_rows(document, sampler["output"], path, binary), sampler.get("interpolation", "LINEAR"))
    found = {}
    for index, channels in samplers.items():
        node = document["nodes"][index]
        name = name_of(index, node)
        times = sorted({time for channel in channels.values() for time in channel[0]})
        if name in between:
            times = sorted(times + [(a + b) / 2 for a, b in zip(times, times[1:])])
        found[name] = {}
        for seconds in times:
            value = {path_: gltf_value(*channels[path_], seconds) if path_ in channels else node.get(path_, rest)
                     for path_, rest in RESTS.items()}
            found[name][seconds] = poses.compose(value["translation"], poses.from_quaternion(*value["rotation"]),
                                                 value["scale"])
    return found


def read_gltf_tree(path, top):
    """The local matrices of objects that stand still, by their way down from `top`: "Root/0/3"."""
    document, _ = gltf_parts(path)
    found = {}

    def go(indices, above):
        for place, index in enumerate(indices):
            node = document["nodes"][index]
            here = "%s/%d" % (above, place)
            columns = node.get("matrix")
            found[here] = ([list(columns[row::4]) for row in range(4)] if columns else poses.compose(
                node.get("translation", RESTS["translation"]),
                poses.from_quaternion(*node.get("rotation", RESTS["rotation"])), node.get("scale", RESTS["scale"])))
            go(node.get("children", []), here)
    go(document["scenes"][document.get("scene", 0)]["nodes"], top)
    return found


# Collada: channels that are whole matrices

def read_collada(path):
    space = {"c": "http://www.collada.org/2005/11/COLLADASchema"}
    root = ElementTree.parse(path).getroot()
    by_id = {element.get("id"): element for element in root.iter() if element.get("id")}

    def numbers(source_id):
        return [float(word) for word in by_id[source_id].find("c:float_array", space).text.split()]
    found = {}
    for channel in root.iterfind(".//c:channel", space):
        inputs = {entry.get("semantic"): entry.get("source")[1:]
                  for entry in by_id[channel.get("source")[1:]].iterfind("c:input", space)}
        node_id, target = channel.get("target").split("/")
        assert by_id[node_id].find("c:matrix", space).get("sid") == target, "only whole matrices are read"
        values = numbers(inputs["OUTPUT"])
        found[by_id[node_id].get("name")] = {
            seconds: [values[16 * i + 4 * row:16 * i + 4 * row + 4] for row in range(4)]
            for i, seconds in enumerate(numbers(inputs["INPUT"]))}
    return found


# X: the third axis points the other way

def read_x(path):
    with open(path, encoding="ascii") as file:
        text = file.read()
    ticks = int(re.search(r"AnimTicksPerSecond\s*\{\s*(\d+)", text).group(1))
    animation = re.compile(r"Animation\s*\{\s*\{\s*(\w+)\s*\}((?:\s*AnimationKey\s*\{[^}]*\})*)\s*\}")
    found = {}
    for name, blocks in animation.findall(text):
        tracks = {}
        for block in re.findall(r"AnimationKey\s*\{([^}]*)\}", blocks):
            kind, _count, rest = block.split(";", 2)
            rows = re.findall(r"(\d+);(\d+);([-\d.,e]+);;", rest)
            tracks[int(kind)] = {int(tick): [float(v) for v in values.split(",")] for tick, _n, values in rows}
        found[name] = {}
        for tick, (w, x, y, z) in tracks[0].items():
            # The quaternions turn rows; columns are turned by the opposite.
            found[name][tick / ticks] = poses.mirrored_z(
                poses.compose(tracks[2][tick], poses.from_quaternion(-x, -y, -z, w), tracks[1][tick]))
    return found


# FBX, binary, up to version 7.4

FBX_SECOND = 46186158000
FBX_NUMBERS = {"Y": "<h", "C": "<?", "I": "<i", "F": "<f", "D": "<d", "L": "<q"}


def fbx_property(data, at):
    kind = chr(data[at])
    at += 1
    if kind in FBX_NUMBERS:
        form = FBX_NUMBERS[kind]
        return struct.unpack_from(form, data, at)[0], at + struct.calcsize(form)
    if kind in "SR":
        size = struct.unpack_from("<I", data, at)[0]
        return data[at + 4:at + 4 + size], at + 4 + size
    count, packed, size = struct.unpack_from("<III", data, at)
    raw = data[at + 12:at + 12 + size]
    raw = zlib.decompress(raw) if packed else raw
    return struct.unpack("<%d%s" % (count, {"l": "q"}.get(kind, kind)), raw), at + 12 + size


def fbx_record(data, at):
    """(name, properties, records below) and where the next one starts."""
    end, count, _size, name_size = struct.unpack_from("<IIIB", data, at)
    if end == 0:
        return None, at + 13
    at += 13
    name, at = data[at:at + name_size].decode(), at + name_size
    values, below = [], []
    for _ in range(count):
        value, at = fbx_property(data, at)
        values.append(value)
    while at < end:
        record, at = fbx_record(data, at)
        if record:
            below.append(record)
    return (name, values, below), end


def read_fbx(path):
    with open(path, "rb") as file:
        data = file.read()
    assert struct.unpack_from("<I", data, 23)[0] <= 7400, "newer files have longer heads of records"
    top, at = {}, 27
    while True:
        record, at = fbx_record(data, at)
        if record is None:
            break
        top[record[0]] = record[2]
    models, curves, nodes = {}, {}, {}
    for kind, values, below in top["Objects"]:
        if kind == "Model":
            properties = [p[1] for block in below if block[0] == "Properties70" for p in block[2]]
            assert not any(p[0] in (b"PreRotation", b"PostRotation", b"RotationOrder") for p in properties)
            models[values[0]] = values[1].split(b"\0")[0].decode()
        elif kind == "AnimationCurve":
            parts = {name: value[0] for name, value, _ in below}
            curves[values[0]] = {t / FBX_SECOND: v for t, v in zip(parts["KeyTime"], parts["KeyValueFloat"])}
    links = [values for _, values, _ in top["Connections"] if values[0] == b"OP"]
    for _, node, model, field in (link[:4] for link in links if link[2] in models):
        nodes[node] = model, field
    tracks = {}
    for _, curve, node, component in (link[:4] for link in links if link[1] in curves and link[2] in nodes):
        model, field = nodes[node]
        tracks.setdefault(models[model], {})[field[4:5].decode() + component[-1:].decode()] = curves[curve]
    found = {}
    for name, track in tracks.items():
        if len(track) != 9:
            continue
        times = set.intersection(*(set(keys) for keys in track.values()))
        found[name] = {t: poses.compose(*[
            make([track[field + axis][t] for axis in "XYZ"]) for field, make in (
                ("T", list), ("R", lambda angles: poses.from_euler(*angles)), ("S", list))]) for t in sorted(times)}
    return found
