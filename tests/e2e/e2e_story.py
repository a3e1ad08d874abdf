"""From a model to a film by mouse and keyboard: opens an engine that somebody else made, lets the wizard take its two
covers off, places that clip twice with a viewpoint between, refines one of its curves, keeps it, opens it again and plays.

e2e_story.py <application> <folder for pictures of failures>
"""
import os
import subprocess

import desktop
import editors
import poses

MODEL = "glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb"
RIGHT, LEFT = PARTS = "Node 66", "Node 58"  # the covers of its cylinders
VIEW_CLICKS = {RIGHT: (0.7, 0.55), LEFT: (0.325, 0.33)}  # where a framed engine shows them
LENGTH = 48  # frames that taking them off lasts
TRIGGER = 60  # the frame at which the view jumps
AGAIN = 72  # the frame at which they are taken off once more
FRAMES = (0, 12, 24, 36, 48, 60, 71, 72, 84, 96, 108, 119)
SEEN = {}  # what the steps hand on to each other


def engine(_folder):
    """In the folder of the models that the Debian package assimp-testmodels installs."""
    listed = subprocess.run(["dpkg", "-L", "assimp-testmodels"], stdout=subprocess.PIPE, text=True, check=True).stdout
    return os.path.join(next(line for line in listed.splitlines() if line.endswith("/models")), MODEL)


def position(application, name):
    return application.ask("[channelValue(findNode(%r), 'translation.' + axis) for axis in 'XYZ']" % name)


def in_scene(application, name):
    """Where an object's gizmo stands."""
    matrix, node = poses.scaling(1, 1, 1), "findNode(%r)" % name
    while application.ask("'rotationOrientation.X' in channelNames(%s)" % node):
        matrix = poses.product(poses.of_channels(application.ask(
            "[channelValue(%s, channel) for channel in %r]" % (node, poses.CHANNELS))), matrix)
        node += ".parent"
    return [matrix[row][3] for row in range(3)]


def eye(application):
    """Places on the screen that tell one view from another."""
    return application.ask("[pointInView(p) for p in ((0, 0, 0), (200, 0, 0), (0, 200, 0))]")


def select_part(application, name, held=None):
    x, y = VIEW_CLICKS[name]
    application.click("_view", x, y, held=held)
    application.wait_for("%r in [node.name for node in selectedNodes()]" % name)


def drag_arrow(application, name, axis, pixels):
    """Takes the gizmo's arrow along an axis of the scene and pulls it."""
    at = in_scene(application, name)
    tip = list(at)
    tip[axis] += 100
    (x, y), (tip_x, tip_y) = (application.ask("pointInView(%r)" % (point,)) for point in (at, tip))
    size = ((tip_x - x) ** 2 + (tip_y - y) ** 2) ** 0.5
    along = (tip_x - x) / size, (tip_y - y) / size
    application.drag([(round(x + along[0] * way), round(y + along[1] * way)) for way in (60, 60 + pixels)])
    moved = desktop.until("another place of " + name, lambda: in_scene(application, name) != at and
                          in_scene(application, name))
    for other in range(3):
        assert other == axis or abs(moved[other] - at[other]) < 1e-2, "%s went from %s to %s" % (name, at, moved)


def turn_view(application, part):
    """By a drag beside all objects; gives the eye that it comes to."""
    before = eye(application)
    application.click("_view", 0.03, 0.9)
    application.drag([application.point("_view", 0.4, 0.93), application.point("_view", 0.4 + part, 0.85)])
    desktop.until("another view", lambda: eye(application) != before)
    return desktop.at_rest("a view at rest", lambda: eye(application))


def shows_the_film(application):
    """Straight ways, where the parts wait until the second clip begins."""
    for frame in FRAMES:
        editors.show_frame(application, frame)
        part = min((frame - (AGAIN if frame >= AGAIN else 0)) / LENGTH, 1.0)
        for name in PARTS:
            seen = position(application, name)
            place = [a + (b - a) * part for a, b in zip(SEEN["start"][name], SEEN["end"][name])]
            worst = max(abs(a - b) for a, b in zip(seen, place))
            assert worst < 0.02, "%s stands at %s at frame %g, not at %s" % (name, seen, frame, place)


def way_of(application):
    """How far the refined part is on its way."""
    name = RIGHT
    start, end = SEEN["start"][name][0], SEEN["end"][name][0]
    return (position(application, name)[0] - start) / (end - start)


def opens_the_windows(application, folder):
    editors.open_windows(application, Curves="_graphView", Clips="_clipView")
    application.click("_view", 0.03, 0.9)
    application.keys("a", "w")
    desktop.at_rest("a view at rest", lambda: eye(application))
    SEEN["start"] = {name: position(application, name) for name in PARTS}


def starts_the_wizard(application, folder):
    select_part(application, RIGHT)
    select_part(application, LEFT, held="ctrl")
    application.wait_for("len(selectedNodes()) == 2")
    editors.begin_wizard(application, "Apart")


