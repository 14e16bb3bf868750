// SPDX-License-Identifier: Apache-2.0
// () -> listen(target, type, listener, options): adds a listener of ours to the window or its document. document.open(), which a
// document.write() after the end of the page begins with, takes all listeners away; these come back before the page's next ones.
(function () {
  'use strict';

  const { document } = window;
  const { apply } = Reflect;
  const { getOwnPropertyDescriptor, defineProperty } = Object;
  const addListener = Function.prototype.call.bind(EventTarget.prototype.addEventListener);
  const readyState = Function.prototype.call.bind(getOwnPropertyDescriptor(Document.prototype, 'readyState').get);
  const { open } = Document.prototype;
  const all = [];

  // What is there already is not added twice.
  function listenAgain() {
    for (let i = 0; i < all.length; i += 1) addListener(all[i].target, all[i].type, all[i].listener, all[i].options);
  }

  function replace(name, before) {
    const original = Document.prototype[name];
    const method = {
      [name](...parameters) {
        if (this === document) before();
        const result = apply(original, this, parameters);
        if (this === document) listenAgain();
        return result;
      },
    }[name];
    defineProperty(Document.prototype, name, { value: method, writable: true, enumerable: true, configurable: true });
  }

  // What is written may run scripts at once: the document is opened before.
  function openIfEnded() {
    if (readyState(document) !== 'complete' || document.contentType !== 'text/html') return;
    apply(open, document, []);
    listenAgain();
  }

  replace('open', () => {});
  replace('write', openIfEnded);
  replace('writeln', openIfEnded);

  return function listen(target, type, listener, options) {
    all[all.length] = { target, type, listener, options };
    addListener(target, type, listener, options);
  };
})
