// SPDX-License-Identifier: Apache-2.0
// Players paint, applications move, viewers look: all at the same time.
#include <array>
#include <atomic>
#include <thread>

#include "tests/platform/plane/plane_fixture.h"

namespace {

using media::Rect;
using media::VideoSurface;
using namespace plane_test;

constexpr int kPlayers = 4;
constexpr int kFrames = 60;
constexpr std::array<Colour, kPlayers> kColours{kRed, kGreen, kBlue, kWhite};

Rect placeOf(int player) { return {player * 160, player * 90, 320, 180}; }

TEST_F(PlaneTest, EndsRight_AfterPaintingMovingArrangingClearingAndLookingAtOnce) {
  std::array<VideoSurface, kPlayers> surfaces{VideoSurface(m_plane, 1), VideoSurface(m_plane, 2), VideoSurface(m_plane, 3),
                                              VideoSurface(m_plane, 4)};
  std::atomic<bool> done = false;
  std::vector<std::thread> painters;
  for (int player = 0; player < kPlayers; ++player) {
    painters.emplace_back([&, player] {
      const SamplePtr sample = makeSolid({32, 18}, kColours[static_cast<std::size_t>(player)]);
      for (int i = 0; i < kFrames; ++i) surfaces[static_cast<std::size_t>(player)].paint(sample.get());
    });
  }
  std::thread mover([&] {
    for (int i = 0; !done; ++i)
      surfaces[static_cast<std::size_t>(i % kPlayers)].setRect({i % 700 - 100, i % 300, 160 + i % 99, 90});
  });
  std::thread clearer([&] {
    for (int i = 0; !done; ++i) surfaces[static_cast<std::size_t>(i % kPlayers)].clear();
  });
  std::thread arranger([&] {
    for (unsigned long i = 0; !done; ++i) m_plane.arrange(std::array{i % 4 + 1, (i + 1) % 4 + 1, i % 3});
  });
  std::thread viewer([&] {
    while (!done) {
      const Pixels pixels(m_plane);
      EXPECT_LE(m_plane.frames(), static_cast<unsigned long>(kPlayers * kFrames));
    }
  });
  for (std::thread& painter : painters) painter.join();
  done = true;
  for (std::thread* const thread : {&mover, &arranger, &clearer, &viewer}) thread->join();
  m_plane.arrange({});

  for (int player = 0; player < kPlayers; ++player) {
    VideoSurface& surface = surfaces[static_cast<std::size_t>(player)];
    EXPECT_EQ(surface.frames(), static_cast<unsigned long>(kFrames));
    surface.setRect(placeOf(player));
    surface.paint(makeSolid({32, 18}, kColours[static_cast<std::size_t>(player)]).get());
  }
  Image expected;
  for (int player = 0; player < kPlayers; ++player) expected.fill(placeOf(player), kColours[static_cast<std::size_t>(player)]);
  EXPECT_TRUE(looksLike(m_plane, expected));
}

TEST_F(PlaneTest, EverySnapshotIsOneWholePicture_WhileAnotherThreadPaints) {
  VideoSurface surface(m_plane);
  const SamplePtr red = makeSolid({64, 36}, kRed);
  const SamplePtr blue = makeSolid({64, 36}, kBlue);
  surface.paint(red.get());
  std::atomic<bool> done = false;
  std::thread painter([&] {
    for (int i = 0; !done; ++i) surface.paint(i % 2 == 0 ? blue.get() : red.get());
  });

  for (int look = 0; look < 12; ++look) {
    const Pixels pixels(m_plane);
    const Colour first = pixels.at(0, 0);
    EXPECT_TRUE(first == kRed || first == kBlue);
    EXPECT_TRUE(pixels.isOneColour());
  }
  done = true;
  painter.join();
}

TEST_F(PlaneTest, PlayersComeAndGo_WhileOthersPaint) {
  std::vector<std::thread> players;
  for (int player = 0; player < kPlayers; ++player) {
    players.emplace_back([&, player] {
      const SamplePtr sample = makeSolid({32, 18}, kColours[static_cast<std::size_t>(player)]);
      for (int i = 0; i < 20; ++i) {
        VideoSurface surface(m_plane);
        surface.setRect(placeOf(player));
        surface.paint(sample.get());
      }
    });
  }
  for (std::thread& player : players) player.join();

  EXPECT_TRUE(shows(m_plane, {}, kBlack));
}

}  // namespace
