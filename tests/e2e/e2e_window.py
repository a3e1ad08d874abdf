"""Works in the application's window as a user does: scrubs, drags the ranges, types frames, renames, takes back, saves,
opens and quits.

e2e_window.py <application> <folder for pictures of failures>
"""
import os
import sys

import desktop
import fixtures
import poses

OBJECTS = ["Mover", "Slider", "Spinner", "Pulser", "Still"]
LAST = fixtures.SECONDS * fixtures.FPS


def place(application, name):
    return application.ask("values([%r], %r)" % (name, poses.CHANNELS[:3]))[name]


def frame_is(application, frame):
    """The field, and the object that goes evenly along x."""
    desktop.until("frame %s in the field" % frame, lambda: application.shown("_current") == frame, 10)
    expected = fixtures.LENGTH * frame / LAST
    x = place(application, "Mover")[0]
    assert abs(x - expected) < 1e-4, "at frame %s the object stands at %s, not at %s" % (frame, x, expected)


def scrubs(application, folder):
    """The middle of the ruler is the middle of the range, its ends are the range's ends."""
    application.press("_timeLine", 0.5, 0.5)
    frame_is(application, LAST // 2)
    application.drag_to("_timeLine", 1.0, 0.5)
    frame_is(application, LAST)
    application.drag_to("_timeLine", 0.0, 0.5)
    frame_is(application, 0)
    application.drag_to("_timeLine", 0.5, 0.5)
    application.release()
    frame_is(application, LAST // 2)
    application.keys("Right", "Right", "Left", "Right")
    frame_is(application, LAST // 2 + 2)


def drags_the_detailed_range(application, folder):
    application.drag([application.point("_range", -4, 0.5), application.point("_range", 0.5, 0.5)])
    desktop.until("the range's end near the middle", lambda: abs(application.shown("_rangeEnd") - LAST / 2) <= 1)
    end = application.shown("_rangeEnd")
    assert application.shown("_end") == LAST and application.shown("_rangeStart") == 0
    application.click("_gotoEnd")
    frame_is(application, end)
    application.click("_timeLine", 1.0)
    frame_is(application, end)
    application.drag([application.point("_range", part, 0.5) for part in (0.25, 0.45)])
    start = application.wait_for("widgetProperty('_rangeStart', 'value')")
    assert application.shown("_rangeEnd") - start == end, "the range changes its length when it is moved"
    application.click("_gotoStart")
    frame_is(application, start)
    application.click("_range", 0.5, 0.5, count=2)
    desktop.until("the full range after a double click", lambda: application.shown("_rangeStart") == 0 and
                  application.shown("_rangeEnd") == LAST)


def plays_the_detailed_range_only(application, folder):
    application.type_into("_rangeStart", "10")
    application.type_into("_rangeEnd", "14")
    application.click("_gotoStart")
    frame_is(application, 10)
    application.click("_playRev")
    frames = set()

    def has_gone_round():
        frames.add(application.shown("_current"))
        return len(frames) >= 4
    desktop.until("four frames", has_gone_round)
    application.click("_stop")
    desktop.until("the stop", lambda: application.shown("_gotoStart", "enabled"))
    assert frames <= set(range(10, 15)), "frames %s lie outside of 10 to 14" % sorted(frames)
    frame_is(application, 10)
    application.type_into("_rangeStart", "0")
    application.type_into("_rangeEnd", str(LAST))


def types_frames(application, folder):
    for frame in (7, 0, 41):
        application.type_into("_current", str(frame))
        frame_is(application, frame)


def renames(application, folder):
    application.click("_objects", 0.4, 12)
    for _ in range(12):
        if application.ask("[n.name for n in selectedNodes()]") == ["Pulser"]:
            break
        application.keys("Down")
    assert application.ask("[n.name for n in selectedNodes()]") == ["Pulser"], "the arrow keys don't reach an object"
    application.keys("F2", "ctrl+a")
    application.type("Heart of the engine")
    application.keys("Return")
    application.wait_for("bool(findNode('Heart of the engine')) and not findNode('Pulser')")
    application.keys("ctrl+z")
    application.wait_for("bool(findNode('Pulser')) and not findNode('Heart of the engine')")
    application.keys("ctrl+shift+z", "ctrl+z")
    application.wait_for("bool(findNode('Pulser'))")


def edits_by_keys(application, folder):
    """The keys of the Edit menu act while the view has the focus, and leave the text of a field alone."""
    application.click("_view", 0.02, 0.96)
    application.run("selectNodes([findNode('Still')])")
    application.keys("ctrl+d")
    application.wait_for("bool(findNode('Still_1'))")
    application.keys("ctrl+a", "Delete")
    application.wait_for("not findNode('Still') and not findNode('Mover')")
    application.keys("ctrl+z", "ctrl+z", "ctrl+z")
    application.wait_for("bool(findNode('Still')) and not findNode('Still_1')")
    application.run("selectNodes([findNode('Still')])")
    application.click("_current", 0.3)
    application.keys("ctrl+a", "Delete", "Escape")
    application.click("_view", 0.02, 0.96)
    assert application.ask("bool(findNode('Still'))"), "Delete in a field deletes objects"


def types_properties(application, folder):
    application.run("selectNodes([findNode('Still')])")
    before = place(application, "Still")
    application.type_into("_properties/translationY", "2.5")
    desktop.until("the typed value", lambda: place(application, "Still") == [before[0], 2.5, before[2]])
    application.click("_timeLine")  # a field takes back what is typed in it
    application.keys("ctrl+z")
    desktop.until("the value before", lambda: place(application, "Still") == before)
    # Tab goes from number to number of a material too.
    material = application.ask("selectMaterials([addMaterial('Tin', (0.5, 0.5, 0.5), 0.5, 0)]) or 'Tin'")
    application.type_into("_properties/baseColorR", "0.3")
    application.keys("Tab", "ctrl+a")
    application.type("0.7")
    application.keys("Return")
    desktop.until("the green of the material", lambda: application.ask(
        "round(channelValue(findMaterial(%r), 'baseColor.G'), 3)" % material) == 0.7)
    application.keys("ctrl+z", "ctrl+z")


def saves_for_another_process(application, folder):
    """What is saved by Ctrl+Shift+S shows the same in a process of its own without a window."""
    path = os.path.join(folder, "kept.kxs")
    application.save_scene_as(path)
    assert not application.shown("_mainWindow", "windowModified")
    frames = [0, 5, 11.5, 24, 30.25, LAST]
    expected = []
    for frame in frames:
        application.set_frame(frame)
        expected.append(application.ask("values(%r, %r)" % (OBJECTS, poses.CHANNELS)))
    seen = desktop.values_at_frames(sys.argv[1], folder, path, OBJECTS, frames)
    for frame, here, there in zip(frames, expected, seen):
        assert here == there, "frame %s: %s became %s" % (frame, here, there)


def asks_before_losing_work(application, folder):
    application.run("setChannelValue(findNode('Still'), 'translation.X', 9)")
    application.wait_for("widgetProperty('_mainWindow', 'windowModified')")
    application.keys("ctrl+q")
    application.answer_question("Unsaved Changes", "Escape")
    assert place(application, "Still")[0] == 9
    application.keys("ctrl+s")
    application.wait_for("not widgetProperty('_mainWindow', 'windowModified')")


def says_what_cannot_be_opened(application, folder):
    """The error dialog names the file, and the scene before it stays."""
    before = application.shown("_mainWindow", "windowTitle")
    path = fixtures.movers(folder, "cut.glb")
    os.truncate(path, os.path.getsize(path) - 200)
    application.keys("ctrl+o")
    application.answer_file_dialog("Open", path, next_window="can't be opened")
    application.keys("Return")
    assert application.shown("_mainWindow", "windowTitle") == before


desktop.tell([scrubs, drags_the_detailed_range, plays_the_detailed_range_only, types_frames, renames, edits_by_keys,
              types_properties, saves_for_another_process, asks_before_losing_work, says_what_cannot_be_opened,
              desktop.quits], fixtures.movers)
