"""Puts animations in time as a user does: drags a block from the library into a clip, moves, stretches and repeats it, and
takes the view along.

e2e_clips.py <application> <folder for pictures of failures>
"""
import desktop
import fixtures
from editors import create, goes_back_and_forth, near, open_dock, open_windows, place, show_frame

OBJECT = "Mover"  # its block goes along x from 0 to LENGTH
BLOCK_FRAMES = fixtures.SECONDS * fixtures.FPS


def field(application, name):
    return application.shown("_statsFrame/" + name)


def makes_a_clip(application, folder):
    open_windows(application, Curves="_graphView", Clips="_clipView")
    create(application, "Down", "Return")
    application.wait_for("['Clip'] in widgetRows('_clips')")
    application.rename("Show")  # it is selected, and the tree has the focus
    application.wait_for("['Show'] in widgetRows('_clips')")
    goes_back_and_forth(application, "widgetRows('_clips')", presses=2)
    application.click_row("_clips", ["Show"])


def drags_a_block_into_it(application, folder):
    """The library stands behind the clip maker: the drag waits over the tab until that comes to the front. Questions
    have to wait until the drag has ended."""
    target, beside = place(application, 60, 0), place(application, 90, 0)
    open_dock(application, "Curves", "_graphView")
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
    application.click_at(place(application, 80, 0))
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
    start = field(application, "_start")
    assert start == round(start), "bars snap to whole frames"
    right = place(application, start + BLOCK_FRAMES, 0)
    application.drag([(right[0] - 3, right[1]), place(application, start + 2 * BLOCK_FRAMES, 0)])
    desktop.until("another length", lambda: field(application, "_duration") > 1.8 * BLOCK_FRAMES)
    assert field(application, "_start") == start, "the other end moved"


def types_into_the_fields(application, folder):
    for name, text in (("_start", "24"), ("_duration", "72"), ("_postCycles", "2")):
        application.type_into("_statsFrame/" + name, text)
        desktop.until("a value in " + name, lambda n=name, t=text: field(application, n) == float(t))
    for frame, part in ((24, 0), (60, 0.5), (24 + 72 + 18, 0.25), (24 + 3 * 72, 1)):
        show_frame(application, frame)
        x = application.ask("channelValue(findNode(%r), 'translation.X')" % OBJECT)
        assert near(x, part * fixtures.LENGTH), "frame %d shows %g" % (frame, x)
    goes_back_and_forth(application, "[widgetProperty('_statsFrame/' + name, 'value') for name in "
                                     "('_start', '_duration', '_postCycles')]", presses=4)


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


desktop.tell([makes_a_clip, drags_a_block_into_it, moves_and_stretches_it, types_into_the_fields, takes_the_view_along,
              desktop.quits], fixtures.movers)
