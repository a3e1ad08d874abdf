#!/usr/bin/env python3
"""Opens damaged files, one after the other, in one application that lives long, and counts what becomes of them.

A file that ends the application, or takes all its time, is kept, and another application goes on with the next. Each
file follows from the seed and its number alone: --first and --files 1 make it again. The exit code is 1 after a crash, a
hang, an answer that is none, and where the memory in use doesn't stay."""
import argparse
import collections
import os
import random
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path[:0] = [HERE, os.path.join(ROOT, "tests", "e2e")]
import cbor  # noqa: E402
import damage  # noqa: E402
import desktop  # noqa: E402

MODELS = "/usr/share/assimp/models"
PROCESSOR, WAIT = 20, 300  # seconds that a file may take: of a processor in the application, and on a busy machine
LARGEST = 3 << 20
BESIDE = {"bin", "bmp", "dds", "jpeg", "jpg", "mtl", "material", "png", "tga"}  # what models name
NO_MODELS = BESIDE | {"", "frag", "glsl", "html", "license", "md", "py", "txt", "vert", "log"}
EVERY = 50  # files between two looks at the memory
GROWTH = 1.10
EXAMPLES = ("bouncing_ball", "exploded_view", "gear_clock", "turntable_tour")


def processor_seconds(pid):
    with open("/proc/%d/stat" % pid) as file:
        return sum(map(int, file.read().rsplit(")", 1)[1].split()[11:13])) / os.sysconf("SC_CLK_TCK")


class Application:
    """Without a window; agent.py inside it answers."""

    def __init__(self, host, folder):
        self.folder = tempfile.mkdtemp(dir=folder)
        self.log = os.path.join(self.folder, "log")
        place = os.path.join(self.folder, "socket")
        environment = dict(desktop.private_environment(self.folder), KX_E2E_SOCKET=place, QT_QPA_PLATFORM="offscreen")
        with socket.socket(socket.AF_UNIX) as listener, open(self.log, "wb") as log:
            listener.bind(place)
            listener.listen(1)
            listener.settimeout(WAIT)
            agent = os.path.join(ROOT, "tests", "e2e", "agent.py")
            self.process = desktop.start([host, "--headless", "--script", agent], environment, log)
            self._connection, _ = listener.accept()
        self._connection.settimeout(0.5)
        self._pending = b""
        with open(os.path.join(HERE, "inside.py")) as file:
            self.asks(run=file.read())

    def asks(self, **request):
        """The answer; raises EOFError where the application ends, TimeoutError where it takes too long."""
        self._connection.sendall(desktop.json.dumps(request).encode() + b"\n")
        since, used = time.monotonic(), processor_seconds(self.process.pid)
        while b"\n" not in self._pending:
            try:
                piece = self._connection.recv(65536)
            except TimeoutError:
                if time.monotonic() - since > WAIT or processor_seconds(self.process.pid) - used > PROCESSOR:
                    raise
                continue
            except ConnectionError:
                piece = b""
            if not piece:
                raise EOFError
            self._pending += piece
        line, self._pending = self._pending.split(b"\n", 1)
        answer = desktop.json.loads(line)
        if "error" in answer:
            raise RuntimeError(answer["error"])
        return answer["value"]

    def end(self):
        desktop.end(self.process)
        self._connection.close()
        with open(self.log, errors="replace") as log:
            said = log.read()[-2000:]
        shutil.rmtree(self.folder)
        return "exit code %s\n%s" % (self.process.returncode, said)


def own_scenes(host, folder):
    """Scenes that the examples make, and files of the animations in them."""
    made = []
    for name in EXAMPLES:
        path = os.path.join(folder, name + ".kxs")
        script = path + ".py"
        with open(script, "w") as file:
            file.write("import kxHost\nkxHost.saveScene(%r)\n" % path)
        example = os.path.join(ROOT, "examples", name + ".py")
        subprocess.run([host, "--headless", "--script", example, "--script", script],
                       env=dict(desktop.private_environment(folder), QT_QPA_PLATFORM="offscreen"), check=True,
                       stdout=subprocess.DEVNULL)
        with open(path, "rb") as file:
            content = cbor.decode(file.read()[32:])
        nodes = {i for i, entry in enumerate(content["classes"]) if entry[0] == "AnimNode"}
        numbers = [i for i, entry in enumerate(content["containers"], 1) if entry[0] in nodes]
        animations = {key: content[key] for key in ("classes", "containers")}
        animations["animations"] = numbers[1:20]
        with open(path[:-3] + "osb", "wb") as file:
            file.write(damage.seal(damage.ANIMATIONS, cbor.encode(animations)))
        made += [path, path[:-3] + "osb"]
    return made


def suffix_of(path):
    return os.path.splitext(path)[1][1:].lower()


