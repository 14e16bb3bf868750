// SPDX-License-Identifier: Apache-2.0
// (listen, matching) -> {nodeAdded(node, parent), apply(), widenRules(rules)}: style sheets for the medium "tv" apply, as those for "screen" do. The
// engine takes a television's medium for one that nothing is. apply() is to be called after nodes have been added. widenRules(rules)
// does it to the rules of a sheet that is not the document's. listen: see listeners.js; matching: see elements.js
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
  const replace = uncurry(String.prototype.replace);

  const kTelevision = /(^|,)(\s*(?:(?:only|not)\s+)?)tv(?![-\w(])/gi;

  function translated(queries) {
    return replace(queries, kTelevision, '$1$2screen');
  }

  function widen(media) {
    const queries = mediaText(media);
    const wider = translated(queries);
    if (wider !== queries) setMediaText(media, wider);
  }

  function widenRules(rules) {
    for (let i = 0; i < rules.length; i += 1) {
      const rule = rules[i];
      if (rule instanceof CSSImportRule) {
        widen(mediaOfImport(rule));
        widenSheet(imported(rule));
      } else if (rule instanceof CSSGroupingRule) {
        if (rule instanceof CSSMediaRule) widen(mediaOfRule(rule));
        widenRules(rulesOfGroup(rule));
      }
    }
  }

  function widenSheet(sheet) {
    if (sheet === null) return;  // not there yet
    let rules = [];
    try {
      rules = rulesOfSheet(sheet);
    } catch {
      return;  // of another origin: not to be read
    }
    widenRules(rules);
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

  let areSheetsNew = false;

  function elementAdded(element) {
    if (element instanceof HTMLLinkElement) linkAdded(element);
    else if (!(element instanceof HTMLStyleElement)) return;
    areSheetsNew = true;
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

  const match = window.matchMedia;
  defineProperty(window, 'matchMedia', {
    value: { matchMedia(queries) { return apply(match, window, arguments.length === 0 ? [] : [translated(`${queries}`)]); } }.matchMedia,
    writable: true, enumerable: true, configurable: true,
  });

  return { nodeAdded, apply: applyNew, widenRules };
})
