// SPDX-License-Identifier: Apache-2.0
// () -> {visit(tree, visitor), matching(element, selector)}: elements in a tree, in its order. In the place of the engine's
// querySelectorAll(): see results.js for what that keeps.
// visit: all below a node, with the open shadow trees. visitor(element) -> boolean: it was the last one; so is the result.
// matching -> array of those in an element, none of shadow trees, that match.
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
  const shadowRootOf = uncurry(getOwnPropertyDescriptor(Element.prototype, 'shadowRoot').get);

  function visit(tree, visitor) {
    const walker = makeWalker(tree, kElements);
    for (let element = nextNode(walker); element !== null; element = nextNode(walker)) {
      if (visitor(element)) return true;
      const shadow = shadowRootOf(element);
      if (shadow !== null && visit(shadow, visitor)) return true;
    }
    return false;
  }

  // Most elements have none.
  function matching(element, selector) {
    const found = [];
    let at = firstMatch(element, selector);
    if (at === null) return found;
    const walker = makeWalker(element, kElements);
    startAt(walker, at);
    for (; at !== null; at = nextNode(walker)) if (matches(at, selector)) found[found.length] = at;
    return found;
  }

  return { visit, matching };
})
