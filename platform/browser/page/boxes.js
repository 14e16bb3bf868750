// SPDX-License-Identifier: Apache-2.0
// () -> {above, isFadedOut, zoomOf, contentBox, wholePixels, drift, spread}: where an element is in this window's page, whatever zooms and
// transforms it.
// above(element) -> what it is in as it is painted: its slot, its parent, or the host of the shadow tree that it is the top of; or null
// isFadedOut(element) -> boolean: it is in something of no opacity, or has none itself
// zoomOf(element) -> number    contentBox(element) -> {left, top, right, bottom}, in pixels of the page
// wholePixels(element) -> {left, top, width, height, isAll}, in CSS pixels from the corner of its content. isAll: that is its content.
// A box is {left, top, right, bottom}.
// drift(child, element) -> {left, top}: by how much the child lies off the corner of the element's content, in CSS pixels.
// spread(child, box) -> {left, top, width, height}: a box of the page from the corner of the child, in its CSS pixels.
(function () {
  'use strict';

  const { getOwnPropertyDescriptor } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const { document, Element, HTMLElement, ShadowRoot } = window;
  const documentElement = getter(Document.prototype, 'documentElement');
  const documentBody = getter(Document.prototype, 'body');
  const exec = uncurry(RegExp.prototype.exec);
  const parentNode = getter(Node.prototype, 'parentNode');
  const assignedSlot = getter(Element.prototype, 'assignedSlot');
  const hostOf = getter(ShadowRoot.prototype, 'host');
  const offsetWidth = getter(HTMLElement.prototype, 'offsetWidth');
  const offsetHeight = getter(HTMLElement.prototype, 'offsetHeight');
  const boundingBox = uncurry(Element.prototype.getBoundingClientRect);
  const styleValue = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
  const computedStyle = window.getComputedStyle.bind(window);

  // The engine places and paints a box no finer than this, and leaves what is smaller away.
  const kLeastLength = 1 / 64;
  const kCutsNothing = /^(?:inline|contents|table-row|table-row-group|table-header-group|table-footer-group)$/;
  const kEndless = { left: -Infinity, top: -Infinity, right: Infinity, bottom: Infinity };

  function above(element) {
    const slot = assignedSlot(element);
    if (slot !== null) return slot;
    const parent = parentNode(element);
    if (parent instanceof ShadowRoot) return hostOf(parent);
    return parent instanceof Element ? parent : null;
  }

  function isFadedOut(element) {
    for (let at = element; at !== null; at = above(at)) if (styleValue(computedStyle(at), 'opacity') === '0') return true;
    return false;
  }

  // By how much the pixels of an element are larger than the engine's functions say: these tell of lengths before any CSS zoom.
  function zoomOf(element) {
    let zoom = 1;
    for (let at = element; at !== null; at = above(at)) zoom *= parseFloat(styleValue(computedStyle(at), 'zoom')) || 1;
    return zoom;
  }

  // Inside border and perhaps padding, which a transformation of the element scales, too.
  function innerBox(element, isInsidePadding) {
    const style = computedStyle(element);
    const zoom = zoomOf(element);
    const { left, top, right, bottom } = boundingBox(element);
    const length = (name) => parseFloat(styleValue(style, name)) || 0;
    const edge = (side) => length('border-' + side + '-width') + (isInsidePadding ? length('padding-' + side) : 0);
    const hasSize = element instanceof HTMLElement;
    const across = hasSize && offsetWidth(element) > 0 ? (right - left) / offsetWidth(element) : 1;
    const down = hasSize && offsetHeight(element) > 0 ? (bottom - top) / offsetHeight(element) : 1;
    return {
      left: zoom * (left + edge('left') * across), top: zoom * (top + edge('top') * down),
      right: zoom * (right - edge('right') * across), bottom: zoom * (bottom - edge('bottom') * down),
    };
  }

  function contentBox(element) {
    return innerBox(element, true);
  }

  function isTransformed(element) {
    const style = computedStyle(element);
    const is = (name) => styleValue(style, name) !== 'none';
    return is('transform') || is('translate') || is('scale') || is('rotate');
  }

  // What the body says of it holds for the window while the root says nothing.
  function isOverflowOfWindow(element) {
    return element === documentBody(document) && styleValue(computedStyle(documentElement(document)), 'overflow-x') === 'visible';
  }

  // What the element is cut off at by those that it is in, out to this one.
  function clipBox(element, outermost) {
    let { left, top, right, bottom } = kEndless;
    let position = styleValue(computedStyle(element), 'position');
    for (let at = element; at !== outermost;) {
      at = above(at);
      if (at === null || at === documentElement(document)) break;  // that one's edges are the window's
      const style = computedStyle(at);
      const own = styleValue(style, 'position');
      const contains = isTransformed(at) || (position === 'absolute' ? own !== 'static' : position !== 'fixed');
      if (!contains) continue;
      position = own;
      if (exec(kCutsNothing, styleValue(style, 'display')) !== null || isOverflowOfWindow(at)) continue;
      const box = innerBox(at, false);
      if (styleValue(style, 'overflow-x') !== 'visible') {
        left = Math.max(left, box.left);
        right = Math.min(right, box.right);
      }
      if (styleValue(style, 'overflow-y') !== 'visible') {
        top = Math.max(top, box.top);
        bottom = Math.min(bottom, box.bottom);
      }
    }
    return { left, top, right, bottom };
  }

  function transformedAround(element) {
    let around = element;
    while (around !== null && !isTransformed(around)) around = above(around);
    return around;
  }

  // Where what is transformed is, and how large its pixels are.
  function scaleOf(around) {
    const from = around === null ? { left: 0, top: 0 } : boundingBox(around);
    if (!(around instanceof HTMLElement) || offsetWidth(around) === 0 || offsetHeight(around) === 0) return { from, across: 1, down: 1 };
    return { from, across: (from.right - from.left) / offsetWidth(around), down: (from.bottom - from.top) / offsetHeight(around) };
  }

  // What fills the element from pixel to pixel: by how much that is moved, and its size, in CSS pixels. What is transformed has pixels
  // of its own, and is transformed when it is put on the page. What is cut off between two pixels ends before.
  function wholePixels(element) {
    const around = transformedAround(element);
    const { from, across, down } = scaleOf(around);
    const zoom = zoomOf(element);
    const inPixels = ({ left, top, right, bottom }) => ({
      left: (left - zoom * from.left) / across, top: (top - zoom * from.top) / down,
      right: (right - zoom * from.left) / across, bottom: (bottom - zoom * from.top) / down,
    });
    const { left, top, right, bottom } = inPixels(contentBox(element));
    const clip = around === element ? kEndless : inPixels(clipBox(element, around));
    const x = lengthWithin(left, right, clip.left, clip.right);
    const y = lengthWithin(top, bottom, clip.top, clip.bottom);
    return {
      left: safe(x.from - left) / zoom, top: safe(y.from - top) / zoom,
      width: safe(x.to - x.from) / zoom, height: safe(y.to - y.from) / zoom,
      isAll: x.isAll && y.isAll,
    };
  }

  function lengthWithin(first, last, firstSeen, lastSeen) {
    let from = Math.round(first);
    let to = Math.round(last);
    const isCut = (firstSeen > from && !isWhole(firstSeen)) || (lastSeen < to && !isWhole(lastSeen));
    if (isCut) {
      from = Math.max(from, Math.ceil(firstSeen));
      to = Math.max(from, Math.min(to, Math.floor(lastSeen)));
    }
    return { from, to, isAll: !isCut && isWhole(first) && isWhole(last) };
  }

  function isWhole(length) {
    return Math.abs(Math.round(length) - length) < kLeastLength / 2;
  }

  // What is divided by a zoom and multiplied by it again must not end just below the length that it was.
  function safe(length) {
    return Math.abs(length) < kLeastLength / 2 ? 0 : length + Math.sign(length) * kLeastLength / 2;
  }

  // What is fixed in the window begins elsewhere, and has other pixels, in what is transformed; these are filled whole.
  function spread(child, { left, top, right, bottom }) {
    const { across, down } = scaleOf(transformedAround(child));
    const zoom = zoomOf(child);
    const at = innerBox(child, false);
    const from = (length) => Math.floor(length + kLeastLength);
    const to = (length) => Math.ceil(length - kLeastLength);
    const x = { from: from((left - at.left) / across), to: to((right - at.left) / across) };
    const y = { from: from((top - at.top) / down), to: to((bottom - at.top) / down) };
    return { left: safe(x.from) / zoom, top: safe(y.from) / zoom, width: safe(x.to - x.from) / zoom, height: safe(y.to - y.from) / zoom };
  }

  function drift(child, element) {
    const at = innerBox(child, false);
    const { left, top } = contentBox(element);
    const box = boundingBox(element);
    const zoom = zoomOf(element);
    const scale = (length, unscaled) => (unscaled > 0 && length > 0 ? length / unscaled : 1) * zoom;
    const x = (at.left - left) / scale(box.right - box.left, offsetWidth(element));
    const y = (at.top - top) / scale(box.bottom - box.top, offsetHeight(element));
    return { left: Math.abs(x) < kLeastLength ? 0 : x, top: Math.abs(y) < kLeastLength ? 0 : y };
  }

  return { above, isFadedOut, zoomOf, contentBox, wholePixels, drift, spread };
})
