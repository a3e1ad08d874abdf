"""A wave runs over a field of a hundred blocks.

Ten rows of ten. A block rises once; its clip repeats, so that it rises five times. Each row is a clip of ten such, the
field a clip of ten rows, each a little later than the one before: 111 clips, three levels deep.
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
        times = [i / 8 for i in range(9)]
        lift = [0.65 * (1 - math.cos(2 * math.pi * t)) for t in times]
        addTranslationControlPoints(node, times, [(x, 0.4 + h, z) for h in lift], False)
        addRotationControlPoints(node, [0.0, 1.0], [(0, 0, 0), (0, 90, 0)])
        jump = createAnimClip("Jump %d.%d" % (row, column), rowClip)
        addToAnimClip(jump, blockOf(node), 0)
        setAnimClipDuration(jump, RISE)
        setAnimClipStart(jump, (row + column) * DELAY, False)
        setAnimClipFlipped(jump, column % 2 == 1)  # every other column runs backwards, and turns the other way
        setCycles(jump, REPEATS)
        setTrack(jump, column)
    setTrack(rowClip, row)
finish(60, field)
