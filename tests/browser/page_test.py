#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What pages find: documents of all kinds, live elements, events, keys, the objects of the environment."""
import os
import re
import subprocess
import time

import television


class DocumentTest(television.Case):
    def test_television_xhtml(self):
        self.assertEqual(self.browse("document.hbbtv", "--wait", "done").logged(), ["fine"])

    def test_entities_of_television_xhtml(self):
        self.assertEqual(self.browse("entities.hbbtv", "--wait", "done").logged(), ["fine"])

    def test_application_information_table_starts_its_application(self):
        run = self.browse("table.ait", "--wait", "location.href.endsWith('/pages/player.html?started=1&more#there') && window.done")
        self.assertEqual(run.logged(), ["played"])
        application = "oipfObjectFactory.createApplicationManagerObject().getOwnerApplication(document)"
        run = self.browse("keys.html", "--wait", application + ".createApplication('table.ait', false) !== null", "--wait",
                          "location.search === '?started=1&more' && window.done && history.length === 2")
        self.assertEqual(run.logged(), ["played"])

    def test_application_information_table_without_an_application_of_the_web(self):
        run = self.browse("broadcast.ait", "--wait", "true", status=1)
        self.assertEqual(run.lines("uncaught: "), ["the application information table names no application with an http: or https: address"])

    def test_capital_letters_in_the_type_change_nothing(self):
        self.assertEqual(self.browse("capitals.HBBTV", "--wait", "true").logged(), ["object function"])

    def test_document_types_are_not_fetched(self):
        self.assertEqual(self.browse("own-doctype.hbbtv", "--wait", "true").logged(), ["own.dtd"])
        asked = [each["path"] for each in self.requests()]
        self.assertIn("/pages/own-doctype.hbbtv", asked)
        self.assertNotIn("/pages/own.dtd", asked)

    def test_xhtml(self):
        self.assertEqual(self.browse("document.xhtml", "--wait", "done").logged(), ["fine"])

    def test_attributes_of_xhtml_keep_their_letters(self):
        self.browse("document.xhtml", "--wait", "done")
        agents = {entry["agent"] for entry in self.requests() if entry["path"].endswith("/tail.mp4")}
        self.assertEqual(agents, {"Telly/9"})

    def test_style_sheets_for_the_medium_of_televisions_apply(self):
        self.assertEqual(self.browse("tv-medium.hbbtv", "--wait", "done").logged(), ["fine"])

    def test_other_charset(self):
        self.browse("latin.htm", "--wait", "done")

    def test_redirect(self):
        run = self.browse(self.base + "redirect/pages/player.html", "--wait", "done")
        self.assertEqual(run.logged(), ["played"])


    def test_storage_and_cookies_outlive_the_browser_unless_private(self):
        first = self.browse("keeping.html", "--wait", "done", private=False)
        self.assertEqual(first.logged(), ["null "])
        again = self.browse("keeping.html", "--wait", "done", private=False)
        self.assertEqual(again.logged(), ["green tea=green"])
        private = self.browse("keeping.html", "--wait", "done")
        self.assertEqual(private.logged(), ["null "])

    def test_page_that_writes_itself_anew_is_heard_and_works_by_keys(self):
        run = self.browse("written.html", "--wait", "window.box && document.activeElement === box", "--keys", "Enter", "--wait", "box.checked", status=1)
        self.assertEqual([line.split(" (")[0] for line in run.lines("uncaught: ")],
                         ["ReferenceError: Can't find variable: " + name for name in ("early", "late")])

    def test_parts_of_other_hosts_have_cookies(self):
        self.assertEqual(self.browse("consent.html", "--wait", "done").logged(), ["part: consent=given"])

    def test_television_fonts_are_stood_in_for(self):
        self.assertEqual(self.browse("fonts.html", "--wait", "done").logged(), ["fine"])


