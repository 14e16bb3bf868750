// SPDX-License-Identifier: Apache-2.0
// 50 seeks in one turn: more than the queue takes. The newest accepted one wins, the object stays usable.

runCase(async () => {
  const subject = new Subject();
  await subject.play();
  await subject.reach(200);
  let newest = null;
  for (let count = 0; count < 50; count += 1) {
    const target = 4000 + ((count * 7919) % 12000);
    if (subject.object.seek(target)) newest = target;
  }
  check(newest !== null, "no seek at all was accepted");
  const near = () => subject.object.playState === PLAYING && subject.position >= newest && subject.position < newest + 1500;
  await until(near, () => `to play from ${newest}; state ${subject.object.playState}, position ${subject.position}`);
  await subject.reach(newest + 300);
  checkBetween(subject.position, newest + 300, newest + 3000, "position after the seeks");
  check(!subject.states.includes(ERROR), `an error state; came: ${subject.states}`);
  await subject.answered();
  subject.states.length = 0;

  subject.object.play(0);
  await subject.expect(PAUSED);
  subject.heard = 0;
  for (let count = 0; count < 50; count += 1) {
    const target = 2000 + ((count * 6007) % 14000);
    if (subject.object.seek(target)) newest = target;
  }
  await until(() => Math.abs(subject.position - newest) < 50, () => `position ${newest}; it is ${subject.position}`);
  await subject.answered();
  checkBetween(subject.position, newest - 50, newest + 50, "position of the newest seek");
  checkEqual(subject.object.play(1), true, "play(1)");
  await subject.expect(PLAYING);
  await subject.reach(newest + 200);
  await subject.stop();
  subject.close();
});
