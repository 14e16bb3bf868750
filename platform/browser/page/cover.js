// SPDX-License-Identifier: Apache-2.0
// (isOurs, visit, stacking, above, isFadedOut, now) -> {look, changed}: what the page paints below and above an element. isOurs(element): it
// paints nothing itself. visit: see elements.js. stacking: see stacking.js. above, isFadedOut: see boxes.js. now() -> milliseconds. A box is
// {left, top, right, bottom}, in the window.
// look(element, box) -> {isCovered, level}. isCovered: something is painted over the plane, by the element itself or below it. level: the
// z-index with which what is in the element is painted below what the page paints above the element.
// changed(): the page may look different from now on.
//
// The engine tells what lies at a point, but not of what cannot be pointed at, such as all that a modal dialog covers, nor of what is
// smaller than the distance of two points. So all elements that have a part of the box are asked what they paint.
(function (isOurs, visit, stacking, above, isFadedOut, now) {
  'use strict';

  const { document, ShadowRoot } = window;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(Object.getOwnPropertyDescriptor(prototype, name).get);
  const documentElement = getter(Document.prototype, 'documentElement');
  const documentBody = getter(Document.prototype, 'body');
  const shadowRootOf = getter(Element.prototype, 'shadowRoot');
  const hostOf = getter(ShadowRoot.prototype, 'host');
  const localName = getter(Element.prototype, 'localName');
  const matches = uncurry(Element.prototype.matches);
  const boundingBox = uncurry(Element.prototype.getBoundingClientRect);
  const firstChild = getter(Node.prototype, 'firstChild');
  const nextSibling = getter(Node.prototype, 'nextSibling');
  const nodeType = getter(Node.prototype, 'nodeType');
  const dataOf = getter(CharacterData.prototype, 'data');
  const rootOf = uncurry(Node.prototype.getRootNode);
  const isIn = uncurry(Node.prototype.contains);
  const find = uncurry(RegExp.prototype.exec);
  const styleValue = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
  const computedStyle = window.getComputedStyle.bind(window);
  const resultOf = uncurry(WeakMap.prototype.get);
  const keepResult = uncurry(WeakMap.prototype.set);

  const kInset = 2;        // pixels; what only touches the box does not matter
  const kClear = 'rgba(0, 0, 0, 0)';
  const kText = 3;         // of nodeType
  const kRest = 20;        // after a look there is none for so many times as long as it took
  const kPatience = 1000;  // milliseconds; not all that changes a page tells of it
  const kMostErased = 0.5; // of the box
  const kSides = ['top', 'right', 'bottom', 'left'];
  const kPseudo = ['::before', '::after'];
  const kPaints = {
    __proto__: null, img: true, svg: true, canvas: true, video: true, input: true, textarea: true, select: true, button: true, progress: true,
    meter: true, iframe: true, frame: true, hr: true, math: true,
  };

  const results = new WeakMap();  // element -> {version, at, box, isCovered, level}
  let version = 0;
  let restsUntil = 0;

  function hasBackground(style) {
    return styleValue(style, 'background-color') !== kClear || styleValue(style, 'background-image') !== 'none';
  }

  // The background of the first two elements is that of the whole window, however small they are.
  function paintsEverywhere() {
    const root = documentElement(document);
    const body = documentBody(document);
    return (root !== null && hasBackground(computedStyle(root))) || (body !== null && hasBackground(computedStyle(body)));
  }

  // That of the body is the window's own, below everything, where the root has none.
  function paintsOwnBackground(element, style) {
    if (!hasBackground(style)) return false;
    return element !== documentBody(document) || hasBackground(computedStyle(documentElement(document)));
  }

  // Of the box, in pixels.
  function sharedArea(a, b) {
    const across = Math.min(a.right, b.right) - Math.max(a.left, b.left) - kInset;
    const down = Math.min(a.bottom, b.bottom) - Math.max(a.top, b.top) - kInset;
    return across > 0 && down > 0 ? across * down : 0;
  }

  function contains(outer, box) {
    return outer.left <= box.left && outer.top <= box.top && outer.right >= box.right && outer.bottom >= box.bottom;
  }

  function hasText(element) {
    for (let node = firstChild(element); node !== null; node = nextSibling(node)) {
      if (nodeType(node) === kText && find(/\S/, dataOf(node)) !== null) return true;
    }
    return false;
  }

  function bordersReach(style, rect, box) {
    const inner = { left: rect.left, top: rect.top, right: rect.right, bottom: rect.bottom };
    for (let i = 0; i < kSides.length; i += 1) {
      const side = kSides[i];
      const width = parseFloat(styleValue(style, 'border-' + side + '-width')) || 0;
      if (width > 0 && styleValue(style, 'border-' + side + '-color') !== kClear) inner[side] += side === 'top' || side === 'left' ? width : -width;
    }
    return !contains(inner, box) && !contains(inner, rect);
  }

  // A shadow is painted outside of its box, or inside.
  function shadowReaches(style, rect, box) {
    const shadow = styleValue(style, 'box-shadow');
    return shadow !== 'none' && (find(/inset/, shadow) !== null || !contains(rect, box));
  }

  function pseudoPaints(element) {
    for (let i = 0; i < kPseudo.length; i += 1) {
      const style = computedStyle(element, kPseudo[i]);
      const content = styleValue(style, 'content');
      if (content === 'none' || content === 'normal' || content === '') continue;
      if (content !== '""' || hasBackground(style)) return true;
    }
    return false;
  }

  // Below what a modal dialog holds, however small that is.
  function isOnBackdrop(element) {
    for (let at = element; at !== null; at = above(at)) {
      if (matches(at, ':modal') && hasBackground(computedStyle(at, '::backdrop'))) return true;
    }
    return false;
  }

  // What is in a closed shadow tree nobody tells.
  function isSecret(element) {
    return find(/-/, localName(element)) !== null && shadowRootOf(element) === null;
  }

  function paints(element, rect, box) {
    const style = computedStyle(element);
    if (styleValue(style, 'visibility') !== 'visible') return false;
    return paintsOwnBackground(element, style) || kPaints[localName(element)] === true || hasText(element) || bordersReach(style, rect, box) ||
      shadowReaches(style, rect, box) || isSecret(element) || pseudoPaints(element);
  }

  // All of the document, and the closed shadow trees that the element is in.
  function visitPage(element, visitor) {
    if (visit(document, visitor)) return;
    for (let root = rootOf(element); root instanceof ShadowRoot; root = rootOf(hostOf(root))) {
      if (shadowRootOf(hostOf(root)) === null && visit(root, visitor)) return;
    }
  }

  // What is not positioned lies below all that is: only there may what is above the element be below what is in it. When it cannot be
  // right for both, what is smaller is left out.
  function survey(element, box) {
    let known = null;  // most pages paint nothing there
    const order = () => known || (known = stacking.around(element));
    let isCovered = paintsEverywhere() || isOnBackdrop(element);
    let erased = 0;
    let isHiddenBelow = false;
    const isDone = () => isCovered && order().isPositioned;
    if (isDone()) return { isCovered, level: 0 };
    visitPage(element, (other) => {
      const isSelf = other === element;
      if (!isSelf && (isOurs(other) || isIn(element, other))) return false;
      const rect = boundingBox(other);
      const area = sharedArea(rect, box);
      if (area === 0 || !(isSelf ? hasBackground(computedStyle(element)) : paints(other, rect, box))) return false;
      if (isSelf || order().isBelow(other)) {
        isCovered = true;
        isHiddenBelow = isHiddenBelow || order().isAboveHole(other, -1);
      } else if (!order().isAboveHole(other, 0) && !isFadedOut(other)) {
        erased += area;
      }
      return isDone();
    });
    const whole = (box.right - box.left) * (box.bottom - box.top);
    return { isCovered, level: erased > 0 && (!isHiddenBelow || erased > kMostErased * whole) ? -1 : 0 };
  }

  function sameBox(a, b) {
    return a.left === b.left && a.top === b.top && a.right === b.right && a.bottom === b.bottom;
  }

  function look(element, box) {
    const last = resultOf(results, element);
    const start = now();
    if (last !== undefined) {
      if (start < restsUntil) return last;
      if (last.version === version && start - last.at < kPatience && sameBox(last.box, box)) return last;
    }
    const { isCovered, level } = survey(element, box);
    const end = now();
    const result = { version, at: end, box, isCovered, level };
    keepResult(results, element, result);
    restsUntil = end + kRest * (end - start);
    return result;
  }

  return { look, changed() { version += 1; } };
})