def captures_moves_of_the_gizmo(application, folder):
    application.click("_captureStart")
    application.wait_for("widgetProperty('_captureStart', 'text') == ''")
    select_part(application, RIGHT)
    application.wait_for("len(selectedNodes()) == 1")
    drag_arrow(application, RIGHT, 0, 70)
    select_part(application, LEFT)
    application.wait_for("len(selectedNodes()) == 1")
    drag_arrow(application, LEFT, 1, 60)
    application.click("_captureEnd")
    application.wait_for("widgetProperty('_captureEnd', 'text') == ''")
    SEEN["end"] = {name: position(application, name) for name in PARTS}
    for name in PARTS:
        assert poses.difference(poses.translation(*SEEN["end"][name]),
                                poses.translation(*SEEN["start"][name])) > 0.05, SEEN
    steps = application.ask("undoCount()")
    application.click("_preview")
    desktop.until("a part on its way", lambda: 0.05 < way_of(application) < 0.95)
    application.wait_for("not widgetProperty('_preview', 'checked')")
    assert {name: position(application, name) for name in PARTS} == SEEN["end"], "the preview leaves its traces"
    application.wait_for("undoCount() == %d" % steps)  # a preview is no change
    before = application.ask("[widgetRows('_clips'), widgetRows('_library')]")
    application.click(editors.WIZARD + "/qt_wizard_finish")
    application.answer_question("Clip Finished", "Escape")  # the blocks stay on
    application.wait_for("['Clip'] in widgetRows('_clips')")
    application.keys("ctrl+z")
    application.wait_for("[widgetRows('_clips'), widgetRows('_library')] == %r" % before)
    assert {name: position(application, name) for name in PARTS} == SEEN["end"]
    application.keys("ctrl+shift+z")
    application.wait_for("['Clip'] in widgetRows('_clips')")


def names_the_film(application, folder):
    """The wizard has put its clip into a new one, which is selected and shown."""
    application.click_row("_clips", ["Clip"])
    application.rename("Film")
    application.wait_for("['Film'] in widgetRows('_clips')")
    application.click("_clipView", 0.97, 0.9)
    application.keys("f")
    desktop.until("a zoom", lambda: editors.place(application, LENGTH, 0)[0] -
                  editors.place(application, 0, 0)[0] > 300)


def places_the_clip_twice(application, folder):
    """A duplicate of the bar, which the field then moves in time."""
    application.click_at(editors.place(application, LENGTH / 2, 0))
    application.wait_for("widgetProperty('_statsFrame/_start', 'enabled')")
    application.keys("ctrl+d")
    application.wait_for("['Film', 'Apart_1'] in widgetRows('_clips')")
    application.click_at(editors.place(application, LENGTH / 2, 1))
    application.type_into("_statsFrame/_start", str(AGAIN))
    application.wait_for("widgetProperty('_statsFrame/_start', 'value') == %d" % AGAIN)
    shows_the_film(application)


def refines_a_curve(application, folder):
    """Drags the last key of one curve down in the graph. Both clips share it."""
    name = RIGHT
    editors.open_dock(application, "Curves", "_graphView")
    application.click_row("_library", [name, name + "_Apart"])
    first, last = (0, SEEN["start"][name][0]), (LENGTH, SEEN["end"][name][0])
    editors.frame_curves(application, first, last)
    goal = last[1] - 0.4 * (last[1] - first[1])
    steps = application.ask("undoCount()")
    application.drag([editors.key(application, *last), editors.key(application, LENGTH, goal)])
    application.wait_for("undoCount() == %d" % (steps + 1))
    application.wait_for("widgetProperty('_frame', 'value') == %d" % LENGTH)
    value = application.ask("widgetProperty('_statsFrame/_value', 'value')")
    assert abs(value - goal) < 0.1 * abs(last[1] - first[1]), "the key went to %g, not to %g" % (value, goal)
    SEEN["end"][name][0] = value
    editors.open_dock(application, "Clips", "_clipView")
    shows_the_film(application)


def places_a_viewpoint_between(application, folder):
    """Made from the view as it stands; then the view goes elsewhere."""
    SEEN["viewpoint"] = turn_view(application, 0.1)
    application.keys("alt+s")
    application.click_entry("", "Add Viewpoint")
    application.wait_for("len(viewpoints()) == 1")
    turn_view(application, -0.2)
    application.click_row("_clips", ["Film"])
    editors.create(application, *["Down"] * 4, "Return")  # behind clip, wizard and camera track
    application.answer_question("Add Viewpoint", "Tab", "ctrl+a", *str(TRIGGER), "Return")
    application.wait_for("['Film', 'Viewpoint'] in widgetRows('_clips')")


def keeps_it(application, folder):
    path = os.path.join(folder, "film.kxs")
    application.save_scene_as(path)
    application.keys("ctrl+n")
    application.wait_for("widgetRows('_clips') == []")
    application.open_file(path)
    application.wait_for("['Film'] in widgetRows('_clips')")
    application.click_row("_clips", ["Film"])
    application.wait_for("widgetProperty('_statsFrame/_duration', 'value') == %d" % (AGAIN + LENGTH))
    shows_the_film(application)


def plays(application, folder):
    """By the clip maker's buttons: the parts go their way twice, and the view jumps between."""
    elsewhere = turn_view(application, 0.15)
    assert elsewhere != SEEN["viewpoint"]
    application.click("frame/_gotoStart")
    desktop.until("the start", lambda: way_of(application) < 0.01)
    application.click("frame/_play")
    desktop.until("a part on its way", lambda: 0.05 < way_of(application) < 0.95)
    assert eye(application) == elsewhere, "the view has jumped too early"
    desktop.until("the viewpoint", lambda: eye(application) == SEEN["viewpoint"])
    assert application.shown("frame/_play", "checked"), "the trigger ended the playback"
    desktop.until("the second way", lambda: 0.05 < way_of(application) < 0.95)
    assert eye(application) == SEEN["viewpoint"], "the view has left the viewpoint"
    application.click("frame/_stop")
    application.wait_for("not widgetProperty('frame/_play', 'checked')")
    desktop.until("the start", lambda: way_of(application) < 0.01)


desktop.tell([opens_the_windows, starts_the_wizard, captures_moves_of_the_gizmo, names_the_film, places_the_clip_twice,
              refines_a_curve, places_a_viewpoint_between, keeps_it, plays, desktop.quits],
             engine)
