// SPDX-License-Identifier: Apache-2.0
// () -> {visit(tree, visitor), matching(element, selector), forgetResults(document)}: elements in a tree, in its order.
// visit: all below a node. visitor(element) -> boolean: it was the last one; so is the result.
// matching -> array of those in an element that match.
//
// In the place of the engine's querySelectorAll(): that keeps its results until the tree changes, and with them, for good, the whole document.
// forgetResults: has it lose those of the page, by changes that its observers are told.
(function () {
  'use strict';

  const kElements = 1;  // of NodeFilter

  const { getOwnPropertyDescriptor } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const { document } = window;
  const makeWalker = document.createTreeWalker.bind(document);
  const nextNode = uncurry(TreeWalker.prototype.nextNode);
  const startAt = uncurry(getOwnPropertyDescriptor(TreeWalker.prototype, 'currentNode').set);
  const firstMatch = uncurry(Element.prototype.querySelector);
  const matches = uncurry(Element.prototype.matches);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const createElement = uncurry(Document.prototype.createElement);
  const firstElementChild = getter(Element.prototype, 'firstElementChild');
  const nextElementSibling = getter(Element.prototype, 'nextElementSibling');
  const parentElement = getter(Node.prototype, 'parentElement');
  const insertBefore = uncurry(Node.prototype.insertBefore);
  const remove = uncurry(Element.prototype.remove);

  function visit(tree, visitor) {
    const walker = makeWalker(tree, kElements);
    for (let element = nextNode(walker); element !== null; element = nextNode(walker)) if (visitor(element)) return true;
    return false;
  }

  // Most have none.
  function matching(element, selector) {
    const found = [];
    let at = firstMatch(element, selector);
    if (at === null) return found;
    const walker = makeWalker(element, kElements);
    startAt(walker, at);
    for (; at !== null; at = nextNode(walker)) if (matches(at, selector)) found[found.length] = at;
    return found;
  }

  // A change below an element loses the results of all that it is in, too.
  function forgetResults(page) {
    const change = createElement(page, 'i');
    visit(page, (element) => {
      const isInnermost = firstElementChild(element) === null && nextElementSibling(element) === null;
      const parent = parentElement(element);
      if (isInnermost && parent !== null) insertBefore(parent, change, element);
      return false;
    });
    remove(change);
  }

  return { visit, matching, forgetResults };
})
