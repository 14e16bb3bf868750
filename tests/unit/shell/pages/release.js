// SPDX-License-Identifier: Apache-2.0
// What a page hears when it takes the source away, whatever comes before and behind.
page(async () => {
  const told = [];
  const playing = async (element) => {
    const reached = state(element, 1);
    element.data = 'clip?ms=5000';
    element.play(1);
    await reached;
    told.length = 0;
  };
  const element = makeObject();
  element.addEventListener('PlayStateChange', ({ state: now }) => { if (now !== 7) told.push(now + ':' + element.playState); });

  for (const drop of [() => { element.data = ''; }, () => { element.type = 'video/mpeg'; }]) {
    await playing(element);
    let stopped = state(element, 0);
    element.stop();
    drop();
    await stopped;
    await pause(20);
    equal(told.join(), '0:0', 'stopped first, told once');
  }

  // At once on to the next source: stopped is told before what the next one does.
  await playing(element);
  let again = state(element, 1);
  element.data = '';
  element.data = 'clip?ms=5000';
  element.play(1);
  await again;
  check(told[0].startsWith('0:'), 'stopped comes first: ' + told);
  equal(told.filter((each) => each.startsWith('0:')).length, 1, 'and once');
  check(told[1].startsWith('3:'), 'then the next one connects: ' + told);

  // Given up twice: told once. Given up and removed: nobody listens any more.
  await playing(element);
  element.data = '';
  element.data = 'clip?ms=5000';
  element.data = '';
  await state(element, 0);
  await pause(20);
  equal(told.join(), '0:0', 'given up twice, told once');
  document.body.appendChild(element);
  await playing(element);
  element.data = '';
  element.remove();
  await pause(20);
  equal(told.join(), '', 'removed');

  // Stopped and told of it: a release has nothing to tell.
  document.body.appendChild(element);
  await playing(element);
  const stopped = state(element, 0);
  element.stop();
  await stopped;
  element.data = '';
  await pause(20);
  equal(told.join(), '0:0', 'nothing more');

  // Full screen is the element's, not the source's.
  let screens = 0;
  element.addEventListener('FullScreenChange', () => { screens += 1; });
  element.setFullScreen(true);
  await playing(element);
  equal(screens, 1, 'full screen');
  element.data = '';
  equal(element.fullScreen, true, 'full screen without a source');
  await playing(element);
  equal(element.fullScreen, true, 'full screen with the next source');
  element.setFullScreen(false);
  await pause(20);
  equal(screens, 2, 'left by the page alone');

  // So is what the page has set besides its attributes.
  const subtitles = () => {
    const list = element.getComponents(element.COMPONENT_TYPE_SUBTITLE);
    return Array.from({ length: list.length }, (_, index) => list.item(index).language).join();
  };
  element.persist = true;
  element.currentTrackIndex = 3;
  element.numOfSubtitles = 1;
  element.subParamAttr = '2|application/ttml+xml|0|1|0|||0|http://media.example/ita.ttml||ita||0|';
  element.numOfSubtitles = 2;
  for (const [tag, language] of [[1, 'eng'], [2, 'deu']]) {
    element.subParamAttr = '2|application/ttml+xml|0|' + tag + '|0|||0|http://media.example/' + language + '.ttml||' + language + '||0|';
  }
  equal(subtitles(), 'ita,eng', 'as many as there are said to be');
  for (let i = 0; i < 2; i += 1) {
    await playing(element);
    element.data = '';
    equal(element.persist, true, 'persist');
    equal(element.currentTrackIndex, 3, 'currentTrackIndex');
    equal(subtitles(), 'ita,eng', 'subtitles without a source');
  }
  element.remove();
});
