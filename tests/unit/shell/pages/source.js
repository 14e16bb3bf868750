// SPDX-License-Identifier: Apache-2.0
page(async () => {
  const element = makeObject();
  const at = (text) => { element.data = text; return element.data; };
  equal(at('clip.mp4'), 'http://media.example/app/clip.mp4', 'beside the page');
  equal(at('../x/clip.mp4'), 'http://media.example/x/clip.mp4', 'one up');
  equal(at('/top.mp4'), 'http://media.example/top.mp4', 'from the root');
  equal(at('//other.example/c.mp4'), 'http://other.example/c.mp4', 'another host');
  equal(at('?x=1'), 'http://media.example/app/index.html?x=1', 'a query alone');
  equal(at('a b.mp4').includes(' '), false, 'a blank is no part of an address');
  equal(at('https://h.example/a/../b.mp4'), 'https://h.example/a/../b.mp4', 'an absolute address stays as it is');
  equal(at('HTTP://h.example/b.mp4'), 'http://h.example/b.mp4', 'the scheme in small letters');
  equal(element.getAttribute('data'), 'HTTP://h.example/b.mp4', 'the attribute keeps what was written');
  equal(at('file:///etc/hosts').startsWith('file:'), false, 'a file cannot be a source');

  // No source: stopped, released, and told.
  for (const drop of [() => { element.data = ''; }, () => element.removeAttribute('data'), () => { element.data = null; }]) {
    element.data = 'clip?ms=5000';
    const playing = state(element, 1);
    element.play(1);
    await playing;
    const stopped = state(element, 0);
    drop();
    equal(element.playState, 0, 'stopped at once');
    equal(element.data, '', 'no source');
    await stopped;
    equal(element.playState, 0, 'still stopped');
  }
  element.data = '';  // without a source nothing happens

  // The same object plays again afterwards.
  element.data = 'clip?ms=100';
  const finished = state(element, 5);
  element.play(1);
  await finished;
  equal(element.playPosition, 100, 'at the end');

  // Another type on a playing object stops it first.
  element.data = 'clip?ms=5000';
  const playing = state(element, 1);
  element.play(1);
  await playing;
  const stopped = state(element, 0);
  element.type = 'video/mpeg';
  equal(element.playState, 0, 'stopped by the type');
  await stopped;
  equal(element.type, 'video/mpeg', 'the new type');
});
