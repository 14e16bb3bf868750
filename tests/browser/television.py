# SPDX-License-Identifier: Apache-2.0
"""What the tests of avc-browser share: an invisible screen, a web server with the test pages and the sample media, a run of the
browser, and a look at the pictures that it wrote.

    class PlaneTest(television.Case):
        def test_video_is_shown(self):
            run = self.browse("plane.html", "--wait", "done", "--screenshot", "a.png")
            self.assertColour(run.picture("a.png"), (400, 200), RED)

A test file ends with television.main(). It is called with --avc-browser FILE --media DIR and, as a unittest, names of tests.
"""
import argparse
import ctypes
import json
import os
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "platform", "media"))
import server as media_server  # noqa: E402  (the folder is only known now)

DEFECT = re.compile(r"CRITICAL \*\*|Sanitizer|runtime error:|assertion .* failed", re.IGNORECASE)
PATIENCE_S = 60
UNTIL_TEST_ENDS = ["setpriv", "--pdeathsig", "TERM"]  # also when CTest has lost its patience with the test
WIDTH, HEIGHT = 1280, 720
BLACK, WHITE = (0, 0, 0), (255, 255, 255)
# The sample media's test card: upright bars of these colours, each a sixth of the width; what moves covers little of them.
BARS = [(255, 0, 0), (0, 255, 0), (255, 255, 0), (0, 0, 255), (255, 0, 255), (0, 255, 255)]

options = None


def commandLine():
    parser = argparse.ArgumentParser()
    parser.add_argument("--avc-browser", required=True)
    parser.add_argument("--media", required=True)
    parser.add_argument("--sanitizers", help="libraries to load before the browser's own, when it was built with sanitizers")
    parser.add_argument("tests", nargs="*")
    return parser.parse_args()


def until(condition, patience=PATIENCE_S):
    """@return whether the condition held within this time."""
    deadline = time.monotonic() + patience
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.02)
    return True


class Screen:
    """An X server without a screen, with a display number that is free."""

    def __init__(self, width=WIDTH, height=HEIGHT):
        reader, writer = os.pipe()
        command = [*UNTIL_TEST_ENDS, "Xvfb", "-displayfd", str(writer), "-screen", "0", "%dx%dx24" % (width, height), "-nolisten", "tcp", "-noreset"]
        self.process = subprocess.Popen(command, pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        os.close(writer)
        self.name = ":" + self.readLine(reader)
        os.close(reader)
        if self.name == ":":
            self.close()
            raise RuntimeError("Xvfb did not start")

    # The server writes in more than one piece, and ends when nobody reads on.
    @staticmethod
    def readLine(reader):
        text = b""
        while not text.endswith(b"\n") and select.select([reader], [], [], PATIENCE_S)[0]:
            part = os.read(reader, 16)
            if not part:
                return ""
            text += part
        return text.decode().strip()

    def close(self):
        self.process.terminate()
        self.process.wait()


def sendDeleteWindow(display, window):
    """A client message WM_DELETE_WINDOW, as ICCCM has it."""
    xlib = ctypes.CDLL("libX11.so.6")
    xlib.XOpenDisplay.restype = ctypes.c_void_p
    xlib.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    xlib.XInternAtom.restype = ctypes.c_ulong
    xlib.XSendEvent.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.c_void_p]
    xlib.XCloseDisplay.argtypes = [ctypes.c_void_p]

    class ClientMessage(ctypes.Structure):
        _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("sent", ctypes.c_int), ("display", ctypes.c_void_p),
                    ("window", ctypes.c_ulong), ("message", ctypes.c_ulong), ("format", ctypes.c_int), ("data", ctypes.c_long * 5),
                    ("rest", ctypes.c_long * 24)]

    connection = xlib.XOpenDisplay(display.encode())
    protocols, delete = (xlib.XInternAtom(connection, name, 0) for name in (b"WM_PROTOCOLS", b"WM_DELETE_WINDOW"))
    clientMessage = 33
    event = ClientMessage(clientMessage, 0, 1, connection, window, protocols, 32, (ctypes.c_long * 5)(delete))
    xlib.XSendEvent(connection, window, 0, 0, ctypes.byref(event))
    xlib.XCloseDisplay(connection)  # sends what is waiting


