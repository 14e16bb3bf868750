// SPDX-License-Identifier: Apache-2.0
// A queued item becomes the source at the end and plays on, at the speed of before.
page(async () => {
  for (const options of ['ms=100', 'ms=100&late=250']) {
    const element = document.body.appendChild(makeObject());
    element.data = 'first?ms=150';
    let reached = state(element, 1);
    element.play(2);
    await reached;
    equal(element.queue('second?' + options), true, 'queued');
    equal(element.queue('third?ms=1'), false, 'the queue holds one');
    await state(element, 5);
    reached = state(element, 1);
    await reached;
    equal(element.data, 'http://media.example/app/second?' + options, 'the queued item is the source');
    equal(element.getAttribute('data'), element.data, 'in the attribute, too');
    equal(element.speed, 2, 'the speed of before');
    await state(element, 5);
    await pause(50);
    equal(element.playState, 5, 'the end');
    element.remove();
  }

  // Emptied queues stay empty, and a page that takes over is left alone.
  const element = document.body.appendChild(makeObject());
  element.data = 'first?ms=100';
  const reached = state(element, 1);
  element.play(1);
  await reached;
  element.queue('second?ms=100');
  equal(element.queue(null), true, 'emptied');
  await state(element, 5);
  await pause(50);
  equal(element.playState, 5, 'nothing follows');
});
