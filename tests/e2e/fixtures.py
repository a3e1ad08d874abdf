"""Models that the tests write themselves."""
import itertools
import json
import math
import os
import struct

SECONDS = 2  # of the animation
FPS = 24
LENGTH = 12.0  # that "Mover" goes in this time, along x


class Glb:
    """A binary glTF file in the making."""

    def __init__(self):
        self.document = {"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": []}], "nodes": [],
                         "accessors": [], "bufferViews": [], "animations": [{"samplers": [], "channels": []}]}
        self._bytes = b""

    def rows(self, rows, kind="f", component=5126):
        rows = [row if isinstance(row, (list, tuple)) else [row] for row in rows]
        data = struct.pack("<%d%s" % (sum(map(len, rows)), kind), *itertools.chain(*rows))
        self.document["bufferViews"].append({"buffer": 0, "byteOffset": len(self._bytes), "byteLength": len(data)})
        self._bytes += data + bytes(-len(data) % 4)
        self.document["accessors"].append({
            "bufferView": len(self.document["bufferViews"]) - 1, "componentType": component, "count": len(rows),
            "type": {1: "SCALAR", 3: "VEC3", 4: "VEC4"}[len(rows[0])],
            "min": [min(column) for column in zip(*rows)], "max": [max(column) for column in zip(*rows)]})
        return len(self.document["accessors"]) - 1

    def cube(self):
        corners = list(itertools.product((-0.5, 0.5), repeat=3))
        faces = [(0, 1, 3, 2), (4, 6, 7, 5), (0, 4, 5, 1), (2, 3, 7, 6), (0, 2, 6, 4), (1, 5, 7, 3)]
        triangles = [corner for a, b, c, d in faces for corner in (a, b, c, a, c, d)]
        self.document["meshes"] = [{"primitives": [{"attributes": {"POSITION": self.rows(corners)},
                                                    "indices": self.rows(triangles, "H", 5123)}]}]

    def node(self, name, **values):
        self.document["nodes"].append(dict(values, name=name, mesh=0))
        self.document["scenes"][0]["nodes"].append(len(self.document["nodes"]) - 1)
        return len(self.document["nodes"]) - 1

    def animate(self, node, path, interpolation, times, values):
        animation = self.document["animations"][0]
        animation["samplers"].append({"input": self.rows(times), "output": self.rows(values),
                                      "interpolation": interpolation})
        animation["channels"].append({"sampler": len(animation["samplers"]) - 1,
                                      "target": {"node": node, "path": path}})

    def write(self, path):
        self.document["buffers"] = [{"byteLength": len(self._bytes)}]
        text = json.dumps(self.document).encode()
        text += b" " * (-len(text) % 4)
        with open(path, "wb") as file:
            file.write(struct.pack("<4sII", b"glTF", 2, 28 + len(text) + len(self._bytes)))
            file.write(struct.pack("<I4s", len(text), b"JSON") + text)
            file.write(struct.pack("<I4s", len(self._bytes), b"BIN\0") + self._bytes)


def quaternion(axis, degrees):
    size = math.sqrt(sum(part * part for part in axis))
    half = math.radians(degrees) / 2
    return [part / size * math.sin(half) for part in axis] + [math.cos(half)]


def movers(folder, name="movers.glb"):
    """Writes one object for each way in which keys are joined, and one that stands still; gives the path."""
    glb = Glb()
    glb.cube()
    mover = glb.node("Mover", translation=[0, 0, 4])
    glb.animate(mover, "translation", "LINEAR", [0, SECONDS], [[0, 0, 4], [LENGTH, 0, 4]])
    slider = glb.node("Slider", translation=[1, 0, 0], scale=[1, 2, 1])
    glb.animate(slider, "translation", "CUBICSPLINE", [0, 0.75, 1.25, SECONDS], [
        [0, 0, 0], [1, 0, 0], [4, -2, 0], [1, 3, 0], [3, 2, -1], [-2, 1, 0.5],
        [0, 5, 0], [2, -1, 1], [0, -4, 2], [1, 1, 1], [0, 0, 3], [0, 0, 0]])
    spinner = glb.node("Spinner", translation=[-4, 0, 0])
    glb.animate(spinner, "rotation", "LINEAR", [i / 4 for i in range(7)],
                [quaternion((1, 2, -0.5), 85 * i) for i in range(7)])
    pulser = glb.node("Pulser", translation=[0, 4, 0])
    glb.animate(pulser, "scale", "STEP", [0, 0.5, 1, SECONDS], [[1, 1, 1], [2, 0.5, 1], [0.25, 1, 3], [1, 1, 1]])
    glb.node("Still", translation=[0, -3, 0])
    path = os.path.join(folder, name)
    glb.write(path)
    return path
