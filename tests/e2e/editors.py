"""What the tests do in the clip maker and in the curve editor."""
import desktop

WIZARD = "kxAnimWizardUI"
TRACK = 50  # height of a track in the clip maker's timeline


def near(a, b, tolerance=1e-2):
    return abs(a - b) <= tolerance


def open_windows(application, **views):
    """Opens dock windows by the menu: their names, and the views in them."""
    for name, view in views.items():
        application.keys("alt+v")
        application.click_entry("", name)
        application.wait_for("widgetRect(%r)[3] > 80" % view)


def open_dock(application, name, view):
    """Brings a dock window to the front by its tab."""
    application.click_at(application.middle("tabRect(%r)" % name))
    application.wait_for("widgetRect(%r)[3] > 80" % view)


def begin_wizard(application, name):
    """Opens the animation wizard for what is selected, up to the page of captures, with the clip's name."""
    application.click("AnimationWizardButton")
    application.wait_for_window("Animation Wizard")
    desktop.at_rest("the wizard in its place", lambda: application.ask("widgetRect('%s')" % WIZARD))
    application.click(WIZARD + "/__qt__passive_wizardbutton1")
    application.wait_for("widgetRect('_captureStart')[3] > 80")
    application.click(WIZARD + "/_name", count=3)
    application.type(name)
    application.keys("Return")


def place(application, frame, track):
    """A place of the clip maker's timeline on the screen, half a track down."""
    return tuple(application.ask("scenePoint('_clipView', %r, %r)" % (frame, (track + 0.5) * TRACK)))


def create(application, *keys):
    """An entry of the menu behind the button; it holds up all questions until it is closed."""
    application.click_entry("Clip Maker/QuickActionBar", "Create")
    application.keys(*keys)


def show_frame(application, frame):
    """As the frame player does while it plays."""
    application.run("sendMessage('framePlayerFrameChanged', {'frame': float(%r)})" % frame)


def key(application, frame, value):
    """Where a key stands on the screen in the graph."""
    return tuple(application.ask("scenePoint('_graphView', %r, %r)" % (frame, value)))


def frame_curves(application, *keys):
    """Gives the graph the focus and frames its curves; waits until the keys (frame, value) are in sight."""
    application.click("_graphView", 0.97, 0.97)
    application.keys("f")
    left, top, width, height = application.ask("widgetRect('_graphView')")

    def in_sight(point):
        return left <= point[0] < left + width and top <= point[1] < top + height
    desktop.until("the keys in sight", lambda: all(in_sight(key(application, *at)) for at in keys))


def goes_back_and_forth(application, shown, presses=1):
    """Each of the last edits comes back by one Ctrl+Z, and again by one Ctrl+Shift+Z: `shown` is an expression that each of
    them has changed."""
    states = [application.ask(shown)]
    for _ in range(presses):
        application.keys("ctrl+z")
        application.wait_for("%s != %r" % (shown, states[-1]))
        states.append(application.ask(shown))
    for state in reversed(states[:-1]):
        application.keys("ctrl+shift+z")
        application.wait_for("%s == %r" % (shown, state))
