#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Objects in the shadow trees of a page's own elements live, are shown and end as others do."""
import television

PORTAL = (10, 10, 48)
INNER = (48, 48, 10)


class ComponentsTest(television.Case):
    def pictures(self, *names):
        run = self.browse("components.html", *television.steps(*names))
        self.assertAllClosed(run)
        return [run.picture(name + ".png") for name in names]

    def test_video_is_seen_in_its_whole_box_whatever_is_painted_below(self):
        inside, in_slot = self.pictures("inside", "inSlot")
        self.assertCard(inside, 40, 40, 320, 180)
        self.assertCard(in_slot, 40, 220, 320, 180)
        self.assertColour(inside, (500, 300), INNER, 0)
        self.assertColour(inside, (20, 20), PORTAL, 0)

    def test_object_ends_with_its_host_and_when_it_leaves_the_shadow_tree(self):
        run = self.browse("components.html", "--wait", "did('inside')", "--wait", "did('hostGoes')", "--wait", "did('elementGoes')")
        self.assertAllClosed(run)

    def test_object_that_is_used_again_at_once_plays(self):
        run = self.browse("components.html", "--wait", "did('usedAgainAtOnce')")
        self.assertAllClosed(run)

    def test_object_plays_on_when_its_host_moves(self):
        self.browse("components.html", "--wait", "did('hostMoves')")


if __name__ == "__main__":
    television.main()
