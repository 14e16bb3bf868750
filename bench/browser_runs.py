#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures avc-browser as a whole, on an invisible screen: start, keys, access, processor time, geometry, memory.

Usage: browser_runs.py BUILD_DIR MEDIA_DIR [RUNS]
Each figure is the median of RUNS runs (default 5) or of many events of one run.
"""
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "browser"))
import television  # noqa: E402  (the folder is only known now)

TICKS = os.sysconf("SC_CLK_TCK")
PLAY_SECONDS = 8


class Bench:
    def __init__(self, build, media):
        self.browser = os.path.join(build, "bin", "avc-browser")
        self.player = os.path.join(build, "bin", "play_seconds")
        self.folder = tempfile.TemporaryDirectory()
        os.symlink(os.path.join(HERE, "pages"), os.path.join(self.folder.name, "pages"))
        os.symlink(os.path.abspath(media), os.path.join(self.folder.name, "media"))
        self.server = television.media_server.Server(self.folder.name).start()
        self.screen = television.Screen()
        self.base = "http://127.0.0.1:%d/" % self.server.port

    def close(self):
        self.screen.close()
        self.server.stop()
        self.folder.cleanup()

    def start(self, page, *arguments):
        command = [self.browser, "--private", *arguments, self.base + "pages/" + page]
        return subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                                env=dict(os.environ, DISPLAY=self.screen.name))

    def lines(self, page, word, *arguments):
        """The numbers and words that the page printed behind this word."""
        output, _ = self.start(page, "--quit-after", "120", *arguments).communicate(timeout=180)
        return [match.group(1) for match in re.finditer(r"^console\.log: %s (.*) \(" % word, output, re.MULTILINE)]


def family(process):
    """The process and all its descendants."""
    out = [process]
    for name in os.listdir("/proc"):
        if not name.isdigit():
            continue
        try:
            with open("/proc/%s/stat" % name, encoding="utf-8", errors="replace") as file:
                if int(file.read().rsplit(")", 1)[1].split()[1]) == process:
                    out += family(int(name))
        except OSError:
            continue
    return out


def processorSeconds(processes):
    total = 0
    for process in processes:
        with open("/proc/%d/stat" % process, encoding="utf-8", errors="replace") as file:
            fields = file.read().rsplit(")", 1)[1].split()
        total += int(fields[11]) + int(fields[12])
    return total / TICKS


def proportionalMegabytes(processes, kind="Pss"):
    total = 0
    for process in processes:
        with open("/proc/%d/smaps_rollup" % process, encoding="utf-8") as file:
            total += int(re.search(r"^%s:\s+(\d+)" % kind, file.read(), re.MULTILINE).group(1))
    return total / 1024


def isPageProcess(process):
    with open("/proc/%d/comm" % process, encoding="utf-8") as file:
        return file.read().startswith("WebKitWebProces")


def waitForLine(process, start):
    for line in process.stdout:
        if line.startswith("console.log: " + start):
            return
    raise RuntimeError("the browser ended before it said " + start)


def measureStart(bench, runs):
    taken = []
    for _ in range(runs + 1):
        began = time.time() * 1000
        taken.append(float(bench.lines("start.html", "first script", "--wait", "true")[0]) - began)
    print("start until the page's first script: %.0f ms" % statistics.median(taken[1:]))


def measureKeys(bench):
    keys = ",".join(["Left", "Red", "5", "Play"] * 20)
    values = [float(text) for text in bench.lines("keys.html", "key", "--keys", keys, "--wait", "count >= 80")]
    print("key press until the page's handler: %.1f ms (most %.1f, of %d)" % (statistics.median(values), max(values), len(values)))


def measureAccess(bench):
    for kind, page in (("without a source", "access.html"), ("playing", "access.html?film=../media/two.mp4")):
        taken = {}
        for text in bench.lines(page, "access", "--wait", "done"):
            name, nanoseconds = text.split()
            taken.setdefault(name, []).append(float(nanoseconds))
        floor = statistics.median(taken["getAttribute"])
        for name, values in taken.items():
            value = statistics.median(values)
            print("%s, %s: %.0f ns, %.2f times getAttribute" % (name, kind, value, value / floor))


def pageSeconds(bench, film, width, height, more=""):
    page = "play.html?film=../media/%s&width=%d&height=%d%s" % (film, width, height, more)
    process = bench.start(page, "--quit-after", str(PLAY_SECONDS + 6))
    waitForLine(process, "playing")
    time.sleep(1)
    processes = family(process.pid)
    before, began = processorSeconds(processes), time.monotonic()
    time.sleep(PLAY_SECONDS)
    used = (processorSeconds(processes) - before) / (time.monotonic() - began)
    process.communicate(timeout=60)
    return used


def bareSeconds(bench, film, width, height):
    """The same film on the same plane, without a page."""
    command = [bench.player, bench.base + "media/" + film, str(PLAY_SECONDS + 4), "0|0|%d|%d|" % (width, height)]
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    time.sleep(2)
    before, began = processorSeconds([process.pid]), time.monotonic()
    time.sleep(PLAY_SECONDS)
    used = (processorSeconds([process.pid]) - before) / (time.monotonic() - began)
    process.communicate(timeout=60)
    return used


def measureProcessor(bench, runs):
    for width, height in ((640, 360), (1280, 720)):
        page, covered, bare = [], [], []
        for _ in range(runs):  # in turns, so that a slow moment of the machine hits all
            page.append(pageSeconds(bench, "two.mp4", width, height))
            covered.append(pageSeconds(bench, "two.mp4", width, height, "&covered"))
            bare.append(bareSeconds(bench, "two.mp4", width, height))
        print("processor time of a second of video at %dx%d: %.3f s in a page, %.3f s in one that paints below it, "
              "%.3f s by the media library alone" %
              (width, height, statistics.median(page), statistics.median(covered), statistics.median(bare)))


JUMP = 16  # pixels, of bench/pages/layout.html


def spread(values):
    return "%.1f ms (most %.1f)" % (statistics.median(values), max(values))


def untilMediaLibrary(trace):
    """Milliseconds from each layout change, marked in the trace, until the media library was told."""
    marks, taken = {}, []
    with open(trace, encoding="utf-8") as file:
        for line in map(json.loads, file):
            if line["name"] == "setVolume":
                marks[JUMP * line["arguments"][0]] = line["time"]
            elif line["name"] == "SET_WINDOW_PROPERTIES":
                left = int(line["arguments"][0].split("|")[0])
                if left in marks:
                    taken.append((line["time"] - marks.pop(left)) * 1000)
    return taken


def measureLayout(bench):
    """The window's frames are filmed: in which one is the page where it should be, in which one the video?"""
    trace, name = (os.path.join(bench.folder.name, file) for file in ("trace.jsonl", "film.ppm"))
    for state in ("paused", "playing"):
        for source in ("task", "frame"):
            jumps = bench.lines("layout.html?film=../media/two.mp4&state=%s&from=%s" % (state, source), "jump", "--trace", trace,
                                "--film", name + "@0,0,1280x120", "--wait", "done")
            film = television.Film(name)
            places = [JUMP * (number + 1) for number in range(len(jumps))]
            began = [float(text) for text in jumps]
            page = film.firstFrames(places, 20, lambda pixel: min(pixel) > 200)
            video = film.firstFrames(places, 100, lambda pixel: max(pixel) > 60)
            print("layout change in a %s, video %s, of %d:" % (source, state, len(places)))
            print("  until the media library has the new box: " + spread(untilMediaLibrary(trace)))
            print("  until the video is painted there: " + spread([film.times[frame] - since for frame, since in zip(video, began)]))
            print("  until the page is painted so: " + spread([film.times[frame] - since for frame, since in zip(page, began)]))
            lags = [after - before for before, after in zip(page, video)]
            print("  frames by which the video comes after the page: %.0f (least %d, most %d)" % (statistics.median(lags), min(lags), max(lags)))


# Of what is mapped from files others that map the same pay a share: the anonymous memory is what a process has for itself.
def measureMemory(bench):
    """With video and without: what the process grows without any is the engine's own."""
    for kind, page in (("playing", "navigate.html?film=../media/two.mp4"), ("without video", "navigate.html")):
        process = bench.start(page, "--wait", "done", "--quit-after", "300")
        for count in (5, 50, 150):
            waitForLine(process, "navigations %d" % count)
            time.sleep(2)
            processes = family(process.pid)
            page = list(filter(isPageProcess, processes))
            print("memory (proportional), %s, after %d navigations: all processes %.0f MB, the page's %.1f MB, of that anonymous %.1f MB" %
                  (kind, count, proportionalMegabytes(processes), proportionalMegabytes(page), proportionalMegabytes(page, "Pss_Anon")))
        process.communicate(timeout=90)


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    runs = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    bench = Bench(sys.argv[1], sys.argv[2])
    try:
        measureStart(bench, runs)
        measureKeys(bench)
        measureAccess(bench)
        measureLayout(bench)
        measureProcessor(bench, runs)
        measureMemory(bench)
    finally:
        bench.close()


if __name__ == "__main__":
    main()
