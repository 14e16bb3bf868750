// SPDX-License-Identifier: Apache-2.0
// What a page may do inside a handler.
page(async () => {
  const actions = {
    stop: (element) => element.stop(),
    play: (element) => element.play(2),
    pause: (element) => element.play(0),
    data: (element) => { element.data = 'other?ms=50'; },
    'no data': (element) => { element.data = ''; },
    type: (element) => { element.type = 'text/html'; },
    remove: (element) => element.remove(),
    'remove and insert': (element) => { element.remove(); document.body.appendChild(element); },
    empty: () => { document.body.innerHTML = ''; },
  };
  for (const [name, act] of Object.entries(actions)) {
    for (const when of [3, 7, 4, 1, 5]) {
      const element = document.body.appendChild(makeObject());
      const done = new Promise((resolve) => {
        element.onPlayStateChange = (value) => {
          if (value !== when) return;
          element.onPlayStateChange = null;
          act(element);
          resolve();
        };
      });
      element.data = 'clip?ms=30';
      element.play(1);
      await done;
      check(true, name + ' in state ' + when);
      element.remove();
    }
  }

  // Removed: no event comes any more; put back within the same handler: it plays on.
  const gone = document.body.appendChild(makeObject());
  gone.data = 'clip?ms=50';
  let after = 0;
  let reached = state(gone, 1);
  gone.play(1);
  await reached;
  gone.onPlayStateChange = () => { after += 1; };
  gone.remove();
  const moved = document.body.appendChild(makeObject());
  moved.data = 'clip?ms=100';
  reached = state(moved, 1);
  moved.play(1);
  await reached;
  reached = state(moved, 5);
  const box = document.body.appendChild(document.createElement('div'));
  box.appendChild(moved);
  await reached;
  equal(after, 0, 'events of a removed object');
  equal(gone.playState, 0, 'a removed object starts anew when it is used again');
  equal(typeof gone.play, 'function', 'and is live');

  // An event without a row has a handler in markup, too.
  const same = document.body.appendChild(makeObject());
  same.setAttribute('onPlayerHandle', 'this.handle = handle');

  // The type that it has already is no other one.
  same.data = 'clip?ms=200';
  reached = state(same, 1);
  same.play(1);
  await reached;
  check(same.handle > 0, 'a handler in markup of an event without a row: ' + same.handle);
  same.type = same.getAttribute('type');
  equal(same.playState, 1, 'plays on');
  same.type = 'video/mpeg';
  equal(same.playState, 0, 'another type stops it');
});
