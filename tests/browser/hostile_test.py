#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A page that tries to break the browser breaks at most itself."""
import television


class HostileTest(television.Case):
    def test_hostile_page_neither_crashes_nor_reaches_inside(self):
        run = self.finish(self.start("hostile.html", "--trace", "trace.jsonl", "--wait", "done", "--quit-after", "150"))
        self.assertIn(run.status, (0, 1), run.output[-2000:])  # its own errors make 1
        self.assertNotIn("ended unexpectedly", run.output)
        self.assertIsNone(television.DEFECT.search(run.output), run.output[-2000:])
        self.assertAllClosed(run)

    def test_page_after_a_hostile_one_is_whole(self):
        run = self.finish(self.start("hostile.html", "--wait", "done", "--wait", "location.href = 'player.html', true",
                                     "--wait", "location.pathname.endsWith('player.html') && done", "--screenshot", "a.png", "--quit-after", "200"))
        self.assertIn("played", run.logged(), run.output[-2000:])
        self.assertCard(run.picture("a.png"), 320, 180, 640, 360)


if __name__ == "__main__":
    television.main()
