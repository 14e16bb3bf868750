// SPDX-License-Identifier: Apache-2.0
// (listen, matching) -> {nodeAdded(node, parent), apply(), widenRules(rules)}: style sheets for the medium "tv" apply, as those for
// "screen" do. The engine takes a television's medium for one that nothing is. apply() is to be called after nodes have been added.
// widenRules(rules) does it to the rules of a sheet that is not the document's. listen: see listeners.js; matching: see elements.js
(function (listen, matching) {
  'use strict';

  const { apply } = Reflect;
  const { getOwnPropertyDescriptor, defineProperty } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const setter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).set);

  const { document, Element, HTMLLinkElement, HTMLStyleElement, CSSImportRule, CSSGroupingRule, CSSMediaRule } = window;
  const styleSheets = getter(Document.prototype, 'styleSheets');
  const mediaOf = getter(StyleSheet.prototype, 'media');
  const rulesOfSheet = getter(CSSStyleSheet.prototype, 'cssRules');
  const rulesOfGroup = getter(CSSGroupingRule.prototype, 'cssRules');
  const mediaOfRule = getter(CSSMediaRule.prototype, 'media');
  const mediaOfImport = getter(CSSImportRule.prototype, 'media');
  const imported = getter(CSSImportRule.prototype, 'styleSheet');
  const mediaText = getter(MediaList.prototype, 'mediaText');
  const setMediaText = setter(MediaList.prototype, 'mediaText');
  const getAttribute = uncurry(Element.prototype.getAttribute);
  const setAttribute = uncurry(Element.prototype.setAttribute);
  const find = uncurry(RegExp.prototype.exec);
  const replace = uncurry(String.prototype.replace);
  const readyState = getter(Document.prototype, 'readyState');
  const isConnected = getter(Node.prototype, 'isConnected');
  const sheetOfLink = getter(HTMLLinkElement.prototype, 'sheet');
  const sheetOfStyle = getter(HTMLStyleElement.prototype, 'sheet');
  const nextFrame = window.requestAnimationFrame.bind(window);
  const now = performance.now.bind(performance);

  const kPatience = 10000;  // milliseconds; not every sheet comes
  const kTelevision = /(^|,)(\s*(?:(?:only|not)\s+)?)tv(?![-\w(])/gi;

  function translated(queries) {
    return replace(queries, kTelevision, '$1$2screen');
  }

  function widen(media) {
    const queries = mediaText(media);
    const wider = translated(queries);
    if (wider !== queries) setMediaText(media, wider);
  }

  // These two return whether all that is imported is there.
  function widenRules(rules) {
    let isWhole = true;
    for (let i = 0; i < rules.length; i += 1) {
      const rule = rules[i];
      if (rule instanceof CSSImportRule) {
        widen(mediaOfImport(rule));
        isWhole = widenSheet(imported(rule)) && isWhole;
      } else if (rule instanceof CSSGroupingRule) {
        if (rule instanceof CSSMediaRule) widen(mediaOfRule(rule));
        widenRules(rulesOfGroup(rule));
      }
    }
    return isWhole;
  }

  function widenSheet(sheet) {
    if (sheet === null) return false;
    let rules = [];
    try {
      rules = rulesOfSheet(sheet);
    } catch {
      return true;  // of another origin: not to be read
    }
    return widenRules(rules);
  }

  function widenAll() {
    areSheetsNew = false;
    const sheets = styleSheets(document);
    for (let i = 0; i < sheets.length; i += 1) {
      widen(mediaOf(sheets[i]));
      widenSheet(sheets[i]);
    }
  }

  // A sheet that is still to come is waited for, as the engine does with those for its own medium, so that no frame is painted without.
  function linkAdded(link) {
    const queries = getAttribute(link, 'media');
    if (queries === null) return;
    const wider = translated(queries);
    if (wider !== queries) setAttribute(link, 'media', wider);
  }

  // A sheet applies some time before its element's event, and a frame may be painted meanwhile: until all of it is there it is looked at
  // before each frame.
  let awaited = [];  // {element, until}
  let isLooking = true;  // while the document loads, too: before what the page does in the frame

  function sheetOf(element) {
    return element instanceof HTMLLinkElement ? sheetOfLink(element) : sheetOfStyle(element);
  }

  function widenAwaited() {
    const before = awaited;
    awaited = [];
    isLooking = false;
    for (let i = 0; i < before.length; i += 1) {
      const { element, until } = before[i];
      if (!widenSheet(sheetOf(element)) && isConnected(element) && now() < until) expectSheet(element, until);
    }
    if (readyState(document) === 'loading') look();
  }

  function look() {
    if (!isLooking) nextFrame(widenAwaited);
    isLooking = true;
  }

  function expectSheet(element, until) {
    awaited[awaited.length] = { element, until };
    look();
  }

  let areSheetsNew = false;

  function elementAdded(element) {
    const isLink = element instanceof HTMLLinkElement;
    if (!isLink && !(element instanceof HTMLStyleElement)) return;
    if (isLink) linkAdded(element);
    areSheetsNew = true;
    if (!isLink || find(/\bstylesheet\b/i, getAttribute(element, 'rel') || '') !== null) expectSheet(element, now() + kPatience);
  }

  function nodeAdded(node, parent) {
    elementAdded(parent);  // of which the text may be new
    if (!(node instanceof Element)) return;
    elementAdded(node);
    const found = matching(node, 'link, style');
    for (let i = 0; i < found.length; i += 1) elementAdded(found[i]);
  }

  function applyNew() {
    if (areSheetsNew) widenAll();
  }

  listen(window, 'load', ({ target }) => {
    if (target === document || target instanceof HTMLLinkElement || target instanceof HTMLStyleElement) widenAll();
  }, true);
  listen(document, 'DOMContentLoaded', widenAll);

  nextFrame(widenAwaited);

  const match = window.matchMedia;
  defineProperty(window, 'matchMedia', {
    value: { matchMedia(queries) { return apply(match, window, arguments.length === 0 ? [] : [translated(`${queries}`)]); } }.matchMedia,
    writable: true, enumerable: true, configurable: true,
  });

  return { nodeAdded, apply: applyNew, widenRules };
})
