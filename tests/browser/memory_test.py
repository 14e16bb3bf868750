#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The page's process uses no more memory after many pages than after a few."""
import os
import re
import time

import television

WATCHED_S = 3  # long enough for what the page before gave back to be returned
PATIENCE_S = 30  # which it is later on a busy machine
# The engine's own heap grows by a tenth while the machine is busy, also between pages without video: what a script leaves behind is collected
# late then. What stays of each page shows all the same: less than half a megabyte each would fail.
MOST_GROWTH = 1.2
DOCUMENT_MEGABYTES = 4  # in each page, so that a document that stays cannot be missed


def childrenOf(process):
    out = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open("/proc/%s/stat" % name, encoding="utf-8", errors="replace") as file:
                if int(file.read().rsplit(")", 1)[1].split()[1]) == process:
                    out += [int(name)] + childrenOf(int(name))
        except OSError:
            continue  # it ended meanwhile
    return out


def pageProcess(browser):
    for process in childrenOf(browser):
        with open("/proc/%d/comm" % process, encoding="utf-8") as file:
            if file.read().startswith("WebKitWebProces"):
                return process
    raise AssertionError("there is no process of the page")


def anonymousMegabytes(process):
    """What belongs to no file: what others map at the same time changes a file's share."""
    with open("/proc/%d/smaps_rollup" % process, encoding="utf-8") as file:
        return int(re.search(r"^Pss_Anon:\s+(\d+)", file.read(), re.MULTILINE).group(1)) / 1024


def leastMegabytes(process, enough):
    """The least that it takes for a while; for longer while that is not enough."""
    samples = []
    start = time.monotonic()
    while time.monotonic() < start + (PATIENCE_S if min(samples, default=0) > enough else WATCHED_S):
        samples.append(anonymousMegabytes(process))
        time.sleep(0.05)
    return min(samples)


class MemoryTest(television.Case):
    def stay(self, count):
        """The steps of a browser that comes to this navigation, says so, and stays until it is released."""
        return ["--wait", "goOn(%d)" % count, "--wait", "console.log('at', %d), true" % count, "--wait", "released('/go%d')" % count]

    def measureAt(self, process, count, enough=float("inf")):
        for line in process.stdout:
            if line.split()[:3] == ["console.log:", "at", str(count)]:
                break
        taken = leastMegabytes(pageProcess(process.pid), enough)
        with open(os.path.join(self.root, "go%d" % count), "w", encoding="utf-8"):
            return taken

    def test_fifty_pages_use_no_more_than_five(self):
        process = self.start("playing.html?megabytes=%d" % DOCUMENT_MEGABYTES, *self.stay(5), *self.stay(50), "--quit-after", "300")
        few = self.measureAt(process, 5)
        many = self.measureAt(process, 50, few * MOST_GROWTH)
        run = self.finish(process)
        self.assertEqual(run.status, 0, run.output)
        self.assertLess(many, few * MOST_GROWTH, "%.1f MB after 5 pages, %.1f MB after 50" % (few, many))


if __name__ == "__main__":
    television.main()
