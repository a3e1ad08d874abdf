"""Puts animations in time as a user does: drags a block from the library into a clip, moves, stretches and repeats it,
plays it with the clip maker's own buttons, keeps and opens it again.

e2e_clips.py <application> <folder for pictures of failures>
"""
import os

import desktop
import editors
import fixtures
from editors import create, open_dock, place, show_frame

OBJECT = "Mover"  # its block goes along x from 0 to LENGTH
BLOCK_FRAMES = fixtures.SECONDS * fixtures.FPS


def x(application):
    return application.ask("channelValue(findNode(%r), 'translation.X')" % OBJECT)


def field(application, name):
    return application.shown("_statsFrame/" + name)


def near(a, b, tolerance=1e-2):
    return abs(a - b) <= tolerance


def opens_the_windows(application, folder):
    for name, view in (("Curves", "_graphView"), ("Clips", "_clipView")):
        application.keys("alt+v")
        application.click_entry("", name)
        application.wait_for("widgetRect(%r)[3] > 80" % view)


def makes_a_clip(application, folder):
    create(application, "Down", "Return")
    application.wait_for("['Clip'] in widgetRows('_clips')")
    application.keys("ctrl+r", "ctrl+a")  # it is selected, and the tree has the focus
    application.type("Show")
    application.keys("Return")
    application.wait_for("['Show'] in widgetRows('_clips')")


def drags_a_block_into_it(application, folder):
    """The library stands behind the clip maker: the drag waits over the tab until that comes to the front. Questions
    have to wait until the drag has ended."""
    target, beside = place(application, 60, 0), place(application, 90, 0)
    open_dock(application, "Curves")
    block = application.wait_for("[row for row in widgetRows('_library') if row[:-1] == [%r]]" % OBJECT)[0]
    left, top, width, height = application.ask("rowRect('_library', %r)" % block)
    application.drag([(left + 60, top + height // 2), (left + 90, top - 20), application.middle("tabRect('Clips')"),
                      beside, target], rests={2: 1.2})
    application.wait_for("widgetRect('_clipView')[3] > 80")
    desktop.until("a bar", lambda: field(application, "_duration") == BLOCK_FRAMES)
    application.click("_clipView", 0.97, 0.9)
    application.keys("f")
    desktop.until("a zoom", lambda: place(application, 70, 0)[0] - place(application, 60, 0)[0] > 20)


def moves_and_stretches_it(application, folder):
    start = 60
    application.click_at(place(application, start + 20, 0))
    application.wait_for("widgetProperty('_statsFrame/_start', 'enabled')")
    start = field(application, "_start")
    assert start == round(start) and near(start, 60, 3), "the block fell at frame %g" % start
    assert field(application, "_duration") == BLOCK_FRAMES
    application.wheel(place(application, start + 10, 1), -5)
    desktop.until("room", lambda: place(application, start + 10, 0)[0] - place(application, start, 0)[0] < 60)
    middle = start + BLOCK_FRAMES / 2
    application.drag([place(application, middle, 0), place(application, middle - 30, 0),
                      place(application, middle - start + 24, 0)])
    desktop.until("another start", lambda: near(field(application, "_start"), 24, 1))
    assert field(application, "_start") == round(field(application, "_start")), "bars snap to whole frames"
    start = field(application, "_start")
    right = place(application, start + BLOCK_FRAMES, 0)
    application.drag([(right[0] - 3, right[1]), place(application, start + 2 * BLOCK_FRAMES, 0)])
    desktop.until("another length", lambda: field(application, "_duration") > 1.8 * BLOCK_FRAMES)
    assert field(application, "_start") == start, "the other end moved"


def types_into_the_fields(application, folder):
    for name, text in (("_start", "24"), ("_duration", "72"), ("_postCycles", "2")):
        application.click("_statsFrame/" + name, 0.3)
        application.keys("ctrl+a")
        application.type(text)
        application.keys("Return")
        desktop.until("a value in " + name, lambda n=name, t=text: field(application, n) == float(t))
    for frame, part in ((24, 0), (60, 0.5), (24 + 72 + 18, 0.25), (24 + 3 * 72, 1)):
        show_frame(application, frame)
        assert near(x(application), part * fixtures.LENGTH), "frame %d shows %g" % (frame, x(application))


def plays(application, folder):
    """The clip maker's own buttons: there and back."""
    application.click("frame/_gotoStart")
    desktop.until("the start", lambda: near(x(application), 0))
    application.click("frame/_play")
    application.wait_for("widgetProperty('frame/_play', 'checked')")
    desktop.until("a value on the way", lambda: 1 < x(application) < 4)
    application.click("frame/_stop")
    application.wait_for("not widgetProperty('frame/_play', 'checked')")
    desktop.until("the start", lambda: near(x(application), 0))
    application.click("frame/_gotoEnd")
    desktop.until("the end", lambda: near(x(application), fixtures.LENGTH))
    application.click("frame/_playRev")
    desktop.until("the way back", lambda: 1 < x(application) < 11)
    application.click("frame/_stop")


def state(application):
    seen = {"rows": application.ask("[row for row in widgetRows('_clips') if row[0] == 'Show']")}
    for frame in range(0, 260, 13):
        show_frame(application, frame)
        seen[frame] = x(application)
    return seen


def keeps_it_all(application, folder):
    path = os.path.join(folder, "clips.kxs")
    before = state(application)
    assert len(set(before[frame] for frame in before if frame != "rows")) > 5, "nothing moves: %s" % before
    application.click("_view", 0.02, 0.96)
    application.keys("ctrl+shift+s")
    application.answer_file_dialog("Save Scene As", path)
    application.wait_for("'clips.kxs' in widgetProperty('_mainWindow', 'windowTitle')")
    application.keys("ctrl+n")
    application.wait_for("widgetRows('_clips') == []")
    application.open_file(path)
    application.wait_for("['Show'] in widgetRows('_clips')")
    application.click_row("_clips", ["Show"])
    application.wait_for("widgetProperty('_statsFrame/_duration', 'value') == 216")
    editors.unfold(application, ['Show'])
    application.wait_for("len([row for row in widgetRows('_clips') if row[0] == 'Show']) == 2")
    after = state(application)
    assert after == before, "%s became %s" % (before, after)


def takes_the_view_along(application, folder):
    """A camera track is looked through from the moment it is made, and moves the view in a clip that it gets without one
    being selected."""
    application.click("_clips", 0.5, 0.95)  # below the rows
    application.keys("alt+s")
    application.click_entry("", "Add Camera Track around the View's Target")
    application.wait_for("widgetProperty('_lookThrough', 'checked')")
    create(application, *["Down"] * 3, "Return")
    application.answer_question("Add Camera Track", "Return")
    application.wait_for("['Turntable_Clip'] in widgetRows('_clips')")
    camera = "channelValue(cameraTracks()[0], 'translation.X')"
    start = application.ask(camera)
    application.click("frame/_play")
    desktop.until("another place of the camera", lambda: abs(application.ask(camera) - start) > 0.5)
    assert application.shown("_lookThrough", "checked"), "the playback left the camera"
    application.click("frame/_stop")
    application.wait_for("abs(%s - %r) < 0.01" % (camera, start))
    application.keys("ctrl+s")
    application.wait_for("not widgetProperty('_mainWindow', 'windowModified')")


desktop.tell([opens_the_windows, makes_a_clip, drags_a_block_into_it, moves_and_stretches_it, types_into_the_fields, plays,
              keeps_it_all, takes_the_view_along, desktop.quits], fixtures.movers)