class ElementTest(television.Case):
    def test_elements_are_live_when_they_should_be(self):
        run = self.browse("objects.html", "--wait", "done")
        self.assertEqual(run.logged(), ["fine"])
        self.assertAllClosed(run)
        for name, file in (("queue", "silent.mp4"), ("subParamAttr", "eng.ttml")):
            self.assertTrue(any('"name":"%s"' % name in line and self.base + "media/short/" + file in line for line in run.trace()), name)

    def test_events(self):
        run = self.browse("events.html", "--wait", "done")
        self.assertEqual(run.logged(), ["fine"])
        self.assertAllClosed(run)


    def test_what_is_no_page_is_told_with_what_mends_it(self):
        for address, words in (("localhost:8080/app.html", '"localhost:8080/app.html" is no address of a page; write http://localhost:8080/app.html'),
                               ("dvb://1.2.3", '"dvb://1.2.3" is no address of a page; they begin with http:, https: or file:'),
                               ("www.example.com/?a=b:c", 'there is no file "www.example.com/?a=b:c"; if it is the address of a server, write http://www.example.com/?a=b:c')):
            run = self.browse(address, status=2)
            self.assertEqual(run.output, 'avc-browser: %s; "avc-browser --help" lists what can be given\n' % words)

    def test_page_with_names_of_its_own_for_what_the_engine_has(self):
        self.assertEqual(self.browse("names.hbbtv", "--wait", "done").logged(), ["{a: 1}"])

    def test_parameters_count_once(self):
        self.browse("parameters.html", "--wait", "done")

    def test_error_of_a_page_from_a_file_comes_with_what_mends_it(self):
        with open(os.path.join(self.folder, "error.html"), "w", encoding="utf-8") as file:
            file.write("<script>throw new Error('here')</script>")
        run = self.browse("file://%s/error.html" % self.folder, "--wait", "true", status=1)
        self.assertRegex(run.output, r"^uncaught: Script error\. \(.*serve it over HTTP.*\)\n$")

    def test_page_from_a_file_is_told_why_its_film_does_not_play(self):
        with open(os.path.join(self.folder, "film.html"), "w", encoding="utf-8") as file:
            file.write("<object type='video/mp4' data='film.mp4'></object>")
        run = self.browse("file://%s/film.html" % self.folder, "--wait", "true")
        advice = '"file://%s/film.mp4" is no http: or https: address and cannot play; serve the file over HTTP (for example with "python3 -m http.server")'
        self.assertEqual(run.output, "console.warn: %s\n" % advice % self.folder)


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
        characters = {13: 13, 48: 48, 57: 57}
        self.assertEqual(pressed, ",".join("%d %d" % (code, characters.get(code, 0)) for code in codes))
        self.assertEqual(values, ",".join(str(code) for code in codes))
        self.assertEqual(known, "true")
        self.assertEqual(made, "250,250,x")


    def test_browser_s_own_keys_do_not_reach_the_page_nor_hide_others_from_it(self):
        run = self.browse("keys.html", "--keys", "Red,Subtitles,5,ChannelDown,Subtitles,Subtitles,9", "--wait", "up.length >= 4 && report()")
        down, up = run.logged()[:2]
        self.assertEqual(down, "403 ColorF0Red,53 5,428 ChannelDown,57 9")
        self.assertEqual(up, "403,53,428,57")

    def test_key_that_a_page_takes_is_not_pressed(self):
        run = self.browse("keys.html", "--wait", "document.onkeydown = (event) => event.keyCode < VK_RED", "--keys", "Red,Left,Blue", "--wait",
                          "up.length >= 3 && report()")
        self.assertEqual(run.logged()[2], "37 0")

    def test_key_is_pressed_on_what_has_got_the_focus_meanwhile(self):
        self.browse("keys.html", "--wait", "document.onkeydown = () => { document.getElementById('field').focus(); }", "--wait",
                    "document.onkeypress = (event) => { window.at = event.target.id; }", "--keys", "Red", "--wait", "window.at === 'field'")

    def test_keys_of_xhtml_are_the_body_s_while_nothing_has_the_focus(self):
        run = self.browse("body-keys.hbbtv", "--keys", "Red", "--wait", "words.length >= 6 && report()", "--keys", "1", "--wait",
                          "words.length >= 6 && report()", "--wait", "held = true", "--keys", "Down", "--wait", "words.length >= 5 && report()",
                          "--wait", "document.activeElement === document.body && !(held = false)", "--keys", "Down", "--wait",
                          "document.activeElement.id === 'link' && report()", "--keys", "Red", "--wait", "words.length >= 6 && report()")
        red, one, held, _, focused = run.logged()
        code = "403 403 ColorF0Red body"
        self.assertEqual(red, ",".join("%s %s" % (what, code) for what in ("capture", "attribute", "body", "document", "press", "up")))
        self.assertEqual(one.split(",")[4], "press 49 49 1 body")
        self.assertNotIn("press", held)
        self.assertIn("up 40 40 ArrowDown body", held)
        self.assertEqual(focused, red.replace(code, "403 403 ColorF0Red a"))

    def test_arrow_moves_the_focus_once_in_xhtml(self):
        self.browse("directions.hbbtv", "--keys", "Down", "--wait", "at('a')", "--keys", "Down", "--wait", "at('b')")

    def test_arrows_go_from_link_to_link_unless_the_page_takes_them(self):
        self.browse("links.html", "--keys", "Down", "--wait", "at('two')", "--keys", "Right", "--wait", "at('three')", "--keys", "Left,Enter",
                    "--wait", "at('two') && location.hash === '#two'", "--wait", "held = 'keydown'", "--keys", "Up,Right", "--wait", "at('two')",
                    "--wait", "held = 'keypress'", "--keys", "Up,Right", "--wait", "at('two')")


