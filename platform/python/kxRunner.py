"""Runs the application's scripts: an error ends the script and nothing else.

Every run gives (ok, exited, code, trace). `ok`: nothing was raised, or the script left with code 0. `trace` is empty
unless an exception other than SystemExit came out. Who prints to a pipe that nobody reads any more leaves without one.
"""

import ast
import code
import codeop
import contextlib
import io
import linecache
import os
import readline
import rlcompleter
import signal
import sys
import traceback

import __main__
import _kxStreams

_commands = codeop.CommandCompiler()
arguments = []  # of the command line, for scripts: they follow the name in sys.argv


class _Stream(io.TextIOBase):
    """sys.stdout or sys.stderr; passes UTF-8 on to the application."""

    encoding = "utf-8"
    errors = "backslashreplace"

    def __init__(self, is_error):
        self._is_error = is_error

    def writable(self):
        return True

    def write(self, text):
        if not isinstance(text, str):
            raise TypeError("write() argument must be str, not " + type(text).__name__)
        _kxStreams.write(self._is_error, text.encode(self.encoding, self.errors))
        return len(text)

    def close(self):
        """Stays open: scripts share it."""


def _trace(error):
    """The trace without the frames of this file."""
    position = error.__traceback__
    while position is not None and position.tb_frame.f_code.co_filename == _trace.__code__.co_filename:
        position = position.tb_next
    last = position
    while last is not None and last.tb_next is not None:
        if last.tb_next.tb_frame.f_code.co_filename == _trace.__code__.co_filename:
            last.tb_next = None
        last = last.tb_next
    return "".join(traceback.format_exception(type(error), error, position))


def _exit_code(error):
    """As at the end of a process: no code is 0, a text is written to the error stream and is 1."""
    if error.code is None:
        return 0
    if isinstance(error.code, int):
        return max(-(2**31), min(error.code, 2**31 - 1))
    with contextlib.suppress(OSError):
        print(error.code, file=sys.stderr)
    return 1


def _guard(body):
    try:
        body()
    except SystemExit as error:
        code = _exit_code(error)
        return code == 0, True, code, ""
    except BrokenPipeError as error:
        if error.filename not in ("<stdout>", "<stderr>"):
            return False, False, 1, _trace(error)
        return False, True, _kxStreams.UNREAD, ""
    except KeyboardInterrupt as error:
        return False, False, 128 + signal.SIGINT, _trace(error)
    except BaseException as error:
        return False, False, 1, _trace(error)
    return True, False, 0, ""


def _remember(name, source):
    """Lets traces show the lines of a text that is no file."""
    lines = [line + "\n" for line in source.decode("utf-8", "replace").splitlines()]
    linecache.cache[name] = (len(source), None, lines, name)


def run_text(source, name):
    """`source`: bytes, in UTF-8 whatever its first lines say: what runs is what was shown."""

    def body():
        _remember(name, source)
        try:
            text = source.decode("utf-8-sig")
        except UnicodeDecodeError as error:
            line = source.count(b"\n", 0, error.start) + 1
            raise SyntaxError("the text isn't UTF-8: %s" % error.reason, (name, line, None, None)) from None
        exec(compile(text, name, "exec", dont_inherit=True), __main__.__dict__)

    return _guard(body)


def _run_script(read, name, argument, folder):
    """Runs a text in the script namespace; `argument` is its sys.argv[0]. A `name` without brackets is a file's.

    The folder stays on the module path, so that what the script leaves behind can import its neighbours later.
    """
    names = __main__.__dict__
    kept_arguments, kept_file = sys.argv, names.get("__file__")

    def body():
        source = read()
        if folder not in sys.path:
            sys.path.insert(0, folder)
        sys.argv = [argument] + arguments
        if name.startswith("<"):
            _remember(name, source)
            names.pop("__file__", None)
        else:
            linecache.cache.pop(name, None)
            names["__file__"] = name
        exec(compile(source, name, "exec", dont_inherit=True), names)

    try:
        return _guard(body)
    finally:
        sys.argv = kept_arguments
        if kept_file is None:
            names.pop("__file__", None)
        else:
            names["__file__"] = kept_file


