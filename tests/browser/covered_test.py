#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Video is seen through whatever the page paints below its element, and through nothing else."""
import television

PORTAL = (10, 10, 48)
BELOW = (48, 48, 10)
TEAL = (10, 48, 48)


class CoveredTest(television.Case):
    def pictures(self, *names):
        run = self.browse("covered.html", *television.steps(*names))
        self.assertAllClosed(run)
        return [run.picture(name + ".png") for name in names]

    def assertPage(self, picture):
        """Nothing of the plane is to be seen."""
        for x in range(10, 1280, 50):
            for y in range(10, 720, 50):
                self.assertIn(picture.at(x, y), (PORTAL, BELOW, (10, 48, 10)), "at %d,%d" % (x, y))

    def test_ancestors_and_what_lies_below_do_not_hide_it(self):
        start, moved = self.pictures("start", "moved")
        self.assertCard(start, 40, 40, 320, 180)
        self.assertColour(start, (30, 30), BELOW, 0)
        self.assertCard(moved, 420, 320, 320, 180)
        self.assertColour(moved, (200, 130), BELOW, 0)

    def test_what_lies_above_stays(self):
        start, above = self.pictures("start", "above")
        for x in range(60, 340, 20):
            clear, dim = start.at(x, 190), above.at(x, 190)
            for before, after in zip(clear, dim):
                self.assertAlmostEqual(before / 2, after, delta=2, msg="at %d" % x)
        self.assertColour(above, (130, 215), TEAL, 0)  # within the video
        self.assertColour(above, (130, 300), TEAL, 0)
        self.assertEqual(start.at(60, 100), above.at(60, 100))

    def test_object_without_a_picture_leaves_the_page_whole(self):
        idle, _, stopped, another, hidden, shown, small = self.pictures("idle", "start", "stopped", "another", "hidden", "shown", "small")
        for picture in (idle, stopped, hidden, small):
            self.assertPage(picture)
        for picture in (another, shown):
            self.assertCard(picture, 40, 40, 320, 180)

    def test_every_size(self):
        _, uneven, size, scaled, zoomed, thirds = self.pictures("start", "uneven", "unevenSize", "scaled", "zoomed", "zoomedToThirds")
        self.assertCard(uneven, 40, 41, 320, 179)
        self.assertCard(size, 40, 40, 320, 180)
        self.assertCard(scaled, 40, 40, 480, 270)
        self.assertCard(zoomed, 20, 20, 160, 90)
        self.assertCard(thirds, 40, 40, 320, 180)

    def test_what_the_element_does_with_its_contents(self):
        for picture in self.pictures("start", "flexed", "flexedUpwards", "grid"):
            self.assertCard(picture, 40, 40, 320, 180)

    def test_what_cannot_cut_off_does_not(self):
        [in_span] = self.pictures("inSpan")
        self.assertCard(in_span, 20, 20, 320, 180)

    def test_full_screen_is_in_the_place_of_all_that_lies_below(self):
        _, _, full, normal = self.pictures("start", "above", "fullScreen", "notFullScreen")
        for bar in (0, 3, 5):
            self.assertBar(full, 0, 0, 1280, 720, bar)
        self.assertColour(full, (130, 300), TEAL, 0)
        self.assertColour(normal, (130, 300), TEAL, 0)
        self.assertColour(normal, (700, 300), BELOW, 0)

    def test_what_is_cut_off_is_not_seen(self):
        _, cut = self.pictures("start", "cutOff")
        for bar in range(6):
            self.assertColour(cut, (40 + round((bar + 0.5) * 320 / 6), 150), (10, 48, 10), 0)
        self.assertGreater(cut.at(66, 120)[0], 200)

    def test_what_is_cut_off_between_two_pixels_is_seen_up_to_there(self):
        _, whole, _, cut, free = self.pictures("start", "clippedUnevenly", "evenly", "cutUnevenly", "notCut")
        for bar in range(6):
            self.assertBar(whole, 21, 20, 400, 225, bar)
        self.assertGreater(min(whole.at(419, 100)[1:]), 200)
        self.assertEqual(whole.at(421, 100), (10, 48, 10))
        self.assertGreater(max(cut.at(219, 100)), 200)
        for x in (221, 300):
            self.assertEqual(cut.at(x, 100), (10, 48, 10), x)
        self.assertCard(free, 20, 20, 320, 180)

    def test_rounded_corners_that_cut_off_become_square_meanwhile(self):
        _, rounded, stopped = self.pictures("start", "rounded", "notRounded")
        self.assertCard(rounded, 40, 40, 320, 180)
        self.assertColour(stopped, (22, 22), (10, 48, 10), 0)  # the page, outside the portal's corner
        self.assertColour(stopped, (60, 60), BELOW, 0)

    def test_what_a_page_does_to_the_contents_of_the_element(self):
        _, emptied, copied, other = self.pictures("start", "emptied", "copied", "otherType")
        self.assertCard(emptied, 40, 40, 320, 180)
        self.assertCard(copied, 40, 40, 320, 180)
        self.assertPage(other)

    def test_elements_in_the_flow_of_a_text_and_in_tables(self):
        in_line, in_table, removed = self.pictures("inLine", "inTable", "removed")
        for picture in (in_line, in_table):
            left = next(x for x in range(1280) if max(picture.at(x, 150)) > 200)
            top = next(y for y in range(720) if max(picture.at(left + 300, y)) > 200)
            self.assertCard(picture, left, top, 320, 180)
        self.assertColour(removed, (400, 200), TEAL, 0)

    def test_what_lies_above_though_it_is_earlier_in_the_document_stays(self):
        [picture] = self.pictures("underEarlier")
        for bar in (0, 1, 3, 4, 5):
            self.assertBar(picture, 20, 20, 320, 180, bar)
        self.assertColour(picture, (130, 150), TEAL, 0)
        self.assertColour(picture, (130, 210), PORTAL, 0)

    def test_boxes_of_the_page_stay_as_they_are(self):
        self.assertEqual(self.browse("laid-out.html", "--wait", "done").logged(), ["fine"])

    def test_in_a_frame_that_paints_below_its_page(self):
        [framed] = self.pictures("inFrame")
        self.assertCard(framed, 20 + 10 + 30, 20 + 10 + 40, 320, 180)
        self.assertColour(framed, (40, 40), BELOW, 0)
        self.assertColour(framed, (800, 40), television.BLACK, 0)


