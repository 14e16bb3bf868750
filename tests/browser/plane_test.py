#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Video appears exactly where the element is, whatever moves it."""
import os
import subprocess

import television


class GeometryTest(television.Case):
    def assertNothing(self, picture):
        for point in ((60, 60), (560, 60), (200, 200), (700, 400), (900, 600)):
            self.assertColour(picture, point, television.BLACK, 0)

    def test_video_follows_box(self):
        run = self.browse("geometry.html", *television.steps("start", "byStyle", "byClass", "byAttribute", "byTransition", "byScrolling", "byAncestor"))
        self.assertCard(run.picture("start.png"), 40, 40, 320, 180)
        self.assertCard(run.picture("byStyle.png"), 700, 500, 320, 180)
        self.assertCard(run.picture("byClass.png"), 400, 120, 640, 360)
        self.assertCard(run.picture("byAttribute.png"), 40, 40, 160, 90)
        self.assertCard(run.picture("byTransition.png"), 800, 40, 320, 180)
        self.assertCard(run.picture("byScrolling.png"), 40, 100, 320, 180)
        self.assertCard(run.picture("byAncestor.png"), 540, 40, 320, 180)

    def test_next_source_is_in_the_same_box(self):
        run = self.browse("geometry.html", *television.steps("start", "another", "queued", "byStyle"))
        for name in ("another.png", "queued.png"):
            with self.subTest(name):
                self.assertCard(run.picture(name), 40, 40, 320, 180)
        self.assertCard(run.picture("byStyle.png"), 700, 500, 320, 180)

    def test_hidden_removed_and_full_screen(self):
        run = self.browse("geometry.html", *television.steps("start", "hidden", "shown", "notDisplayed", "displayed", "tall", "fullScreen",
                                                  "notFullScreen", "removed"))
        self.assertNothing(run.picture("hidden.png"))
        self.assertCard(run.picture("shown.png"), 40, 40, 320, 180)
        self.assertNothing(run.picture("notDisplayed.png"))
        self.assertCard(run.picture("displayed.png"), 40, 40, 320, 180)
        tall = run.picture("tall.png")  # the aspect ratio stays: black above and below
        self.assertCard(tall, 100, 210, 320, 180)
        self.assertColour(tall, (200, 150), television.BLACK, 0)
        self.assertCard(run.picture("fullScreen.png"), 0, 0, 1280, 720)
        self.assertCard(run.picture("notFullScreen.png"), 100, 210, 320, 180)
        self.assertNothing(run.picture("removed.png"))
        self.assertAllClosed(run)

    def test_full_screen_shows_what_is_shown_at_all(self):
        run = self.browse("geometry.html", *television.steps("start", "hidden", "fullScreen", "shown", "notDisplayed", "displayed", "tiny", "detached",
                                                  "attached", "fadedOut"))
        for name in ("fullScreen", "notDisplayed", "detached", "fadedOut"):
            with self.subTest(name):
                self.assertNothing(run.picture(name + ".png"))
        for name in ("shown", "displayed", "tiny", "attached"):
            with self.subTest(name):
                self.assertCard(run.picture(name + ".png"), 0, 0, 1280, 720)

    def test_what_has_faded_out_shows_nothing(self):
        run = self.browse("geometry.html", *television.steps("start", "fadedOut", "fadedIn"))
        self.assertNothing(run.picture("fadedOut.png"))
        self.assertCard(run.picture("fadedIn.png"), 40, 40, 320, 180)

    def test_video_is_inside_border_and_padding(self):
        run = self.browse("geometry.html", *television.steps("start", "edged", "scaled"))
        edged = run.picture("edged.png")
        self.assertCard(edged, 115, 115, 320, 180)
        self.assertColour(edged, (104, 200), (0, 0, 204), 0)
        self.assertCard(run.picture("scaled.png"), 108, 108, 160, 90)

    def test_background_of_the_element_itself_is_behind_its_video(self):
        run = self.browse("geometry.html", *television.steps("start", "onBackground"))
        self.assertCard(run.picture("onBackground.png"), 40, 40, 320, 180)

    def test_video_is_zoomed_with_its_page(self):
        for size, scale in (("1280x720", 1), ("640x360", 0.5)):
            with self.subTest(size):
                run = self.browse("geometry.html", "--window", size, *television.steps("start", "zoomed"))
                self.assertCard(run.picture("zoomed.png"), *(round(scale * 0.375 * length) for length in (408, 208, 640, 360)))

    def test_hidden_application_shows_nothing(self):
        run = self.browse("geometry.html", *television.steps("start", "hiddenApplication", "shownApplication"))
        self.assertNothing(run.picture("hiddenApplication.png"))
        self.assertCard(run.picture("shownApplication.png"), 40, 40, 320, 180)

    def test_other_window_sizes_scale_page_and_video(self):
        run = self.browse("geometry.html", "--window", "640x480", *television.steps("start", "byClass"))
        picture = run.picture("byClass.png")
        self.assertEqual((picture.width, picture.height), (640, 480))
        self.assertCard(picture, 200, 120, 320, 180)  # half of 400,120, and 60 black lines above


