#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What pages find: documents of all kinds, live elements, events, keys, the objects of the environment."""
import os

import television


class DocumentTest(television.Case):
    def test_television_xhtml(self):
        self.assertEqual(self.browse("document.hbbtv", "--wait", "done").logged(), ["fine"])

    def test_xhtml(self):
        self.assertEqual(self.browse("document.xhtml", "--wait", "done").logged(), ["fine"])

    def test_other_charset(self):
        self.browse("latin.htm", "--wait", "done")

    def test_redirect(self):
        run = self.browse(self.base + "redirect/pages/player.html", "--wait", "done")
        self.assertEqual(run.logged(), ["played"])


class ElementTest(television.Case):
    def test_elements_are_live_when_they_should_be(self):
        run = self.browse("objects.html", "--wait", "done")
        self.assertEqual(run.logged(), ["fine"])
        self.assertAllClosed(run)

    def test_events(self):
        run = self.browse("events.html", "--wait", "done")
        self.assertEqual(run.logged(), ["fine"])
        self.assertAllClosed(run)


class KeyTest(television.Case):
    def test_keys_have_the_codes_of_a_remote_control(self):
        keys = ["Left", "Up", "Right", "Down", "Enter", "Back", "Red", "Green", "Yellow", "Blue", "Play", "Pause", "PlayPause", "Stop",
                "FastForward", "Rewind", "0", "9", "Info", "ChannelUp", "ChannelDown"]
        codes = [37, 38, 39, 40, 13, 461, 403, 404, 405, 406, 415, 19, 463, 413, 417, 412, 48, 57, 457, 427, 428]
        names = ["ArrowLeft", "ArrowUp", "ArrowRight", "ArrowDown", "Enter", "GoBack", "ColorF0Red", "ColorF1Green", "ColorF2Yellow", "ColorF3Blue",
                 "MediaPlay", "MediaPause", "MediaPlayPause", "MediaStop", "MediaFastForward", "MediaRewind", "0", "9", "Info", "ChannelUp",
                 "ChannelDown"]
        run = self.browse("keys.html", "--keys", ",".join(keys), "--wait", "up.length >= %d && report()" % len(keys))
        down, up, pressed, values, known, made = run.logged()
        self.assertEqual(down, ",".join("%d %s" % pair for pair in zip(codes, names)))
        self.assertEqual(up, ",".join(str(code) for code in codes))
        self.assertEqual(pressed, "13,48,57")
        self.assertEqual(values, ",".join(str(code) for code in codes))
        self.assertEqual(known, "true")
        self.assertEqual(made, "250,250,x")


class EnvironmentTest(television.Case):
    def test_objects_and_options(self):
        run = self.browse("environment.html", "--wait", "done", "--audio-languages", "deu,eng", "--country", "DEU")
        configured, agent = run.logged()
        self.assertEqual(configured, "deu,eng eng,und eng,und DEU")
        self.assertRegex(agent, r"HbbTV/1\.7\.1 \(\+DRM;[^;]*;[^;]*;[^;]*;[^;]*;[^;]*;\)$")

    def test_configuration_file_and_what_the_command_line_overrules(self):
        os.makedirs(os.path.join(self.folder, ".config", "avcontrol"))
        with open(os.path.join(self.folder, ".config", "avcontrol", "browser.ini"), "w", encoding="utf-8") as file:
            file.write("[browser]\ncountry = FRA\nui-languages = fra\nuser-agent = Telly/1 HbbTV/1.7.1 (+DRM;a;b;c;d;e;)\n")
        run = self.browse("environment.html", "--wait", "done", "--country", "DEU")
        configured, agent = run.logged()
        self.assertEqual(configured, "eng,und eng,und fra DEU")
        self.assertEqual(agent, "Telly/1 HbbTV/1.7.1 (+DRM;a;b;c;d;e;)")

    def test_media_requests_carry_the_page_s_user_agent(self):
        self.browse("player.html", "--wait", "done", "--user-agent", "Telly/2")
        agents = {entry["agent"] for entry in self.requests() if entry["path"].endswith("/two.mp4")}
        self.assertEqual(agents, {"Telly/2"})


if __name__ == "__main__":
    television.main()
