"""A presentation is one film: 20 parts that the wizard takes apart, flipped and stretched they come together again, with
variants, a cut, a flight and a sequence. Each frame is one picture: played in the window over two loops, scrubbed back,
after opening anew and rendered without a window.

e2e_film.py <application> <folder for pictures of failures>
"""
import os
import sys

import desktop
import editors

HOST = sys.argv[1]
LAST = 99
SEEN = []  # (when, frame, picture)
MAKE = """
from kxHost import *
def place(node, *at):
    for channel, value in zip(("translation.X", "translation.Y", "translation.Z"), at):
        setChannelValue(node, channel, value)
for i in range(20):
    place(addObject("box", "Part %%d" %% i), 0, 0.3 * i, 0)
for i, name in enumerate(("Cam 1", "Cam 2")):
    place(addObject("camera", name), i, 2, 16 - 5 * i)
addVariantSet([addObject(kind, kind) for kind in ("sphere", "cone", "torus")], "Look")
views = [addViewpoint(name) for name in ("Wide", "Close")]
for i, view in enumerate(views):
    place(view, 9 - 3 * i, 7 - 2 * i, 14 - 5 * i)
addCameraTrack(views, 1, "Flight")
addSequence([("wait", 600)], "Tour")
saveScene(%r)
"""
APART = """
import math
for i in range(20):
    for channel, value in (("translation.X", 4 * math.cos(i)), ("translation.Z", 4 * math.sin(i))):
        setChannelValue(findNode("Part %d" % i), channel, value)
"""
FILM = """
from kxAnimWidgets import *
film, apart, together = findAnimClip("Film"), findAnimClip("Apart"), createAnimClip("Together", findAnimClip("Film"))
for i in range(20):
    addToAnimClip(together, findAnimBlock("Part %d_Apart" % i), i)
setAnimClipFlipped(together, True)
for clip, start, duration in ((apart, 5, 40), (together, 60, 30)):
    setAnimClipStart(clip, start, False)
    setAnimClipDuration(clip, duration)
addToAnimClip(film, findCameraTrackBlock("Flight"), 75)
for kind, name, frame in (("variant", "Look/cone", 12), ("viewpoint", "Close", 30), ("sequence", "Tour", 40),
                          ("variant", "Look", 55)):
    addTrigger(film, kind, name, frame)
"""
LOOK = """
def look():
    render(%r, 96, 54)
    with open(%r, "rb") as file:
        return widgetProperty("_filmFrame", "value"), file.read().hex()
"""


def scene(folder):
    path, script = os.path.join(folder, "parts.kxs"), os.path.join(folder, "make.py")
    with open(script, "w") as file:
        file.write(MAKE % path)
    code, output = desktop.run_headless(HOST, folder, "--script", script)
    assert code == 0, output
    return path


def look(application, when):
    frame, picture = application.ask("look()")
    SEEN.append((when, frame, bytes.fromhex(picture)))
    return frame


def the_wizard_takes_them_apart(application, folder):
    editors.open_windows(application, Clips="_clipView")
    application.run("selectNodes([findNode('Part %d' % i) for i in range(20)])")
    editors.begin_wizard(application, "Apart")
    application.click("_captureStart")
    application.wait_for("widgetProperty('_captureStart', 'text') == ''")
    application.run(APART)
    application.click("_captureEnd")
    application.wait_for("widgetProperty('_captureEnd', 'text') == ''")
    application.click(editors.WIZARD + "/qt_wizard_finish")
    application.answer_question("Clip Finished", "Escape")  # the blocks stay on
    application.wait_for("['Clip'] in widgetRows('_clips')")
    application.click_row("_clips", ["Clip"])
    application.rename("Film")
    application.wait_for("['Film'] in widgetRows('_clips')")


def the_film_is_put_together(application, folder):
    """Until its first cut it is seen through a camera that isn't the first."""
    application.run(FILM)
    application.click("cameraButton")
    application.keys("Up", "Up", "Return")  # "Cam 2" stands before the camera track
    editors.open_dock(application, "Film", "_film")
    application.wait_for("[widgetProperty(name, 'value') for name in ('_filmIn', '_filmOut')] == [5, %d]" % LAST)
    picture = os.path.join(folder, "look.png")
    application.run(LOOK % (picture, picture))


def plays_twice(application, folder):
    application.type_into("_filmFrame", "40")
    assert application.ask("runningSequences()") == [], "scrubbing starts a sequence"
    application.click("_filmStart")
    application.click("_filmLoop")
    application.click("_filmPlay")
    frames = [look(application, "played")]

    def has_looped_twice():
        frames.append(look(application, "played"))
        return sum(after < before for before, after in zip(frames, frames[1:])) == 2
    desktop.until("two loops", has_looped_twice)
    assert application.ask("runningSequences()") == ["Tour"], "playing starts no sequence"
    application.keys("space")
    application.click("_filmStop")
    application.wait_for("runningSequences() == []")


def scrubs_back(application, folder):
    application.press("_filmSlider", 0.99, 0.5)
    for part in (0.9, 0.75, 0.6, 0.45, 0.3, 0.15, 0.02):
        application.drag_to("_filmSlider", part, 0.5)
        look(application, "scrubbed back")
    application.release()
    assert application.ask("runningSequences()") == []


def opens_anew(application, folder):
    path = os.path.join(folder, "film.kxs")
    application.save_scene_as(path)
    application.keys("ctrl+n")
    application.wait_for("widgetRows('_clips') == []")
    application.open_file(path)
    application.wait_for("widgetProperty('_filmSource', 'currentText') == 'Film'")
    for frame in (8, 20, 33, 50, 62, 80, 97):
        application.type_into("_filmFrame", str(frame))
        assert look(application, "opened anew") == frame


def renders_the_same(application, folder):
    pattern = os.path.join(folder, "rendered_%02d.png")
    code, output = desktop.run_headless(HOST, folder, os.path.join(folder, "film.kxs"), "--clip", "Film", "--frames",
                                        "5:%d" % LAST, "--size", "96x54", "--render", pattern)
    assert code == 0, output
    pictures = set()
    for when, frame, picture in SEEN:
        with open(pattern % frame, "rb") as file:
            assert picture == file.read(), "frame %d is another picture when it is %s" % (frame, when)
        pictures.add(picture)
    assert len(pictures) > 12, "only %d pictures" % len(pictures)


desktop.tell([the_wizard_takes_them_apart, the_film_is_put_together, plays_twice, scrubs_back, opens_anew,
              renders_the_same, desktop.quits], scene)