class Picture:
    """Pixels of a PNG file."""

    def __init__(self, path):
        size = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "stream=width,height", "-of", "csv=p=0", path],
                              stdout=subprocess.PIPE, check=True, text=True).stdout.strip()
        self.width, self.height = (int(part) for part in size.split(","))
        self.bytes = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"],
                                    stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True).stdout

    def at(self, x, y):
        offset = (y * self.width + x) * 3
        return tuple(self.bytes[offset:offset + 3])

    def around(self, x, y, reach=6):
        """The middle colour of a small neighbourhood, so that something small that moves does not decide."""
        points = [self.at(px, py) for px in range(max(0, x - reach), min(self.width, x + reach + 1), 3)
                  for py in range(max(0, y - reach), min(self.height, y + reach + 1), 3)]
        return tuple(sorted(point[i] for point in points)[len(points) // 2] for i in range(3))


class Film:
    """What --film wrote: every frame that the window painted, with the time in milliseconds since 1970."""
    HEAD = re.compile(rb"P6\n# (\d+)\n(\d+) (\d+)\n255\n")

    def __init__(self, path):
        with open(path, "rb") as file:
            data = file.read()
        self.times, self.sizes, self.frames = [], [], []
        at = 0
        while at < len(data):
            head = self.HEAD.match(data, at)
            width, height = int(head.group(2)), int(head.group(3))
            end = head.end() + 3 * width * height
            self.times.append(int(head.group(1)) / 1000)
            self.sizes.append((width, height))
            self.frames.append(data[head.end():end])
            at = end

    def __len__(self):
        return len(self.frames)

    def leftEdge(self, frame, y, bright):
        """Where the first pixel of this line is whose least and greatest component please; None when there is none."""
        width = self.sizes[frame][0]
        line = self.frames[frame][y * width * 3:(y + 1) * width * 3]
        return next((x for x in range(width) if bright(line[3 * x:3 * x + 3])), None)

    def pixel(self, frame, x, y):
        at = (y * self.sizes[frame][0] + x) * 3
        return self.frames[frame][at:at + 3]

    def changes(self, holds):
        """The frames in which this begins or ceases to hold of the pixels at(x, y)."""
        held = [holds(lambda x, y, frame=frame: self.pixel(frame, x, y)) for frame in range(len(self))]
        return [frame for frame in range(1, len(held)) if held[frame] != held[frame - 1]]

    def firstFrames(self, places, y, bright):
        """For each of these places, which follow each other to the right: the first frame in which the edge has come there."""
        edges = [self.leftEdge(frame, y, bright) for frame in range(len(self))]
        return [next((frame for frame, edge in enumerate(edges) if edge is not None and edge >= place), None) for place in places]


class Run:
    """What is left of a run of the browser: status, output, and the folder of the files that it wrote."""

    def __init__(self, status, output, folder):
        self.status = status
        self.output = output
        self.folder = folder

    def lines(self, start):
        """What was printed behind this start of a line, without the place."""
        return [re.sub(r" \([^()]*\)$", "", line[len(start):]) for line in self.output.splitlines() if line.startswith(start)]

    def logged(self):
        return self.lines("console.log: ")

    def picture(self, name):
        return Picture(os.path.join(self.folder, name))

    def film(self, name):
        return Film(os.path.join(self.folder, name))

    def trace(self, name="trace.jsonl"):
        with open(os.path.join(self.folder, name), encoding="utf-8", errors="replace") as file:
            return file.read().splitlines()


def steps(*names):
    """For each action of the page: do it, then take a picture of that name."""
    return [part for name in names for part in ("--wait", "did('%s')" % name, "--screenshot", name + ".png")]


class Case(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.screen = Screen()
        cls.root = tempfile.mkdtemp()
        os.symlink(os.path.join(HERE, "pages"), os.path.join(cls.root, "pages"))
        os.symlink(os.path.join(HERE, "..", "..", "examples"), os.path.join(cls.root, "examples"))
        os.symlink(os.path.join(HERE, "..", "..", "platform", "browser", "page"), os.path.join(cls.root, "page-side"))
        os.symlink(os.path.abspath(options.media), os.path.join(cls.root, "media"))
        for name in os.listdir(options.media):  # where the example application and the server's live streams look for them
            os.symlink(os.path.join(os.path.abspath(options.media), name), os.path.join(cls.root, name))
        cls.server = media_server.Server(cls.root).start()
        cls.base = "http://127.0.0.1:%d/" % cls.server.port

    @classmethod
    def tearDownClass(cls):
        cls.server.stop()
        cls.screen.close()
        shutil.rmtree(cls.root)

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def environment(self, **more):
        variables = dict(os.environ, DISPLAY=self.screen.name, HOME=self.folder, XDG_RUNTIME_DIR=self.folder)
        for name in ("WAYLAND_DISPLAY", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"):
            variables.pop(name, None)
        if options.sanitizers:
            # The engine keeps what it made until the end, and has handlers of its own for faults that it provokes.
            variables.update(LD_PRELOAD=options.sanitizers, ASAN_OPTIONS="detect_leaks=0:handle_segv=0:allow_user_segv_handler=1")
        variables.update(more)
        return variables

    def start(self, page, *arguments, private=True, **environment):
        """Starts the browser without waiting for it. A page is the name of a file of pages/, or an address."""
        address = page if ":" in page else self.base + "pages/" + page
        command = [*UNTIL_TEST_ENDS, options.avc_browser, *(["--private"] if private else []), *arguments, address]
        process = subprocess.Popen(command, cwd=self.folder, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
                                   env=self.environment(**environment))
        self.addCleanup(self.endIfRunning, process)
        return process

    @staticmethod
    def endIfRunning(process):
        """What a test that failed leaves behind; the page's process follows by itself."""
        if process.poll() is None:
            process.kill()
            process.communicate()

    def finish(self, process):
        """Waits for the end; a browser that does not end is a failure."""
        try:
            output, _ = process.communicate(timeout=PATIENCE_S + 30)
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGKILL)
            output, _ = process.communicate()
            self.fail("avc-browser did not end by itself:\n" + output)
        return Run(process.returncode, output, self.folder)

    def browse(self, page, *arguments, status=0, **environment):
        limit = [] if "--quit-after" in arguments else ["--quit-after", str(PATIENCE_S)]
        run = self.finish(self.start(page, "--trace", "trace.jsonl", *limit, *arguments, **environment))
        self.assertEqual(run.status, status, run.output)
        self.assertIsNone(DEFECT.search(run.output), run.output)
        return run

    def requests(self):
        """What the server was asked for, in order."""
        return [json.loads(line) for line in self.server.noted().decode().splitlines()]

    def pressOnKeyboard(self, key, how="key"):
        """Presses a key as the screen's keyboard would; with "keydown" holds it until "keyup"."""
        subprocess.run(["xdotool", how, key], env=self.environment(LD_PRELOAD=""), check=True)

    def findWindow(self, title):
        found = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", title], env=self.environment(LD_PRELOAD=""),
                               check=True, stdout=subprocess.PIPE, text=True, timeout=PATIENCE_S).stdout.split()
        return int(found[0])

    def closeWindow(self, title):
        """What a window manager does when the user closes the window."""
        sendDeleteWindow(self.screen.name, self.findWindow(title))

    def resizeWindow(self, title, width, height):
        """What a window manager does when the user drags a corner of the window. The keyboard is where the pointer is."""
        subprocess.run(["xdotool", "mousemove", "5", "5", "windowsize", str(self.findWindow(title)), str(width), str(height)], env=self.environment(LD_PRELOAD=""),
                       check=True)

    def assertColour(self, picture, point, colour, tolerance=24):
        seen = picture.around(*point)
        far = max(abs(a - b) for a, b in zip(seen, colour))
        self.assertLessEqual(far, tolerance, "at %s: %s, must be %s" % (point, seen, colour))

    def assertBar(self, picture, left, top, width, height, bar):
        """A bar of the test card that fills this box. Something that moves may be in front of some points; no other bar has the colour."""
        points = [(left + round(width * (bar + 0.4) / 6), top + round(height * part)) for part in (0.14, 0.22, 0.3, 0.38, 0.46, 0.54, 0.62)]
        seen = [picture.around(*point, reach=3) for point in points]
        right = sum(max(abs(a - b) for a, b in zip(colour, BARS[bar])) <= 40 for colour in seen)
        self.assertGreaterEqual(right, 3, "bar %d of %s: %s at %s" % (bar, (left, top, width, height), seen, points))

    def assertCard(self, picture, left, top, width, height):
        """The test card fills this box, and is not one pixel larger."""
        for bar in range(len(BARS)):
            self.assertBar(picture, left, top, width, height, bar)
        middle = top + round(height * 0.25)
        for x, inside in ((left - 2, False), (left + 2, True), (left + width - 3, True), (left + width + 1, False)):
            if 0 <= x < picture.width:
                self.assertEqual(max(picture.at(x, middle)) > 60, inside, "at %d,%d: %s" % (x, middle, picture.at(x, middle)))
        across = left + round(width * 5.5 / 6)
        for y, inside in ((top - 2, False), (top + 2, True), (top + height - 3, True), (top + height + 1, False)):
            if 0 <= y < picture.height:
                self.assertEqual(max(picture.at(across, y)) > 60, inside, "at %d,%d: %s" % (across, y, picture.at(across, y)))

    def assertAllClosed(self, run):
        """Every player that was opened has been closed."""
        trace = run.trace()
        opened = sum('"name":"openPlayer"' in line for line in trace)
        closed = sum('"name":"closePlayer"' in line for line in trace)
        self.assertGreater(opened, 0)
        self.assertEqual(opened, closed)


def main():
    global options
    options = commandLine()
    options.avc_browser = os.path.abspath(options.avc_browser)
    # Test files import this module by its name; what runs as __main__ is the test file.
    sys.modules["television"].options = options
    unittest.main(module="__main__", argv=[sys.argv[0], *options.tests], verbosity=2)
