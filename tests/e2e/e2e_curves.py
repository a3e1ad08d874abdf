"""Animates an object as a user does: keys it, moves it, edits its curve in the graph, makes a block of it and keeps that
in a file.

e2e_curves.py <application> <folder for pictures of failures>
"""
import os

import desktop
import fixtures
from editors import frame_curves, key, near, open_windows

OBJECT = "Still"
Y = [OBJECT, "translation.Y"]


def value(application, name=OBJECT):
    return application.ask("channelValue(findNode(%r), 'translation.Y')" % name)


def value_at(application, frame):
    application.set_frame(frame)
    return value(application)


def keys_twice(application, folder):
    open_windows(application, Curves="_graphView")
    application.run("selectNodes([])")
    application.click_row("_objects", [OBJECT])
    application.wait_for("%r in widgetRows('_channels')" % (Y,))
    application.set_frame(0)
    steps = application.ask("undoCount()")
    application.keys("ctrl+k")
    application.wait_for("undoCount() == %d" % (steps + 1))
    application.set_frame(24)
    picture = application.picture()
    application.click("_view", 0.03, 0.9)
    application.run("selectNodes([findNode(%r)])" % OBJECT)
    application.keys("w", "f")
    desktop.until("another view", lambda: application.picture() != picture)
    desktop.at_rest("a camera at rest", application.picture)
    application.drag([application.point("_view", 0.5, 0.5), application.point("_view", 0.62, 0.3)])
    moved = desktop.until("another place", lambda: not near(value(application), -3) and value(application))
    application.keys("ctrl+k")
    application.wait_for("undoCount() == %d" % (steps + 3))
    assert near(value_at(application, 0), -3), "the first key is lost"
    assert near(value_at(application, 24), moved, 1e-3), "the second key isn't what was seen"
    middle = value_at(application, 12)
    assert min(-3, moved) < middle < max(-3, moved), "nothing moves between the keys"


