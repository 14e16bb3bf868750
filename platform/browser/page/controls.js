// SPDX-License-Identifier: Apache-2.0
// (listen, moveFocus) -> undefined: what keys do that the page leaves alone. Enter works the controls that the engine has a mouse or a space bar
// for: it opens the list of a <select>, and turns check boxes and radio buttons. Arrows go where the page's style says.
// listen: see listeners.js    moveFocus: see directed_focus.js
(function (listen, moveFocus) {
  'use strict';

  const { Element, HTMLSelectElement, HTMLInputElement, HTMLTextAreaElement, MouseEvent } = window;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(Object.getOwnPropertyDescriptor(prototype, name).get);
  const addListener = uncurry(EventTarget.prototype.addEventListener);
  const removeListener = uncurry(EventTarget.prototype.removeEventListener);
  const dispatch = uncurry(EventTarget.prototype.dispatchEvent);
  const composedPath = uncurry(Event.prototype.composedPath);
  const preventDefault = uncurry(Event.prototype.preventDefault);
  const isPrevented = getter(Event.prototype, 'defaultPrevented');
  const keyOf = getter(KeyboardEvent.prototype, 'key');
  const multiple = getter(HTMLSelectElement.prototype, 'multiple');
  const size = getter(HTMLSelectElement.prototype, 'size');
  const typeOf = getter(HTMLInputElement.prototype, 'type');
  const click = uncurry(HTMLElement.prototype.click);

  const selectionStart = getter(HTMLInputElement.prototype, 'selectionStart');
  const kDirections = { __proto__: null, ArrowUp: 'up', ArrowRight: 'right', ArrowDown: 'down', ArrowLeft: 'left' };

  // There arrows move the caret.
  function keepsArrow(element, direction) {
    if (element instanceof HTMLTextAreaElement) return true;
    return element instanceof HTMLInputElement && selectionStart(element) !== null && (direction === 'left' || direction === 'right');
  }

  function go(element, direction) {
    return element instanceof Element && !keepsArrow(element, direction) && moveFocus(element, direction);
  }

  function use(element) {
    if (element instanceof HTMLSelectElement) {
      if (multiple(element) || size(element) > 1) return false;  // which has its list on the page
      dispatch(element, new MouseEvent('mousedown', { __proto__: null, cancelable: true }));
      return true;
    }
    if (!(element instanceof HTMLInputElement)) return false;
    const type = typeOf(element);
    if (type !== 'checkbox' && type !== 'radio') return false;
    click(element);
    return true;
  }

  function onKey(event) {
    if (isPrevented(event)) return;
    const key = keyOf(event);
    const element = composedPath(event)[0];
    const direction = kDirections[key];
    if (direction === undefined ? key === 'Enter' && use(element) : go(element, direction)) preventDefault(event);
  }

  // Behind the page's own listeners.
  listen(window, 'keydown', (event) => {
    removeListener(window, 'keydown', onKey);
    if (event.isTrusted) addListener(window, 'keydown', onKey);
  }, true);
})
