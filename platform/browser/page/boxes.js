// SPDX-License-Identifier: Apache-2.0
// () -> {above, zoomOf, contentBox, wholePixels}: where an element is in this window's page, whatever zooms and transforms it.
// above(element) -> what it is in as it is painted: its slot, its parent, or the host of the shadow tree that it is the top of; or null
// zoomOf(element) -> number    contentBox(element) -> {left, top, right, bottom}, in pixels of the page
// wholePixels(element) -> {left, top, width, height, isAll}, in CSS pixels from the corner of its content. isAll: that is its content.
(function () {
  'use strict';

  const { getOwnPropertyDescriptor } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const { Element, HTMLElement, ShadowRoot } = window;
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

  function above(element) {
    const slot = assignedSlot(element);
    if (slot !== null) return slot;
    const parent = parentNode(element);
    if (parent instanceof ShadowRoot) return hostOf(parent);
    return parent instanceof Element ? parent : null;
  }

  // By how much the pixels of an element are larger than the engine's functions say: these tell of lengths before any CSS zoom.
  function zoomOf(element) {
    let zoom = 1;
    for (let at = element; at !== null; at = above(at)) zoom *= parseFloat(styleValue(computedStyle(at), 'zoom')) || 1;
    return zoom;
  }

  // Inside border and padding, which a transformation of the element scales, too.
  function contentBox(element) {
    const style = computedStyle(element);
    const zoom = zoomOf(element);
    const { left, top, right, bottom } = boundingBox(element);
    const length = (name) => parseFloat(styleValue(style, name)) || 0;
    const edge = (side) => length('border-' + side + '-width') + length('padding-' + side);
    const across = offsetWidth(element) > 0 ? (right - left) / offsetWidth(element) : 1;
    const down = offsetHeight(element) > 0 ? (bottom - top) / offsetHeight(element) : 1;
    return {
      left: zoom * (left + edge('left') * across), top: zoom * (top + edge('top') * down),
      right: zoom * (right - edge('right') * across), bottom: zoom * (bottom - edge('bottom') * down),
    };
  }

  function isTransformed(element) {
    const style = computedStyle(element);
    const is = (name) => styleValue(style, name) !== 'none';
    return is('transform') || is('translate') || is('scale') || is('rotate');
  }

  // What fills the element from pixel to pixel: by how much that is moved, and its size, in CSS pixels. What is transformed has pixels
  // of its own, and is transformed when it is put on the page.
  function wholePixels(element) {
    let around = element;
    while (around !== null && !isTransformed(around)) around = above(around);
    const from = around === null ? { left: 0, top: 0, right: 0, bottom: 0 } : boundingBox(around);
    const hasSize = around instanceof HTMLElement && offsetWidth(around) > 0 && offsetHeight(around) > 0;
    const across = hasSize ? (from.right - from.left) / offsetWidth(around) : 1;
    const down = hasSize ? (from.bottom - from.top) / offsetHeight(around) : 1;
    const zoom = zoomOf(element);
    const { left, top, right, bottom } = contentBox(element);
    const x = (left - zoom * from.left) / across;
    const y = (top - zoom * from.top) / down;
    const width = (right - left) / across;
    const height = (bottom - top) / down;
    return {
      left: safe(Math.round(x) - x) / zoom, top: safe(Math.round(y) - y) / zoom,
      width: safe(Math.round(width)) / zoom, height: safe(Math.round(height)) / zoom,
      isAll: isWhole(x) && isWhole(y) && isWhole(width) && isWhole(height),
    };
  }

  function isWhole(length) {
    return Math.abs(Math.round(length) - length) < kLeastLength / 2;
  }

  // What is divided by a zoom and multiplied by it again must not end just below the length that it was.
  function safe(length) {
    return Math.abs(length) < kLeastLength / 2 ? 0 : length + Math.sign(length) * kLeastLength / 2;
  }

  return { above, zoomOf, contentBox, wholePixels };
})
