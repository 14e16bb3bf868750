#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Parental limits and keys: the options and the configuration file, and what they do to a page's films."""
import os

import television

DASH = "application/dash+xml"
CAS = "application/vnd.oipf.ContentAccessStreaming+xml"
RATED_16 = ("rated-16.cas", CAS)
BY_COUNTRY = ("rated-by-country.cas", CAS)  # from 6 years on in Germany, from 18 in Britain
PROTECTED = ("cenc/av.mpd", DASH)
KID = "00112233445566778899aabbccddee01"
KEY = "a0a1a2a3a4a5a6a7a8a9aaabacadae01"
WRONG_KEY = "b0a1a2a3a4a5a6a7a8a9aaabacadae01"
PLAYS = "video.playState === 1 && video.playPosition > 100"
BLOCKED = "video.playState === 2 && rated.length > 0"
FAILED = "video.playState === 6 && refused.length > 0"


class RightsCase(television.Case):
    def guarded(self, film, until, *arguments, **more):
        address = self.base + "pages/guarded.html?film=%s&type=%s" % (film[0], film[1].replace("+", "%2B"))
        run = self.browse(address, *arguments, "--wait", until, "--wait", "report()", "--screenshot", "seen.png", **more)
        self.assertNoKey(run)
        return run

    def assertNoKey(self, run):
        for text in (run.output, "\n".join(run.trace())):
            self.assertNotIn(KEY, text)
            self.assertNotIn(WRONG_KEY, text)

    def refused(self, *arguments, **more):
        process = self.start("guarded.html", *arguments, "--quit-after", "30", **more)
        run = self.finish(process)
        self.assertEqual(run.status, 2, run.output)
        self.assertEqual(len(run.output.splitlines()), 1, run.output)
        self.assertNotIn(KEY, run.output)
        return run.output

    def configure(self, *lines):
        folder = os.path.join(self.folder, ".config", "avcontrol")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "browser.ini"), "w", encoding="utf-8") as file:
            file.write("[browser]\n" + "".join(line + "\n" for line in lines))
        return folder

    @staticmethod
    def keyFile():
        return os.path.abspath(os.path.join(television.options.media, "rights", "keys.txt"))


class LimitTest(RightsCase):
    def test_film_above_the_limit_is_blocked_and_not_seen(self):
        run = self.guarded(RATED_16, BLOCKED, "--parental-limit", "12")
        self.assertEqual(run.logged(), ["1 blocked||never played"])
        for x in (50, 320, 600):
            self.assertColour(run.picture("seen.png"), (x, 100), television.BLACK, 0)
        self.assertAllClosed(run)

    def test_film_within_the_limit_plays(self):
        self.assertEqual(self.guarded(RATED_16, PLAYS, "--parental-limit=16").logged(), ["1 allowed||played"])

    def test_without_a_limit_nothing_is_blocked(self):
        self.assertEqual(self.guarded(RATED_16, PLAYS).logged(), ["1 allowed||played"])

    def test_country_chooses_the_ratings(self):
        self.assertEqual(self.guarded(BY_COUNTRY, BLOCKED, "--parental-limit", "12").logged(), ["2 blocked||never played"])
        run = self.guarded(BY_COUNTRY, PLAYS, "--parental-limit", "12", "--parental-country", "de")
        self.assertEqual(run.logged(), ["2 allowed||played"])


class KeyTest(RightsCase):
    def test_protected_film_plays_with_its_key(self):
        run = self.guarded(PROTECTED, PLAYS, "--clearkey", KID + ":" + KEY)
        self.assertEqual(run.logged(), ["||played"])
        for bar in range(len(television.BARS)):
            self.assertBar(run.picture("seen.png"), 0, 0, 640, 360, bar)
        self.assertAllClosed(run)

    def test_protected_film_plays_with_a_file_of_keys(self):
        self.assertEqual(self.guarded(PROTECTED, PLAYS, "--clearkey-file", self.keyFile()).logged(), ["||played"])

    def test_no_key_and_a_wrong_key_are_rights_errors(self):
        self.assertEqual(self.guarded(PROTECTED, FAILED).logged(), ["|0|never played"])
        run = self.guarded(PROTECTED, FAILED, "--clearkey", KID + ":" + WRONG_KEY)
        self.assertEqual(run.logged(), ["|1|never played"])


class ConfigurationTest(RightsCase):
    def test_limit_country_and_command_line_that_wins(self):
        self.configure("parental-limit = 12", "parental-country = DE")
        self.assertEqual(self.guarded(RATED_16, BLOCKED).logged(), ["1 blocked||never played"])
        self.assertEqual(self.guarded(BY_COUNTRY, PLAYS).logged(), ["2 allowed||played"])
        self.assertEqual(self.guarded(RATED_16, PLAYS, "--parental-limit", "16").logged(), ["1 allowed||played"])

    def test_key_file_beside_the_configuration(self):
        folder = self.configure("clearkey-file = keys.txt")
        os.symlink(self.keyFile(), os.path.join(folder, "keys.txt"))
        self.assertEqual(self.guarded(PROTECTED, PLAYS).logged(), ["||played"])

    def test_what_makes_no_sense_is_refused(self):
        for line, words in (("parental-limit = old", 'browser.ini: parental-limit needs an age of 0 to 99 years, not "old"'),
                            ("parental-limit =", "browser.ini: parental-limit needs an age"),
                            ("parental-country = Germany", "browser.ini: parental-country needs two letters"),
                            ("clearkey-file = none.txt", "browser.ini: clearkey-file: cannot read")):
            self.configure(line)
            self.assertIn(words, self.refused())


class RefusalTest(RightsCase):
    def test_values_that_make_no_sense(self):
        for arguments, words in ((["--parental-limit", "old"], '--parental-limit needs an age of 0 to 99 years, not "old"'),
                                 (["--parental-limit=100"], "--parental-limit needs an age"),
                                 (["--parental-country", "Germany"], "--parental-country needs two letters"),
                                 (["--clearkey", KEY], "--clearkey needs KID:KEY"),
                                 (["--clearkey", KEY + ":" + KEY[1:]], "--clearkey needs KID:KEY"),
                                 (["--clearkey-file", "none.txt"], "--clearkey-file: cannot read none.txt"),
                                 (["--clearkey-file="], "option --clearkey-file needs a value")):
            self.assertIn(words, self.refused(*arguments))

    def test_line_of_a_key_file_that_is_none(self):
        with open(os.path.join(self.folder, "keys.txt"), "w", encoding="utf-8") as file:
            file.write("# mine\n%s:%s\n%s\n" % (KID, KEY, KEY))
        self.assertIn("line 3 of keys.txt is not KID:KEY", self.refused("--clearkey-file", "keys.txt"))


if __name__ == "__main__":
    television.main()
