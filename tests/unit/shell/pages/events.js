// SPDX-License-Identifier: Apache-2.0
page(async () => {
  const element = makeObject();
  const log = [];
  element.onPlayStateChange = function (value) {
    log.push('handler ' + value);
    equal(this, element, 'this in the handler');
    equal(arguments.length, 1, 'arguments of the handler');
  };
  element.addEventListener('PlayStateChange', (event) => {
    log.push('listener ' + event.state);
    equal(event.target, element, 'the target');
    equal(event.type, 'PlayStateChange', 'the type');
    equal(event.bubbles, false, 'no bubbling');
  });
  document.body.appendChild(element);
  document.body.addEventListener('PlayStateChange', () => check(false, 'the event bubbled'));
  const twice = () => log.push('twice');
  element.addEventListener('PlayStateChange', twice);
  element.addEventListener('PlayStateChange', twice);
  const speeds = [];
  element.addEventListener('PlaySpeedChanged', { handleEvent: (event) => speeds.push(event.speed) });
  let handle = 0;
  element.onPlayerHandle = (value) => { handle = value; };  // an event without a row
  const finished = state(element, 5);
  element.data = 'clip?ms=200';
  element.play();
  await finished;

  const states = log.filter((line) => line.startsWith('handler')).map((line) => Number(line.slice(8)));
  equal(states.filter((value) => value !== 7).join(), '3,4,1,5', 'the states in order');
  check(states.indexOf(7) >= 0 && states.indexOf(7) < states.indexOf(4), 'ready before it buffers');
  for (let i = 0; i < log.length; i += 3) {
    check(log[i].startsWith('handler') && log[i + 1].startsWith('listener') && log[i + 2] === 'twice', 'handler, then listeners: ' + log[i]);
  }
  element.removeEventListener('PlayStateChange', twice);
  await pause(0);
  equal(speeds[0], 1, 'the speed as a field');
  check(handle > 0, 'a handler without a row');

  // pause, seek, go on, stop
  element.data = 'clip?ms=5000';
  let reached = state(element, 1);
  element.play(1);
  await reached;
  reached = state(element, 2);
  element.play(0);
  await reached;
  const moved = next(element, 'PlayPositionChanged');
  equal(element.seek(1500), true, 'seek');
  equal((await moved).position, 1500, 'the position as a field');
  reached = state(element, 1);
  element.play(1);
  await reached;
  equal(element.stop(), true, 'stop');
  equal(element.playState, 0, 'stopped when stop returns');
  await state(element, 0);

  // An error
  element.data = 'clip?error=5';
  reached = state(element, 6);
  element.play(1);
  await reached;
  equal(element.error, 5, 'its code');
  const source = element.data;
  equal(element.stop(), true, 'stop in error');
  equal(element.data, source, 'the source stays');
  equal(element.playState, 0, 'stopped after an error');
  reached = state(element, 6);
  equal(element.play(1), true, 'play after an error');
  await reached;
  equal(element.error, 5, 'the same once more');
});
