"""Starts the application without a window: its pictures, its exports and what it shows of a model are right.

e2e_batch.py <application> <unused folder>
"""
import os
import struct
import subprocess
import sys

import cases
import desktop
import fixtures
import models
import poses

HOST = sys.argv[1]


def succeeds(folder, *arguments):
    code, output = desktop.run_headless(HOST, folder, *arguments)
    assert code == 0, "%s gives %s:\n%s" % (" ".join(arguments), code, output)


def png(path, size):
    with open(path, "rb") as file:
        content = file.read()
    assert content[:8] == b"\x89PNG\r\n\x1a\n", "%s is no PNG file" % path
    assert struct.unpack(">II", content[16:24]) == size, path
    return content


def renders_a_range(folder):
    """One picture for each frame, of the size that was asked for, each another one; a movie has as many."""
    pictures, movie = os.path.join(folder, "pictures"), os.path.join(folder, "movie.webm")
    os.mkdir(pictures)
    succeeds(folder, fixtures.movers(folder), "--frames", "10:15", "--size", "160x90", "--movie", movie,
             "--render", os.path.join(pictures, "at_%03d.png"))
    names = sorted(os.listdir(pictures))
    assert names == ["at_%03d.png" % frame for frame in range(10, 16)], names
    contents = {png(os.path.join(pictures, name), (160, 90)) for name in names}
    assert len(contents) == len(names), "only %d of %d pictures differ" % (len(contents), len(names))
    counted = subprocess.check_output(["ffprobe", "-v", "error", "-count_frames", "-show_entries",
                                       "stream=nb_read_frames,avg_frame_rate", "-of", "csv=p=0", movie], text=True)
    assert counted.strip() == "%d/1,%d" % (fixtures.FPS, len(names)), counted


def script(folder, name, text):
    path = os.path.join(folder, name)
    with open(path, "w") as file:
        file.write(text)
    return path


def code_of_a_file_waits(folder):
    """What a file brings in Python runs for its maker, for others where --trust says so, and nowhere else."""
    scene, sign, maker = (os.path.join(folder, name) for name in ("door.kxs", "sign", "maker"))
    os.mkdir(maker)
    make = "from kxHost import *\naddSequence([('python', 'open(%%r, \"w\")' %% %r)], 'Door')\nsaveScene(%r)" % (sign, scene)
    succeeds(maker, "--script", script(folder, "door.py", make))
    play = script(folder, "open.py", "from kxHost import *\nrunSequence('Door')\nprocessEvents()\n")
    for who, flags, runs in ((folder, [], False), (folder, ["--trust"], True), (folder, [], False), (maker, [], True)):
        code, output = desktop.run_headless(HOST, who, scene, "--script", play, *flags)
        assert code == 0 and os.path.exists(sign) == runs, "%s, %s: %s" % (who, flags, output)
        assert ("code, which is skipped: 1 sequence step" in output) != runs, output
        if runs:
            os.remove(sign)


def takes_a_screenshot(folder):
    path = os.path.join(folder, "window.png")
    succeeds(folder, fixtures.movers(folder), "--frame", "12", "--size", "1000x700", "--screenshot", path)
    assert len(png(path, (1000, 700))) > 10000, "the window is empty"


def shows_and_exports_the_file(folder):
    """What the file says at its keys and between them is shown, says the file that is exported, and shows that too."""
    source, target = fixtures.movers(folder), os.path.join(folder, "out.glb")
    succeeds(folder, source, "--export", target)
    wanted, exported = models.read(source, between=("Mover", "Slider", "Pulser")), models.read(target)
    assert set(exported) == set(wanted), "animated are %s" % sorted(exported)
    for name, keys in models.read(source).items():
        for seconds, matrix in keys.items():
            nearest = min(exported[name], key=lambda time: abs(time - seconds))
            assert abs(nearest - seconds) < 1e-4, "%s has no key at %g s" % (name, seconds)
            off = poses.difference(exported[name][nearest], matrix)
            assert off < poses.TOLERANCE, "%s at %g s is off by %g" % (name, seconds, off)
    times = sorted({seconds for keys in wanted.values() for seconds in keys})
    for path in (source, target):
        shown = desktop.values_at_frames(HOST, folder, path, list(wanted), [s * fixtures.FPS for s in times])
        for seconds, values in zip(times, shown):
            for name in (name for name in wanted if seconds in wanted[name]):
                poses.check("%s at %g s" % (name, seconds), values[name], wanted[name][seconds])


cases.limited(lambda folder: cases.run([renders_a_range, code_of_a_file_waits, takes_a_screenshot,
                                        shows_and_exports_the_file], folder))
