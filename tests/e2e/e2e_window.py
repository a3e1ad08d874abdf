"""Works in the application's window as a user does: scrubs, drags the ranges, types frames, renames, moves, takes back,
saves and quits.

e2e_window.py <application> <folder for pictures of failures>
"""
import os
import random
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


def type_into(application, field, text):
    application.click(field, 0.3)
    application.keys("ctrl+a")
    application.type(text)
    application.keys("Return")


def drag(application, widget, start, end, button=1):
    application.press(widget, *start, button=button)
    application.drag_to(widget, *end)
    application.release(button)


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
    application.press("_range", -4, 0.5)
    application.drag_to("_range", 0.5, 0.5)
    application.release()
    desktop.until("the range's end near the middle", lambda: abs(application.shown("_rangeEnd") - LAST / 2) <= 1)
    end = application.shown("_rangeEnd")
    assert application.shown("_end") == LAST and application.shown("_rangeStart") == 0
    application.click("_gotoEnd")
    frame_is(application, end)
    application.click("_timeLine", 1.0)
    frame_is(application, end)
    application.press("_range", 0.25, 0.5)
    application.drag_to("_range", 0.45, 0.5)
    application.release()
    start = application.wait_for("widgetProperty('_rangeStart', 'value')")
    assert application.shown("_rangeEnd") - start == end, "the range changes its length when it is moved"
    application.click("_gotoStart")
    frame_is(application, start)
    application.click("_range", 0.5, 0.5, count=2)
    desktop.until("the full range after a double click", lambda: application.shown("_rangeStart") == 0 and
                  application.shown("_rangeEnd") == LAST)


def plays_the_detailed_range_only(application, folder):
    type_into(application, "_rangeStart", "10")
    type_into(application, "_rangeEnd", "14")
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
    type_into(application, "_rangeStart", "0")
    type_into(application, "_rangeEnd", str(LAST))


def types_frames(application, folder):
    for frame in (7, 0, 41):
        type_into(application, "_current", str(frame))
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
    application.keys("ctrl+shift+z")
    application.wait_for("bool(findNode('Heart of the engine'))")
    application.keys("ctrl+z")
    application.wait_for("bool(findNode('Pulser'))")


def moves_with_the_gizmo(application, folder):
    """An object that is framed stands in the middle of the view, where the handle for the view's plane is."""
    application.click("_view", 0.02, 0.96)
    application.run("selectNodes([findNode('Still')])")
    picture = application.picture()
    application.keys("w", "f")
    application.wait_for_camera(picture)
    before, steps = place(application, "Still"), application.ask("undoCount()")
    application.press("_view", 0.5, 0.5)
    application.drag_to("_view", 0.6, 0.4)
    application.release()
    after = desktop.until("another place", lambda: place(application, "Still") != before and
                          place(application, "Still"))
    assert application.ask("undoCount()") == steps + 1, "one drag is one step"
    application.keys("ctrl+z")
    desktop.until("the old place", lambda: place(application, "Still") == before)
    application.keys("ctrl+y")
    desktop.until("the new place", lambda: place(application, "Still") == after)
    application.keys("q")


def edits_by_keys(application, folder):
    """The keys of the Edit menu act while the view has the focus, and leave the text of a field alone."""
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


def lives_through_wild_use(application, folder):
    """Plays, scrubs, drags ranges and looks around, one on top of the other."""
    chance = random.Random(2)
    deeds = [
        lambda: application.click("_play"),
        lambda: application.click("_stop"),
        lambda: application.click("_playRev"),
        lambda: drag(application, "_timeLine", (chance.random(), 0.5), (chance.random(), 0.5)),
        lambda: drag(application, "_range", (-4, 0.5), (0.3 + 0.6 * chance.random(), 0.5)),
        lambda: drag(application, "_range", (0.3, 0.5), (chance.random(), 0.5)),
        lambda: application.click("_range", 0.5, 0.5, count=2),
        lambda: drag(application, "_view", (0.4, 0.6), (chance.random(), chance.random())),
        lambda: drag(application, "_view", (0.4, 0.6), (chance.random(), chance.random()), button=2),
        lambda: application.click("_view", 0.5, 0.5, count=3, button=chance.choice([4, 5])),
        lambda: application.click("_view", chance.random(), 0.5),
        lambda: application.keys(chance.choice(["a", "f", "w", "e", "r", "q", "Escape", "ctrl+z", "ctrl+y"])),
    ]
    for _ in range(40):
        chance.choice(deeds)()
    application.click("_stop")
    application.click("_range", 0.5, 0.5, count=2)
    application.keys("q")
    assert application.ask("1 + 1") == 2


def types_properties(application, folder):
    application.run("selectNodes([findNode('Still')])")
    before = place(application, "Still")
    type_into(application, "_properties/translationY", "2.5")
    desktop.until("the typed value", lambda: place(application, "Still") == [before[0], 2.5, before[2]])
    application.click("_timeLine")  # a field takes back what is typed in it
    application.keys("ctrl+z")
    desktop.until("the value before", lambda: place(application, "Still") == before)


def saves_for_another_process(application, folder):
    """What is saved by Ctrl+Shift+S shows the same in a process of its own without a window."""
    path = os.path.join(folder, "kept.kxs")
    application.keys("ctrl+shift+s")
    application.answer_file_dialog("Save Scene As", path)
    application.wait_for("'kept.kxs' in widgetProperty('_mainWindow', 'windowTitle')")
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


desktop.tell([scrubs, drags_the_detailed_range, plays_the_detailed_range_only, types_frames, renames, moves_with_the_gizmo,
              edits_by_keys, types_properties, saves_for_another_process, asks_before_losing_work,
              lives_through_wild_use, desktop.quits], fixtures.movers)
