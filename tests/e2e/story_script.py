"""From a model to a film by script: takes the covers of the engine that is open off twice, with a viewpoint between, and
saves that as film.kxs in the working folder.

kxhost --headless 2CylinderEngine.glb --script story_script.py
"""
from kxAnimWidgets import *
from kxHost import *

import story

FPS = 24
TOO_FAR = 1.7  # times the way, until one curve is refined


def position(node):
    return [channelValue(node, "translation." + axis) for axis in "XYZ"]


def make_block(node, way):
    start = position(node)
    addTranslationControlPoints(node, [0, story.LENGTH / FPS], [start, [a + TOO_FAR * b for a, b in zip(start, way)]],
                                False)
    createAnimationBlockForNode(node, False)
    return findAnimBlock(node.name)


starts = {name: position(findNode(name)) for name in story.PARTS}
blocks = {name: make_block(findNode(name), story.WAYS[name]) for name in story.PARTS}
film = createAnimClip("Film", kxNodePtr())
for frame in (0, story.AGAIN):
    apart = createAnimClip("Apart", film)
    for block in blocks.values():
        addToAnimClip(apart, block, 0)
    setAnimClipStart(apart, frame, False)

for name, block in blocks.items():
    for axis, start, way in zip("XYZ", starts[name], story.WAYS[name]):
        setKey(block, "translation." + axis, story.LENGTH / FPS, start + way)

close = addViewpoint("Close")
for channel, value in (("translation.X", 500), ("translation.Y", 150), ("translation.Z", 500), ("rotation.X", -10),
                       ("rotation.Y", 45)):
    setChannelValue(close, channel, value)
addTrigger(film, "viewpoint", close.name, story.TRIGGER)
saveScene("film.kxs")
