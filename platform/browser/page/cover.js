// SPDX-License-Identifier: Apache-2.0
// (isOurs, stacking, above) -> {isCovered, levelOfHole}: what the page paints below and above an element. isOurs(element): it paints
// nothing itself. stacking: see stacking.js. above: see boxes.js. A box is {left, top, right, bottom}, in the window.
// isCovered(element, box): something is painted over the plane, by the element itself or below it.
// levelOfHole(element, box): the z-index with which what is in the element is painted below what the page paints above the element.
//
// The engine tells what lies one above the other at a point, the highest first.
(function (isOurs, stacking, above) {
  'use strict';

  const { isPositioned, levelUnder } = stacking;
  const { document, ShadowRoot } = window;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (name) => uncurry(Object.getOwnPropertyDescriptor(Document.prototype, name).get);
  const documentElement = getter('documentElement');
  const documentBody = getter('body');
  const elementsAt = Document.prototype.elementsFromPoint.bind(document);
  const rootOf = uncurry(Node.prototype.getRootNode);
  const comparePosition = uncurry(Node.prototype.compareDocumentPosition);
  const styleValue = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
  const computedStyle = window.getComputedStyle.bind(window);

  const kContains = 8;  // of compareDocumentPosition
  const kInside = 16;
  const kInset = 2;     // pixels; what only touches the box does not matter
  const kFew = 3;       // points in a row and in a column: backgrounds are large
  const kMany = 7;      // what lies above may be small
  const kClear = 'rgba(0, 0, 0, 0)';

  function hasBackground(element) {
    const style = computedStyle(element);
    return styleValue(style, 'background-color') !== kClear || styleValue(style, 'background-image') !== 'none';
  }

  // The background of the first two elements is that of the whole window, however small they are.
  function paintsEverywhere() {
    const root = documentElement(document);
    const body = documentBody(document);
    return (root !== null && hasBackground(root)) || (body !== null && hasBackground(body));
  }

  function indexIn(list, element) {
    for (let i = 0; i < list.length; i += 1) if (list[i] === element) return i;
    return -1;
  }

  function findsAt(points, { left, top, right, bottom }, isFound) {
    const at = (from, to, i) => from + kInset + (to - from - 2 * kInset) * i / (points - 1);
    for (let x = 0; x < points; x += 1) {
      for (let y = 0; y < points; y += 1) if (isFound(elementsAt(at(left, right, x), at(top, bottom, y)))) return true;
    }
    return false;
  }

  // An element that cannot be pointed at says nothing of what lies below it, but for what it is in.
  function paintsBelow(list, element) {
    const own = indexIn(list, element);
    for (let i = own < 0 ? 0 : own; i < list.length; i += 1) {
      const position = comparePosition(element, list[i]);
      const isBelow = own >= 0 && (position & kInside) === 0 && !isOurs(list[i]);
      if (i === own || (position & kContains) !== 0 ? hasBackground(list[i]) : isBelow) return true;
    }
    return false;
  }

  function liesOnHole(list, element) {
    for (let i = indexIn(list, element) - 1; i >= 0; i -= 1) {
      if ((comparePosition(element, list[i]) & kInside) === 0 && levelUnder(element, list[i]) !== 0) return true;
    }
    return false;
  }

  // What the document has in the place of an element of a shadow tree.
  function inDocument(element) {
    let at = element;
    while (at !== null && rootOf(at) instanceof ShadowRoot) at = above(at);
    return at === null ? element : at;
  }

  function paintsBetween(element, shown) {
    for (let at = element; at !== null && at !== shown; at = above(at)) if (hasBackground(at)) return true;
    return false;
  }

  function isCovered(element, box) {
    const shown = inDocument(element);
    return paintsEverywhere() || paintsBetween(element, shown) || findsAt(kFew, box, (list) => paintsBelow(list, shown));
  }

  return {
    isCovered,
    // What is not positioned lies below all that is: only there may what is above the element be below what is in it.
    levelOfHole: (element, box) => !isPositioned(element) && findsAt(kMany, box, (list) => liesOnHole(list, element)) ? -1 : 0,
  };
})
