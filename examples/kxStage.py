"""What the examples stand on: a floor, light, materials and a camera."""

import math

from kxHost import *
from kxAnimWidgets import *


def place(node, position=None, rotation=None, scale=None):
    """Sets the transform of a node; what is None stays."""
    for channel, values in (("translation", position), ("rotation", rotation), ("scale", scale)):
        for axis, value in zip("XYZ", values or ()):
            setChannelValue(node, "%s.%s" % (channel, axis), value)
    return node


def body(kind, name, material, position=None, rotation=None, scale=None, parent=None):
    """A body of one of the kinds that addObject() knows."""
    return place(addObject(kind, name, parent, material), position, rotation, scale)


def group(name, position=None, parent=None):
    return place(addObject("group", name, parent), position)


def look(node, eye, target):
    """Places a camera or a viewpoint so that it looks at a point."""
    x, y, z = (e - t for e, t in zip(eye, target))
    return place(node, eye, (-math.degrees(math.atan2(y, math.hypot(x, z))), math.degrees(math.atan2(x, z)), 0))


def begin(eye, target, floor=(0.055, 0.06, 0.07), lights=True, lastFrame=96):
    """An empty scene with a round floor, two lights and a camera; gives the camera.

    Without a floor shadows fall on the ground of the view, without lights the light is that of a studio.
    """
    newScene()
    processEvents()  # the view frames a new scene at the next turn, and not again after the script
    setFrameRange(0, lastFrame)
    if floor is not None:
        body("cylinder", "Floor", addMaterial("Floor", floor, 0.7), (0, -0.1, 0), scale=(26, 0.2, 26))
    if lights:
        key = place(addObject("directional light", "Key light"), (3, 6, 4), (-48, 32, 0))
        setChannelValue(key, "intensity", 2.4)
        setChannelValue(key, "color.B", 0.88)
        fill = place(addObject("directional light", "Fill light"), (-4, 4, 4), (-24, -48, 0))
        setChannelValue(fill, "intensity", 0.9)
        setChannelValue(fill, "color.R", 0.8)
    look(addViewpoint("Start"), eye, target)
    return look(addObject("camera", "Camera"), eye, target)


def blockOf(node):
    """Gathers the keys of a node into a block and gives it."""
    createAnimationBlockForNode(node, False)
    return findAnimBlock(node.name)


def finish(frame=0, clip=None):
    """Shows the result from the start: the trees of animations, and a frame of the timeline or of a clip."""
    selectNodes([])
    sendMessage("pastedAnimations")
    setCurrentFrame(frame)
    if clip is not None:
        showAnimation(clip, frame)
    showViewpoint("Start")
