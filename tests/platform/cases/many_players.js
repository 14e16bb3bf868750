// SPDX-License-Identifier: Apache-2.0
// 200 objects made and removed, in every phase of their life; afterwards the process has the threads it had before.

const ROUNDS = 200;

function threads() {
  return Number(/Threads:\s+(\d+)/.exec(readFile("/proc/self/status"))[1]);
}

const phases = [
  async () => {},
  async (subject) => { subject.object.data = CONFIG.path; },
  async (subject) => { subject.object.data = CONFIG.path; subject.object.play(1); },
  async (subject) => { await subject.open(); subject.object.play(1); },
  async (subject) => { await subject.play(); },
];

runCase(async () => {
  const first = new Subject();
  await first.play();
  await first.stop();
  first.close();
  await quietTime(200);
  const before = threads();
  for (let round = 0; round < ROUNDS; round += 1) {
    const subject = new Subject();
    await phases[round % phases.length](subject);
    document.body.removeChild(subject.object);
  }
  await until(() => threads() <= before + 2, () => `${before} threads; there are ${threads()}`);
  const last = new Subject();
  await last.play();
  await last.reach(300);
  await last.stop();
  last.close();
});
