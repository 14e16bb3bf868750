// SPDX-License-Identifier: Apache-2.0
// "userAgent" reaches the server; run_case.py looks at what was asked for.

runCase(async () => {
  const subject = new Subject();
  subject.object.userAgent = CONFIG.agent;
  await subject.play();
  await subject.stop();
  subject.close();
});
