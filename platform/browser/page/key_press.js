// SPDX-License-Identifier: Apache-2.0
// (listen, names) -> follow(event): keypress of the keys that make no character, which a television sends between keydown and keyup for every
// key and the engine does not. It comes behind the page's own listeners of keydown, unless one of them has taken the key; who takes it
// takes what the key would do.
// listen: see listeners.js    names: of these keys, as events have them in key
// follow(event) is for a keydown that is ours and not sent yet: it is followed by its keypress, too.
(function (listen, names) {
  'use strict';

  const { document, KeyboardEvent } = window;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(Object.getOwnPropertyDescriptor(prototype, name).get);
  const addListener = uncurry(EventTarget.prototype.addEventListener);
  const removeListener = uncurry(EventTarget.prototype.removeEventListener);
  const dispatch = uncurry(EventTarget.prototype.dispatchEvent);
  const composedPath = uncurry(Event.prototype.composedPath);
  const preventDefault = uncurry(Event.prototype.preventDefault);
  const isPrevented = getter(Event.prototype, 'defaultPrevented');
  const focused = getter(Document.prototype, 'activeElement');
  const keyOf = getter(KeyboardEvent.prototype, 'key');
  const isOne = Set.prototype.has.bind(new Set(names));

  let followed = null;
  let focusedBefore = null;

  function press(event) {
    if (event !== followed) return;
    removeListener(window, 'keydown', press);
    if (isPrevented(event) || !isOne(keyOf(event))) return;
    const now = focused(document);
    const target = now === null || now === focusedBefore ? composedPath(event)[0] : now;
    if (!dispatch(target, new KeyboardEvent('keypress', event))) preventDefault(event);
  }

  function follow(event) {
    followed = event;
    focusedBefore = focused(document);
    removeListener(window, 'keydown', press);
    addListener(window, 'keydown', press);
  }

  listen(window, 'keydown', (event) => { if (event.isTrusted) follow(event); }, true);
  return follow;
})