class ResizeTest(television.Case):
    def test_page_and_video_grow_and_shrink_with_the_window(self):
        with open(os.path.join(self.folder, "count.js"), "w", encoding="utf-8") as file:
            file.write("window.presses = 0; addEventListener('keydown', function () { presses += 1; });")
        sizes = ((640, 480), (1000, 400), (1280, 720))
        shots = [part for count in range(1, len(sizes) + 1) for part in ("--wait", "presses >= %d" % count, "--screenshot", "%d.png" % count)]
        process = self.start("geometry.html", "--script", "count.js", *television.steps("start"), *shots, "--quit-after", "90")
        for count, size in enumerate(sizes):
            name = os.path.join(self.folder, "%d.png" % count if count > 0 else "start.png")
            self.assertTrue(television.until(lambda name=name: os.path.exists(name) or process.poll() is not None))
            self.resizeWindow("Where the video is", *size)
            self.pressOnKeyboard("a")
        run = self.finish(process)
        self.assertEqual(run.status, 0, run.output)
        for count, (size, box) in enumerate(zip(sizes, ((20, 80, 160, 90), (167, 22, 178, 100), (40, 40, 320, 180))), 1):
            with self.subTest(size):
                picture = run.picture("%d.png" % count)
                self.assertEqual((picture.width, picture.height), size)
                self.assertCard(picture, *box)


class SeveralTest(television.Case):
    def test_later_objects_lie_above_earlier_ones(self):
        run = self.browse("several.html", "--wait", "done", "--screenshot", "a.png")
        picture = run.picture("a.png")
        self.assertBar(picture, 0, 0, 640, 360, 0)
        self.assertBar(picture, 0, 0, 640, 180 / 0.64, 5)  # what the second one leaves of the first one's last bar
        for bar in range(5):
            self.assertBar(picture, 320, 180, 640, 360, bar)
        self.assertCard(picture, 960, 540, 320, 180)
        self.assertAllClosed(run)


class FollowTest(television.Case):
    PLACES = [16 * jump for jump in range(1, 41)]

    def lags(self, query):
        """For each jump of the box: how many painted frames after the page's the video's is."""
        film = self.browse("follow.html" + query, "--film", "film.ppm@0,0,1280x120", "--wait", "done").film("film.ppm")
        mark = film.firstFrames(self.PLACES, 20, lambda pixel: min(pixel) > 200)
        video = film.firstFrames(self.PLACES, 100, lambda pixel: max(pixel) > 60)
        self.assertNotIn(None, mark)
        self.assertNotIn(None, video)
        return [after - before for before, after in zip(mark, video)]

    def assertFollows(self, query):
        lags = self.lags(query)
        # A machine that does something else may hold one of the two up now and then.
        self.assertGreaterEqual(lags.count(0), 30, lags)
        self.assertGreaterEqual(sum(abs(lag) <= 1 for lag in lags), 36, lags)

    def test_video_is_there_in_the_very_frame_that_shows_the_new_layout(self):
        self.assertFollows("")

    def test_also_while_it_plays(self):
        self.assertFollows("?plays")

    def test_also_in_a_frame_that_is_moved(self):
        self.assertFollows("?framed")

    def test_also_on_a_page_that_paints_below_it(self):
        self.assertFollows("?covered")

    def test_film_that_cannot_be_written(self):
        run = self.finish(self.start("player.html", "--film", "/nowhere/film.ppm"))
        self.assertEqual(run.status, 2, run.output)
        self.assertIn("cannot write the film /nowhere/film.ppm", run.output)


