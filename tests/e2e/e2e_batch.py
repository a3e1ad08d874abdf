"""Starts the application without a window: pictures, exports and saved scenes are right, and what fails says so.

e2e_batch.py <application> <unused folder>
"""
import os
import struct
import sys

import cases
import desktop
import fixtures
import models
import poses

OBJECTS = ["Mover", "Slider", "Spinner", "Pulser", "Still"]
HOST = sys.argv[1]


def movers(folder):
    path = os.path.join(folder, "movers.glb")
    if not os.path.exists(path):
        fixtures.write_movers(path)
    return path


def kept(folder):
    """The same as a saved scene."""
    path = os.path.join(folder, "kept.kxs")
    if not os.path.exists(path):
        succeeds(folder, movers(folder), "--script",
                 write(folder, "save.py", "import kxHost\nkxHost.saveScene(%r)\n" % path))
    return path


def run(folder, *arguments):
    return desktop.run_headless(HOST, folder, *arguments)


def succeeds(folder, *arguments):
    code, output = run(folder, *arguments)
    assert code == 0, "%s gives %s:\n%s" % (" ".join(arguments), code, output)
    return output


def png_size(path):
    with open(path, "rb") as file:
        head = file.read(24)
    assert head[:8] == b"\x89PNG\r\n\x1a\n", "%s is no PNG file" % path
    return struct.unpack(">II", head[16:24])


def renders_a_range(folder):
    """One picture for each frame, of the size that was asked for, each another one."""
    pictures = os.path.join(folder, "pictures")
    os.mkdir(pictures)
    succeeds(folder, movers(folder), "--frames", "10:15", "--size", "160x90",
             "--render", os.path.join(pictures, "at_%03d.png"))
    names = sorted(os.listdir(pictures))
    assert names == ["at_%03d.png" % frame for frame in range(10, 16)], names
    contents = set()
    for name in names:
        assert png_size(os.path.join(pictures, name)) == (160, 90), name
        with open(os.path.join(pictures, name), "rb") as file:
            contents.add(file.read())
    assert len(contents) == len(names), "only %d of %d pictures differ" % (len(contents), len(names))


def takes_a_screenshot(folder):
    path = os.path.join(folder, "window.png")
    succeeds(folder, movers(folder), "--frame", "12", "--size", "1000x700", "--screenshot", path)
    assert png_size(path) == (1000, 700)
    assert os.path.getsize(path) > 10000, "the window is empty"


def exports_what_it_shows(folder):
    """The exported file says at the source's key times what the source says, and shows it when it is opened."""
    source, target = movers(folder), os.path.join(folder, "out.glb")
    succeeds(folder, source, "--export", target)
    wanted, exported = models.read_gltf(source), models.read_gltf(target)
    assert set(exported) == set(wanted), "animated are %s" % sorted(exported)
    for name, keys in wanted.items():
        for seconds, matrix in keys.items():
            nearest = min(exported[name], key=lambda time: abs(time - seconds))
            assert abs(nearest - seconds) < 1e-4, "%s has no key at %g s" % (name, seconds)
            off = poses.difference(exported[name][nearest], matrix)
            assert off < poses.TOLERANCE, "%s at %g s is off by %g" % (name, seconds, off)
    compare(folder, source, target)


def saves_what_it_shows(folder):
    compare(folder, movers(folder), kept(folder))


def compare(folder, source, target):
    """At keys and between them."""
    frames = [0, 6, 7.5, 18, 20.25, 30, 36, 48]
    expected = desktop.values_at_frames(HOST, folder, source, OBJECTS, frames)
    seen = desktop.values_at_frames(HOST, folder, target, OBJECTS, frames)
    for frame, before, after in zip(frames, expected, seen):
        for name in OBJECTS:
            poses.check("%s at frame %g" % (name, frame), after[name], poses.of_channels(before[name]))


def write(folder, name, content):
    path = os.path.join(folder, name)
    with open(path, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())
    return path


def refuses_damaged_files(folder):
    """Each ends without a picture and with an exit code, the file and a reason."""
    with open(kept(folder), "rb") as file:
        scene = file.read()
    with open(movers(folder), "rb") as file:
        model = file.read()
    middle = len(scene) // 2
    damaged = {"empty.kxs": b"", "cut.kxs": scene[:middle], "short.kxs": scene[:-1],
               "flipped.kxs": scene[:middle] + bytes([scene[middle] ^ 64]) + scene[middle + 1:],
               "cut.glb": model[:-200], "text.glb": b"nothing of a model", "empty.fbx": b""}
    for name, content in damaged.items():
        picture = os.path.join(folder, name + ".png")
        code, output = run(folder, write(folder, name, content), "--render", picture, "--size", "32x32")
        lines = [line for line in output.splitlines() if name in line]
        assert code > 0, "%s gives %s:\n%s" % (name, code, output)
        assert lines, "nothing names %s:\n%s" % (name, output)
        assert any(len(line.split(name, 1)[1]) > 12 for line in lines), "no reason is given:\n%s" % output
        assert not os.path.exists(picture), "%s is rendered all the same" % name


def tells_of_scripts_that_raise(folder):
    script = write(folder, "raises.py", "def inner():\n    raise ValueError('spoiled')\n\n\ninner()\n")
    picture = os.path.join(folder, "never.png")
    code, output = run(folder, movers(folder), "--script", script, "--render", picture)
    assert code > 0, "exit code %s" % code
    for part in ("Traceback", "raises.py", "line 2", "ValueError: spoiled"):
        assert part in output, "'%s' is missing in:\n%s" % (part, output)
    assert not os.path.exists(picture), "a picture is made after the script failed"


def main(folder):
    tests = [renders_a_range, takes_a_screenshot, exports_what_it_shows, saves_what_it_shows, refuses_damaged_files,
             tells_of_scripts_that_raise]
    return cases.run(tests, folder)


cases.limited(main)
