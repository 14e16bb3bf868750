// SPDX-License-Identifier: Apache-2.0
// () -> {zoomOf, contentBox, wholePixels}: where an element is in this window's page, whatever zooms and transforms it.
// zoomOf(element) -> number    contentBox(element) -> {left, top, right, bottom}, in pixels of the page
// wholePixels(element) -> {left, top, width, height}, in CSS pixels from the corner of its content.
(function () {
  'use strict';

  const { getOwnPropertyDescriptor } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const { HTMLElement } = window;
  const parentElement = getter(Node.prototype, 'parentElement');
  const offsetWidth = getter(HTMLElement.prototype, 'offsetWidth');
  const offsetHeight = getter(HTMLElement.prototype, 'offsetHeight');
  const boundingBox = uncurry(Element.prototype.getBoundingClientRect);
  const styleValue = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
  const computedStyle = window.getComputedStyle.bind(window);

  // By how much the pixels of an element are larger than the engine's functions say: these tell of lengths before any CSS zoom.
  function zoomOf(element) {
    let zoom = 1;
    for (let at = element; at !== null; at = parentElement(at)) zoom *= parseFloat(styleValue(computedStyle(at), 'zoom')) || 1;
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
    while (around !== null && !isTransformed(around)) around = parentElement(around);
    const from = around === null ? { left: 0, top: 0, right: 0, bottom: 0 } : boundingBox(around);
    const hasSize = around instanceof HTMLElement && offsetWidth(around) > 0 && offsetHeight(around) > 0;
    const across = hasSize ? (from.right - from.left) / offsetWidth(around) : 1;
    const down = hasSize ? (from.bottom - from.top) / offsetHeight(around) : 1;
    const zoom = zoomOf(element);
    const { left, top, right, bottom } = contentBox(element);
    const x = (left - zoom * from.left) / across;
    const y = (top - zoom * from.top) / down;
    return {
      left: (Math.round(x) - x) / zoom, top: (Math.round(y) - y) / zoom,
      width: Math.round((right - left) / across) / zoom, height: Math.round((bottom - top) / down) / zoom,
    };
  }

  return { zoomOf, contentBox, wholePixels };
})
