#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The same on a Wayland desktop: what is on its screen, what the screenshots and films show, and its keyboard."""
import os
import shutil
import subprocess
import tempfile
import time

import television

FULL = (0, 0, television.WIDTH, television.HEIGHT)


class Compositor:
    """A Wayland desktop that fills the invisible screen."""

    def __init__(self, screen):
        self.folder = tempfile.mkdtemp()
        self.socket = os.path.join(self.folder, "desktop")
        command = [*television.UNTIL_TEST_ENDS, "weston", "--backend=x11-backend.so", "--use-pixman", "--socket=desktop", "--idle-time=0",
                   "--width=%d" % television.WIDTH, "--height=%d" % television.HEIGHT]
        with open(os.path.join(self.folder, "log"), "wb") as log:
            self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                            env=dict(os.environ, DISPLAY=screen.name, XDG_RUNTIME_DIR=self.folder))
        if not television.until(lambda: os.path.exists(self.socket)):
            raise RuntimeError("weston did not start:\n" + self.log())

    def log(self):
        with open(os.path.join(self.folder, "log"), encoding="utf-8") as file:
            return file.read()

    def close(self):
        self.process.terminate()
        self.process.wait()
        shutil.rmtree(self.folder)


class WaylandTest(television.Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.compositor = Compositor(cls.screen)

    @classmethod
    def tearDownClass(cls):
        cls.compositor.close()
        super().tearDownClass()

    def start(self, page, *arguments, **environment):
        return super().start(page, *arguments, DISPLAY="", WAYLAND_DISPLAY=self.compositor.socket, **environment)

    def screenPicture(self, name):
        """What a photograph of the screen would show."""
        file = os.path.join(self.folder, name)
        subprocess.run(["ffmpeg", "-v", "error", "-f", "x11grab", "-video_size", "%dx%d" % (television.WIDTH, television.HEIGHT), "-i", self.screen.name,
                        "-frames:v", "1", file], stdin=subprocess.DEVNULL, check=True)
        return television.Picture(file)

    def test_screenshots_show_page_and_video_without_the_window_s_frame(self):
        run = self.browse("geometry.html", *television.steps("start", "byStyle", "edged", "fullScreen"))
        for name, box in (("start", (40, 40, 320, 180)), ("byStyle", (700, 500, 320, 180)), ("edged", (115, 115, 320, 180)), ("fullScreen", FULL)):
            with self.subTest(name):
                picture = run.picture(name + ".png")
                self.assertEqual((picture.width, picture.height), (television.WIDTH, television.HEIGHT))
                self.assertCard(picture, *box)

    def test_screen_shows_what_the_screenshot_shows(self):
        process = self.start("geometry.html", "--fullscreen", *television.steps("start", "byClass"), "--wait", "false", "--quit-after", "90")
        self.assertTrue(television.until(lambda: os.path.exists(os.path.join(self.folder, "byClass.png"))))
        picture = self.screenPicture("screen.png")
        self.assertCard(picture, 400, 120, 640, 360)
        self.endIfRunning(process)

    def test_film_shows_every_frame(self):
        film = self.browse("geometry.html", "--film", "film.ppm", *television.steps("start", "byStyle")).film("film.ppm")
        self.assertEqual(set(film.sizes), {(television.WIDTH, television.HEIGHT)})
        bright = [max(film.pixel(frame, 60, 60)) > 60 for frame in range(len(film))]
        self.assertEqual((bright[0], max(bright), bright[-1]), (False, True, False))

    def test_keyboard_is_the_remote_control(self):
        process = self.start("keys.html", "--wait", "down.length > 0", "--wait", "report()", "--quit-after", "60")
        while process.poll() is None:  # the window may not be there yet
            self.pressOnKeyboard("F1")
            time.sleep(0.05)
        run = self.finish(process)
        self.assertEqual(run.status, 0, run.output)
        self.assertTrue(run.logged()[0].startswith("403 "), run.output)


if __name__ == "__main__":
    television.main()
