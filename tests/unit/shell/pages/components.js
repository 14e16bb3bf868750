// SPDX-License-Identifier: Apache-2.0
page(async () => {
  const element = makeObject();
  document.body.appendChild(element);
  const playing = state(element, 1);
  element.data = 'clip?ms=60000&audio=3';
  element.play(1);  // what plays goes on, and the run with it
  await playing;

  const audio = element.getComponents(element.COMPONENT_TYPE_AUDIO);
  equal(audio.length, 3, 'length');
  equal(audio.item(1).language, 'eng', 'item(i)');
  equal(audio[2].language, 'fra', '[i]');
  equal(audio.item(3), undefined, 'item behind the last');
  equal(audio[3], undefined, '[i] behind the last');
  equal(audio.item(-1), undefined, 'a negative item');
  const seen = [];
  for (const component of audio) seen.push(component.language);
  equal(seen.join(), 'deu,eng,fra', 'for…of');
  equal([...audio].length, 3, 'spread');
  equal(audio[1].type, 1, 'type');
  equal(audio[1].encoding, 'mp4a.40.2', 'encoding');
  equal(audio[1].pid, 257, 'pid');
  equal(audio[1].encrypted, false, 'encrypted');

  equal(element.getComponents(1), audio, 'a collection is always the same object');
  equal(element.getComponents(null), element.getComponents(), 'null means all');
  equal(element.getComponents(undefined), element.getComponents(), 'undefined means all');
  equal(element.getComponents().length, 3, 'all of them');
  equal(element.getComponents(9), null, 'an unknown type');
  equal(element.getComponents('1'), undefined, 'no type');

  const active = element.getCurrentActiveComponents(1);
  const select = async (run, language, what) => {
    const changed = next(element, 'SelectedComponentChanged');
    run();
    equal((await changed).componentType, 1, 'the type in the event, ' + what);
    equal(active.length === 0 ? 'none' : active[0].language, language, what);
  };
  equal(active[0].language, 'deu', 'the first is selected');
  await select(() => element.selectComponent(audio[1]), 'eng', 'another one by object');
  await select(() => element.unselectComponent(audio[1]), 'none', 'none');
  await select(() => element.selectComponent(1), 'deu', 'the default of a type');
  for (const nothing of [null, undefined, '1', {}, element]) {
    equal(element.selectComponent(nothing), undefined, 'selecting ' + String(nothing));
  }
  equal(active[0].language, 'deu', 'changes nothing');

  const kept = audio[1];
  document.body.removeChild(element);
  await pause(0);
  equal(audio.length + active.length, 0, 'collections of an object that is gone');
  equal(audio[0], undefined, 'their items');
  equal([...audio].length, 0, 'a loop over them');
  equal(kept.language, 'eng', 'a component of an object that is gone');
});
