#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What a page cannot do to the viewer's desktop: windows of it, menus, files, and the terminal."""
import os
import subprocess

import television


class DesktopTest(television.Case):
    def desktop(self, *command):
        """What xdotool says of the screen; None when there is no such window (any more)."""
        asked = subprocess.run(["xdotool", *command], env=self.environment(LD_PRELOAD=""), check=False, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True)
        return asked.stdout.strip() if asked.returncode == 0 else None

    def windows(self):
        """The titles of all windows that can be seen."""
        titles = [self.desktop("getwindowname", each) for each in (self.desktop("search", "--onlyvisible", "--name", ".") or "").split()]
        return [title for title in titles if title is not None]  # one may be gone before its name is asked for

    def test_page_prints_asks_and_leaves_nothing(self):
        run = self.browse("desktop.html", "--wait", "done")
        lines = run.output.splitlines()
        self.assertIn("console.warn: print: a television prints nothing", lines)
        refused = [line.split("cannot be loaded: ")[1] for line in lines if "cannot be loaded" in line]
        self.assertEqual(refused, [address + ": there is no program for such an address here"
                                   for address in ("dvb://current.ait/1.2", "mailto:somebody@example.com", "foo:bar", "about:config")])
        self.assertIn("still here", run.logged())

    def test_page_keeps_no_files(self):
        for kind, address in (("data", "data:text/plain,kept"), ("blob", "blob:" + self.base), ("http", self.base + "pages/player.html")):
            process = self.start("desktop.html?" + kind, "--quit-after", "60")
            line = next(line for line in process.stdout if "download" in line)
            self.assertIn("console.warn: download: a television keeps no files: " + address, line)
            process.terminate()
            self.finish(process)
            self.assertEqual([name for _, _, names in os.walk(self.folder) for name in names if "kept" in name or "player" in name], [])

    def test_what_a_page_writes_neither_commands_the_terminal_nor_looks_like_another_line(self):
        run = self.browse("desktop.html", "--wait", "done")
        at = run.output.index("console.log: \\x1b]0;title\\x07\\x9b2J\\x7f\tone\n  two")
        self.assertIn("console.log: still here", run.output[at:])

    def test_neither_keys_nor_the_mouse_open_windows_of_the_desktop(self):
        steps = ("--keys", "Red,Green", "--wait", "document.getElementById('link').focus(), true", "--wait", "menus > 1")
        process = self.start("desktop.html", "--wait", "done", *steps, "--quit-after", "60")
        title = "What a page could do to a desktop"
        self.findWindow(title)
        mouse = ["xdotool", "mousemove", "100", "50", "click", "3"]
        while process.poll() is None:
            subprocess.run(mouse, env=self.environment(LD_PRELOAD=""), check=True)
            self.assertLessEqual(set(self.windows()), {title})  # none when it has just ended
        self.assertEqual(self.finish(process).status, 0)


if __name__ == "__main__":
    television.main()
