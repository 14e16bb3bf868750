// SPDX-License-Identifier: Apache-2.0
page(() => {
  const types = ['video/mp4', 'video/mpeg', 'video/mp2t', 'audio/mpeg', 'audio/mp4', 'application/dash+xml',
    'application/vnd.apple.mpegurl', 'application/vnd.oipf.ContentAccessStreaming+xml', 'VIDEO/MP4', ' video/mp4; codecs="avc1"'];
  for (const type of types) {
    equal(typeof makeObject({ type }).play, 'function', 'object of type ' + type);
    const embed = document.createElement('embed');
    equal(typeof embed.play, 'undefined', 'embed without a type');
    embed.type = type;
    equal(typeof embed.play, 'function', 'embed of type ' + type);
  }
  for (const type of ['image/png', 'text/html', '', 'video/mp', 'application/x-java']) {
    const plain = makeObject({ type });
    equal(typeof plain.play, 'undefined', 'object of type ' + type);
    equal(plain.playState, undefined, 'playState of a plain object');
    plain.data = 'x.png';
    equal(plain.data, 'x.png', 'data of a plain object is its attribute');
  }

  const element = makeObject();
  check(element instanceof HTMLObjectElement, 'it stays an element');
  equal(element.playState, 0, 'stopped at first, detached');
  equal(element.error, null, 'no error yet');
  equal(element.data, '', 'no source yet');
  equal(element.type, 'video/mp4', 'type reaches the script property');
  equal(element.onPlayStateChange, null, 'an unset handler');
  equal(element.fullScreen, false, 'no full screen');
  equal(element.COMPONENT_TYPE_AUDIO, 1, 'a constant');
  check('playPosition' in element && 'getComponents' in element, 'rows are there');

  // Refusals are silent.
  element.playState = 4;
  equal(element.playState, 0, 'a row of the plugin alone');
  equal(element.next(), undefined, 'a method that always fails');
  element.data = 17;
  equal(element.data, '', 'a source that is no text');
  element.loop = 'sometimes';
  equal(element.loop, '', 'a refused loop');
  equal(element.setVolume(101), true, 'setVolume(101)');
  equal(element.setVolume(102), false, 'setVolume(102)');
  equal(element.play('2'), undefined, 'play with a text');

  // Attributes and properties are one.
  element.width = 640;
  equal(element.getAttribute('width'), '640', 'the property reaches the attribute');
  equal(element.width, '640', 'and the script property');
  element.setAttribute('height', '360');
  equal(element.height, '360', 'the attribute reaches the property');
  element.setAttribute('LOOP', 'infinite');
  equal(element.loop, 'infinite', 'loop as attribute');
  element.userAgent = 'agent';
  equal(element.getAttribute('useragent'), 'agent', 'userAgent as attribute');
  element.persist = true;
  equal(element.persist, true, 'an ordinary row');
  element.own = 5;
  equal(element.own, 5, 'a page\'s own property');

  // Parameters.
  const parameter = document.createElement('param');
  parameter.name = 'loop';
  parameter.value = '3';
  element.appendChild(parameter);
  equal(element.loop, '3', 'a parameter that came later');
  const parsed = document.createElement('div');
  parsed.innerHTML = '<p>x</p><object id="o" type="audio/mp4" width="400" onplaystatechange="this.seen = state">' +
    '<param name="loop" value="infinite"/><param name="unknown" value="1"></object><embed type="video/mpeg" src="a.ts">';
  equal(parsed.querySelector('#o').loop, 'infinite', 'a parameter in markup');
  equal(parsed.querySelector('object').width, '400', 'an attribute in markup');
  equal(typeof parsed.querySelector('object').onPlayStateChange, 'function', 'a handler in markup');
  equal(parsed.querySelector('embed').data, 'http://media.example/app/a.ts', 'the source of an embed in markup');

  parsed.innerHTML = '<object type="video/mp4" onPlayerHandle="this.seen = handle" onInBandSubtitleChange="this.seen = 1"></object>';
  for (const name of ['onPlayerHandle', 'onInBandSubtitleChange']) {
    equal(typeof parsed.querySelector('object')[name], 'function', name + ' in markup');
  }

  // What a page sets before the type that makes the object.
  for (const name of ['object', 'embed']) {
    const late = document.createElement(name);
    late.data = 'late.mp4';
    late.loop = '2';
    late.persist = true;
    late.type = 'video/mp4';
    equal([late.data, late.loop, late.persist].join(), 'http://media.example/app/late.mp4,2,true', 'set before the type, ' + name);
    equal(late.getAttribute('loop'), '2', 'as attribute, ' + name);
    late.loop = '3';
    equal(late.getAttribute('loop'), '3', 'and later, ' + name);
  }

  // What cannot become a text is refused.
  for (const name of ['width', 'type', 'loop', 'userAgent']) {
    const before = element[name];
    for (const value of [{ toString() { throw new Error('no text'); } }, Object.create(null)]) element[name] = value;
    equal(element[name], before, 'no text, ' + name);
  }
  const frozen = Object.freeze(makeObject({ id: 'frozen' }));
  frozen.cache = '1';
  frozen.play = 1;
  equal(frozen.cache, undefined, 'a frozen element of no type');

  element.focus(1);
  element.focus('x');

  // A method belongs to its element.
  const method = element.stop;
  let thrown = null;
  try { method.call(document.body); } catch (error) { thrown = error; }
  check(thrown instanceof TypeError, 'a method on something else');
  equal(element.stop, element.stop, 'a method is always the same function');

  // From one type to another, and away.
  element.type = 'audio/mpeg';
  equal(element.type, 'audio/mpeg', 'another type');
  element.removeAttribute('type');
  equal(typeof element.play, 'undefined', 'no type, no object');
  equal(element.playState, undefined, 'nor its properties');
  element.setAttribute('type', 'video/mp4');
  equal(element.loop, '3', 'a new object has what the markup says');
});
