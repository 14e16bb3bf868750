#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Ends: of objects, windows, pages, processes and the browser. Nothing is left, whatever the order."""
import os
import re
import signal
import socket
import subprocess
import time

import television


def childrenOf(process):
    """The process ids of all descendants."""
    out = []
    for name in os.listdir("/proc"):
        if name.isdigit() and parentOf(int(name)) == process:
            out += [int(name)] + childrenOf(int(name))
    return out


def parentOf(process):
    try:
        with open("/proc/%d/stat" % process, encoding="utf-8", errors="replace") as file:
            return int(file.read().rsplit(")", 1)[1].split()[1])
    except OSError:
        return 0


def nameOf(process):
    try:
        with open("/proc/%d/comm" % process, encoding="utf-8") as file:
            return file.read().strip()
    except OSError:
        return ""


APPLICATION = "oipfObjectFactory.createApplicationManagerObject().getOwnerApplication(document)"


class LifeTest(television.Case):
    def startPlaying(self, *arguments, **environment):
        process = self.start("playing.html", "--trace", "trace.jsonl", *arguments, **environment)
        self.assertTrue(television.until(lambda: any('"name":"PLAYING"' in line for line in self.traceSoFar())), "does not play")
        return process

    def traceSoFar(self):
        path = os.path.join(self.folder, "trace.jsonl")
        if not os.path.exists(path):
            return []
        with open(path, encoding="utf-8", errors="replace") as file:
            return file.read().splitlines()

    def assertNothingRuns(self, processes):
        self.assertTrue(television.until(lambda: not any(os.path.exists("/proc/%d" % one) for one in processes), 20), "processes are left")

    def test_no_thread_paints_with_opengl_where_there_is_no_graphics_card(self):
        painter = "SkiaGPUWorker"
        self.assertIn(painter, self.threadsOfPaintedPage(WEBKIT_SKIA_ENABLE_CPU_RENDERING="0"), "the engine calls it otherwise now")
        self.assertNotIn(painter, self.threadsOfPaintedPage())

    def threadsOfPaintedPage(self, **environment):
        """The names of the threads of the page's process."""
        picture = os.path.join(self.folder, "painted.png")
        process = self.start("playing.html", "--wait", "playing()", "--screenshot", picture, "--wait", "false", LIBGL_ALWAYS_SOFTWARE="1", **environment)
        self.assertTrue(television.until(lambda: os.path.exists(picture)), "is not painted")
        os.remove(picture)
        page = next(one for one in childrenOf(process.pid) if nameOf(one).startswith("WebKitWebProc"))
        names = [nameOf(int(thread)) for thread in os.listdir("/proc/%d/task" % page)]
        process.kill()
        process.communicate()
        return names

    def test_quit_while_playing(self):
        run = self.browse("playing.html", "--wait", "playing()")
        self.assertAllClosed(run)

    def test_removed_object_that_changes_its_looks_is_not_made_anew(self):
        change = "video.className = 'gone', video.style.display = 'none', video.hidden = true, video.setAttribute('title', 'x')"
        run = self.browse("playing.html", "--wait", "playing() && (setTimeout(function () { %s; window.done = Date.now(); }, 200), video.remove(), true)" % change,
                          "--wait", "window.done && Date.now() > done + 200")
        self.assertAllClosed(run)
        self.assertEqual(sum('"name":"openPlayer"' in line for line in run.trace()), 2)  # and one that tells of the rows

    def test_time_is_up_while_playing(self):
        run = self.browse("playing.html", "--quit-after", "3")
        self.assertAllClosed(run)

    def test_signals_end_in_order(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            process = self.startPlaying()
            children = childrenOf(process.pid)
            process.send_signal(number)
            run = self.finish(process)
            self.assertEqual(run.status, 128 + number, run.output)
            self.assertAllClosed(run)
            self.assertNothingRuns(children)
            os.remove(os.path.join(self.folder, "trace.jsonl"))

    def test_killed_window_takes_the_page_s_process_with_it(self):
        process = self.startPlaying()
        children = childrenOf(process.pid)
        self.assertTrue(children)
        process.kill()
        process.communicate()
        self.assertNothingRuns(children)

    def test_closing_the_window_and_the_key_to_quit_end_in_order(self):
        for leave in (lambda: self.closeWindow("Plays at once"), lambda: self.pressOnKeyboard("ctrl+q")):
            process = self.startPlaying()
            children = childrenOf(process.pid)
            leave()
            run = self.finish(process)
            self.assertEqual(run.status, 0, run.output)
            self.assertAllClosed(run)
            self.assertNothingRuns(children)
            os.remove(os.path.join(self.folder, "trace.jsonl"))

    def test_fifty_navigations_while_playing(self):
        run = self.browse("playing.html", "--wait", "goOn(50)", "--quit-after", "300")
        self.assertAllClosed(run)
        self.assertEqual(sum('"name":"openPlayer"' in line for line in run.trace()), 52)  # and one that tells of the rows

    def test_page_that_goes_is_told_no_changes_but_its_own(self):
        self.assertEqual(self.browse("observed.html", "--wait", "done").logged(), [])

    def test_history_back_destroys_and_makes_anew(self):
        run = self.browse("playing.html", "--wait", "goOn(1)", "--wait", "history.back(), true",
                          "--wait", "location.search === '' && playing()", "--screenshot", "a.png")
        self.assertAllClosed(run)
        self.assertBar(run.picture("a.png"), 0, 0, 640, 360, 3)

    def test_page_that_ends_itself(self):
        for end in ("window.close()", "history.pushState(1, '', '#second'), window.close()", APPLICATION + ".destroyApplication()"):
            run = self.browse("playing.html", "--wait", "playing() && (%s, true)" % end, "--wait", "location.href === 'about:blank'",
                              "--screenshot", "a.png")
            self.assertAllClosed(run)
            self.assertColour(run.picture("a.png"), (200, 200), television.BLACK, 0)

    def test_application_that_starts_another_and_ends_itself(self):
        run = self.browse("playing.html", "--wait", "playing()", "--wait",
                          "%s.createApplication('playing.html?next', false) !== null && (%s.destroyApplication(), window.close(), true)" %
                          (APPLICATION, APPLICATION), "--wait", "location.search === '?next' && playing()", "--wait", "history.length === 1")
        self.assertAllClosed(run)

    def test_addresses_of_a_frame_are_relative_to_it(self):
        frame = "document.body.appendChild(document.createElement('iframe')).src = 'styles/starter.html'"
        self.browse("playing.html", "--wait", frame, "--wait", "window.starter", "--wait", "starter.createApplication('../keys.html?next', false) !== null",
                    "--wait", "location.href.endsWith('/pages/keys.html?next')")

    def test_frame_starts_another_application_and_ends_its_own(self):
        run = self.browse("frames.html", "--wait", "ready === 2 && act('near', '%s.createApplication(`playing.html?next`, false); %s.destroyApplication()')" %
                          (APPLICATION, APPLICATION), "--wait", "location.search === '?next' && playing()")
        self.assertAllClosed(run)

    def test_application_that_goes_on_at_a_place_of_its_own_can_still_end_itself(self):
        run = self.browse("playing.html", "--wait", "playing()", "--wait", "%s.createApplication(location.pathname + '#place', false) !== null" % APPLICATION,
                          "--wait", "location.hash === '#place' && (%s.destroyApplication(), true)" % APPLICATION, "--wait", "location.href === 'about:blank'")
        self.assertAllClosed(run)

    def test_frames_are_part_of_the_application(self):
        for frame in ("near", "far"):
            for act, wanted in (("createApplication('playing.html?next', false)", "location.search === '?next' && playing()"),
                                ("destroyApplication()", "location.href === 'about:blank'")):
                script = "onkeydown = function () { %s.%s }" % (APPLICATION, act)
                run = self.browse("frames.html", "--wait", 'ready === 2 && act("%s", "%s")' % (frame, script),
                                  "--wait", "document.activeElement.id === '%s'" % frame, "--keys", "Red", "--wait", wanted)
                self.assertAllClosed(run)

    def test_frame_of_another_origin_cannot_end_the_application_by_itself(self):
        run = self.browse("frames.html", "--wait", "ready === 2 && act('far', '%s.destroyApplication(); parent.postMessage(`paused`, `*`)')" %
                          APPLICATION, "--wait", "ready === 3")
        self.assertEqual(run.lines("console.warn: "), ["a frame of another origin may end the application only once the viewer has used it"])

    def test_application_that_could_not_be_replaced_can_still_be_ended(self):
        run = self.browse("frames.html", "--wait", "ready === 2 && act('far', '%s.createApplication(`none.html`) === null && "
                          "(%s.destroyApplication(), parent.postMessage(`paused`, `*`))')" % (APPLICATION, APPLICATION), "--wait", "ready === 3")
        self.assertEqual(run.lines("console.warn: "), ["a frame of another origin may end the application only once the viewer has used it"] * 2)

    def test_events_that_a_page_calls_pagehide_end_nothing(self):
        run = self.browse("playing.html", "--wait", "playing()",
                          "--wait", "[window, document, document.body].forEach((one) => one.dispatchEvent(new Event('pagehide', { bubbles: true }))), true",
                          "--wait", "video.playPosition > 1000", "--wait", "console.log('plays on', video.playState), true")
        self.assertEqual(run.logged(), ["plays on 1"])

    def test_application_is_hidden_from_a_frame(self):
        run = self.browse("frames.html", "--wait", "ready === 2 && act('near', '%s.hide()')" % APPLICATION,
                          "--wait", "getComputedStyle(document.body).visibility === 'hidden'", "--wait", "act('near', '%s.show()')" % APPLICATION,
                          "--wait", "getComputedStyle(document.body).visibility === 'visible'")
        self.assertAllClosed(run)

    def test_object_in_a_frame_ends_with_it(self):
        run = self.browse("frames.html", "--wait", "ready === 2 && without()", "--wait", "ready === 2")
        self.assertAllClosed(run)

    def test_object_in_the_document_of_another_frame_is_shown_there_and_ends_with_it(self):
        run = self.browse("adopted.html", *television.steps("moved"), "--wait", "did('playing')", "--wait", "did('gone')")
        self.assertCard(run.picture("moved.png"), 300 + 7, 200 + 9, 224, 126)
        self.assertAllClosed(run)

    def test_object_of_a_page_that_has_gone_throws_nothing(self):
        self.browse("adopted.html", "--wait", "did('elsewhere')")

    def test_page_that_is_written_anew(self):
        run = self.browse("playing.html", "--wait", "playing()", "--wait",
                          "document.open(), document.write('<p>new</p><script>var fresh = true</' + 'script>'), document.close(), true",
                          "--wait", "fresh === true")
        self.assertAllClosed(run)

    def test_handler_that_removes_its_own_frame(self):
        run = self.browse("suicide.html", "--wait", "gone", "--quit-after", "60")
        self.assertAllClosed(run)

    def waitUntilTold(self, process):
        """Until the window's process has noticed that the page's has gone."""
        lines = iter(process.stdout.readline, "")
        self.assertTrue(any("the page's process ended unexpectedly" in line for line in lines), "is not told")

    def test_crashed_page(self):
        process = self.startPlaying()
        page = [one for one in childrenOf(process.pid) if nameOf(one).startswith("WebKitWebProc")]
        self.assertEqual(len(page), 1)
        os.kill(page[0], signal.SIGKILL)
        self.assertNothingRuns(page)
        self.waitUntilTold(process)
        self.assertIsNone(process.poll())  # a viewer is told, and may start it again
        process.send_signal(signal.SIGTERM)
        run = self.finish(process)
        self.assertEqual(run.status, 1, run.output)

    def test_crashed_page_starts_again_with_one_key(self):
        process = self.startPlaying()
        page = [one for one in childrenOf(process.pid) if nameOf(one).startswith("WebKitWebProc")]
        os.kill(page[0], signal.SIGKILL)
        self.assertNothingRuns(page)
        self.waitUntilTold(process)
        self.pressOnKeyboard("Return")
        again = lambda: [one for one in childrenOf(process.pid) if nameOf(one).startswith("WebKitWebProc")]
        self.assertTrue(television.until(lambda: again() and again() != page), "no new process")
        process.send_signal(signal.SIGTERM)
        self.finish(process)


class SandboxTest(television.Case):
    def test_sandbox_lets_our_libraries_in(self):
        # Not every container lets a program make a sandbox; then the page's process cannot start, and the browser must say so.
        able = subprocess.run(["bwrap", "--ro-bind", "/", "/", "--unshare-all", "true"], stderr=subprocess.DEVNULL).returncode == 0
        run = self.finish(self.start("playing.html", "--sandbox", "--wait", "typeof video.play === 'function' && video.playState === 6",
                                     "--wait", "console.log('live'), true", "--quit-after", "60"))
        self.assertEqual((run.status, run.logged()), (0, ["live"]) if able else (1, []), run.output)


class StatusTest(television.Case):
    def test_uncaught_error_with_source_and_line(self):
        run = self.browse("wrong.html", "--wait", "done", status=1)
        self.assertIn("uncaught: Error: here (%spages/wrong.html:8)" % self.base, run.output)
        self.assertRegex(run.output, r"uncaught: unhandled rejection: Error: there \(.*wrong\.html:10\)")
        self.assertIn("uncaught: {code: 7} (%spages/wrong.html:9)" % self.base, run.output)
        self.assertRegex(run.output, r"console\.warn: careful \{a: 1, b: \[\"x\", null\]\} <p id=\"p\"> \(.*wrong\.html:7\)")

    def test_what_the_page_deals_with_itself_is_no_uncaught_error(self):
        run = self.browse("handled.html", "--wait", "done", status=1)
        self.assertEqual([line.split(" (")[0] for line in run.output.splitlines()],
                         ["uncaught: Error: not known", "uncaught: unhandled rejection: not kept"])

    def test_texts_of_any_letters(self):
        run = self.browse("keys.html", "--wait", r"console.log('a\0b', 'x\ud800', 'y'), true")
        self.assertEqual(run.logged(), ["a\\x00b x\ufffd y"])

    def test_a_logged_object_brings_no_window_with_it(self):
        run = self.browse("keys.html", "--wait", "console.log({ window, self: [window], name: 'x' }), true", "--wait", "console.log(window), true")
        self.assertEqual(run.logged(), ['{window: Window {…}, self: [Window {…}], name: "x"}', "Window {…}"])

    def test_what_a_page_says_in_windows_of_its_own_and_when_it_goes(self):
        run = self.browse("talking.html", "--wait", "location.search === '?gone' && done", status=1)
        self.assertEqual([line.split(" (")[0] for line in run.output.splitlines()],
                         ["console.alert: one", "console.alert: two?", "console.alert: three", "console.log: true null", "console.log: goes 1 true",
                          "uncaught: Error: too late"])

    def test_page_that_is_not_well_formed(self):
        run = self.browse("malformed.hbbtv", "--wait", "document.readyState === 'complete'", status=1)
        self.assertNotIn("rendering", run.output)
        self.assertRegex(run.output, r"uncaught: not well-formed XML: .*line 6.*br.* \(%spages/malformed\.hbbtv:6\)" % re.escape(self.base))

    def test_files_of_the_page_that_are_not_there(self):
        run = self.browse("missing.html", "--wait", "done")
        for name in ("none.js", "none.css", "none.png"):
            self.assertIn("console.error: cannot be loaded: %spages/%s (%spages/missing.html)" % (self.base, name, self.base), run.output)

    def test_time_out(self):
        run = self.browse("player.html", "--wait", "done", "--wait", "false // never", "--quit-after", "8", status=3)
        self.assertIn('avc-browser: time-out after 8 s, in step 2, "--wait false // never"; give a longer --quit-after\n', run.output)
        run = self.browse(self.base + "fault/hang/page.html", "--wait", "true", "--quit-after", "0.5", status=3)
        self.assertIn("avc-browser: time-out after 0.5 s, before the page was loaded; give a longer --quit-after\n", run.output)

    def test_page_that_is_not_there(self):
        for address, answer in (("pages/none.html", 404), ("fault/status/401/page.html", 401), ("fault/status/503/page.html", 503)):
            run = self.browse(self.base + address, "--wait", "true", status=1)
            self.assertEqual(run.output, "avc-browser: %s%s: the server answers with status %d\n" % (self.base, address, answer))
        with socket.socket() as unused:
            unused.bind(("127.0.0.1", 0))  # and does not listen
            run = self.browse("http://127.0.0.1:%d/" % unused.getsockname()[1], "--wait", "true", "--screenshot", "a.png", status=1)
        self.assertIn("Connection refused", run.output)
        self.assertColour(run.picture("a.png"), (100, 100), (16, 20, 24), 2)  # the browser says so on the screen

    def test_what_is_no_page(self):
        for address, kind in (("two.mp4", "video/mp4"), ("stamp", "application/octet-stream"), ("dash/av.mpd", "application/dash+xml")):
            run = self.browse(self.base + address, "--wait", "true", "--screenshot", "a.png", status=1)
            self.assertEqual(run.output, "avc-browser: %s%s: %s is no type of a page\n" % (self.base, address, kind))
            self.assertColour(run.picture("a.png"), (100, 100), (16, 20, 24), 2)

    def test_answer_without_anything_leaves_the_page_as_it_is(self):
        run = self.browse("nothing.html", "--wait", "done")
        self.assertEqual(run.logged(), ["still here"])
        self.assertIn("console.error: cannot be loaded: dvb://current.ait/1.2: there is no program for such an address here\n", run.output)

    def test_frames_that_cannot_be_shown(self):
        run = self.browse("lost-frames.html", "--wait", "document.readyState === 'complete'", "--wait", "done")
        for name, reason in (("none.html", "the server answers with status 404"), ("../stamp", "application/octet-stream is no type of a page")):
            self.assertIn("console.error: cannot be loaded: %s: %s\n" % (self.base + os.path.normpath("pages/" + name), reason), run.output)

    def test_wrong_command_lines(self):
        for arguments, words in ((["--bogus"], "unknown option --bogus"), (["--window", "big"], "--window needs a size"),
                                 (["--keys", "Purple"], 'there is no key "Purple"'), (["--quit-after", "soon"], "number of seconds"),
                                 (["--wait", "done("], 'an expression of JavaScript, not "done(": '), (["--window", "100x100"], "from 160x160 to 16384x16384"), (["--country", "DE"], "--country needs three capital letters"),
                                 (["--audio-languages", "deu,en"], "--audio-languages needs codes of three small letters"),
                                 (["--ui-languages", "deu,"], "--ui-languages needs"), (["--user-agent", "\udcff"], "--user-agent needs a text in UTF-8"),
                                 (["--clearkey-file", "/"], "cannot read /"), (["--user-agent", "a\nb"], "--user-agent needs printable ASCII characters"),
                                 (["--user-agent", "Fernseher \u00e4"], "--user-agent needs printable ASCII characters"),
                                 (["--screenshot", "a.jpg"], "--screenshot needs the name of a .png file"),
                                 (["--screenshot", "a.png@soon"], "--screenshot needs the name of a .png file"),
                                 (["--film", "a.ppm@1,2"], "--film needs the name of a .ppm file"),
                                 (["--film", "a.ppm@1280,0,1x1"], "--film: the part at 1280,0 lies outside the window of 1280x720"),
                                 (["--trace", "/nowhere/trace"], "cannot write the trace file")):
            run = self.finish(self.start("player.html", *arguments))
            self.assertEqual(run.status, 2, run.output)
            self.assertIn(words, run.output)
            self.assertEqual(run.output.count("\n"), 1, run.output)

    def test_trace_that_is_not_whole_is_told(self):
        run = self.finish(self.start("player.html", "--trace", "/dev/full", "--wait", "true"))
        self.assertEqual(run.output.count("avc-browser: the trace file /dev/full is not whole: No space left on device\n"), 1, run.output)

    def test_standard_streams_that_are_closed_lead_to_nowhere(self):
        for closed in ("<&-", ">&-", "2>&-", "<&- >&- 2>&-"):
            command = 'exec "$0" "$@" ' + closed
            status = subprocess.run(["sh", "-c", command, television.options.avc_browser, "--private", "--wait", "done", "--quit-after", "60",
                                     self.base + "pages/broadcast.html"], cwd=self.folder, env=self.environment(), check=False,
                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=90).returncode
            self.assertEqual(status, 0, closed)

    def test_library_that_is_none(self):
        run = self.finish(self.start("player.html", "--media-library", "/etc/hostname"))
        self.assertEqual(run.status, 2, run.output)
        self.assertIn("media library", run.output)

    def test_library_that_takes_no_subtitle_settings(self):
        scripted = os.path.join(os.path.dirname(television.options.avc_browser), "..", "lib", "libscriptedmedia.so")
        run = self.finish(self.start("keys.html", "--media-library", scripted, "--subtitle-settings", "1:"))
        self.assertEqual(run.status, 2, run.output)
        self.assertIn("avc-browser: this media library takes no subtitle settings; leave --subtitle-settings out", run.output)
        run = self.finish(self.start("keys.html", "--media-library", scripted, "--keys", "Subtitles", "--status"))
        self.assertIn("avc-browser: this media library takes no subtitle settings\n", run.output)

    def test_page_in_an_endless_loop_does_not_keep_the_browser(self):
        began = time.monotonic()
        run = self.finish(self.start("loop.html", "--quit-after", "2"))
        self.assertLess(time.monotonic() - began, 30)
        self.assertEqual(run.status, 0, run.output)

    def test_page_that_never_comes_is_a_time_out(self):
        run = self.finish(self.start(self.base + "fault/hang/never.html", "--quit-after", "2"))
        self.assertEqual((run.status, run.output), (3, "avc-browser: time-out after 2 s, before the page was loaded; give a longer --quit-after\n"))

    def test_port_that_the_engine_keeps_pages_from_is_told(self):
        run = self.finish(self.start("http://127.0.0.1:6000/", "--quit-after", "20", "--wait", "true"))
        self.assertEqual(run.status, 1, run.output)
        self.assertRegex(run.output, r"^avc-browser: http://127\.0\.0\.1:6000/: .+\n$")

    def test_help_names_every_option(self):
        run = self.finish(self.start("player.html", "--help"))
        self.assertEqual(run.status, 0)
        for name in ("--script", "--keys", "--wait", "--screenshot", "--status", "--film", "--quit-after", "--trace", "--overlay", "--window", "--private",
                     "--sandbox", "--plugin", "--media-library", "--country", "--audio-languages",
                     "--parental-limit", "--parental-country", "--clearkey", "--clearkey-file"):
            self.assertTrue(re.search(r"^ .*%s\b" % name, run.output, re.MULTILINE), name)


if __name__ == "__main__":
    television.main()
