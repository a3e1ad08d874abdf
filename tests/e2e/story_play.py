"""Plays the film that is open around its trigger, and wants the view to jump there."""
import time
from kxAnimWidgets import *
from kxHost import *


def state():
    render("picture.png", 160, 90)
    with open("picture.png", "rb") as file:
        return file.read()


def play(start, end):
    limit = time.monotonic() + 20
    playAnim("Film", start, end)
    while isPlaying("Film"):
        assert time.monotonic() < limit, "it plays without end"
        processEvents()
    showAnimation(findAnimClip("Film"), end)


def rest(before=None):
    """Waits until the view, which goes on short ways, shows something else than `before` and has come to rest."""
    limit = time.monotonic() + 20
    last, since = state(), time.monotonic()
    while last == before or time.monotonic() - since < 0.5:
        assert time.monotonic() < limit, "the view stays, or never comes to rest"
        processEvents()
        now = state()
        if now != last:
            last, since = now, time.monotonic()
    return last


play(50, 58)
early = rest()
play(58, 64)  # the parts stand still here
late = rest(early)
showViewpoint("Close")
assert late == rest(), "the view has gone elsewhere"
