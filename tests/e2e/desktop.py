"""A virtual display with a window manager, and the application on it, driven by real mouse and key events."""
import ctypes
import json
import os
import select
import signal
import socket
import subprocess
import sys
import time

import cases
import poses

HERE = os.path.dirname(os.path.abspath(__file__))
SCREEN = "1600x1000x24"
PATIENCE = 20.0  # seconds until something that is waited for counts as missing
REST = 0.3  # seconds without a change
PR_SET_PDEATHSIG = 1
LIBC = ctypes.CDLL(None)


class Missing(AssertionError):
    """Something that was waited for did not come."""


def until(what, condition, seconds=PATIENCE):
    """Waits for a true value of condition() and gives it."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise Missing("waited %g s in vain: %s" % (seconds, what))
        time.sleep(0.01)


def at_rest(what, value):
    """Waits until value() doesn't change any more, and gives it."""
    last, since = value(), time.monotonic()

    def rests():
        nonlocal last, since
        now = value()
        if now != last:
            last, since = now, time.monotonic()
        return time.monotonic() - since > REST
    until(what, rests)
    return last


def start(command, environment, log, **more):
    """Starts a process group of its own, which dies with this test whatever happens to it."""
    return subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT,
                            start_new_session=True, preexec_fn=lambda: LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL),
                            **more)


def end(process):
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()


