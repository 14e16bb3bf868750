// SPDX-License-Identifier: Apache-2.0
// A live presentation with a window: positions count from the start of the window that was there at first and go on with the clock, and
// so does the end of what can be reached. run_case.py looks whether new segments were asked for. CONFIG: path, type, window (ms).

const WATCHED_MS = 8000;
const BACK_MS = 6000;

runCase(async () => {
  const subject = new Subject();
  await subject.play();
  checkBetween(subject.object.playTime, CONFIG.window[0], CONFIG.window[1], "playTime");
  const first = subject.position;
  checkBetween(first, 0, subject.object.playTime, "position");
  await quietTime(WATCHED_MS);
  await subject.expect();
  checkBetween(subject.position - first, WATCHED_MS - 2500, WATCHED_MS + 2500, "how far it has come");

  checkBetween(subject.position, WATCHED_MS, subject.object.playTime, "position against the end that can be reached");
  const back = subject.object.playTime - BACK_MS;
  checkEqual(subject.object.seek(back), true, "seek back in the window");
  await subject.expect(BUFFERING, PLAYING);
  checkBetween(subject.position, back - 2000, back + 3000, "position after the seek");
  subject.object.play(0);
  await subject.expect(PAUSED);
  subject.object.play(1);
  await subject.expect(PLAYING);
  await subject.stop();
  subject.close();
});
