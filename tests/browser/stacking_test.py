#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Videos that share a part of the screen lie above one another as their elements do."""
import television

ONE, TWO = (0, 0, 640, 360), (320, 0, 640, 360)
OWN, NEAR, FAR = (0, 0, 640, 360), (213, 0, 640, 360), (427, 0, 640, 360)


class StackingCase(television.Case):
    def assertShows(self, picture, box, *bars):
        for bar in bars:
            self.assertBar(picture, *box, bar)

    def assertOneAbove(self, run, *names):
        for name in names:
            with self.subTest(name):
                picture = run.picture(name + ".png")
                self.assertShows(picture, ONE, *range(6))
                self.assertShows(picture, TWO, 3, 4, 5)

    def assertTwoAbove(self, run, *names):
        for name in names:
            with self.subTest(name):
                picture = run.picture(name + ".png")
                self.assertShows(picture, ONE, 0, 1, 2)
                self.assertShows(picture, TWO, *range(6))


class StackingTest(StackingCase):
    def test_order_of_the_document_and_indices(self):
        run = self.browse("stacked.html", *television.steps("start", "index", "higherIndex", "negative", "reset", "anotherSource"))
        self.assertTwoAbove(run, "start", "higherIndex", "reset", "anotherSource")
        self.assertOneAbove(run, "index", "negative")
        self.assertAllClosed(run)

    def test_document_of_the_television_type(self):
        run = self.browse("stacked.hbbtv", *television.steps("start", "index"))
        self.assertTwoAbove(run, "start")
        self.assertOneAbove(run, "index")

    def test_stacking_contexts_hold_what_is_in_them(self):
        run = self.browse("stacked.html", *television.steps("start", "byAncestor", "byOpacity", "opaque"))
        self.assertOneAbove(run, "byAncestor", "byOpacity")
        self.assertTwoAbove(run, "opaque")

    def test_shadow_trees_are_where_their_hosts_are(self):
        run = self.browse("stacked.html", *television.steps("startInShadowTrees", "byAncestor", "reset", "moved", "movedBack"))
        self.assertTwoAbove(run, "startInShadowTrees", "reset", "movedBack")
        self.assertOneAbove(run, "byAncestor", "moved")

    def test_change_that_only_the_engine_knows_of(self):
        run = self.browse("stacked.html", *television.steps("start", "byRule", "withoutRule"))
        self.assertOneAbove(run, "byRule")
        self.assertTwoAbove(run, "withoutRule")

    def test_elements_that_change_places(self):
        run = self.browse("stacked.html", *television.steps("start", "moved", "movedBack"))
        self.assertOneAbove(run, "moved")
        self.assertTwoAbove(run, "movedBack")

    def test_full_screen_keeps_its_place(self):
        run = self.browse("stacked.html", *television.steps("start", "fullScreen", "notFullScreen"))
        picture = run.picture("fullScreen.png")
        self.assertShows(picture, TWO, *range(6))
        self.assertShows(picture, (0, 0, 1280, 720), 0, 5)
        self.assertTwoAbove(run, "notFullScreen")

    def test_video_changes_no_later_than_the_page(self):
        film = self.browse("stacked.html", "--film", "film.ppm@0,100,1280x320", "--wait", "did('start')", "--wait", "did('toAndFro')").film("film.ppm")
        begin = film.changes(lambda at: min(at(100, 310)) > 200)[0]
        mark = film.changes(lambda at: min(at(700, 310)) > 200)
        blue = film.changes(lambda at: at(370, 20)[2] > 128 > at(370, 20)[0])  # a bar of the first, where the second is red
        blue = [frame for frame in blue if frame > begin][:20]
        self.assertEqual((len(mark), len(blue)), (20, 20))
        lags = [after - before for before, after in zip(mark, blue)]
        # A machine that does something else may hold one of the two up now and then; what waits for the page does so for a while only.
        self.assertGreaterEqual(sum(-1 <= lag <= 0 for lag in lags), 17, lags)

    def test_page_that_replaces_what_the_order_stands_on(self):
        run = self.browse("stacked.html", *television.steps("start", "tampered"))
        self.assertOneAbove(run, "tampered")


class FrameTest(StackingCase):
    def test_frames_and_videos_of_the_page_in_one_order(self):
        run = self.browse("stacked-frames.html", "--wait", "done", "--screenshot", "a.png", "--wait", "raised(near, 1)", "--screenshot", "b.png",
                          "--wait", "raised(far, -1)", "--screenshot", "c.png", "--wait", "raised(near, -2)", "--screenshot", "d.png")
        first, near, far, own = (run.picture(name + ".png") for name in "abcd")
        self.assertShows(first, OWN, 0, 1, 2, 3)
        self.assertShows(first, FAR, *range(6))
        self.assertShows(near, NEAR, *range(6))
        self.assertShows(near, FAR, 4, 5)
        self.assertShows(far, NEAR, *range(6))
        self.assertShows(own, OWN, *range(6))
        self.assertShows(own, FAR, 2, 3, 4, 5)
        self.assertAllClosed(run)


class PaintOrderTest(television.Case):
    def test_is_the_engines_own(self):
        run = self.browse("paint-order.html", "--wait", "done")
        self.assertEqual(len(run.logged()), 1, run.output)


if __name__ == "__main__":
    television.main()
