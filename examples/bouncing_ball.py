"""A rubber ball drops, squashes, and comes to rest.

Keys by script: the height is that of a free fall, sampled between the contacts; at each contact the ball is squashed,
and stretched on its way. All of it becomes one block and one clip that can be moved, stretched and repeated.
"""

from kxStage import *

RADIUS = 0.5
GRAVITY = 9.81
RESTITUTION = 0.68  # share of the speed that is left after a contact
CONTACTS = 7
SQUASH_TIME = 0.04  # seconds on each side of a contact

begin((0.2, 1.9, 8.0), (0.1, 1.05, 0))
rubber = addMaterial("Rubber", (0.75, 0.05, 0.03), 0.35)
wood = addMaterial("Wood", (0.42, 0.23, 0.1), 0.5)
ball = body("sphere", "Ball", rubber)
for i in range(4):
    body("rounded box", "Step", wood, (-3.3 + i * 2.2, 0.05, -1.6), scale=(2.0, 0.1 + 0.5 * i, 1.4))

times, places, scaleTimes, scales = [], [], [], []
x, time, speed = -3.0, 0.0, 0.0
height = 3.0
for contact in range(CONTACTS):
    # From the highest point down in half the time, from the floor up and down in all of it.
    rise = 0.0 if contact == 0 else speed / GRAVITY
    fall = math.sqrt(2 * height / GRAVITY)
    steps = 12
    for i in range(steps + 1 if contact == 0 else steps * 2 + 1):
        t = (rise + fall) * i / (steps if contact == 0 else steps * 2)
        y = height - 0.5 * GRAVITY * (t - rise) ** 2
        if times and i == 0:
            continue
        times.append(time + t)
        places.append((x + 1.1 * t, RADIUS + max(y, 0), 0))
    x += 1.1 * (rise + fall)
    time += rise + fall
    speed = math.sqrt(2 * GRAVITY * height)
    squash = 0.037 * speed
    stretch = 1 + 0.4 * squash
    scaleTimes += [time - 2.5 * SQUASH_TIME, time, time + 2.5 * SQUASH_TIME]
    scales += [(1 / math.sqrt(stretch), stretch, 1 / math.sqrt(stretch)),
               (1 + 0.5 * squash, 1 - squash, 1 + 0.5 * squash),
               (1 / math.sqrt(stretch), stretch, 1 / math.sqrt(stretch))]
    speed *= RESTITUTION
    height = speed * speed / (2 * GRAVITY)
scaleTimes, scales = [0.0] + scaleTimes + [time + 0.4], [(1, 1, 1)] + scales + [(1, 1, 1)]

# A squashed ball stands lower, so that it still touches the floor.
def scaleAt(t):
    for i in range(len(scaleTimes) - 1):
        if scaleTimes[i] <= t <= scaleTimes[i + 1]:
            part = (t - scaleTimes[i]) / (scaleTimes[i + 1] - scaleTimes[i])
            return scales[i][1] + (scales[i + 1][1] - scales[i][1]) * part
    return 1.0


places = [(px, max(py - RADIUS, 0) + RADIUS * scaleAt(t), pz) for t, (px, py, pz) in zip(times, places)]
addTranslationControlPoints(ball, times, places, False)
addScaleControlPoints(ball, scaleTimes, scales)

clip = createAnimClip("Bounce", kxNodePtr())
addToAnimClip(clip, blockOf(ball), 0)
setFrameRange(0, int(time * 24) + 12)
finish(19)