class DirectionTest(television.Case):
    """Where arrows go by the style properties nav-up, nav-right, nav-down and nav-left."""

    def go(self, *ways):
        steps = []
        for start, key, end in ways:
            steps += ["--wait", "from('%s')" % start, "--keys", key, "--wait", "at('%s')" % end]
        fetched = " && ".join("performance.getEntriesByName(new URL('styles/%s', location).href).some((entry) => entry.initiatorType === 'fetch')" % name
                              for name in ("directions.css", "imported-directions.css"))
        self.browse("directions.hbbtv", "--wait", "document.readyState === 'complete' && from('d')", "--wait", fetched, *steps, "--wait",
                    "document.adoptedStyleSheets.length === 0 && getComputedStyle(document.getElementById('a')).color === 'rgb(0, 0, 2)'")

    def test_style_sheets_are_followed_in_their_order(self):
        self.go(("a", "Right", "d"), ("a", "Down", "b"), ("a", "Up", "c"), ("b", "Down", "d"), ("c", "Down", "a"))

    def test_style_attributes_come_first(self):
        self.go(("c", "Up", "a"), ("c", "Left", "b"), ("d", "Up", "a"))

    def test_what_names_nothing_leaves_the_choice_to_the_engine(self):
        self.go(("d", "Down", "e"), ("b", "Up", "a"))

    def test_fields_of_text_keep_the_arrows_along_the_line(self):
        self.go(("e", "Up", "a"), ("e", "Left", "e"))


