// SPDX-License-Identifier: Apache-2.0
// (matching, above, drift, spread) -> uncover(element, hole): the plane is to be seen where the element is, whatever the page paints below
// it. matching: see elements.js. above, drift, spread: see boxes.js. hole: null: it is not; or {area, level} and, of area 'box', the
// element's, {left, top, width, height, isAll}, from its corner, in CSS pixels, isAll: it fills it; of area 'plane', {plane}: a box of the
// page. level: the z-index in the element. What the page paints above the element stays.
//
// The hole is in a child of the element, which takes no room there: a box on a layer of its own that paints nothing and that the engine
// takes for opaque. Such a layer is put in the place of what is below it, not over it. The engine asks the boxes of a layer for one
// with an opaque background that covers it all, and does not ask for the boxes that clip that one: here one does, to nothing. What is
// cut off at rounded corners is blended all the same, so these become square meanwhile. The looks are in television.css.
(function (matching, above, drift, spread) {
  'use strict';

  const kXhtml = 'http://www.w3.org/1999/xhtml';
  const kName = 'video-hole';  // none of HTML's own: `document.name` finds an object only without these in it
  const kMark = 'data-video-hole';
  const kSquare = 'data-video-corners';
  const kHasPicture = ':is([type^="video/" i], [type^="application/dash+xml" i], [type^="application/vnd.apple.mpegurl" i], ' +
    '[type^="application/vnd.oipf.contentaccessstreaming+xml" i])';

  const kCorners = ['border-top-left-radius', 'border-top-right-radius', 'border-bottom-left-radius', 'border-bottom-right-radius'];
  const kNoDrift = { __proto__: null };
  const kPlaced = ['left', 'top', 'width', 'height'];

  const { getOwnPropertyDescriptor } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const ownerDocument = getter(Node.prototype, 'ownerDocument');
  const parentNode = getter(Node.prototype, 'parentNode');
  const appendChild = uncurry(Node.prototype.appendChild);
  const remove = uncurry(Element.prototype.remove);
  const matches = uncurry(Element.prototype.matches);
  const getAttribute = uncurry(Element.prototype.getAttribute);
  const setAttribute = uncurry(Element.prototype.setAttribute);
  const removeAttribute = uncurry(Element.prototype.removeAttribute);
  const computedStyle = window.getComputedStyle.bind(window);
  const attachShadow = uncurry(Element.prototype.attachShadow);
  const createElementNS = uncurry(Document.prototype.createElementNS);
  const style = getter(HTMLElement.prototype, 'style');
  const setProperty = uncurry(CSSStyleDeclaration.prototype.setProperty);
  const styleValue = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
  const setStyle = uncurry(getOwnPropertyDescriptor(CSSStyleDeclaration.prototype, 'cssText').set);
  const getHole = uncurry(WeakMap.prototype.get);
  const keepHole = uncurry(WeakMap.prototype.set);
  const holes = new WeakMap();

  function makeBox(page, parent, look) {
    const box = createElementNS(page, kXhtml, 'div');
    setStyle(style(box), 'position: absolute; ' + look);
    appendChild(parent, box);
    return box;
  }

  function makeHole(element) {
    const page = ownerDocument(element);
    const hole = createElementNS(page, kXhtml, kName);
    const layer = makeBox(page, attachShadow(hole, { mode: 'closed' }), 'left: var(--video-hole-left); top: var(--video-hole-top); ' +
      'width: var(--video-hole-width); height: var(--video-hole-height); will-change: transform');
    const clip = makeBox(page, layer, 'left: 0; top: 0; width: 0; height: 0; overflow: hidden');
    makeBox(page, clip, 'left: 0; top: 0; margin: -100px; width: 10000px; height: 10000px; background: black');
    return hole;
  }

  // A page that copies an element copies what is in it.
  function removeOthers(element) {
    const found = matching(element, '[' + kMark + ']');
    for (let i = 0; i < found.length; i += 1) remove(found[i]);
  }

  function set(hole, name, value) {
    const property = '--video-hole-' + name;
    const text = name === 'level' ? String(value) : value + 'px';
    if (styleValue(style(hole), property) !== text) setProperty(style(hole), property, text);
  }

  // What the element does with its contents, such as columns and rows of its own, moves the hole's parent.
  function place(hole, element, wanted) {
    const { area, isAll, level } = wanted;
    const mark = area === 'box' && !isAll ? 'moved' : area;
    if (getAttribute(hole, kMark) !== mark) setAttribute(hole, kMark, mark);
    const off = area === 'box' ? drift(hole, element) : kNoDrift;
    const box = area === 'box' ? wanted : spread(hole, wanted.plane);
    for (let i = 0; i < kPlaced.length; i += 1) set(hole, kPlaced[i], box[kPlaced[i]] - (off[kPlaced[i]] || 0));
    set(hole, 'level', level);
  }

  function cutsOffRound(element) {
    const style = computedStyle(element);
    if (styleValue(style, 'overflow-x') === 'visible' && styleValue(style, 'overflow-y') === 'visible') return false;
    for (let i = 0; i < kCorners.length; i += 1) if (styleValue(style, kCorners[i]) !== '0px') return true;
    return false;
  }

  // squared: the chain, {element, next}, of those whose corners have become square for this hole.
  function squareCorners(entry, element) {
    for (let at = element; at !== null; at = above(at)) {
      if (getAttribute(at, kSquare) !== null || !cutsOffRound(at)) continue;
      setAttribute(at, kSquare, '');
      entry.squared = { element: at, next: entry.squared };
    }
  }

  function fill(entry, element) {
    if (parentNode(entry.hole) === element) remove(entry.hole);
    for (let at = entry.squared; at !== null; at = at.next) removeAttribute(at.element, kSquare);
    entry.squared = null;
  }

  return function uncover(element, wanted) {
    let entry = getHole(holes, element);
    if (wanted === null || !matches(element, 'object' + kHasPicture)) {
      if (entry !== undefined) fill(entry, element);
      return;
    }
    if (entry === undefined) {
      entry = { hole: makeHole(element), squared: null };
      keepHole(holes, element, entry);
    }
    squareCorners(entry, element);
    if (parentNode(entry.hole) !== element) {
      removeOthers(element);
      appendChild(element, entry.hole);
    }
    place(entry.hole, element, wanted);
  };
})
