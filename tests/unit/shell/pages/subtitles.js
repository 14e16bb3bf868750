// SPDX-License-Identifier: Apache-2.0
function addParameter(element, name, value) {
  const parameter = document.createElement('param');
  parameter.name = name;
  parameter.value = value;
  element.appendChild(parameter);
}

const subtitlesOf = (element) => {
  const list = element.getComponents(element.COMPONENT_TYPE_SUBTITLE);
  return Array.from({ length: list.length }, (_, index) => list.item(index));
};

async function describedByParameters() {
  const element = makeObject({ id: 'plain' });  // no type yet: the parameters are there when it gets one
  addParameter(element, 'subtitles', 'srclang:eng src:http://media.example/eng.ttml');
  addParameter(element, 'SUBTITLES', ' src:http://media.example/a|b.ttml  srclang:deu srclang:fra src:http://media.example/fra.ttml');
  addParameter(element, 'subtitles', 'nonsense srclang:ita');
  element.type = 'video/mp4';
  equal(subtitlesOf(element).map((each) => each.language).join(), 'eng,deu,fra', 'languages');
  equal(subtitlesOf(element)[0].encoding, 'application/ttml+xml', 'encoding');
  equal(subtitlesOf(element)[0].hearingImpaired, false, 'hearingImpaired');
  equal(new Set(subtitlesOf(element).map((each) => each.componentTag)).size, 3, 'different components');
  equal(element.getComponents().length, 0, 'only among the subtitles');

  const listed = makeObject();
  addParameter(listed, 'subtitles', 'srclang:eng,src:http://media.example/i/a,b,.ttml, srclang:deu , src:http://media.example/c,d.ttml,');
  equal(subtitlesOf(listed).map((each) => each.language).join(), 'eng,deu', 'a list with commas');
  const addresses = [];
  for (const each of subtitlesOf(listed)) {
    const selected = next(listed, 'SelectedComponentChanged');
    listed.selectComponent(each);
    addresses.push((await selected).source);
  }
  equal(addresses.join(' '), 'http://media.example/i/a,b,.ttml http://media.example/c,d.ttml', 'commas of addresses');

  const changed = () => next(element, 'SelectedComponentChanged');
  let event = changed();
  element.selectComponent(subtitlesOf(element)[0]);
  let heard = await event;
  equal(heard.componentType, 2, 'type of what was selected');
  equal(heard.source, 'http://media.example/eng.ttml', 'address of what was selected');
  equal(element.enableSubtitles, 1, 'enabled');
  event = changed();
  element.unselectComponent(subtitlesOf(element)[1]);
  heard = await event;
  equal(heard.source, 'http://media.example/a%7Cb.ttml', 'a separator in an address');
  equal(element.enableSubtitles, 0, 'disabled');
  event = changed();
  element.selectComponent(2);
  heard = await event;
  equal(heard.source, undefined, 'a type has no address');

  addParameter(element, 'subtitles', 'srclang:spa src:http://media.example/spa.ttml');
  equal(subtitlesOf(element).map((each) => each.language).join(), 'eng,deu,fra,spa', 'one that is added later');
  for (let i = 0; i < 8; i += 1) addParameter(element, 'subtitles', 'srclang:x' + i + ' src:http://media.example/' + i);
  equal(subtitlesOf(element).length, 10, 'no more than ten');
}

function relativeToTheDocument() {
  const element = makeObject({ id: 'relative' });
  addParameter(element, 'subtitles', 'srclang:eng src:texts/eng.ttml');
  element.type = 'video/mp4';
  element.addEventListener('SelectedComponentChanged', (event) => { element.source = event.source; });
  element.selectComponent(subtitlesOf(element)[0]);
  return next(element, 'SelectedComponentChanged').then(() => {
    equal(element.source, 'http://media.example/app/texts/eng.ttml', 'relative address');
  });
}

// While a film plays, its subtitle player is started and stopped with the selection.
async function startsThePlayerOfAFilm() {
  const film = makeObject();
  document.body.appendChild(film);
  addParameter(film, 'subtitles', 'srclang:eng src:http://media.example/eng.ttml');
  film.data = 'http://media.example/clip?ms=60000';
  film.play(1);
  await state(film, 1);
  const started = next(film, 'StartStopSubtitlePlayer');
  film.selectComponent(subtitlesOf(film)[0]);
  equal((await started).start, true, 'selected');
  const stopped = next(film, 'StartStopSubtitlePlayer');
  film.unselectComponent(subtitlesOf(film)[0]);
  equal((await stopped).start, false, 'unselected');
  film.stop();
  film.remove();
}

async function hasAClockOfItsOwn() {
  const element = makeObject({ type: 'application/ttml+xml' });
  const started = [];
  document.body.appendChild(element);
  element.onStartStopSubtitlePlayer = (start) => started.push(start);
  equal(element.playPosition, 0, 'at the beginning');
  equal(element.ttmlXmlPlayPosition, 0, 'at the beginning, for timed text');
  equal(element.speed, 0, 'at rest');
  let event = state(element, 1);
  equal(element.play(1), true, 'play');
  await event;
  equal(element.playState, 1, 'playing');
  equal(element.speed, 1, 'speed');
  while (element.playPosition < 60) await pause(5);
  event = state(element, 2);
  element.play(0);
  await event;
  const rest = element.playPosition;
  check(rest >= 60 && rest < 20000, 'position ' + rest);
  await pause(30);
  equal(element.playPosition, rest, 'a pause holds the clock');
  equal(element.ttmlXmlPlayPosition, Math.round(rest), 'whole milliseconds');
  equal(element.playState, 2, 'paused');

  const moved = next(element, 'PlayPositionChanged');
  equal(element.seek(90000), true, 'seek');
  equal((await moved).position, 90000, 'position that is told');
  equal(element.playPosition, 90000, 'position after a seek');
  equal(element.seek(-1), false, 'a seek before the beginning');
  equal(element.seek('soon'), false, 'a seek to nowhere');
  element.play(2);
  const [from, since] = [element.playPosition, performance.now()];
  await pause(50);
  const speed = (element.playPosition - from) / (performance.now() - since);
  check(speed > 1.5 && speed < 2.5, 'twice the speed: ' + speed);
  event = state(element, 0);
  equal(element.stop(), true, 'stop');
  await event;
  equal(element.playState, 0, 'stopped');
  equal(element.playPosition, 0, 'a stop goes back');
  equal(started.join(), 'true,false,true', 'the subtitle player was started and stopped');

  element.type = 'video/mp4';
  event = state(element, 3);
  element.play(1);
  await event;  // another type wants media
  element.type = 'application/ttml+xml';
  equal(element.playPosition, 0, 'and back');
}

page(async () => {
  await describedByParameters();
  await relativeToTheDocument();
  await startsThePlayerOfAFilm();
  await hasAClockOfItsOwn();
});