class ControlTest(television.Case):
    """Controls that have a mouse or a space bar on a desktop, and Enter on a television."""
    LISTED = (0x33, 0x99, 0xe6)  # what is marked in a list

    def open(self, *rest):
        return self.browse("controls.html", "--wait", "focusOn('list')", "--keys", "Enter", "--wait", "true", *rest)

    def test_list_of_options_is_shown_and_one_is_chosen(self):
        run = self.open("--screenshot", "open.png", "--keys", "Down,Down,Down,Left,Red,5", "--screenshot", "moved.png", "--keys", "Enter",
                        "--wait", "list.value === 'four' && report()", "--screenshot", "shut.png", "--keys", "Red", "--wait", "words.length && report()")
        self.assertEqual(run.logged(), ["13,input list,change list", "403"])
        for name, row in (("open.png", 0), ("moved.png", 4)):
            picture = run.picture(name)
            for each in range(5):
                colour = picture.around(290, 130 + 32 * each + 16)
                self.assertEqual(max(abs(a - b) for a, b in zip(colour, self.LISTED)) < 24, each == row, (name, each, colour))
        self.assertColour(run.picture("shut.png"), (290, 146), television.WHITE)

    def test_list_of_options_is_left_by_back(self):
        run = self.open("--keys", "Down,Back", "--wait", "true", "--keys", "Red", "--wait", "words.length >= 2 && list.value === 'one' && report()")
        self.assertEqual(run.logged(), ["13,403"])

    def test_list_ends_with_its_page(self):
        run = self.open("--wait", "location.search = 'again', true", "--wait", "location.search && window.words && focusOn('check')", "--keys", "Red",
                        "--wait", "words.length && report()")
        self.assertEqual(run.logged(), ["403"])

    def test_list_ends_with_its_element_and_with_its_focus(self):
        for action in ("list.remove()", "list.style.display = 'none'", "focusOn('check')"):
            with self.subTest(action):
                run = self.open("--wait", "words.splice(0), %s, true" % action, *(["--keys", "Red"] * 40), "--wait", "words.length && report()")
                self.assertEqual(run.logged()[0][:3], "403")

    def test_list_that_nobody_asked_for_is_not_shown(self):
        run = self.browse("controls.html", "--wait", "list.dispatchEvent(new MouseEvent('mousedown'))", "--wait", "true", "--keys", "Red", "--wait",
                          "words.length && report()", "--wait", "focusOn('list')", "--keys", "Enter", "--wait", "true", "--keys", "Down,Enter", "--wait",
                          "list.value === 'two' && report()")
        self.assertEqual(run.logged(), ["403", "13,input list,change list"])

    def test_enter_that_is_held_opens_the_list_and_leaves_it_open(self):
        browser = self.start("controls.html", "--trace", "trace.jsonl", "--quit-after", "60", "--wait", "focusOn('list')", "--wait",
                             "list.value === 'two'", "--wait", "report()")
        self.findWindow("Controls that a remote control works")
        self.pressOnKeyboard("Return", "keydown")
        time.sleep(1.2)  # long enough for the key to repeat
        self.pressOnKeyboard("Return", "keyup")
        self.pressOnKeyboard("Down")
        self.pressOnKeyboard("Return")
        run = self.finish(browser)
        self.assertEqual(run.logged(), ["13,input list,change list"])

    def test_empty_list_is_left_as_well(self):
        run = self.browse("controls.html", "--wait", "focusOn('empty')", "--keys", "Enter", "--wait", "true", "--keys", "Back", "--wait", "true",
                          "--keys", "Red", "--wait", "words.includes(403) && report()")
        self.assertIn(run.logged(), (["13,403"], ["13,461,403"]))

    def test_enter_turns_check_boxes_and_radio_buttons(self):
        run = self.browse("controls.html", "--wait", "focusOn('check')", "--keys", "Enter", "--wait", "check.checked && report()", "--keys", "Enter",
                          "--wait", "!check.checked && report()", "--wait", "focusOn('second')", "--keys", "Enter", "--wait",
                          "second.checked && !first.checked && report()", "--wait", "focusOn('sent')", "--keys", "Enter", "--wait", "sent.checked && report()")
        self.assertEqual(run.logged(), ["13,input check,change check"] * 2 + ["13,input second,change second", "13,input sent,change sent"])

    def test_page_that_takes_enter_has_it_alone(self):
        run = self.browse("controls.html", "--wait", "holds = focusOn('check')", "--keys", "Enter", "--wait", "words.length && focusOn('list')", "--keys",
                          "Enter", "--wait", "words.length > 1", "--keys", "Red", "--wait", "words.length > 2 && !check.checked && report()")
        self.assertEqual(run.logged(), ["13,13,403"])


