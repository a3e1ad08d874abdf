"""From a model to a film by one command line and a script; then other processes open what it saved.

e2e_story_script.py <application> <unused folder>
"""
import os
import sys

import cases
import desktop
import models
import story

HOST = sys.argv[1]
HERE = os.path.dirname(os.path.abspath(__file__))
MODEL = os.path.join(models.folder(), story.MODEL)


def makes_the_film(folder):
    code, output = desktop.run_headless(HOST, folder, MODEL, "--script", os.path.join(HERE, "story_script.py"))
    assert code == 0, "exit code %s:\n%s" % (code, output)
    assert os.path.getsize(os.path.join(folder, "film.kxs")) > 0
    assert "Traceback" not in output and "error" not in output, output


def shows_it(folder):
    """In a process of its own: the places at frames of the clip."""
    def places(values):
        return {name: row[:3] for name, row in values.items()}
    start = places(desktop.values_at_frames(HOST, folder, MODEL, story.PARTS, [0])[0])
    end = {name: [a + b for a, b in zip(start[name], story.WAYS[name])] for name in story.PARTS}
    seen = desktop.values_at_frames(HOST, folder, "film.kxs", story.PARTS, story.FRAMES, "Film")
    for frame, values in zip(story.FRAMES, seen):
        story.check(frame, places(values), start, end)


def jumps(folder):
    """The view, to the viewpoint and in time."""
    code, output = desktop.run_headless(HOST, folder, "film.kxs", "--script", os.path.join(HERE, "story_play.py"))
    assert code == 0, "exit code %s:\n%s" % (code, output)


def main(folder):
    return cases.run([makes_the_film, shows_it, jumps], folder)


cases.limited(main)
