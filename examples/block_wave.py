"""A wave runs over a field of a hundred blocks.

Ten rows of ten. A block rises once; its clip repeats, so that it rises five times. Each row is a clip of ten such, the
field a clip of ten rows, each a little later than the one before: 111 clips, three levels deep. The timeline plays the
same wave by the blocks' own animations.
"""

from kxStage import *

SIDE = 10
RISE = 24  # frames of one block, up and down
DELAY = 3  # frames from one to the next
REPEATS = 4  # after the first

begin((9.5, 7.2, 11.5), (0, 0.35, 0), lastFrame=2 * (SIDE - 1) * DELAY + RISE * (REPEATS + 1))
materials = [addMaterial("Blue %d" % i, (0.015 + 0.05 * i / SIDE, 0.1 + 0.35 * i / SIDE, 0.4 + 0.2 * i / SIDE), 0.3)
             for i in range(SIDE)]
field = createAnimClip("Field", kxNodePtr())
for row in range(SIDE):
    rowClip = createAnimClip("Row %d" % row, field)
    for column in range(SIDE):
        x, z = column - (SIDE - 1) / 2, row - (SIDE - 1) / 2
        node = body("rounded box", "Block %d.%d" % (row, column), materials[(row + column) * SIDE // (2 * SIDE - 1)],
                    (x, 0.4, z), scale=(0.86, 0.8, 0.86))
        start = (row + column) * DELAY
        times = [start / 24 + i / 8 for i in range(9)]
        lift = [0.65 * (1 - math.cos(math.pi * i / 4)) for i in range(9)]
        addTranslationControlPoints(node, times, [(x, 0.4 + h, z) for h in lift], False)
        addRotationControlPoints(node, [times[0], times[-1]], [(0, 0, 0), (0, 90, 0)])
        jump = createAnimClip("Jump %d.%d" % (row, column), rowClip)
        block = blockOf(node)
        addToAnimClip(jump, block, 0)
        setCycles(block, REPEATS)  # on the timeline; the clip repeats its copy as a whole
        setAnimClipDuration(jump, RISE)
        setAnimClipStart(jump, start, False)
        setAnimClipFlipped(jump, column % 2 == 1)  # every other column runs backwards, and turns the other way
        setCycles(jump, REPEATS)
        setTrack(jump, column)
    setTrack(rowClip, row)
finish(60, field)