class OverlayTest(television.Case):
    def test_status_and_help_are_shown_on_request(self):
        page = ("--wait", "playing() && (video.play(0), true)", "--wait", "video.playState === 2")
        plain = self.browse("playing.html", *page, "--screenshot", "a.png").picture("a.png")
        self.assertColour(plain, (1000, 500), television.BLACK, 0)
        self.assertBar(plain, 0, 0, 640, 360, 2)
        shown = self.browse("playing.html", "--overlay", *page, "--screenshot", "b.png").picture("b.png")
        self.assertLess(max(shown.around(300, 40)), 100)  # the panel darkens the third bar
        self.assertGreater(min(plain.around(300, 40)[:2]), 200)

    LINE = re.compile(r"status:   (\d+\.\d) s stored\b")

    def stored(self, run):
        """The seconds on each line about what is stored."""
        return [float(match.group(1)) for match in map(self.LINE.match, run.output.splitlines()) if match]

    def test_status_tells_what_the_object_does(self):
        look = "position(1) && (video.play(0), true)"
        lines = self.browse("adaptive.html?film=dash/av.mpd&type=application/dash%2Bxml", "--wait", look, "--wait", "video.playState === 2",
                            "--status").lines("status: ")
        self.assertRegex(lines[0], r"^paused   \d\.\d of 20\.0 s   0x   application/dash\+xml$")
        self.assertTrue(lines[1].endswith("/media/dash/av.mpd"), lines)
        self.assertRegex(lines[2], r"^  1 video   \d audio \([a-z]+\)   \d subtitles")
        self.assertRegex(lines[-1], r"^\d+ pictures a second, \d+ in all$")

    def test_status_of_a_film_that_failed_says_why(self):
        run = self.browse("adaptive.html?film=fault/status/404/two.mp4&type=video/mp4", "--wait", "video.playState === 6", "--status")
        self.assertIn("status:   last error: content not available", run.output)

    def test_status_of_an_address_that_is_cut(self):
        name = "\u00e9" * 40 + "x.mp4"
        for begin in ("", "z"):
            run = self.browse("keys.html", "--wait", "video.data = location.origin + '/none/%s%s', true" % (begin, name), "--status")
            self.assertIn("\u00e9" * 32 + "x.mp4", run.output)

    def test_what_is_stored_of_adaptive_films_falls_as_they_play(self):
        for film, kind in (("dash/av.mpd", "application/dash%2Bxml"), ("hls/master.m3u8", "application/vnd.apple.mpegurl")):
            looks = [part for second in (1, 3, 5) for part in ("--wait", "position(%d)" % second, "--status")]
            stored = self.stored(self.browse("adaptive.html?film=%s&type=%s" % (film, kind), *looks))
            self.assertEqual(len(stored), 3, film)
            for second, seconds in zip((1, 3, 5), stored):
                self.assertLess(seconds, 20.5 - second)  # all of it is here soon, and 20 s long
                self.assertGreater(seconds, 2)
            self.assertEqual(stored, sorted(stored, reverse=True))

    def test_what_is_stored_of_a_slow_adaptive_film_grows_while_it_loads(self):
        looks = ["--status"] + [part for count in (6, 12, 18) for part in ("--wait", "asked('/slow/150k/dash', %d)" % count, "--status")]
        stored = self.stored(self.browse("adaptive.html?film=slow/150k/dash/av.mpd&type=application/dash%2Bxml&pause", *looks))
        self.assertGreaterEqual(len(stored), 3)
        self.assertEqual(stored, sorted(stored))
        self.assertGreater(stored[-1], stored[0] + 5)

    def test_help_key_is_the_browser_s_own(self):
        process = self.start("keys.html", "--wait", "down.length > 0", "--screenshot", "help.png", "--wait", "report()", "--quit-after", "60")
        deadline = time.monotonic() + 60
        run = None
        while run is None and time.monotonic() < deadline:  # the window may not be there yet
            self.pressOnKeyboard("F12")
            self.pressOnKeyboard("a")
            try:
                process.wait(1)
                run = self.finish(process)
            except subprocess.TimeoutExpired:
                continue
        self.assertIsNotNone(run)
        self.assertEqual(set(run.logged()[0].split(",")), {"65 a"})


    def test_help_is_shown_whole(self):
        process = self.start("keys.html", "--wait", "down.length > 0", "--screenshot", "ready.png", "--wait", "/66/.test(down)", "--screenshot", "help.png",
                             "--quit-after", "60")
        ready = os.path.join(self.folder, "ready.png")
        while process.poll() is None and not os.path.exists(ready):  # the window may not be there yet
            self.pressOnKeyboard("a")
            time.sleep(0.05)
        self.pressOnKeyboard("F12")
        self.pressOnKeyboard("b")
        run = self.finish(process)
        self.assertEqual(run.status, 0, run.output)
        plain, help = run.picture("ready.png"), run.picture("help.png")
        self.assertNotEqual(help.at(824, 200), plain.at(824, 200))
        self.assertEqual(help.at(824, 715), plain.at(824, 715))


