"""What is installed works by itself, wherever it is put, and another plug-in is built with it.

e2e_installed.py <application in the folder it was built in> <unused folder>
"""
import glob
import gzip
import os
import re
import shutil
import subprocess
import sys
from xml.etree import ElementTree

import cases
import desktop

BUILD = os.path.dirname(os.path.dirname(os.path.abspath(sys.argv[1])))
STORY = """
for line in open("/proc/self/maps"):
    assert %(build)r not in line, line
door = findNode("Door")
if not door:
    door = addObject("box", "Door", findNode("Turntable"))
    addTranslationControlPoints(door, [0.0, 2.0], [(0, 300, 0), (400, 300, 0)], False)
    createAnimationBlockForNode(door, True)
    saveScene("mine.kxs")
sendMessage("frameChangedCurveEditor", {"frame": 24.0})
print("the door is at", [round(channelValue(door, "translation." + axis)) for axis in "XYZ"])
"""


def output_of(*command, **more):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", errors="replace",
                          **more)
    assert done.returncode == 0, "%s gives %d:\n%s" % (" ".join(command), done.returncode, done.stdout)
    return done.stdout


def installs(folder):
    """Below a prefix in a staging folder; it's used elsewhere."""
    output_of("cmake", "--install", BUILD, "--prefix", "/opt/kx", env=dict(os.environ, DESTDIR=folder + "/staging"))
    shutil.move(folder + "/staging/opt/kx", folder + "/moved")
    assert os.listdir(folder + "/staging/opt") == [], "not all of it lies below the prefix"


def does_what_is_promised(folder):
    """The sample is opened, animated by a script, saved, opened again, drawn, exported, and read as others' file."""
    host, sample = folder + "/moved/bin/kxhost", folder + "/moved/share/kxhost/examples/turntable.kxs"
    with open(folder + "/story.py", "w") as script:
        script.write(STORY % {"build": BUILD})
    for scene, work in ((sample, ["--screenshot", "window.png"]),
                        ("mine.kxs", ["--frames", "10:12", "--size", "160x90", "--render", "at_%d.png", "--export", "mine.glb"]),
                        ("mine.glb", ["--movie", "mine.webm", "--frames", "10:12", "--size", "160x90"])):
        code, said = desktop.run_headless(host, folder, scene, "--script", "story.py", *work)
        assert code == 0 and "the door is at [200, 300, 0]" in said and "Animation plug-in" in said, said
    pictures = {open(path, "rb").read() for path in glob.glob(folder + "/at_1?.png")}
    assert len(pictures) == 3 and os.path.getsize(folder + "/mine.webm") > 500
    for example in glob.glob(folder + "/moved/share/kxhost/examples/*_*.py"):
        code, said = desktop.run_headless(host, folder, "--script", example)
        assert code == 0, said


def has_one_version(folder):
    version = re.search(r"^CMAKE_PROJECT_VERSION:STATIC=(.*)$", open(BUILD + "/CMakeCache.txt").read(), re.M).group(1)
    said = output_of(folder + "/moved/bin/kxhost", "--version")
    assert said == "kxhost %s\n" % version, said
    assert glob.glob(folder + "/moved/lib*/libkxPlatform.so." + version)
    said = desktop.run_headless(folder + "/moved/bin/kxhost", folder, folder + "/mine.kxs")[1]
    assert "Animation plug-in %s\n" % version in said, said


def tells_desktop_and_reader(folder):
    """The manual has each option of --help, and a scene is known by its first bytes."""
    options = set(re.findall(r"^  (?:-\w, )?(--[\w-]+)", output_of(folder + "/moved/bin/kxhost", "--help"), re.M))
    with gzip.open(folder + "/moved/share/man/man1/kxhost.1.gz", "rt") as file:
        manual = file.read().replace("\\-", "-")
    missing = [option for option in options if option not in manual]
    assert len(options) > 15 and missing == [], missing
    kinds = ElementTree.parse(folder + "/moved/share/mime/packages/kxhost.xml").getroot()
    magic = kinds.find(".//{*}match").get("value").encode().decode("unicode_escape").encode("latin-1")
    with open(folder + "/mine.kxs", "rb") as scene:
        assert scene.read(8) == magic
    with open(folder + "/moved/share/applications/kxhost.desktop") as entry:
        words = dict(line.rstrip("\n").split("=", 1) for line in entry if "=" in line)
    assert kinds[0].get("type") in words["MimeType"].split(";") and words["Exec"] == "kxhost %f", words
    assert os.path.exists(folder + "/moved/share/icons/hicolor/scalable/apps/%s.svg" % words["Icon"])


def builds_another_plugin(folder):
    """With nothing but what is installed; the application loads it in place of its own."""
    source, build = folder + "/moved/share/kxhost/examples/plugin", folder + "/plugin"
    output_of("cmake", "-G", "Ninja", "-S", source, "-B", build, "-DCMAKE_PREFIX_PATH=" + folder + "/moved",
              "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror")
    output_of("cmake", "--build", build)
    said = desktop.run_headless(folder + "/moved/bin/kxhost", folder, folder + "/mine.kxs", "--plugin",
                                build + "/libkxHello.so")[1]
    lines = said.splitlines()
    assert "info: Hello is there." in lines and "info: Hello hears of the scene." in lines, said
    assert "came without: Curve Editor" in said and "No such plugin" not in said, said


cases.limited(lambda folder: cases.run([installs, does_what_is_promised, has_one_version, tells_desktop_and_reader,
                                        builds_another_plugin], folder))