def sources(host, folder, formats):
    """{suffix: files}; files lie in folders of their own copy, beside what belongs to them."""
    models = os.path.join(folder, "models")
    shutil.copytree(MODELS, models)
    found = [os.path.join(place, name) for place, _, names in os.walk(models) for name in names]
    files = collections.defaultdict(list)
    for path in sorted(found + own_scenes(host, folder)):
        if suffix_of(path) in formats or not formats and suffix_of(path) not in NO_MODELS:
            if 0 < os.path.getsize(path) <= LARGEST:
                files[suffix_of(path)].append(path)
    return files


def read(path):
    with open(path, "rb") as file:
        return file.read()


class Attack:
    def __init__(self, options, folder):
        self.options, self.folder = options, folder
        self.files = sources(options.host, folder, set(filter(None, options.formats.split(","))))
        self.counts = collections.defaultdict(collections.Counter)
        self.memory, self.application = [], Application(options.host, folder)

    def one(self, number):
        chance = random.Random("%d/%d" % (self.options.seed, number))
        suffix = chance.choice(sorted(self.files))
        model = chance.choice(self.files[suffix])
        beside = sorted(os.path.join(os.path.dirname(model), name) for name in os.listdir(os.path.dirname(model))
                        if suffix_of(name) in BESIDE)
        target, path = model, os.path.join(os.path.dirname(model), "damaged." + suffix)
        if beside and chance.random() < 0.15:
            target = path = chance.choice(beside)
        whole = read(target)
        with open(path, "wb") as file:
            file.write(damage.damaged(chance, suffix_of(target), whole, read(chance.choice(self.files[suffix]))))
        way, uses = "import" if suffix == "osb" else chance.choice(("open", "import")), number % 10 == 0
        what = "%s of %d, %r%s" % (way, number, os.path.relpath(target, self.folder), ", used" if uses else "")
        became = self.ask("tried(%r, %r, %r, %r)" % (way, model if path == target else path, uses,
                                                    self.application.folder), what, path)
        self.counts[suffix][became] += 1
        os.remove(path)
        if path == target:
            with open(path, "wb") as file:
                file.write(whole)

    def ask(self, expression, what, path=None):
        try:
            return self.application.asks(eval=expression)
        except (EOFError, TimeoutError, RuntimeError) as error:
            became = {EOFError: "crash", RuntimeError: "error"}.get(type(error), "hang")
            print("%s: %s\n%s\n%s" % (became.upper(), what, error, "" if became == "error" else self.application.end()),
                  flush=True)
            if path:
                os.makedirs(self.options.keep, exist_ok=True)
                shutil.copy(path, os.path.join(self.options.keep, "%d_%s_%s.%s" % (
                    self.options.seed, what.split()[2].strip(","), became, suffix_of(path))))
            if became != "error":
                self.application = Application(self.options.host, self.folder)
                self.memory.append([])
            return became

    def look(self):
        size = self.ask("resident()", "look at the memory")
        if isinstance(size, int):
            self.memory[-1].append(size / 2 ** 20)

    def tell(self, done, seconds):
        total = sum(self.counts.values(), collections.Counter())
        for name, count in sorted(self.counts.items()) + [("all", total)]:
            print("%-6s %6d files  %s" % (name, sum(count.values()), dict(count)))
        grown = False
        for sizes in self.memory:
            warm = sizes[len(sizes) // 4:]
            if len(sizes) > 8:
                first, last = (sum(part) / len(part) for part in (warm[:3], warm[-3:]))
                grown = grown or last > first * GROWTH
                print("memory: %.0f MB after warming up, %.0f MB at the end, most %.0f MB" % (first, last, max(warm)))
        print("seed %d, %d files in %.0f s" % (self.options.seed, done, seconds), flush=True)
        return grown or any(total[bad] for bad in ("crash", "hang", "error"))

    def run(self):
        started, number = time.monotonic(), self.options.first
        self.memory.append([])
        last = number + self.options.files if self.options.files else float("inf")
        end = started + self.options.seconds if self.options.seconds else float("inf")
        try:
            while number < last and time.monotonic() < end:
                self.one(number)
                number += 1
                if number % EVERY == 0:
                    self.look()
                if number % 1000 == 0:
                    print("%d files" % number, flush=True)
        except KeyboardInterrupt:
            print("ended by hand")
        failed = self.tell(number - self.options.first, time.monotonic() - started)
        self.application.end()
        return 1 if failed else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--host", default=os.path.join(ROOT, "build", "release", "bin", "kxhost"))
    parser.add_argument("--seconds", type=float, default=0, help="0: as long as there are files")
    parser.add_argument("--files", type=int, default=0, help="0: as long as there is time")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="number of the first file")
    parser.add_argument("--formats", default="", help="suffixes; all that there are")
    parser.add_argument("--keep", default="hostile-found", help="folder for what killed the application")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="kx") as folder:
        sys.exit(Attack(options, folder).run())


main()
