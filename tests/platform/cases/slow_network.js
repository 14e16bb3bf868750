// SPDX-License-Identifier: Apache-2.0
// A network slower than the media: it buffers, plays on, and comes to the end without an error.

runCase(async () => {
  const subject = new Subject();
  await subject.open();
  subject.object.play(1);
  await until(() => subject.states.includes(PLAYING), () => `to play; came: ${subject.states}`, 30000);
  await until(() => subject.states.includes(FINISHED), () => `the end; came: ${subject.states}`, 60000);
  const states = subject.states.splice(0);
  checkEqual(states.slice(0, 3), [CONNECTING, BUFFERING, PLAYING], "the first play states");
  checkEqual(states.slice(-2), [PLAYING, FINISHED], "the last play states");
  check(!states.includes(ERROR), `an error; came: ${states}`);
  subject.close();
});
