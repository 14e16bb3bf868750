// SPDX-License-Identifier: Apache-2.0
// (listen, widenRules) -> move(element, direction): moves the focus from the element as the page's style properties nav-up, nav-right, nav-down
// and nav-left say (CSS Basic User Interface Level 3); false when they say nothing. The engine drops these properties, so they are read
// from the text of the style sheets, made custom properties, and left to the engine's cascade while an arrow is looked at. Linked
// sheets are fetched once more, as soon as something has the focus; until their text is there they say nothing.
// listen: see listeners.js    widenRules: see tv_medium.js
(function (listen, widenRules) {
  'use strict';

  const { document, CSS, CSSStyleSheet, CSSStyleRule, CSSGroupingRule, CSSImportRule, HTMLElement } = window;
  const { getOwnPropertyDescriptor } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const setter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).set);

  const styleSheets = getter(Document.prototype, 'styleSheets');
  const adopted = getter(Document.prototype, 'adoptedStyleSheets');
  const adopt = setter(Document.prototype, 'adoptedStyleSheets');
  const activeElement = getter(Document.prototype, 'activeElement');
  const elementById = uncurry(Document.prototype.getElementById);
  const ownerNode = getter(StyleSheet.prototype, 'ownerNode');
  const addressOf = getter(StyleSheet.prototype, 'href');
  const mediaOf = getter(StyleSheet.prototype, 'media');
  const isDisabled = getter(StyleSheet.prototype, 'disabled');
  const mediaText = getter(MediaList.prototype, 'mediaText');
  const rulesOfSheet = getter(CSSStyleSheet.prototype, 'cssRules');
  const rulesOfGroup = getter(CSSGroupingRule.prototype, 'cssRules');
  const deleteFromSheet = uncurry(CSSStyleSheet.prototype.deleteRule);
  const deleteFromGroup = uncurry(CSSGroupingRule.prototype.deleteRule);
  const replaceSync = uncurry(CSSStyleSheet.prototype.replaceSync);
  const mediaOfImport = getter(CSSImportRule.prototype, 'media');
  const imported = getter(CSSImportRule.prototype, 'styleSheet');
  const styleOf = getter(CSSStyleRule.prototype, 'style');
  const setCssText = setter(CSSStyleDeclaration.prototype, 'cssText');
  const valueOf = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
  const priorityOf = uncurry(CSSStyleDeclaration.prototype.getPropertyPriority);
  const setProperty = uncurry(CSSStyleDeclaration.prototype.setProperty);
  const computedStyle = window.getComputedStyle.bind(window);
  const registerProperty = CSS.registerProperty.bind(CSS);
  const textContent = getter(Node.prototype, 'textContent');
  const getAttribute = uncurry(Element.prototype.getAttribute);
  const focus = uncurry(HTMLElement.prototype.focus);
  const fetch = window.fetch.bind(window);
  const isGood = getter(Response.prototype, 'ok');
  const textOfAnswer = uncurry(Response.prototype.text);
  const then = uncurry(Promise.prototype.then);
  const known = uncurry(WeakMap.prototype.get);
  const keep = uncurry(WeakMap.prototype.set);
  const exec = uncurry(RegExp.prototype.exec);
  const replace = uncurry(String.prototype.replace);
  const matchMedia = window.matchMedia.bind(window);

  const kDirections = ['up', 'right', 'down', 'left'];
  // Behind strings and addresses, which may have in them what looks like a comment.
  const kComments = /("(?:[^"\\]|\\[^])*"|'(?:[^'\\]|\\[^])*'|url\([^)]*\))|\/\*[^]*?(?:\*\/|$)/gi;
  const kProperty = /([{;]\s*)nav-(up|right|down|left)(?=\s*:)/gi;
  const kTarget = /^\s*#([^\s;!]+)(?:\s+current)?\s*(?:!\s*important\s*)?$/i;

  const translations = new WeakMap();  // for each of the page's sheets the one with what it says of the focus; null: nothing
  let isRegistered = false;

  const withoutComments = (text) => replace(text, kComments, (found, kept) => kept || ' ');

  // Leaves what is said of the focus.
  function strip(owner, rules, deleteRule) {
    for (let i = rules.length - 1; i >= 0; i -= 1) {
      const rule = rules[i];
      if (rule instanceof CSSStyleRule) {
        const style = styleOf(rule);
        const kept = [];
        for (let d = 0; d < kDirections.length; d += 1) {
          const name = '--avc-nav-' + kDirections[d];
          kept[d] = { name, value: valueOf(style, name), priority: priorityOf(style, name) };
        }
        setCssText(style, '');
        for (let d = 0; d < kept.length; d += 1) if (kept[d].value !== '') setProperty(style, kept[d].name, kept[d].value, kept[d].priority);
      } else if (rule instanceof CSSGroupingRule) {
        strip(rule, rulesOfGroup(rule), deleteFromGroup);
      } else {
        deleteRule(owner, i);
      }
    }
  }

  function translate(sheet, text) {
    const bare = withoutComments(text);
    const properties = replace(bare, kProperty, (found, before, direction) => `${before}--avc-nav-${direction.toLowerCase()}`);
    if (properties === bare) return null;
    const translation = new CSSStyleSheet({ __proto__: null, media: mediaText(mediaOf(sheet)) });
    replaceSync(translation, properties);
    strip(translation, rulesOfSheet(translation), deleteFromSheet);
    widenRules(rulesOfSheet(translation));
    return translation;
  }

  function translationOf(sheet) {
    const translation = known(translations, sheet);
    if (translation !== undefined) return translation;
    const address = addressOf(sheet);
    if (address === null) {
      const own = translate(sheet, textContent(ownerNode(sheet)) || '');
      keep(translations, sheet, own);
      return own;
    }
    keep(translations, sheet, null);
    const ignore = () => {};  // then it says nothing
    const answer = fetch(address, { __proto__: null, cache: 'force-cache' });
    const text = then(answer, (response) => (isGood(response) ? textOfAnswer(response) : ''));
    const kept = then(text, (words) => keep(translations, sheet, translate(sheet, words)));
    then(kept, undefined, ignore);
    return null;
  }

  // A sheet whose text changes is another one to the engine.
  function collect(sheet, into) {
    if (sheet === null || isDisabled(sheet)) return;
    let rules = [];
    try {
      rules = rulesOfSheet(sheet);
    } catch {
      return;  // of another origin
    }
    for (let i = 0; i < rules.length && rules[i] instanceof CSSImportRule; i += 1) {
      if (matchMedia(mediaText(mediaOfImport(rules[i]))).matches) collect(imported(rules[i]), into);
    }
    const translation = translationOf(sheet);
    if (translation !== null) into[into.length] = translation;
  }

  function collectAll() {
    const sheets = styleSheets(document);
    const translated = [];
    for (let i = 0; i < sheets.length; i += 1) collect(sheets[i], translated);
    return translated;
  }

  listen(window, 'focusin', collectAll, true);

  function fromSheets(element, direction) {
    const translated = collectAll();
    if (translated.length === 0) return '';
    if (!isRegistered) {
      isRegistered = true;
      for (const each of kDirections) registerProperty({ __proto__: null, name: '--avc-nav-' + each, syntax: '*', inherits: false });
    }
    const own = adopted(document);
    const before = [];
    for (let i = 0; i < own.length; i += 1) before[i] = own[i];
    const all = [...before, ...translated];
    adopt(document, all);
    const value = valueOf(computedStyle(element), '--avc-nav-' + direction);
    adopt(document, before);
    return value;
  }

  function fromAttribute(element, direction) {
    const text = getAttribute(element, 'style');
    const found = text === null ? null : exec(new RegExp(`(?:^|;)\\s*nav-${direction}\\s*:([^;]*)`, 'i'), withoutComments(text));
    return found === null ? null : found[1];
  }

  return function move(element, direction) {
    const said = fromAttribute(element, direction) || fromSheets(element, direction);
    const target = exec(kTarget, said);
    const next = target === null ? null : elementById(document, target[1]);
    if (!(next instanceof HTMLElement)) return false;
    focus(next);
    return activeElement(document) === next;
  };
})