def drags_keys(application, folder):
    """One key of one channel: along time with the field following, then back by one undo."""
    application.click_row("_channels", Y)
    top = value_at(application, 24)
    frame_curves(application, (0, value_at(application, 0)), (24, top))
    left, _, width, _ = application.ask("widgetRect('_graphView')")
    application.wheel((left + width // 2, key(application, 12, top)[1]), -2)
    desktop.until("room for a drag", lambda: key(application, 40, top)[0] < left + width)
    steps = application.ask("undoCount()")
    application.click_at(key(application, 0, value_at(application, 0)))
    application.wait_for("widgetProperty('_frame', 'enabled') and widgetProperty('_frame', 'value') == 0")
    assert application.ask("undoCount()") == steps, "a click is no step"
    application.drag([key(application, 24, top), key(application, 30, top), key(application, 36.5, top)])
    application.wait_for("widgetProperty('_frame', 'value') == 36")
    assert application.ask("undoCount()") == steps + 1, "one drag is one step"
    here = application.ask("widgetProperty('_statsFrame/_value', 'value')")
    assert near(value_at(application, 36), here), "the scene doesn't follow"
    application.keys("ctrl+z")
    desktop.until("the key's old place", lambda: near(value_at(application, 24), top, 1e-3))


def types_into_the_fields(application, folder):
    top = value_at(application, 24)
    application.click_at(key(application, 24, top))
    application.wait_for("widgetProperty('_frame', 'enabled')")
    for field, text in (("_frame", "+=6"), ("_statsFrame/_value", "4"), ("_statsFrame/_value", "*=2")):
        application.type_into(field, text)
    application.wait_for("widgetProperty('_frame', 'value') == 30 and "
                         "widgetProperty('_statsFrame/_value', 'value') == 8")
    assert near(value_at(application, 30), 8), "the scene doesn't follow"


def shapes_tangents(application, folder):
    """Flat at both keys leaves slowly and comes in slowly; a dragged handle is free and bends the curve."""
    start, end = value_at(application, 0), value_at(application, 30)
    frame_curves(application, (0, start), (30, end))
    application.keys("ctrl+a")
    application.wait_for("widgetProperty('_statsFrame/_value', 'styleSheet') != ''")
    application.click_entry("QuickActionBar", "Flat")
    desktop.until("flat ends", lambda: near((value_at(application, 3) - start) / (end - start), 0.0146, 0.002))
    steps = application.ask("undoCount()")
    frame_curves(application, (0, start), (30, end))
    application.click_at(key(application, 0, start))
    x, y = key(application, 15, start)  # the end of its handle
    application.drag([(x, y), (x, y - 60)])
    application.wait_for("undoCount() == %d" % (steps + 1))
    desktop.until("a steeper start", lambda: (value_at(application, 3) - start) / (end - start) > 0.05)
    application.keys("ctrl+z")
    desktop.until("flat ends again", lambda: near((value_at(application, 3) - start) / (end - start), 0.0146, 0.002))


def selects_copies_and_deletes(application, folder):
    """A rubber band over both keys; copies at the cursor; deletes; each one step."""
    start, end = value_at(application, 0), value_at(application, 30)
    frame_curves(application, (0, start), (30, end))
    left, top, width, height = application.ask("widgetRect('_graphView')")
    before = key(application, 30, end)
    application.wheel((left + width // 2, top + height // 2), -2)
    desktop.until("a zoom", lambda: key(application, 30, end) != before)
    application.drag([(left + 3, top + 3), (left + width - 4, top + height - 4)])
    application.wait_for("widgetProperty('_statsFrame/_value', 'styleSheet') != ''")
    steps = application.ask("undoCount()")
    application.keys("ctrl+c")
    application.set_frame(60)
    application.keys("ctrl+v")
    application.wait_for("undoCount() == %d" % (steps + 1))
    assert near(value_at(application, 60), start) and near(value_at(application, 90), end), "pasted at the cursor"
    application.keys("ctrl+z")
    desktop.until("one key at the end", lambda: near(value_at(application, 90), end) and
                  near(value_at(application, 60), end))
    frame_curves(application, (0, start), (30, end))
    application.click_at(key(application, 30, end))
    application.wait_for("widgetProperty('_frame', 'value') == 30")
    application.keys("Delete")
    desktop.until("one key", lambda: near(value_at(application, 30), start))
    application.keys("ctrl+z")
    desktop.until("two keys", lambda: near(value_at(application, 30), end))


def makes_a_block(application, folder):
    application.run("selectNodes([findNode(%r)])" % OBJECT)
    application.wait_for("rowRect('_library', [%r])" % OBJECT)
    application.click_row("_library", [OBJECT])
    application.keys("ctrl+shift+k")
    application.wait_for("[%r, %r] in widgetRows('_library')" % (OBJECT, OBJECT))
    application.rename("Jump")  # the new block is selected
    application.wait_for("[%r, 'Jump'] in widgetRows('_library')" % OBJECT)
    assert near(value_at(application, 30), 8), "the block moves the object"


def keeps_a_block_in_a_file(application, folder):
    """Saves a block by the row's menu, which holds up all questions, and opens the file onto another object."""
    path = os.path.join(folder, "jump.osb")
    application.click_row("_library", [OBJECT, "Jump"])
    application.click_row("_library", [OBJECT, "Jump"], button=3)
    application.keys(*["Down"] * 3, "Return")  # behind play and reset
    application.answer_file_dialog("Save Animations...", path)
    application.click("_view", 0.03, 0.9)
    application.run("selectNodes([findNode('Pulser')])")
    steps = application.ask("undoCount()")
    application.keys("ctrl+o")
    application.answer_file_dialog("Open", path)
    application.wait_for("['Pulser', 'Jump_1'] in widgetRows('_library')")
    assert application.ask("undoCount()") == steps + 1
    application.set_frame(30)
    assert near(value(application, "Pulser"), 8), "the block moves the object"
    application.keys("ctrl+z")
    application.wait_for("['Pulser', 'Jump_1'] not in widgetRows('_library')")


desktop.tell([keys_twice, drags_keys, types_into_the_fields, shapes_tangents,
              selects_copies_and_deletes, makes_a_block, keeps_a_block_in_a_file, desktop.quits],
             fixtures.movers)
