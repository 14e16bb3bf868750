#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Walks through the example application with the keys of the remote control."""
import os

import television

VIDEO = "document.getElementById('video')"
MESSAGE = "document.getElementById('message')"
RATED, PROTECTED = 8, 9  # lines of the catalogue
PANEL = (22, 32, 44)
# What the page looks like now is on the window three of its frames later, whatever else the machine does.
FRAMES = "(function next(left) { window.painted = left === 0; if (left > 0) requestAnimationFrame(function () { next(left - 1); }); })(3)"
PAINTED = ("--wait", FRAMES + ", true", "--wait", "window.painted")
WINDOW = (592, 64, 624, 351)


class CatalogueTest(television.Case):
    def walk(self, *steps):
        return self.browse(self.base + "examples/catalogue/index.hbbtv", *steps, "--quit-after", "80")

    def walkTo(self, line, *steps):
        return self.walk("--keys", ",".join(["Down"] * line + ["Enter"]), *steps)

    @staticmethod
    def says(text):
        return ("--wait", "%s.style.display === 'block' && %s.textContent === '%s'" % (MESSAGE, MESSAGE, text))

    def assertMessage(self, run, picture):
        self.assertColour(run.picture(picture), (640, 210), (92, 31, 38), 4)

    def assertCatalogue(self, picture):
        for point in ((30, 500), (1250, 400), (900, 30), (900, 540)):
            self.assertColour(picture, point, PANEL, 3)

    def test_choose_watch_and_full_screen(self):
        run = self.walk("--wait", "document.querySelector('.film.chosen') !== null", *PAINTED, "--screenshot", "catalogue.png",
                        "--keys", "Down,Down,Up,Up,Enter", "--wait", VIDEO + ".playPosition > 300",
                        "--keys", "Pause", "--wait", VIDEO + ".playState === 2", "--screenshot", "small.png",
                        "--keys", "Blue", *PAINTED, "--screenshot", "large.png", "--keys", "Back", *PAINTED, "--screenshot", "again.png")
        first = run.picture("catalogue.png")
        self.assertCatalogue(first)
        self.assertColour(first, (80, 160), (47, 111, 180), 3)  # the first line is chosen
        self.assertColour(first, (900, 200), television.BLACK, 0)
        small = run.picture("small.png")
        self.assertCatalogue(small)
        for bar in range(6):
            self.assertBar(small, *WINDOW, bar)
        large = run.picture("large.png")
        for bar in range(6):
            self.assertBar(large, 0, 0, 1280, 720, bar)
        self.assertLess(max(large.around(600, 640)), 140)  # the banner darkens what is below it
        self.assertCatalogue(run.picture("again.png"))
        self.assertAllClosed(run)

    def test_seeking_and_speeds(self):
        self.walk("--keys", "Enter", "--wait", VIDEO + ".playState === 1", "--keys", "FastForward", "--wait", VIDEO + ".speed === 2",
                  "--keys", "FastForward", "--wait", VIDEO + ".speed === 4", "--keys", "Play", "--wait", VIDEO + ".speed === 1",
                  "--keys", "Right", "--wait", VIDEO + ".playPosition > 10000", "--keys", "Left", "--wait", VIDEO + ".playPosition < 10000",
                  "--keys", "Stop", "--wait", VIDEO + ".playState === 0")

    def test_queue_plays_on(self):
        self.walk("--keys", "Up,Up,Up,Enter", "--wait", "/short/.test(%s.data)" % VIDEO, "--wait", "/two.mp4$/.test(%s.data) && !/short/.test(%s.data)" % (VIDEO, VIDEO),
                  "--wait", VIDEO + ".playState === 1")

    def test_red_changes_the_language(self):
        language = VIDEO + ".getCurrentActiveComponents(1)[0].language === '%s'"
        self.walk("--keys", ",".join(["Down"] * 6 + ["Enter"]), "--wait", VIDEO + ".playPosition > 500 && " + language % "eng",
                  "--keys", "Red", "--wait", language % "deu",
                  "--wait", "/Sound: deu/.test(document.getElementById('extras').textContent)")

    def test_green_shows_subtitles(self):
        drawn = "document.getElementById('subtitles').textContent"
        run = self.walk("--subtitle-settings", "1:color=yellow background=navy", "--keys", ",".join(["Down"] * 7 + ["Enter"]),
                        "--wait", VIDEO + ".playPosition > 300 && %s === ''" % drawn, "--keys", "Green", "--wait", "/^eng [0-9]+/.test(%s)" % drawn,
                        "--keys", "Pause", "--wait", VIDEO + ".playState === 2 && /^eng/.test(%s)" % drawn, "--screenshot", "subtitles.png",
                        "--keys", "Subtitles", "--wait", drawn + " === ''", "--keys", "Subtitles", "--wait", "/^eng/.test(%s)" % drawn,
                        "--keys", "Blue", "--wait", "document.querySelector('#subtitles > div').offsetWidth === 1280",
                        "--keys", "Green", "--wait", "/^deu [0-9]+/.test(%s)" % drawn)
        picture = run.picture("subtitles.png")
        # The document's region: 80 % of the window's width, 20 % of its height, with half of the height below it free.
        left, top, width, height = WINDOW
        region = [picture.at(x, y) for y in range(top + height * 7 // 10, top + height * 9 // 10) for x in range(left + width // 10, left + width * 9 // 10)]
        navy = sum(1 for red, green, blue in region if red < 10 and green < 10 and 118 < blue < 138)
        yellow = sum(1 for red, green, blue in region if red > 230 and green > 230 and blue < 40)
        self.assertGreater(navy, len(region) // 4)
        self.assertGreater(yellow, 100)
        for bar in range(6):
            self.assertBar(picture, *WINDOW, bar)

    def test_error_is_told_in_words(self):
        run = self.walk("--keys", "Up,Up,Enter", "--wait", VIDEO + ".playState === 6", *self.says("The film is not available."),
                        *PAINTED, "--screenshot", "error.png")
        self.assertMessage(run, "error.png")

    def test_rated_film_is_blocked_in_words_and_the_next_one_plays(self):
        said = "This film is rated 16, above the limit of this television."
        run = self.walkTo(RATED, "--wait", VIDEO + ".playState === 2", *self.says(said), *PAINTED, "--screenshot", "blocked.png",
                          "--keys", "Play", "--wait", VIDEO + ".playState === 2", *self.says(said),
                          "--keys", "Down,Up,Up,Enter", "--wait", VIDEO + ".playState === 1 && %s.style.display === 'none'" % MESSAGE,
                          "--parental-limit", "12")
        self.assertMessage(run, "blocked.png")
        self.assertColour(run.picture("blocked.png"), (620, 90), television.BLACK, 0)
        self.assertAllClosed(run)

    def test_rated_film_plays_within_the_limit(self):
        self.walkTo(RATED, "--wait", VIDEO + ".playState === 1 && %s.playPosition > 200" % VIDEO,
                    "--wait", MESSAGE + ".style.display !== 'block'", "--parental-limit", "16")

    def test_protected_film_plays_with_its_key(self):
        run = self.walkTo(PROTECTED, "--wait", VIDEO + ".playState === 1 && %s.playPosition > 200" % VIDEO, "--screenshot", "plays.png",
                          "--clearkey-file", os.path.abspath(os.path.join(television.options.media, "rights", "keys.txt")))
        for bar in range(len(television.BARS)):
            self.assertBar(run.picture("plays.png"), *WINDOW, bar)

    def test_protected_film_without_its_key_is_told_in_words(self):
        run = self.walkTo(PROTECTED, "--wait", VIDEO + ".playState === 6", *self.says("There is no licence for this film."),
                          *PAINTED, "--screenshot", "refused.png")
        self.assertMessage(run, "refused.png")

    def test_every_kind_of_film_plays(self):
        for line in range(6):
            self.walk("--keys", ",".join(["Down"] * line + ["Enter"]), "--wait", VIDEO + ".playState === 1 && %s.playPosition > 200" % VIDEO)


if __name__ == "__main__":
    television.main()
