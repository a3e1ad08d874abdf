"""Runs test functions one after the other and says what became of them."""
import signal
import sys
import tempfile
import time
import traceback

LIMIT = 110  # seconds for a whole test program


def overdue(_signal, _frame):
    raise TimeoutError("the tests took more than %d s" % LIMIT)


def run(functions, *arguments, on_failure=None):
    """Calls each function with `arguments`; gives the exit code of the program."""
    failed = 0
    for function in functions:
        name = function.__name__
        started = time.monotonic()
        try:
            function(*arguments)
        except Exception as error:
            failed += 1
            print("FAIL  %s: %s" % (name, error), flush=True)
            traceback.print_exc(file=sys.stdout)
            if on_failure:
                on_failure(name)
        else:
            print("ok    %s (%.1f s)" % (name, time.monotonic() - started), flush=True)
    print("%d passed, %d failed" % (len(functions) - failed, failed), flush=True)
    return 1 if failed else 0


def limited(main):
    """Calls main(folder) with a folder of its own under the time limit, and leaves with its exit code."""
    signal.signal(signal.SIGALRM, overdue)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    signal.alarm(LIMIT)
    with tempfile.TemporaryDirectory(prefix="kx") as folder:
        sys.exit(main(folder))
