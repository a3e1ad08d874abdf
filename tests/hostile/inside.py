"""Runs inside the application: what a user does with a file that somebody sent."""
import ctypes
import gc
import os

import kxAnimWidgets
import kxHost

DEFERRED_DELETE = 52  # of QEvent
FRAMES = (0, 7, 1e6, -1e6, 24)


def use(folder):
    for frame in FRAMES:
        kxAnimWidgets.setCurrentFrame(float(frame))
    for clip in kxAnimWidgets.getAnimClipNodes()[:5]:
        for frame in FRAMES[:3]:
            kxHost.showAnimation(clip, frame)
        kxAnimWidgets.playCAnimation(clip.name)
        for _ in range(5):
            kxHost.processEvents()
    kxHost.runSequence(kxHost.sequences()[0]) if kxHost.sequences() else None
    kxHost.processEvents()
    kxHost.stopSequences()
    for deed in (lambda: kxHost.render(folder + "/seen.png", 64, 36),
                 lambda: kxHost.exportScene(folder + "/out.glb", "all")):
        try:
            deed()
        except (OSError, RuntimeError):
            pass
    kept = folder + "/kept.kxs"
    try:
        kxHost.saveScene(kept)
    except OSError:
        return
    kxHost.openScene(kept)  # what was saved has to open


def settle():
    """A script that goes on for ever keeps widgets alive that are to be deleted when it returns."""
    kxHost.processEvents()
    ctypes.CDLL("libQt5Core.so.5")._ZN16QCoreApplication16sendPostedEventsEP7QObjecti(None, DEFERRED_DELETE)


def tried(way, path, uses, folder):
    settle()
    try:
        if way == "open":
            kxHost.openScene(path)
        else:
            kxHost.newScene()
            kxHost.selectNodes([kxHost.addObject("box", "Own")])
            kxHost.importScene(path)
            kxHost.undo()
            kxHost.redo()
    except OSError as error:
        return "ended its reader" if " stopped: " in str(error) else "refused"
    if uses:
        use(folder)
    return "opened"


def resident():
    """Bytes in use with nothing open."""
    kxHost.newScene()
    settle()
    ctypes.CDLL("libQt5Gui.so.5")._ZN12QPixmapCache5clearEv()
    gc.collect()
    ctypes.CDLL(None).malloc_trim(0)
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE")
