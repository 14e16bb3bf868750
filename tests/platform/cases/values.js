// SPDX-License-Identifier: Apache-2.0
// What script reads and what odd calls give, on a live object. Deliberate oddities are listed here so that nobody repairs them.

runCase(async () => {
  const subject = new Subject();
  const object = subject.object;
  checkEqual(object.playState, STOPPED, "playState at first");
  checkEqual(object.data, "", "data at first");
  check(object.error == null, "error at first is no value");
  checkEqual([object.COMPONENT_TYPE_VIDEO, object.COMPONENT_TYPE_AUDIO, object.COMPONENT_TYPE_SUBTITLE], [0, 1, 2], "component types");
  checkEqual(object.play("2"), undefined, "play with a text");
  checkEqual([object.setVolume(0), object.setVolume(101), object.setVolume(102), object.setVolume(-1)], [true, true, false, false],
    "setVolume");
  checkEqual(object.setVolume(-0.7), true, "setVolume(-0.7) is 0");
  for (const name of ["next", "previous", "getSinkProtocolInfo", "getTransportStateVariables", "setTransportStateVariables"]) {
    checkEqual(object[name](), undefined, name);
  }
  object.playState = 5;
  checkEqual(object.playState, STOPPED, "playState after a write");
  object.loop = "forever";
  checkEqual(object.loop, "", "loop after a refused value");
  object.loop = "3";
  checkEqual(object.loop, "3", "loop");
  object.persist = true;
  checkEqual(object.persist, true, "persist");
  await subject.play();
  checkEqual(object.seek(1e9), false, "seek far beyond the end");
  checkEqual(typeof object.playPosition, "number", "the type of playPosition");
  checkEqual(object.playState, PLAYING, "playState");
  await subject.stop();
  subject.close();
});
