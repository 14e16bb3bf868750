// SPDX-License-Identifier: Apache-2.0
// Protected content. CONFIG: path, type; what the page is told when it cannot be played: state, content, system, issuer ("BASE" is
// the server's address); without state it plays; straight: without a seek.

function watchRights(subject) {
  const told = [];
  subject.object.onDRMRightsError = (...values) => told.push(values);
  return told;
}

async function checkPlays(subject, told) {
  await subject.play();
  await subject.reach(600);
  if (!CONFIG.straight) {
    checkEqual(subject.object.seek(3000), true, "seek(3000)");
    await subject.expect(BUFFERING, PLAYING);
  }
  await until(() => subject.states.includes(FINISHED), () => `the end; came: ${subject.states}`);
  subject.states.length = 0;
  checkEqual(told, [], "rights errors");
}

async function checkRefused(subject, told) {
  await subject.open();
  const began = Date.now();
  checkEqual(subject.object.play(1), true, "play(1)");
  await until(() => subject.states.includes(ERROR), () => `the error; came: ${subject.states}`, 20000);
  checkBetween(Date.now() - began, 0, 10000, "the time until the page knows");
  checkEqual(subject.object.error, 2, "error");
  const issuer = CONFIG.issuer.replace("BASE", CONFIG.base);
  checkEqual(told, [[CONFIG.state, CONFIG.content, CONFIG.system, issuer]], "what is told of the rights");
  await quietTime(300);
  checkEqual(told.length, 1, "the number of rights errors");
  checkEqual(subject.states.splice(0), [CONNECTING, BUFFERING, ERROR], "play states");

  subject.object.type = "video/mp4";
  await subject.play("short/two.mp4");
  await subject.reach(200);
  await subject.stop();
  checkEqual(told.length, 1, "rights errors of a clear source");
}

runCase(async () => {
  const subject = new Subject();
  const told = watchRights(subject);
  await (CONFIG.state === undefined ? checkPlays : checkRefused)(subject, told);
  subject.close();
});
