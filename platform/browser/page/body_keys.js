// SPDX-License-Identifier: Apache-2.0
// (followByPress) -> undefined: keys of XML documents, which applications of televisions are, while nothing has the focus. The engine sends them to
// the root element; the standard, and an application that has <body onkeydown>, says that they are the body's.
// followByPress: see key_press.js
(function (followByPress) {
  'use strict';

  const { document, KeyboardEvent, Reflect } = window;
  if (document.contentType === 'text/html') return;

  const dispatch = Function.prototype.call.bind(EventTarget.prototype.dispatchEvent);
  const { stopImmediatePropagation, preventDefault } = Event.prototype;

  // With these the engine moves the focus, for an event of ours, too.
  const kMoveFocus = { __proto__: null, ArrowLeft: true, ArrowUp: true, ArrowRight: true, ArrowDown: true, Tab: true };

  // An event cannot change its target, so the body gets one of its own; what it makes of that holds for the key.
  function handOn(event) {
    const { body, documentElement } = document;
    if (!event.isTrusted || event.target !== documentElement || body === null) return;
    Reflect.apply(stopImmediatePropagation, event, []);
    const own = new KeyboardEvent(event.type, event);
    if (event.type === 'keydown') followByPress(own);
    const goesOn = dispatch(body, own);
    if (!goesOn || kMoveFocus[event.key]) Reflect.apply(preventDefault, event, []);
  }

  for (const type of ['keydown', 'keypress', 'keyup']) window.addEventListener(type, handOn, true);
})
