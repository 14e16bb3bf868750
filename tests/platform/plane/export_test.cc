// SPDX-License-Identifier: Apache-2.0
// The plane as shells see it: the functions they look up, another process's mapping, and systems that cannot share.
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>

#include "tests/platform/plane/plane_fixture.h"

namespace {

using media::Rect;
using media::VideoSurface;
using namespace plane_test;

/// What a viewer in another process does; its answers are exit codes, since it must not use the test's own machinery.
class Viewer {
 public:
  explicit Viewer(const MediaPlaneExport& plane) : m_export(plane) {
    m_bytes = static_cast<unsigned char*>(mmap(nullptr, plane.memoryBytes, PROT_READ, MAP_SHARED, plane.memoryFd, 0));
  }
  bool mapped() const { return m_bytes != MAP_FAILED; }
  const MediaPlaneHeader& header() const { return *reinterpret_cast<const MediaPlaneHeader*>(m_bytes); }
  bool waitForTick() const {
    pollfd bell{m_export.tickFd, POLLIN, 0};
    std::uint64_t rings = 0;
    return poll(&bell, 1, 20000) == 1 && read(m_export.tickFd, &rings, sizeof rings) == sizeof rings && rings > 0;
  }
  /// @return false when the copy was overtaken.
  bool copyNewest(unsigned char* pixels) const {
    const std::uint32_t sequence = load(header().sequence);
    const std::uint32_t front = load(header().front);
    std::memcpy(pixels, m_bytes + header().firstBufferOffset + std::size_t{front} * kMediaPlaneBytes, kMediaPlaneBytes);
    __sync_synchronize();  // the copy is done before the sequence is read again
    return load(header().sequence) - sequence < header().bufferCount - 1;
  }

