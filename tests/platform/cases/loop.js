// SPDX-License-Identifier: Apache-2.0
// "loop": the media starts again by itself at its end, without a change of state.

runCase(async () => {
  const subject = new Subject();
  subject.object.loop = "infinite";
  checkEqual(subject.object.loop, "infinite", "loop");
  await subject.play();
  subject.object.seek(CONFIG.duration - 600);
  await subject.expect(BUFFERING, PLAYING);
  await until(() => subject.position < 1000, () => `to start again; the position is ${subject.position}`);
  await subject.reach(1200);
  checkEqual(subject.object.playState, PLAYING, "playState");
  await subject.expect();
  await subject.stop();
  subject.close();
});
