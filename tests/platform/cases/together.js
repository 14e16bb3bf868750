// SPDX-License-Identifier: Apache-2.0
// Three objects play at once, each on its own.

runCase(async () => {
  const subjects = CONFIG.paths.map(([, type]) => new Subject(type));
  await Promise.all(subjects.map((subject, index) => subject.play(CONFIG.paths[index][0])));
  await Promise.all(subjects.map((subject) => subject.reach(500)));
  subjects[1].object.play(0);
  await subjects[1].expect(PAUSED);
  const others = [subjects[0].position, subjects[2].position];
  await subjects[0].reach(others[0] + 200);
  await subjects[2].reach(others[1] + 200);
  for (const subject of subjects) {
    await subject.stop();
    subject.close();
  }
});