 private:
  static std::uint32_t load(const std::uint32_t& value) {
    return __atomic_load_n(&value, __ATOMIC_ACQUIRE);  // std::atomic_ref wants memory that it may write
  }
  MediaPlaneExport m_export;
  unsigned char* m_bytes;
};

enum ViewerResult { kGood, kNoMapping, kWrongHeader, kNoTick, kWrongPixels, kCouldWrite, kTornPicture, kTooSlow };

Colour colourIn(const unsigned char* pixels, int x, int y) {
  const unsigned char* const pixel = pixels + y * kMediaPlaneStride + x * 4;
  return pixel[0] | Colour{pixel[1]} << 8 | Colour{pixel[2]} << 16;
}

bool headerIsRight(const MediaPlaneHeader& header, unsigned int bytes) {
  return header.magic == MediaPlaneHeader::kMagic && header.width == 1280 && header.height == 720 && header.stride == 5120 &&
         header.bufferCount == 4 && header.firstBufferOffset + header.bufferCount * std::uint32_t{kMediaPlaneBytes} <= bytes;
}

ViewerResult seeOneRedPicture(const MediaPlaneExport& plane) {
  const Viewer viewer(plane);
  if (!viewer.mapped()) return kNoMapping;
  if (!headerIsRight(viewer.header(), plane.memoryBytes)) return kWrongHeader;
  if (!viewer.waitForTick()) return kNoTick;
  std::vector<unsigned char> pixels(kMediaPlaneBytes);
  if (!viewer.copyNewest(pixels.data())) return kTornPicture;
  const bool right = colourIn(pixels.data(), 320, 180) == kRed && colourIn(pixels.data(), 959, 539) == kRed &&
                     colourIn(pixels.data(), 319, 180) == kBlack && colourIn(pixels.data(), 960, 539) == kBlack;
  return right ? kGood : kWrongPixels;
}

ViewerResult tryToWrite(const MediaPlaneExport& plane) {
  void* const bytes = mmap(nullptr, plane.memoryBytes, PROT_READ | PROT_WRITE, MAP_SHARED, plane.memoryFd, 0);
  if (bytes != MAP_FAILED) return kCouldWrite;
  if (ftruncate(plane.memoryFd, 0) == 0) return kCouldWrite;
  return kGood;
}

/// Looks until ten copies were whole; each must be of one colour.
ViewerResult seeWholePictures(const MediaPlaneExport& plane) {
  const Viewer viewer(plane);
  if (!viewer.mapped()) return kNoMapping;
  std::vector<unsigned char> pixels(kMediaPlaneBytes);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (int whole = 0; whole < 10;) {
    if (std::chrono::steady_clock::now() > deadline) return kTooSlow;
    if (!viewer.copyNewest(pixels.data())) continue;
    ++whole;
    if (std::memcmp(pixels.data(), pixels.data() + 4, kMediaPlaneBytes - 4) != 0) return kTornPicture;
  }
  return kGood;
}

template <typename Look>
pid_t startViewer(Look look, const MediaPlaneExport& plane) {
  const pid_t child = fork();
  if (child == 0) _exit(look(plane));
  return child;
}

int resultOf(pid_t child) {
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(PlaneTest, IsSeenByAnotherProcess_ThroughItsOwnMapping) {
  VideoSurface surface(m_plane);
  surface.setRect({320, 180, 640, 360});
  MediaPlaneExport plane;
  ASSERT_TRUE(m_plane.exportTo(plane));
  const pid_t child = startViewer(seeOneRedPicture, plane);
  ASSERT_GT(child, 0);

  surface.paint(makeSolid({64, 36}, kRed).get());

  EXPECT_EQ(resultOf(child), kGood);
}

TEST_F(PlaneTest, GivesViewersWholePictures_WhilePaintingAsFastAsItCan) {
  VideoSurface surface(m_plane);
  const SamplePtr samples[] = {makeSolid({64, 36}, kRed), makeSolid({64, 36}, kBlue), makeSolid({64, 36}, kWhite)};
  surface.paint(samples[0].get());
  MediaPlaneExport plane;
  ASSERT_TRUE(m_plane.exportTo(plane));
  const pid_t child = startViewer(seeWholePictures, plane);
  ASSERT_GT(child, 0);

  int status = 0;
  pid_t ended = 0;
  for (int i = 0; ended == 0; ++i) {
    surface.paint(samples[i % 3].get());
    ended = waitpid(child, &status, WNOHANG);
  }

  ASSERT_EQ(ended, child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), kGood);
}

TEST_F(PlaneTest, CannotBeWrittenOrCutByAViewer) {
  MediaPlaneExport plane;
  ASSERT_TRUE(m_plane.exportTo(plane));
  const pid_t child = startViewer(tryToWrite, plane);
  ASSERT_GT(child, 0);

  EXPECT_EQ(resultOf(child), kGood);
}

TEST_F(PlaneTest, CountsPictures_AndNamesTheNewestBuffer) {
  VideoSurface surface(m_plane);
  MediaPlaneExport plane;
  ASSERT_TRUE(m_plane.exportTo(plane));
  const Viewer viewer(plane);
  ASSERT_TRUE(viewer.mapped());
  EXPECT_EQ(viewer.header().sequence, 0u);
  std::vector<unsigned char> seen(kMediaPlaneBytes);
  for (std::uint32_t i = 1; i <= 7; ++i) {
    surface.paint(makeSolid({64, 36}, 0x111111 * i).get());
    EXPECT_EQ(viewer.header().sequence, i);
    EXPECT_EQ(viewer.header().front, i % 4);
    ASSERT_TRUE(viewer.copyNewest(seen.data()));
    EXPECT_EQ(colourIn(seen.data(), 640, 360), 0x111111 * i);
  }
}

TEST_F(PlaneTest, NamesTheNewestPictureInWhichSomethingHasMoved) {
  VideoSurface surface(m_plane);
  MediaPlaneExport plane;
  ASSERT_TRUE(m_plane.exportTo(plane));
  const Viewer viewer(plane);
  ASSERT_TRUE(viewer.mapped());
  surface.setRect({0, 0, 320, 180});  // nothing to see yet
  surface.paint(makeSolid({64, 36}, 0x111111).get());
  EXPECT_EQ(viewer.header().moved, 0u);
  surface.setRect({320, 0, 320, 180});
  EXPECT_EQ(viewer.header().moved, 2u);
  surface.paint(makeSolid({64, 36}, 0x222222).get());
  EXPECT_EQ(viewer.header().sequence, 3u);
  EXPECT_EQ(viewer.header().moved, 2u);
}

/// While one lives, no file descriptors can be made in this process.
class NoNewFiles {
 public:
  NoNewFiles() {
    getrlimit(RLIMIT_NOFILE, &m_before);
    rlimit none = m_before;
    none.rlim_cur = 0;
    setrlimit(RLIMIT_NOFILE, &none);
  }
  NoNewFiles(const NoNewFiles&) = delete;
  NoNewFiles& operator=(const NoNewFiles&) = delete;
  ~NoNewFiles() { setrlimit(RLIMIT_NOFILE, &m_before); }