class PaintedTest(television.Case):
    """Each way to paint, with an element that it must not hide, or must not be hidden by."""

    def see(self, *names):
        run = self.browse("painted.html", *television.steps(*names))
        return [run.picture(name + ".png") for name in names]

    def test_whatever_paints_below_does_not_hide_it(self):
        names = ("inert", "behindDialog", "notPointedAt", "beforeItsContents", "inShadowTree", "inClosedShadowTree", "inTableRow", "onBackdrop")
        for name, picture in zip(names, self.see(*names)):
            with self.subTest(name):
                for bar in range(6):
                    self.assertBar(picture, 320, 180, 640, 360, bar)
                self.assertEqual(picture.at(200, 600)[0], 0)

    def test_text_below_is_below(self):
        [picture] = self.see("text")
        letters = [(x, y) for x in range(396, 650) for y in range(262, 310) if min(picture.at(x, y)) > 230]
        self.assertEqual(letters, [])
        self.assertCard(picture, 320, 180, 640, 360)

    def test_small_things_above_what_is_not_positioned_stay(self):
        for picture in self.see("clockOnPage", "clockOnBody"):
            self.assertColour(picture, (1145, 55), television.WHITE, 0)
            for bar in range(5):
                self.assertBar(picture, 0, 0, 1280, 720, bar)

    def test_small_things_above_do_not_cost_the_picture(self):
        [picture] = self.see("clockOnWrapper")
        for bar in range(5):
            self.assertBar(picture, 0, 0, 1280, 720, bar)

    def test_what_has_faded_out_costs_nothing(self):
        [picture] = self.see("menuFadedOut")
        for bar in range(6):
            self.assertBar(picture, 0, 0, 1280, 720, bar)

    def test_contents_that_may_be_left_out_do_not_stop_the_page(self):
        [picture] = self.see("contentLeftOut")
        for bar in range(6):
            self.assertBar(picture, 320, 180, 640, 360, bar)

    def test_full_screen_from_within_something_transformed_is_the_whole_screen(self):
        for name, picture in zip(("scaled", "moved", "zoomed"), self.see("scaledFullScreen", "movedFullScreen", "zoomedFullScreen")):
            with self.subTest(name):
                for bar in range(6):
                    self.assertBar(picture, 0, 0, 1280, 720, bar)
                for x, y in ((3, 3), (1276, 3), (3, 716), (1276, 716)):
                    self.assertNotEqual(picture.at(x, y), (17, 34, 51), "at %d,%d" % (x, y))

    def test_object_without_a_size_has_that_of_a_replaced_element(self):
        self.see("withoutASize")


if __name__ == "__main__":
    television.main()
