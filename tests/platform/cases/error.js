// SPDX-License-Identifier: Apache-2.0
// A source that fails: exactly one error state, the right code, and the next source plays. CONFIG: path, type, code, patience (ms).

runCase(async () => {
  const subject = new Subject();
  await subject.open();
  check(subject.object.error == null, `error before: is ${subject.object.error}, must be no value`);
  checkEqual(subject.object.play(1), true, "play(1)");
  const last = () => subject.states[subject.states.length - 1];
  await until(() => last() === ERROR, () => `the error; came: ${subject.states}`, CONFIG.patience);
  checkEqual(subject.object.error, CONFIG.code, "error");
  checkEqual(subject.object.playState, ERROR, "playState");
  await quietTime(300);
  const states = subject.states.splice(0);
  checkEqual(states.slice(0, 2), [CONNECTING, BUFFERING], "the first play states");
  checkEqual(states.filter((each) => each === ERROR).length, 1, "the number of error states");
  checkEqual(states[states.length - 1], ERROR, "the last play state");

  subject.object.type = "video/mp4";
  await subject.play("short/two.mp4");
  await subject.reach(200);
  await subject.stop();
  subject.close();
});