class FlickerTest(television.Case):
    # What the screen shows, 25 times a second: the middle of each bar of the video, and a part of the page that stays as it is.
    FILTER = ("split[a][b];[a]crop=640:80:0:100,scale=6:1:flags=area[video];[b]crop=60:40:1000:600,scale=6:1:flags=area[page];"
              "[video][page]vstack,format=rgb24")
    BYTES = 6 * 2 * 3

    def film(self):
        name = os.path.join(self.folder, "film.rgb")
        command = ["ffmpeg", "-v", "error", "-f", "x11grab", "-draw_mouse", "0", "-framerate", "25", "-video_size", "1280x720", "-i",
                   self.screen.name, "-filter_complex", self.FILTER, "-f", "rawvideo", name]
        return subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL), name

    def pictures(self, name):
        with open(name, "rb") as file:
            film = file.read()
        for at in range(0, len(film) - self.BYTES + 1, self.BYTES):
            pixels = [tuple(film[at + i:at + i + 3]) for i in range(0, self.BYTES, 3)]
            yield pixels[:6], pixels[6:]

    @staticmethod
    def like(pixel, colour):
        return max(abs(a - b) for a, b in zip(pixel, colour)) <= 90

    def assertOnceOnly(self, seen, what):
        """It comes, stays and goes."""
        self.assertGreater(sum(seen), 10, what)
        first, last = seen.index(True), len(seen) - 1 - seen[::-1].index(True)
        self.assertEqual(seen[first:last + 1].count(False), 0, "%s: %s" % (what, "".join(" #"[one] for one in seen)))

    def assertSteady(self, query):
        camera, name = self.film()
        self.addCleanup(camera.kill)
        self.browse("flicker.html" + query, "--wait", "done")
        camera.communicate(b"q", timeout=television.PATIENCE_S)
        pictures = list(self.pictures(name))
        shown = [sum(self.like(pixel, bar) for pixel, bar in zip(video, television.BARS)) >= 4 for video, _ in pictures]
        self.assertOnceOnly(shown, "video")
        self.assertOnceOnly([all(self.like(pixel, (0, 128, 0)) for pixel in page) for _, page in pictures], "page")

    def test_neither_video_nor_page_vanishes_at_start_seek_pause_and_speed(self):
        self.assertSteady("")

    def test_nor_on_a_page_that_paints_below_the_video(self):
        self.assertSteady("?covered")


class FrameTest(television.Case):
    def test_video_in_frames_is_where_the_frame_is(self):
        run = self.browse("frames.html", "--wait", "ready === 2", "--screenshot", "a.png", "--wait", "moved()", "--screenshot", "b.png",
                          "--wait", "without()", "--screenshot", "c.png")
        first = run.picture("a.png")
        self.assertCard(first, 20 + 16 + 30, 30 + 16 + 40, 320, 180)
        self.assertCard(first, 600 + 16 + 30, 300 + 16 + 40, 320, 180)
        self.assertCard(run.picture("b.png"), 700 + 16 + 30, 300 + 16 + 40, 320, 180)
        last = run.picture("c.png")
        self.assertColour(last, (100, 120), television.BLACK, 0)
        self.assertCard(last, 700 + 16 + 30, 300 + 16 + 40, 320, 180)
        self.assertAllClosed(run)

    def test_video_in_a_frame_that_has_faded_out_is_not_seen(self):
        fade = "document.querySelector('iframe').style.opacity = "
        run = self.browse("frames.html", "--wait", "ready === 2", "--wait", fade + "'0'", "--screenshot", "out.png", "--wait", fade + "'1'",
                          "--screenshot", "in.png")
        self.assertColour(run.picture("out.png"), (100, 120), television.BLACK, 0)
        self.assertCard(run.picture("out.png"), 600 + 16 + 30, 300 + 16 + 40, 320, 180)
        self.assertCard(run.picture("in.png"), 20 + 16 + 30, 30 + 16 + 40, 320, 180)

    def test_video_in_frames_that_are_scaled_or_in_a_shadow_tree(self):
        run = self.browse("placed-frames.html", "--wait", "ready === 3", "--screenshot", "a.png")
        picture = run.picture("a.png")
        self.assertCard(picture, 20 + (16 + 30) * 3 // 2, 30 + (16 + 40) * 3 // 2, 480, 270)
        self.assertCard(picture, 700 + 16 + 30, 400 + 16 + 40, 320, 180)


if __name__ == "__main__":
    television.main()