class SubtitleKeyTest(television.Case):
    def heard(self, *arguments):
        """What a page hears of the viewer's settings, and how many of the keys were its own; the key was pressed as often as there are waits."""
        return self.browse("subtitles.html", *arguments, "--wait", "report()").logged()

    def test_key_switches_subtitles_off_and_on(self):
        press = [part for count in (1, 2, 3) for part in ("--keys", "Subtitles", "--wait", "heard.length === %d" % count)]
        self.assertEqual(self.heard(*press), ["0: false,1: true,0: false", "0"])

    def test_key_keeps_the_settings_of_the_command_line(self):
        start = ("--subtitle-settings", "3:size=150 color=yellow", "--wait", "heard.length === 1")
        press = [part for count in (2, 3) for part in ("--keys", "Subtitles", "--wait", "heard.length === %d" % count)]
        told, keys = self.heard(*start, *press)
        self.assertEqual(told, ",".join("%s:size=150 color=yellow %s" % pair for pair in (("3", "true"), ("0", "false"), ("3", "true"))))

    def test_key_switches_subtitles_on_that_the_viewer_does_not_want_at_first(self):
        told, keys = self.heard("--subtitle-settings", "0:", "--wait", "heard.length === 1", "--keys", "Subtitles", "--wait", "heard.length === 2")
        self.assertEqual(told, "0: false,1: true")

    def test_objects_to_come_hear_of_it(self):
        late = "(window.late = document.body.appendChild(document.createElement('object'))).onSubtitleSettingsChanged = (value) => { window.value = value; }"
        run = self.browse("subtitles.html", "--keys", "Subtitles", "--wait", "heard.length === 1", "--wait", "%s, late.type = 'video/mp4', true" % late,
                          "--wait", "window.value === 0", "--screenshot", "a.png")
        self.assertGreater(max(run.picture("a.png").around(640, 640, 40)), 0)  # the viewer is told, too

    def test_keyboard_has_it(self):
        process = self.start("subtitles.html", "--wait", "console.log('there'), true", "--wait", "heard.length > 0 && report()", "--quit-after", "60")
        next(line for line in process.stdout if "there" in line)  # what is pressed before there is an object, none hears
        deadline = time.monotonic() + 60
        while process.poll() is None and time.monotonic() < deadline:  # the window may not be there yet
            self.pressOnKeyboard("ctrl+s")
            try:
                process.wait(0.5)
            except subprocess.TimeoutExpired:
                continue
        told, keys = self.finish(process).logged()
        self.assertTrue(told.startswith("0: "), told)


    def test_held_key_switches_once(self):
        repeats = "heard.length > 0 && performance.now() > (window.until = window.until || performance.now() + 1500)"  # by then a dozen
        process = self.start("subtitles.html", "--wait", "console.log('there'), true", "--wait", repeats, "--wait", "report()", "--quit-after", "60")
        next(line for line in process.stdout if "there" in line)
        self.findWindow("Hears of the viewer")
        self.pressOnKeyboard("ctrl+s", "keydown")
        try:
            told, keys = self.finish(process).logged()
        finally:
            self.pressOnKeyboard("ctrl+s", "keyup")
        self.assertEqual(told.count(","), 0, told)


