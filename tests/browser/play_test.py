#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A page plays a film: the least that a television browser does."""
import television


class PlayTest(television.Case):
    def test_page_plays_film_over_plane(self):
        run = self.browse("player.html", "--wait", "done", "--screenshot", "shot.png")
        self.assertEqual(run.logged(), ["played"])
        shot = run.picture("shot.png")
        self.assertEqual((shot.width, shot.height), (1280, 720))
        self.assertCard(shot, 320, 180, 640, 360)
        self.assertColour(shot, (150, 60), (0, 0, 192), 4)
        self.assertColour(shot, (1100, 650), television.BLACK, 0)
        self.assertColour(shot, (343, 500), (128, 0, 0))  # red through the glass
        self.assertAllClosed(run)


if __name__ == "__main__":
    television.main()