def private_environment(folder):
    """The environment without a display, with settings, home and runtime folder below `folder`."""
    environment = {name: value for name, value in os.environ.items()
                   if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR", "XAUTHORITY")}
    for name, part in (("HOME", "home"), ("XDG_RUNTIME_DIR", "runtime"), ("KX_SETTINGS_DIR", "settings")):
        environment[name] = os.path.join(folder, part)
        os.makedirs(environment[name], mode=0o700, exist_ok=True)
    environment["LC_ALL"] = "C.UTF-8"
    return environment


class Display:
    """Xvfb on a free number and openbox on it, without which no window would be active."""

    def __init__(self, folder):
        self.environment = private_environment(folder)
        self._log = open(os.path.join(folder, "display.log"), "wb")
        self._processes = []
        reading, writing = os.pipe()
        # Without -noreset it starts anew, and refuses clients meanwhile, when its only client leaves.
        self._start(["Xvfb", "-displayfd", str(writing), "-screen", "0", SCREEN, "-nolisten", "tcp", "-noreset"],
                    pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as numbers:
            if not select.select([numbers], [], [], PATIENCE)[0]:
                raise Missing("Xvfb names no display")
            number = numbers.readline().strip()
        if not number:
            raise Missing("Xvfb doesn't start")
        self.environment.update(DISPLAY=":" + number, QT_QPA_PLATFORM="xcb", LIBGL_ALWAYS_SOFTWARE="1")
        self._start(["openbox", "--sm-disable"])
        until("a window manager", lambda: self.xdotool("get_num_desktops", check=False).returncode == 0)

    def _start(self, command, **more):
        self._processes.append(start(command, self.environment, self._log, **more))

    def xdotool(self, *words, check=True):
        done = subprocess.run(["xdotool"] + [str(word) for word in words], env=self.environment, timeout=PATIENCE,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        if check and done.returncode != 0:
            raise Missing("xdotool %s: %s" % (" ".join(map(str, words)), done.stderr.strip()))
        return done

    def wait_for_window(self, title):
        """Waits for an active window whose title contains `title`."""
        def is_active():
            return title in self.xdotool("getactivewindow", "getwindowname", check=False).stdout
        until("a window '%s'" % title, is_active)

    def picture(self, path):
        subprocess.run(["import", "-window", "root", path], env=self.environment, timeout=PATIENCE, check=False)

    def close(self):
        for process in reversed(self._processes):
            end(process)
        self._log.close()


class Application:
    """The application in a window. Questions go to agent.py inside it, deeds are done by mouse and keyboard."""

    def __init__(self, host, display, folder, scene):
        self._display = display
        self._log_path = os.path.join(folder, "application.log")
        socket_path = os.path.join(folder, "agent.socket")
        listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        listener.bind(socket_path)
        listener.listen(1)
        listener.settimeout(PATIENCE)
        with open(self._log_path, "wb") as log:
            self._process = start([host, scene, "--script", os.path.join(HERE, "agent.py")],
                                  dict(display.environment, KX_E2E_SOCKET=socket_path), log)
        try:
            self._connection, _ = listener.accept()
        except TimeoutError:
            raise Missing("the application doesn't run its script:\n" + self.log()) from None
        finally:
            listener.close()
        self._connection.settimeout(PATIENCE)
        self._answers = self._connection.makefile("r")
        self._display.wait_for_window("kxhost")
        self.click("_view", 0.5, 0.97)

    def wait_for_window(self, title):
        self._display.wait_for_window(title)

    def log(self):
        with open(self._log_path, encoding="utf-8", errors="replace") as log:
            return log.read()[-3000:]

    def _request(self, **request):
        try:
            self._connection.sendall(json.dumps(request).encode() + b"\n")
            line = self._answers.readline()
        except OSError as error:
            line = ""
            reason = str(error)
        else:
            reason = "it is gone"
        if not line:
            raise Missing("the application doesn't answer (%s, exit code %s) to %s\n%s" %
                          (reason, self._process.poll(), request, self.log()))
        answer = json.loads(line)
        if "error" in answer:
            raise AssertionError("%s\n%s" % (request, answer["error"]))
        return answer["value"]

    def ask(self, expression):
        return self._request(eval=expression)

    def run(self, statements):
        self._request(run=statements)

    def shown(self, widget, what="value"):
        return self.ask("widgetProperty(%r, %r)" % (widget, what))

    def wait_for(self, expression, seconds=PATIENCE):
        return until(expression, lambda: self.ask(expression), seconds)

    def picture(self):
        """What the view's camera sees, small."""
        path = self._log_path + ".png"
        self.run("render(%r, 64, 36)" % path)
        with open(path, "rb") as file:
            return file.read()

    def set_frame(self, frame):
        self.run("sendMessage('frameChangedCurveEditor', {'frame': float(%r)})" % frame)

    def point(self, widget, x, y):
        """A place in a widget as a pixel of the screen; x and y are parts of its size, or pixels from its right or
        bottom where negative, from its left or top where above 1."""
        left, top, width, height = self.ask("widgetRect(%r)" % widget)

        def place(start, size, part):
            return start + round(part * (size - 1) if 0 <= part <= 1 else part if part > 1 else size + part)
        return place(left, width, x), place(top, height, y)

    def click(self, widget, x=0.5, y=0.5, count=1, held=None):
        self.click_at(self.point(widget, x, y), count=count, held=held)

    def press(self, widget, x, y):
        self._display.xdotool("mousemove", *self.point(widget, x, y), "mousedown", 1)

    def drag_to(self, widget, x, y):
        """Moves the held mouse there in steps, as a hand does."""
        target = self.point(widget, x, y)
        here = dict(line.split("=") for line in self._display.xdotool("getmouselocation", "--shell").stdout.split())
        start_point = int(here["X"]), int(here["Y"])
        words = []
        for step in range(1, 9):
            words += ["mousemove"] + [round(a + (b - a) * step / 8) for a, b in zip(start_point, target)]
        self._display.xdotool(*words)

    def release(self):
        self._display.xdotool("mouseup", 1)

    def click_at(self, point, button=1, count=1, held=None):
        words = ["mousemove", *point, "click", "--repeat", count, "--delay", 40, button]
        self._display.xdotool(*(["keydown", held, *words, "keyup", held] if held else words))

    def drag(self, points, rests=None):
        """Presses at the first point, goes in steps over the others, and lets go; `rests` gives the seconds of rest at a
        point by its number."""
        words = ["mousemove", *points[0], "mousedown", 1]
        for number, ((x, y), (next_x, next_y)) in enumerate(zip(points, points[1:]), 1):
            for step in range(1, 7):
                words += ["mousemove", round(x + (next_x - x) * step / 6), round(y + (next_y - y) * step / 6),
                          "sleep", 0.01]
            if rests and number in rests:
                words += ["sleep", rests[number]]
        self._display.xdotool(*words, "mouseup", 1)

    def wheel(self, point, clicks):
        """Above 0 zooms in."""
        self._display.xdotool("mousemove", *point, "click", "--repeat", abs(clicks), "--delay", 30,
                              4 if clicks > 0 else 5)

    def middle(self, expression):
        left, top, width, height = self.wait_for(expression)
        return left + width // 2, top + height // 2

    def click_row(self, widget, row, button=1):
        left, top, width, height = self.ask("rowRect(%r, %r)" % (widget, row))
        # The text, not its check box
        self.click_at((left + min(70, width // 2), top + height // 2), button)

    def click_entry(self, widget, text):
        """An entry of a menu bar or tool bar; of the open menu where `widget` is empty."""
        def rect():
            try:
                return self.ask("actionRect(%r, %r)" % (widget, text))
            except AssertionError:
                return None
        left, top, width, height = until("an entry '%s'" % text, rect)
        self.click_at((left + min(width // 2, 30), top + height // 2))

    def keys(self, *names):
        self._display.xdotool("key", "--delay", 30, *names)

    def type(self, text):
        self._display.xdotool("type", "--delay", 8, text)

    def type_into(self, field, text):
        """In place of what the field holds."""
        self.click(field, 0.3)
        self.keys("ctrl+a")
        self.type(text)
        self.keys("Return")

    def rename(self, text):
        """The selected row of the tree that has the focus."""
        self.keys("ctrl+r", "ctrl+a")
        self.type(text)
        self.keys("Return")

    def answer_file_dialog(self, title, path, next_window="kxhost"):
        """Types a path into the file dialog that is about to open, and waits for the window that comes then."""
        self._display.wait_for_window(title)
        self.keys("ctrl+a")
        self.type(path)
        self.keys("Return")
        self._display.wait_for_window(next_window)

    def answer_question(self, title, *keys):
        self._display.wait_for_window(title)
        self.keys(*keys)
        self._display.wait_for_window("kxhost")

    def open_file(self, path):
        """Opens a file by the menu's shortcut and the file dialog."""
        self.keys("ctrl+o")
        self.answer_file_dialog("Open", path)
        until("the title of " + path, lambda: os.path.basename(path) in self.shown("_mainWindow", "windowTitle"))

    def save_scene_as(self, path):
        self.keys("ctrl+shift+s")
        self.answer_file_dialog("Save Scene As", path)
        self.wait_for("%r in widgetProperty('_mainWindow', 'windowTitle')" % os.path.basename(path))

    def quit(self):
        """Ends the application as its user would, and gives its exit code."""
        self._answers.close()
        self._connection.close()
        self.keys("ctrl+q")
        try:
            return self._process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise Missing("the application doesn't quit\n" + self.log()) from None

    def close(self):
        end(self._process)


def run_headless(host, folder, *arguments, seconds=60):
    """Runs the application without a display; gives its exit code and all it printed."""
    done = subprocess.run([host, "--headless", *arguments], env=private_environment(folder), cwd=folder,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds,
                          encoding="utf-8", errors="replace")
    return done.returncode, done.stdout


SHOW_VALUES = """
import json, sys
sys.path.insert(0, %(here)r)
import agent, kxHost
seen = []
for frame in %(frames)r:
    kxHost.sendMessage('frameChangedCurveEditor', {'frame': float(frame)})
    seen.append(agent.values(%(names)r, %(channels)r))
with open(%(answer)r, 'w') as file:
    json.dump(seen, file)
"""


def values_at_frames(host, folder, scene, names, frames):
    """Opens a file in a process of its own without a display; gives {object name: channel values} for each frame of the
    timeline."""
    script, answer = os.path.join(folder, "values.py"), os.path.join(folder, "values.json")
    with open(script, "w", encoding="utf-8") as file:
        file.write(SHOW_VALUES % {"here": HERE, "frames": frames, "names": names, "channels": poses.CHANNELS,
                                  "answer": answer})
    code, output = run_headless(host, folder, scene, "--script", script)
    assert code == 0, "opening %s gives %s:\n%s" % (scene, code, output)
    with open(answer, encoding="utf-8") as file:
        return json.load(file)


def tell(steps, scene):
    """The program of a story: its arguments are the application and a folder for pictures of failures. Opens what
    scene(folder) names and calls each step with the application and the folder, in order."""
    host, pictures = sys.argv[1:]

    def main(folder):
        display = Display(folder)
        application = None
        try:
            application = Application(host, display, folder, scene(folder))
            return cases.run(steps, application, folder,
                             on_failure=lambda name: display.picture(os.path.join(pictures, name + ".png")))
        finally:
            if application:
                application.close()
            display.close()
    cases.limited(main)


def quits(application, folder):
    """The last step: with nothing to lose the application leaves without a question and without an error."""
    application.run("newScene()")
    application.click("_view", 0.02, 0.96)
    code = application.quit()
    assert code == 0, "the exit code is %s\n%s" % (code, application.log())
