// SPDX-License-Identifier: Apache-2.0
// A live presentation with a window: positions count from the start of the window, which moves on with the clock, so the position
// stands while it plays. run_case.py looks whether new segments were asked for. CONFIG: path, type, window (ms).

const WATCHED_MS = 8000;

runCase(async () => {
  const subject = new Subject();
  await subject.play();
  checkBetween(subject.object.playTime, CONFIG.window[0], CONFIG.window[1], "playTime");
  const first = subject.position;
  checkBetween(first, 0, subject.object.playTime, "position");
  await quietTime(WATCHED_MS);
  await subject.expect();
  checkBetween(subject.position, first - 3500, first + 3500, "position after some time");

  checkEqual(subject.object.seek(4000), true, "seek back in the window");
  await subject.expect(BUFFERING, PLAYING);
  checkBetween(subject.position, 2000, 6000, "position after the seek");
  subject.object.play(0);
  await subject.expect(PAUSED);
  subject.object.play(1);
  await subject.expect(PLAYING);
  await subject.stop();
  subject.close();
});
