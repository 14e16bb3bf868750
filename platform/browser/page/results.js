// SPDX-License-Identifier: Apache-2.0
// (visit) -> forget(document): has the engine lose what querySelectorAll() told a page that has gone. It keeps the results until their tree
// changes, and with them, for good, the whole document. visit: see elements.js
(function (visit) {
  'use strict';

  const { apply } = Reflect;
  const { getOwnPropertyDescriptor, defineProperty } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const { Document, WeakRef } = window;
  const firstElementChild = getter(Element.prototype, 'firstElementChild');
  const nextElementSibling = getter(Element.prototype, 'nextElementSibling');
  const parentNode = getter(Node.prototype, 'parentNode');
  const createElement = uncurry(Document.prototype.createElement);
  const insertBefore = uncurry(Node.prototype.insertBefore);
  const remove = uncurry(Element.prototype.remove);
  const observe = MutationObserver.prototype.observe;
  const disconnect = uncurry(MutationObserver.prototype.disconnect);
  const observerOf = uncurry(WeakRef.prototype.deref);
  const isKnown = uncurry(WeakSet.prototype.has);
  const know = uncurry(WeakSet.prototype.add);

  const references = [];
  const known = new WeakSet();

  defineProperty(MutationObserver.prototype, 'observe', {
    value: {
      observe(target) {
        apply(observe, this, arguments);
        if (isKnown(known, this)) return;
        know(known, this);
        references[references.length] = new WeakRef(this);
      },
    }.observe,
    writable: true,
    enumerable: true,
    configurable: true,
  });

  // The function of an observer is called no more by then: what it would be told of the changes would stay, and the page with it.
  function endObservers() {
    for (let i = 0; i < references.length; i += 1) {
      const observer = observerOf(references[i]);
      if (observer !== undefined) disconnect(observer);
    }
  }

  // One below an element loses the results of all that it is in.
  function changeEverywhere(page) {
    const innermost = [];
    visit(page, (element) => {
      const isLast = firstElementChild(element) === null && nextElementSibling(element) === null;
      if (isLast && !(parentNode(element) instanceof Document)) innermost[innermost.length] = element;
      return false;
    });
    const change = createElement(page, 'i');
    for (let i = 0; i < innermost.length; i += 1) insertBefore(parentNode(innermost[i]), change, innermost[i]);
    remove(change);
  }

  return function forget(page) {
    endObservers();
    changeEverywhere(page);
  };
})
