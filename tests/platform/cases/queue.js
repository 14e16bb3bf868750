// SPDX-License-Identifier: Apache-2.0
// queue(): the next media follows the present one; only one may wait.

runCase(async () => {
  const subject = new Subject();
  await subject.play();
  checkEqual(subject.object.queue(CONFIG.next), true, "queue of the next");
  checkEqual(subject.object.queue(CONFIG.next), false, "queue of one more");
  subject.object.seek(CONFIG.duration - 600);
  await subject.expect(BUFFERING, PLAYING);
  await until(() => subject.object.data === CONFIG.base + CONFIG.next, () => `the queued source; data is ${subject.object.data}`);
  await until(() => subject.object.playState === PLAYING, () => `to play it; came: ${subject.states}`);
  check(subject.states.includes(FINISHED), `no end of the first; came: ${subject.states}`);
  await subject.reach(300);
  subject.states.length = 0;
  await subject.stop();
  subject.close();
});
