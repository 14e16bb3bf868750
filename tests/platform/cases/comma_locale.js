// SPDX-License-Identifier: Apache-2.0
// Under a locale whose decimal sign is a comma, speeds and positions cross the media library with a point. run_case.py looks at the
// trace; here the numbers must mean the same to the viewer.

runCase(async () => {
  const subject = new Subject();
  await subject.play();
  await subject.reach(200);
  checkEqual(subject.object.seek(1500.75), true, "seek");
  await subject.expect(BUFFERING, PLAYING);
  checkBetween(subject.position, 1500, 2300, "position after the seek");
  subject.object.play(0.5);
  await until(() => subject.object.speed === 0.5, () => `speed 0.5; it is ${subject.object.speed}`);
  await subject.expectSpeed(300, 0.3, 0.7, "position per time at speed 0.5");
  checkBetween(subject.object.playTime, 3800, 4200, "playTime");
  await subject.stop();
  subject.close();
});
