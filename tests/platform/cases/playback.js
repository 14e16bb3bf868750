// SPDX-License-Identifier: Apache-2.0
// One format, one thing that a viewer does with it. CONFIG: path, type, action, duration (ms).

const actions = {
  async play() {
    const subject = new Subject();
    await subject.play();
    await subject.reach(300);
    checkEqual(subject.object.speed, 1, "speed");
    await subject.lengthKnown();
    checkBetween(subject.object.playTime, CONFIG.duration - 200, CONFIG.duration + 200, "playTime");
    check(subject.object.error == null, `error: is ${subject.object.error}, must be no value`);
    await subject.expectSpeed(400, 0.7, 1.3, "position per time at speed 1");
    await subject.stop();
    subject.close();
  },

  async pause() {
    const subject = new Subject();
    await subject.play();
    await subject.reach(400);
    checkEqual(subject.object.play(0), true, "play(0)");
    await subject.expect(PAUSED);
    await until(() => subject.object.speed === 0, () => `speed 0; it is ${subject.object.speed}`);
    const paused = subject.position;
    await quietTime(300);
    checkEqual(subject.position, paused, "position while paused");
    checkEqual(subject.object.play(1), true, "play(1)");
    await subject.expect(PLAYING);
    await until(() => subject.position > paused, () => `to go on from ${paused}; it is ${subject.position}`);
    checkBetween(subject.position, paused, paused + 1000, "position after the pause");
    await subject.stop();
    subject.close();
  },

  async seek() {
    const subject = new Subject();
    await subject.play();
    await subject.reach(200);
    checkEqual(subject.object.seek(2500), true, "seek forward");
    await subject.expect(BUFFERING, PLAYING);
    checkBetween(subject.position, 2450, 3300, "position after the seek forward");
    await until(() => subject.positions.some((each) => each >= 2450), () => `the position event; came: ${subject.positions}`);
    checkEqual(subject.object.seek(500), true, "seek backward");
    await subject.expect(BUFFERING, PLAYING);
    checkBetween(subject.position, 450, 1300, "position after the seek backward");
    await subject.stop();
    subject.close();
  },

  async seek_paused() {
    const subject = new Subject();
    await subject.play();
    await subject.reach(200);
    subject.object.play(0);
    await subject.expect(PAUSED);
    const told = subject.positions.length;
    checkEqual(subject.object.seek(1500), true, "seek while paused");
    await until(() => subject.positions.length > told, () => "a position event");
    checkBetween(subject.position, 1450, 1550, "position after the seek");
    await subject.lengthKnown();
    checkEqual(subject.object.seek(CONFIG.duration * 10), false, "seek beyond the end");
    checkBetween(subject.position, 1450, 1550, "position after the refused seek");
    subject.object.play(1);
    await subject.expect(PLAYING);
    await subject.reach(1600);
    checkBetween(subject.position, 1600, 2600, "position after going on");
    await subject.stop();
    subject.close();
  },

  fast: () => atSpeed(2, 300, 600),
  slow: () => atSpeed(0.5, 300, 300),
  reverse: () => atSpeed(-1, 3000, 500),

  async rewind() {
    const subject = new Subject();
    await subject.play();
    await subject.reach(200);
    subject.object.seek(2500);
    await subject.expect(BUFFERING, PLAYING);
    checkEqual(subject.object.play(-2), true, "play(-2)");
    await until(() => subject.speeds.includes(-2), () => `speed -2; came: ${subject.speeds}`);
    await subject.expectSpeed(300, -3, -1.2, "position per time at speed -2");
    await subject.expect(PAUSED);
    await until(() => subject.object.speed === 0, () => `speed 0; it is ${subject.object.speed}`);
    await until(() => subject.position === 0, () => `position 0; it is ${subject.position}`);
    subject.object.play(1);
    await subject.expect(PLAYING);
    await subject.reach(200);
    await subject.stop();
    subject.close();
  },

  async end() {
    const subject = new Subject();
    await subject.play();
    await subject.reach(200);
    subject.object.seek(CONFIG.duration - 800);
    await subject.expect(BUFFERING, PLAYING);
    await subject.expect(FINISHED);
    const length = subject.object.playTime;
    checkBetween(length, CONFIG.duration - 200, CONFIG.duration + 200, "playTime");
    checkBetween(subject.position, length - 150, length + 150, "position at the end");
    await until(() => subject.object.speed === 0, () => `speed 0; it is ${subject.object.speed}`);
    checkEqual(subject.object.seek(0), false, "seek at the end");
    const ready = subject.ready;
    checkEqual(subject.object.play(1), true, "play(1) at the end");
    await subject.expect(CONNECTING, BUFFERING, PLAYING);
    checkEqual(subject.ready, ready + 1, "the number of times that it said it is ready");
    checkBetween(subject.position, 0, 1500, "position after the replay");
    await subject.reach(subject.position + 200);
    await subject.stop();
    subject.close();
  },

  async stop() {
    const subject = new Subject();
    await subject.play();
    await subject.reach(500);
    await subject.stop();
    checkEqual(subject.object.speed, 0, "speed");
    await until(() => subject.position === 0, () => `position 0; it is ${subject.position}`);
    checkEqual(subject.object.stop(), true, "stop() when stopped");
    checkEqual(subject.object.play(1), true, "play(1) after the stop");
    await subject.expect(CONNECTING, BUFFERING, PLAYING);
    checkBetween(subject.position, 0, 1500, "position after the stop");
    await subject.reach(subject.position + 200);
    await subject.stop();
    subject.close();
  },
};

async function atSpeed(wanted, start, span) {
  const subject = new Subject();
  await subject.play();
  if (start > 1000) {
    subject.object.seek(start);
    await subject.expect(BUFFERING, PLAYING);
  } else {
    await subject.reach(start);
  }
  checkEqual(subject.object.play(wanted), true, `play(${wanted})`);
  await until(() => subject.speeds.includes(wanted), () => `speed ${wanted}; came: ${subject.speeds}`);
  checkEqual(subject.object.speed, wanted, "speed");
  const bounds = [0.6 * wanted, 1.4 * wanted].sort((a, b) => a - b);
  await subject.expectSpeed(span, ...bounds, `position per time at speed ${wanted}`);
  checkEqual(subject.object.play(1), true, "play(1)");
  await until(() => subject.object.speed === 1, () => `speed 1; it is ${subject.object.speed}`);
  await subject.expectSpeed(200, 0.5, 1.5, "position per time at speed 1");
  await subject.expect();
  await subject.stop();
  subject.close();
}

runCase(actions[CONFIG.action]);