class StepTest(television.Case):
    def test_script_runs_in_the_page(self):
        with open(os.path.join(self.folder, "step.js"), "w", encoding="utf-8") as file:
            file.write("console.log(document.title)")
        run = self.browse("several.html", "--wait", "done", "--script", "step.js", "--wait", "first.playState === 2")
        self.assertEqual(run.logged(), ["Several objects, one above the other"])

    def test_script_may_end_with_any_value(self):
        for last in ("document.body", "window", "onkeydown = () => {}", "Symbol('x')", "1 // one"):
            with open(os.path.join(self.folder, "step.js"), "w", encoding="utf-8") as file:
                file.write("console.log(1)\n%s" % last)
            self.assertEqual(self.browse("keys.html", "--script", "step.js", "--wait", "true").logged(), ["1"], last)

    def test_errors_that_a_script_makes_later_have_text_and_place(self):
        with open(os.path.join(self.folder, "step.js"), "w", encoding="utf-8") as file:
            file.write("setTimeout(() => {\n  window.late = true;\n  throw new Error('later');\n}, 0)")
        run = self.browse("keys.html", "--script", "step.js", "--wait", "window.late", status=1)
        self.assertRegex(run.output, r"(?m)^uncaught: Error: later \(\S*step\.js:3\)$")

    def test_script_that_throws_or_is_not_there(self):
        with open(os.path.join(self.folder, "step.js"), "w", encoding="utf-8") as file:
            file.write("throw new Error('no')")
        run = self.browse("keys.html", "--script", "step.js", "--wait", "true", status=1)
        self.assertRegex(run.output, r"(?m)^avc-browser: step\.js: \S*/step\.js:1:\d+: Error: no$")
        self.assertRegex(run.output, r"(?m)^uncaught: Error: no \(\S*/step\.js:1\)$")
        run = self.browse("keys.html", "--script", "none.js", "--wait", "true", status=2)
        self.assertIn('--script needs a file that can be read, not "none.js": No such file or directory', run.output)

    def test_script_that_does_not_return_is_a_time_out_and_nothing_else(self):
        with open(os.path.join(self.folder, "step.js"), "w", encoding="utf-8") as file:
            file.write("for (;;);")
        run = self.finish(self.start("keys.html", "--script", "step.js", "--quit-after", "3"))
        self.assertEqual((run.status, run.output),
                         (3, 'avc-browser: time-out after 3 s, in step 1, "--script step.js"; give a longer --quit-after\n'))

    def test_script_that_is_no_text(self):
        for number, content in enumerate((b"console.log('\xff')", b"console.log(1)\0console.log(2)")):
            with open(os.path.join(self.folder, "step.js"), "wb") as file:
                file.write(content)
            run = self.browse("keys.html", "--script", "step.js", "--wait", "true", status=1)
            self.assertEqual(run.output, "avc-browser: step.js: is no text in UTF-8; save it as one\n", number)


class LocaleTest(television.Case):
    def test_decimal_comma_of_the_desktop_changes_nothing(self):
        run = self.browse("player.html", "--overlay", "--wait", "done", "--screenshot", "a.png", LC_ALL="de_DE.UTF-8")
        self.assertEqual(run.logged(), ["played"])
        self.assertTrue(any('"name":"SEEK"' in line and "5000.00" in line for line in run.trace()))
        self.assertFalse(any("5000,00" in line for line in run.trace()))

    def test_engine_s_languages_are_the_viewer_s_and_not_the_desktop_s(self):
        asked = "new Intl.NumberFormat(navigator.language).format(1.5)"
        for more, wanted in (([], "en"), (["--ui-languages", "fre,deu,und,ger"], "fr"), (["--ui-languages", "und"], "en")):
            self.browse("keys.html", "--wait", "navigator.language === '%s' && %s === '%s'" % (wanted, asked, "1,5" if wanted == "fr" else "1.5"),
                        *more, "--quit-after", "30", LC_ALL="de_DE.UTF-8")
        self.browse("keys.html", "--wait", "navigator.language === 'en'", "--quit-after", "30", LC_ALL="C.UTF-8")

    def test_web_server_hears_the_viewer_s_languages(self):
        self.browse("keys.html", "--ui-languages", "deu,eng", "--wait", "true")
        heard = [entry["languages"] for entry in self.requests() if entry["path"].endswith("/keys.html")]
        self.assertEqual(heard[-1], "de,en;q=0.90")