 private:
  rlimit m_before{};
};

TEST(UnsharedPlaneTest, WorksInItsOwnProcess_WhenTheSystemGivesNoSharedMemory) {
  std::unique_ptr<media::VideoPlane> plane;
  {
    const NoNewFiles limit;
    plane = std::make_unique<media::VideoPlane>();
  }
  MediaPlaneExport untouched{-7, -8, 9};
  VideoSurface surface(*plane);
  surface.setRect({10, 10, 64, 36});
  for (const Colour colour : {kRed, kGreen, kBlue, kWhite}) {
    surface.paint(makeSolid({64, 36}, colour).get());
    EXPECT_TRUE(shows(*plane, {10, 10, 64, 36}, colour));
  }

  EXPECT_FALSE(plane->exportTo(untouched));
  EXPECT_EQ(untouched.memoryFd, -7);
}

TEST(PlaneFunctionsTest, RefuseASnapshotThatDoesNotFit) {
  std::vector<unsigned char> pixels(kMediaPlaneBytes + 16, 0xaa);

  EXPECT_EQ(mediaPlaneSnapshot(pixels.data(), kMediaPlaneBytes - 1), 0);
  EXPECT_EQ(mediaPlaneSnapshot(pixels.data(), 0), 0);
  EXPECT_EQ(mediaPlaneSnapshot(nullptr, kMediaPlaneBytes), 0);
  EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 0xaa), kMediaPlaneBytes + 16);
  EXPECT_EQ(mediaPlaneSnapshot(pixels.data(), kMediaPlaneBytes + 16), 1);
  EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 0xaa), 16);
}

TEST(PlaneFunctionsTest, ShowTheProcessesPlane) {
  const unsigned long before = mediaPlaneFrames();
  std::vector<unsigned char> pixels(kMediaPlaneBytes);
  {
    VideoSurface surface;
    surface.paint(makeSolid({64, 36}, kGreen).get());
    ASSERT_EQ(mediaPlaneSnapshot(pixels.data(), kMediaPlaneBytes), 1);
  }

  EXPECT_EQ(mediaPlaneFrames(), before + 1);
  EXPECT_EQ(colourIn(pixels.data(), 0, 0), kGreen);
  EXPECT_EQ(colourIn(pixels.data(), 1279, 719), kGreen);
}

TEST(PlaneFunctionsTest, ExportTheProcessesPlane) {
  MediaPlaneExport plane;

  EXPECT_EQ(mediaPlaneExport(nullptr), 0);
  ASSERT_EQ(mediaPlaneExport(&plane), 1);
  const Viewer viewer(plane);
  ASSERT_TRUE(viewer.mapped());
  EXPECT_TRUE(headerIsRight(viewer.header(), plane.memoryBytes));
}

}  // namespace