def run_file(path):
    """Runs a file, which finds its path in `__file__`; "-" is the standard input."""

    def read():
        with open(path, "rb") as file:
            return file.read()

    if path == "-":
        return _run_script(sys.stdin.buffer.read, "<stdin>", "-", "")
    return _run_script(read, path, path, os.path.dirname(os.path.abspath(path)))


def run_command(source):
    """Runs a text of the command line, in bytes."""
    return _run_script(lambda: source, "<command>", "-c", "")


def _interact(history):
    kept = sys.stdout, sys.stderr, sys.excepthook
    sys.stdout, sys.stderr, sys.excepthook = sys.__stdout__, sys.__stderr__, sys.__excepthook__
    readline.set_completer(rlcompleter.Completer(__main__.__dict__).complete)
    readline.parse_and_bind("tab: complete")
    with contextlib.suppress(OSError):
        readline.read_history_file(history)
    try:
        code.interact(banner="", local=__main__.__dict__, exitmsg="")
    finally:
        sys.stdout, sys.stderr, sys.excepthook = kept
        readline.set_history_length(1000)
        with contextlib.suppress(OSError):
            os.makedirs(os.path.dirname(history), exist_ok=True)
            readline.write_history_file(history)


def run_prompt(history):
    """Runs what is typed in the terminal, with the lines of the file `history` to go back to. Without a terminal the
    standard input is a script."""
    return _guard(lambda: _interact(history)) if sys.stdin.isatty() else run_file("-")


def _compile_pasted(text, name):
    """Several statements at once: all run, and the value of a last expression is shown."""
    body = ast.parse(text, name).body
    steps = [compile(ast.Module(body[:-1], []), name, "exec")] if len(body) > 1 else []
    return steps + [compile(ast.Interactive(body[-1:]), name, "single")]


def _compile_typed(text, name):
    """The steps of what was typed; None stands for those of an unfinished statement."""
    try:
        return [_commands(text, name, "single")]
    except SyntaxError:
        if "\n" in text.strip():
            return _compile_pasted(text, name)
        return [compile(text, name, "single", dont_inherit=True)]  # raises with the better text


def run_interactive(text):
    """(needs more, outcome): runs `text` as the interactive prompt does, unless it is an unfinished statement."""
    name = "<console>"
    steps = []

    def prepare():
        try:
            steps.extend(_compile_typed(text, name))
        except Exception as error:
            raise error.with_traceback(None) from None  # the way through the compiler says nothing to a user

    def body():
        for step in steps:
            exec(step, __main__.__dict__)

    _remember(name, text.encode("utf-8", "replace"))
    outcome = _guard(prepare)
    if not outcome[0]:
        return False, outcome
    if steps == [None]:
        return True, outcome
    return False, _guard(body)


def complete(text):
    """The names that the dotted name `text` may go on as, without their brackets."""
    completer = rlcompleter.Completer(__main__.__dict__)
    found = []
    try:
        while len(found) < 500:
            match = completer.complete(text, len(found))
            if match is None:
                break
            found.append(match)
    except Exception:
        pass  # a property of the object raised: there is nothing to offer
    return list(dict.fromkeys(match.split("(")[0].strip() for match in found if match.strip()))


def _unhandled(kind, error, position):
    """Takes what comes out of code that no script runs any more, such as a slot that a script connected."""
    _kxStreams.unhandled("".join(traceback.format_exception(kind, error, position)).encode("utf-8", "replace"))


def _interrupted(number, frame):
    number = _kxStreams.take_signal()
    if number == signal.SIGINT:
        raise KeyboardInterrupt
    if number != 0:
        sys.exit(128 + number)


def heed_interrupts():
    signal.signal(signal.SIGINT, _interrupted)


sys.path[:0] = [folder for folder in os.environ.get("PYTHONPATH", "").split(os.pathsep) if folder]
sys.stdout = _Stream(False)
sys.stderr = _Stream(True)
sys.excepthook = _unhandled