class ScreenTest(television.Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.screen.close()
        cls.screen = television.Screen(1920, 1080)

    def test_screen_is_the_television_s_in_windows_and_frames_of_any_size(self):
        with open(os.path.join(self.folder, "look.js"), "w", encoding="utf-8") as file:
            file.write("""var frame = document.body.appendChild(document.createElement('iframe'));
                          function sizes(of) {
                            return [of.screen.width, of.screen.height, of.screen.availWidth, of.screen.availHeight, of.outerWidth, of.outerHeight,
                                    of.devicePixelRatio, of.screenX, of.screenY, of.screenLeft, of.screenTop].join();
                          }
                          console.log(sizes(window), innerWidth, innerHeight);
                          console.log(sizes(frame.contentWindow));
                          var screenX = 5;
                          console.log(screenX);""")
        for more in ((), ("--window", "640x360"), ("--window", "1600x900")):
            with self.subTest(more):
                told = self.browse("keys.html", "--script", "look.js", "--wait", "true", *more).logged()
                self.assertEqual(told, ["1280,720,1280,720,1280,720,1,0,0,0,0 1280 720", "1280,720,1280,720,1280,720,1,0,0,0,0", "5"])


class EnvironmentTest(television.Case):
    def test_objects_and_options(self):
        run = self.browse("environment.html", "--wait", "done", "--audio-languages", "deu,eng", "--country", "DEU")
        self.assertEqual(run.lines("console.debug: "), ["a word to the developer"])
        configured, agent = run.logged()
        self.assertEqual(configured, "deu,eng eng,und eng,und DEU")
        self.assertRegex(agent, r"HbbTV/1\.7\.1 \(\+DRM;[^;]*;[^;]*;[^;]*;[^;]*;[^;]*;\)$")

    def test_access_to_an_identifier_of_the_device_is_refused(self):
        run = self.browse("keys.html", "--wait", "(oipfObjectFactory.createConfigurationObject().configuration.requestAccessToDistinctiveIdentifier("
                          "(granted) => { window.granted = granted; }), window.granted === undefined)", "--wait", "window.granted === false",
                          "--wait", "oipfObjectFactory.createConfigurationObject().configuration.deviceId === ''")
        self.assertEqual(run.status, 0)

    def test_broadcast_without_a_tuner_tells_what_fails(self):
        run = self.browse("broadcast.html", "--wait", "done")
        self.assertEqual(run.logged(), ["fine"])

    def test_configuration_file_and_what_the_command_line_overrules(self):
        os.makedirs(os.path.join(self.folder, ".config", "avcontrol"))
        with open(os.path.join(self.folder, ".config", "avcontrol", "browser.ini"), "w", encoding="utf-8") as file:
            file.write("[browser]\ncountry = FRA\nui-languages = fra\nuser-agent = Telly/1 HbbTV/1.7.1 (+DRM;a;b;c;d;e;)\n")
        run = self.browse("environment.html", "--wait", "done", "--country", "DEU")
        configured, agent = run.logged()
        self.assertEqual(configured, "eng,und eng,und fra DEU")
        self.assertEqual(agent, "Telly/1 HbbTV/1.7.1 (+DRM;a;b;c;d;e;)")

    def configure(self, text):
        file = os.path.join(self.folder, ".config", "avcontrol", "browser.ini")
        os.makedirs(os.path.dirname(file), exist_ok=True)
        with open(file, "wb") as out:
            out.write(text)
        return file

    def test_configuration_file_that_is_wrong_is_told_in_one_line(self):
        for text, words in ((b"country", "not a key-value pair"), (b"[brwser]\ncountry = DEU", 'no group "brwser"'),
                            (b"[browser]\ncountri = DEU", 'no key "countri"; there are audio-languages, country, '),
                            (b"[browser]\nclearkey = 1", 'no key "clearkey"'), (b"[browser]\ncountry = \\q", "country"),
                            (b"[browser]\ncountry = \xff", "UTF-8"), (b"[browser]\ncountry = Germany", 'country needs three capital letters'),
                            (b"[browser]\nui-languages = de", "ui-languages needs codes of three small letters"),
                            (b"[browser]\nparental-limit = old", "parental-limit needs an age"),
                            (b"[browser]\nclearkey-file =", "clearkey-file: cannot read"), (b"[browser]\nclearkey-file = none", "cannot read")):
            file = self.configure(text)
            run = self.finish(self.start("keys.html", "--quit-after", "1"))
            self.assertEqual(run.status, 2, text)
            self.assertTrue(run.output.startswith("avc-browser: %s: " % file), run.output)
            self.assertIn(words, run.output)
            self.assertEqual(run.output.count("\n"), 1, run.output)
        self.assertIn("Usage:", self.finish(self.start("keys.html", "--help")).output)
        self.assertIn("avc-browser", self.finish(self.start("keys.html", "--version")).output)

    def test_media_requests_carry_the_page_s_user_agent(self):
        self.browse("player.html", "--wait", "done", "--user-agent", "Telly/2")
        agents = {entry["agent"] for entry in self.requests() if entry["path"].endswith("/two.mp4")}
        self.assertEqual(agents, {"Telly/2"})


if __name__ == "__main__":
    television.main()
