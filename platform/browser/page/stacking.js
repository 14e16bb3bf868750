// SPDX-License-Identifier: Apache-2.0
// (above) -> {makePile, around}. above: see boxes.js.
// makePile() -> {add(element, value), top()}: elements of this window's document, put one above the other as the engine paints them.
// top() -> {value, next}: the highest one, with the chain of those below it; null for none.
// around(element) -> {isPositioned, isBelow(other), isAboveHole(other, level)}. isPositioned: what is in the element can have its place among
// what has a z-index. isBelow(other): the other one is painted before the element. isAboveHole(other, level): it is painted after what is in
// the element with that z-index.
//
// An element's place is the path of the boxes through which it takes part in the painting of the page, the outermost first: each
// stacking context around it, then what is painted in one piece with it in the innermost of these. Paths are chains, {level, node,
// next}: what a page puts on the prototype of arrays does not reach them.
(function (above) {
  'use strict';

  const { getOwnPropertyDescriptor } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);

  const { document, Map } = window;
  const documentElement = getter(Document.prototype, 'documentElement');
  const rootOf = uncurry(Node.prototype.getRootNode);
  const comparePosition = uncurry(Node.prototype.compareDocumentPosition);
  const matches = uncurry(Element.prototype.matches);
  const styleValue = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
  const computedStyle = window.getComputedStyle.bind(window);
  const find = uncurry(RegExp.prototype.exec);
  const get = uncurry(Map.prototype.get);
  const set = uncurry(Map.prototype.set);

  const kFollowing = 4;  // of compareDocumentPosition
  // Levels of boxes without a z-index of their own: above all negative ones, below what is positioned.
  const kFloat = -0.5;
  const kInFlow = -0.25;
  const kTopLayer = ':is(:modal, :popover-open)';
  // What a box is for those inside it.
  const kNothing = 0;
  const kPiece = 1;       // they are painted together with it, save what is positioned
  const kPositioned = 2;  // the same, and it is itself painted by the stacking context that it is in
  const kContext = 3;     // a stacking context
  const kTop = 4;         // one above all of the page
  const kOrdinary = { kind: kNothing, level: kInFlow };

  const kItemParents = { __proto__: null, flex: true, 'inline-flex': true, grid: true, 'inline-grid': true };
  const kPieces = { __proto__: null, 'inline-block': true, 'inline-flex': true, 'inline-grid': true, 'inline-table': true };
  // A box that has another value than this is a stacking context.
  const kUsual = {
    __proto__: null, opacity: '1', 'mix-blend-mode': 'normal', isolation: 'auto', filter: 'none', 'backdrop-filter': 'none',
    '-webkit-backdrop-filter': 'none', 'clip-path': 'none', 'mask-image': 'none', 'mask-border-source': 'none',
    '-webkit-mask-box-image-source': 'none', '-webkit-box-reflect': 'none', 'view-transition-name': 'none',
  };
  const kUsualOfBlocks = {  // these do nothing to what is only a part of a line
    __proto__: null, transform: 'none', translate: 'none', rotate: 'none', scale: 'none', perspective: 'none', 'transform-style': 'flat',
    'offset-path': 'none',
  };
  const kContaining = /(?:^| )(?:strict|content|layout|paint)(?:$| )/;
  const kChanging = new RegExp('(?:^|, )(?:(?:-webkit-)?(?:mask|mask-image|mask-border|mask-box-image|clip-path|filter|backdrop-filter' +
    '|perspective|transform|transform-style|box-reflect)|opacity|mix-blend-mode|isolation|position|z-index|translate|rotate|scale' +
    '|offset-path|contain|view-transition-name)(?:$|,)');

  // What the engine does not know is "".
  function hasUnusual(style, usual) {
    for (const name in usual) {
      const value = styleValue(style, name);
      if (value !== usual[name] && value !== '') return true;
    }
    return false;
  }

  // What is only a part of a line cannot be transformed, and what holds nothing contains nothing.
  function isContext(style, isInLine, isReplaced) {
    if (hasUnusual(style, kUsual) || find(kChanging, styleValue(style, 'will-change')) !== null) return true;
    if (isInLine) return false;
    return hasUnusual(style, kUsualOfBlocks) || (!isReplaced && isContaining(style));
  }

  function isContaining(style) {
    const visibility = styleValue(style, 'content-visibility');
    return visibility === 'auto' || visibility === 'hidden' || find(kContaining, styleValue(style, 'contain')) !== null;
  }

  function isItem(element) {
    let parent = above(element);
    let display = 'contents';
    while (parent !== null && display === 'contents') {
      display = styleValue(computedStyle(parent), 'display');
      parent = above(parent);
    }
    return kItemParents[display] === true;
  }

  function boxOf(element, isReplaced) {
    const style = computedStyle(element);
    const display = styleValue(style, 'display');
    if (display === 'contents') return kOrdinary;
    if (matches(element, kTopLayer)) return { kind: kTop, level: Infinity };
    const position = styleValue(style, 'position');
    const isPositioned = position !== 'static';
    const isPlain = !isPositioned && !isItem(element);
    const index = isPlain ? 'auto' : styleValue(style, 'z-index');
    if (index !== 'auto') return { kind: kContext, level: +index };
    const isInLine = display === 'inline' && !isReplaced;
    if (position === 'fixed' || position === 'sticky' || isContext(style, isInLine, isReplaced)) return { kind: kContext, level: 0 };
    const hasLayer = !isReplaced && styleValue(style, 'backface-visibility') === 'hidden';  // the engine takes it for positioned
    if (isPositioned || hasLayer) return { kind: kPositioned, level: 0 };
    if (isPlain && styleValue(style, 'float') !== 'none') return { kind: kPiece, level: kFloat };
    return !isPlain || isReplaced || kPieces[display] === true ? { kind: kPiece, level: kInFlow } : kOrdinary;
  }

  // Once something is positioned it takes part in its stacking context directly, whatever is between the two. What is no replaced element
  // has a place of its own all the same.
  function pathOf(element, boxes, isReplaced) {
    const root = documentElement(document);
    let path = null;
    let reached = kNothing;
    for (let node = element; node !== null && node !== root && reached !== kTop; node = above(node)) {
      let box = get(boxes, node);
      if (box === undefined) {
        box = boxOf(node, isReplaced && node === element);
        set(boxes, node, box);
      }
      if (box.kind !== kNothing && (box.kind >= kContext || reached < kPositioned)) path = { level: box.level, node, next: path };
      else if (node === element) path = { level: kInFlow, node, next: null };
      if (box.kind > reached) reached = box.kind;
    }
    return path;
  }

  function depthOf(element) {
    let depth = 0;
    for (let at = above(element); at !== null; at = above(at)) depth += 1;
    return depth;
  }

  // In the order of the document, with shadow trees in their places.
  function isBehind(element, other) {
    let one = element;
    let two = other;
    if (rootOf(one) !== rootOf(two)) {
      let ahead = depthOf(one) - depthOf(two);
      for (; ahead > 0; ahead -= 1) one = above(one);
      for (; ahead < 0; ahead += 1) two = above(two);
      if (one === two) return one !== element;  // the deeper one is inside
      while (above(one) !== above(two)) {
        one = above(one);
        two = above(two);
      }
    }
    return (comparePosition(two, one) & kFollowing) !== 0;
  }

  function isAbove(path, other) {
    let one = path;
    let two = other;
    while (one !== null && two !== null && one.node === two.node) {
      one = one.next;
      two = two.next;
    }
    if (one === null || two === null) return one !== null;
    if (one.level !== two.level) return one.level > two.level;
    return isBehind(one.node, two.node);
  }

  // What has a z-index takes part in the innermost stacking context around it, and comes there before all that is not positioned or
  // after it; the element itself may come in between.
  function holePath(element, level) {
    let path = { level, node: element, next: null };
    const root = documentElement(document);
    for (let node = element; node !== null && node !== root; node = above(node)) {
      const box = boxOf(node, node === element);
      if (box.kind >= kContext) path = { level: box.level, node, next: path };
    }
    return path;
  }

  function around(element) {
    const boxes = new Map();
    const own = pathOf(element, new Map(), true);
    const holes = { __proto__: null, 0: holePath(element, 0), '-1': holePath(element, -1) };
    const placeOf = (other) => pathOf(other, boxes, false);
    return {
      isPositioned: boxOf(element, true).kind >= kPositioned,
      isBelow: (other) => isAbove(own, placeOf(other)),
      isAboveHole: (other, level) => isAbove(placeOf(other), holes[level]),
    };
  }

  function makePile() {
    const boxes = new Map();  // what several elements are in is looked at once
    let top = null;

    // Elements mostly come in the order of the document, so that each goes on the top.
    function add(element, value) {
      const path = pathOf(element, boxes, true);
      let above = null;
      let below = top;
      while (below !== null && isAbove(below.path, path)) {
        above = below;
        below = below.next;
      }
      const entry = { value, path, next: below };
      if (above === null) top = entry;
      else above.next = entry;
    }

    return { add, top: () => top };
  }

  return { makePile, around };
})
