// SPDX-License-Identifier: Apache-2.0
// "nativeWindowSize" bounds the pictures that adaptive streaming fetches; run_case.py looks at what was asked for.

runCase(async () => {
  const subject = new Subject();
  subject.object.nativeWindowSize = CONFIG.size;
  await subject.play();
  await subject.reach(1500);
  await subject.stop();
  subject.close();
});
