// SPDX-License-Identifier: Apache-2.0
// What a window of the television browser gets before its first script: the A/V Control elements, the remote control's keys, the
// objects of the environment, and where errors and console lines go. Runs in the page's own world. Whatever a page may put in the
// place of an engine's function later is taken from here at the start.
//
// host: print(level, text, source, line)    uncaught(text, source, line)    settings: a JSON text
//       wake(): flush is to be called once no script runs    ended(): this window goes
//       othersHaveObjects() -> boolean    placeOthers(): the objects of all other windows are to be placed
//       subtitlesEnabled() -> boolean: does the viewer want them?
//       stackAll(): the objects of all windows are to be put one above the other, as their elements are
//       frameOffset(parentWindow) -> {x, y, across, down, covered}: where this window's page is on the plane, how large its pixels are
//       there, and whether something is painted below it; null when it cannot be seen
// native, makeLayer: see av_element.js
// parts: {inspect, listeners, screen, keys, keyPress, bodyKeys, namedEntities, applicationTable, controls, directedFocus, tvMedium,
// environment, elements, results, boxes, stacking, cover, videoHole}: see there
// The result is what the program calls: see the last lines.
(function (host, native, makeLayer, parts) {
  'use strict';

  const kNowhere = { x: 1280, y: 720, width: 1280, height: 720 };  // just outside the plane
  const kTopOrigin = { x: 0, y: 0, across: 1, down: 1, covered: false };
  const kPlane = { left: 0, top: 0, right: 1280, bottom: 720 };
  const kLeast = { width: 150, height: 80 };  // the A/V Control object takes no smaller window
  const kXhtml = 'http://www.w3.org/1999/xhtml';
  const kFrames = ['iframe', 'frame', 'object'];
  const kTelevisionXhtml = 'application/vnd.hbbtv.xhtml+xml';

  const { apply } = Reflect;
  const { getOwnPropertyDescriptor, defineProperty, assign } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);
  const settings = JSON.parse(host.settings);
  const listen = parts.listeners();
  const { visit, matching } = parts.elements();
  const forgetResults = parts.results(visit);

  const {
    document, Element, HTMLObjectElement, HTMLEmbedElement, HTMLParamElement, ShadowRoot, Event, URL, MutationObserver, requestAnimationFrame,
    setTimeout,
  } = window;
  const isTop = window.top === window;
  const parentWindow = window.parent;
  const isInDocument = getter(Node.prototype, 'isConnected');
  const defaultView = getter(Document.prototype, 'defaultView');
  const nodeType = getter(Node.prototype, 'nodeType');
  const baseUri = getter(Node.prototype, 'baseURI');
  const textContent = getter(Node.prototype, 'textContent');
  const documentAddress = getter(Document.prototype, 'URL');
  const ownerDocument = getter(Node.prototype, 'ownerDocument');
  const parentElement = getter(Node.prototype, 'parentElement');
  const rootNode = uncurry(Node.prototype.getRootNode);
  const hostOf = getter(ShadowRoot.prototype, 'host');
  const localName = getter(Element.prototype, 'localName');
  const offsetWidth = getter(HTMLElement.prototype, 'offsetWidth');
  const offsetHeight = getter(HTMLElement.prototype, 'offsetHeight');
  const clientLeft = getter(Element.prototype, 'clientLeft');
  const clientTop = getter(Element.prototype, 'clientTop');
  const getAttribute = uncurry(Element.prototype.getAttribute);
  const setAttribute = uncurry(Element.prototype.setAttribute);
  const firstInDocument = uncurry(Document.prototype.querySelector);
  const named = uncurry(Document.prototype.getElementsByTagNameNS);
  const firstElementChild = getter(Element.prototype, 'firstElementChild');
  const nextElementSibling = getter(Element.prototype, 'nextElementSibling');
  const boundingBox = uncurry(Element.prototype.getBoundingClientRect);
  const clientRects = uncurry(Element.prototype.getClientRects);
  const styleValue = uncurry(CSSStyleDeclaration.prototype.getPropertyValue);
  const computedStyle = window.getComputedStyle.bind(window);
  const originalFocus = HTMLElement.prototype.focus;
  const dispatchEvent = uncurry(EventTarget.prototype.dispatchEvent);
  const addListener = uncurry(EventTarget.prototype.addEventListener);
  const removeListener = uncurry(EventTarget.prototype.removeEventListener);
  const readerOf = uncurry(WeakMap.prototype.get);
  const keepReader = uncurry(WeakMap.prototype.set);
  const takeRecords = uncurry(MutationObserver.prototype.takeRecords);
  const observe = uncurry(MutationObserver.prototype.observe);
  const contentType = getter(Document.prototype, 'contentType');
  const originalCreateElement = Document.prototype.createElement;
  const createElementNS = uncurry(Document.prototype.createElementNS);
  const getAnimations = uncurry(Document.prototype.getAnimations);
  const playStateOf = getter(Animation.prototype, 'playState');
  const lowerCase = uncurry(String.prototype.toLowerCase);
  const some = uncurry(Array.prototype.some);
  const reportError = window.reportError.bind(window);
  const now = performance.now.bind(performance);
  const frameWindow = [HTMLIFrameElement, HTMLFrameElement, HTMLObjectElement]
    .map((type) => ({ type, contentWindow: getter(type.prototype, 'contentWindow') }));

  const frameElementOf = getter(window, 'frameElement');

  let hasGone = false;  // this window; `window` may be one of another origin then

  // The document of a frame that has gone is in no window.
  const isConnected = (element) => !hasGone && isInDocument(element) && defaultView(ownerDocument(element)) !== null;

  const isElement = (value) => value instanceof HTMLObjectElement || value instanceof HTMLEmbedElement;

  function resolveUrl(text, base) {
    try {
      return new URL(text, base).href;
    } catch {
      return text;
    }
  }

  // ---- attributes and the tree: one observer tells of everything, in order; a pump tells at once what it would tell later

  function pump() {
    const records = takeRecords(observer);
    if (records.length > 0) changed(records);
  }

  function changed(records) {
    let layout = false;
    let removals = false;
    for (let i = 0; i < records.length; i += 1) {
      const record = records[i];
      layout = true;
      if (record.type === 'childList') {
        treeChanged(record);
        removals = removals || record.removedNodes.length > 0;
      } else if (isElement(record.target)) {
        layer.attributeChanged(record.target, record.attributeName);
      }
    }
    if (removals && hasShadowTrees) layer.lookForRemoved();
    if (layout) layoutMayHaveChanged();
    tvMedium.apply();
  }

  function treeChanged({ target, addedNodes, removedNodes }) {
    for (let i = 0; i < removedNodes.length; i += 1) visitObjects(removedNodes[i], layer.removed);
    for (let i = 0; i < addedNodes.length; i += 1) {
      const node = addedNodes[i];
      if (isElement(target) && node instanceof HTMLParamElement && readerOf(readParameters, node) !== target) {
        keepReader(readParameters, node, target);
        layer.parameterAdded(target, getAttribute(node, 'name') || '', getAttribute(node, 'value') || '');
      }
      visitObjects(node, (element) => { if (isConnected(element)) layer.inserted(element); });
      tvMedium.nodeAdded(node, target);
    }
  }

  // An object that came with its parameters has read them before their own record is looked at.
  const readParameters = new WeakMap();  // which object has read a parameter

  function visitObjects(node, visitor) {
    if (nodeType(node) !== 1) return;
    if (isElement(node)) visitor(node);
    const found = matching(node, 'object, embed');
    for (let i = 0; i < found.length; i += 1) visitor(found[i]);
  }

  let hasShadowTrees = false;  // objects of this window have been in one

  const tvMedium = parts.tvMedium(listen, matching);
  const observer = new MutationObserver((records) => changed(records));
  const kWatched = {
    __proto__: null, childList: true, subtree: true, attributes: true,
    attributeFilter: ['type', 'style', 'class', 'hidden', 'width', 'height', 'data-application-hidden'],
  };
  observe(observer, document, kWatched);

  // What happens in a shadow tree only an observer of that tree is told, and no query finds what is in it.
  function entered(element) {
    for (let root = rootNode(element); root instanceof ShadowRoot; root = rootNode(hostOf(root))) {
      observe(observer, root, kWatched);
      hasShadowTrees = true;
    }
  }

  // An element that has just read all of its attributes does not read them again for what was noted before.
  function upgraded(element) {
    const records = takeRecords(observer);
    observe(observer, element, { attributes: true, childList: true });
    const others = [];
    for (let i = 0; i < records.length; i += 1) if (records[i].target !== element) others[others.length] = records[i];
    if (others.length > 0) changed(others);
    host.wake();
  }

  for (const prototype of [HTMLObjectElement.prototype, HTMLEmbedElement.prototype]) {
    for (const name of ['setAttribute', 'setAttributeNS', 'setAttributeNode', 'setAttributeNodeNS', 'removeAttribute', 'removeAttributeNS',
      'removeAttributeNode', 'toggleAttribute']) {
      const original = Element.prototype[name];
      const method = {
        [name](...parameters) {
          const before = getAttribute(this, 'type');
          const result = apply(original, this, parameters);
          if (isConnected(this) || getAttribute(this, 'type') !== before) layer.inserted(this);
          pump();
          return result;
        },
      }[name];
      defineProperty(prototype, name, { value: method, writable: true, enumerable: true, configurable: true });
    }
  }

  // ---- geometry

  const kFrameWork = 10;  // milliseconds after a page's callback in which what changes is taken to be painted with its frame
  let frameAsked = false;
  let frameAt = -kFrameWork;

  // The frame that shows a change of the layout also places the video. A running animation changes it with every frame. What a page
  // changes in an animation frame is painted with that one; a callback asked for then would come with the next.
  function layoutMayHaveChanged() {
    cover.changed();
    if (hasGone || (!layer.hasObjects() && !host.othersHaveObjects())) return;
    if (now() - frameAt < kFrameWork) placeAll();
    if (!frameAsked && (now() - frameAt >= kFrameWork || isAnimated())) askFrame();
  }

  function askFrame() {
    frameAsked = true;
    apply(requestAnimationFrame, window, [() => {
      frameAsked = false;
      placeAll();
      if (isAnimated()) askFrame();
    }]);
  }

  // What moves in this window takes the frames in it along.
  function placeAll() {
    layer.placeWindows();
    host.placeOthers();
    host.stackAll();
  }

  function isAnimated() {
    return some(getAnimations(document), (animation) => playStateOf(animation) === 'running');  // others keep what they have come to
  }

  defineProperty(window, 'requestAnimationFrame', {
    value: {
      requestAnimationFrame(callback) {
        if (typeof callback !== 'function') return apply(requestAnimationFrame, window, arguments);
        return apply(requestAnimationFrame, window, [(time) => {
          frameAt = now();
          try {
            apply(callback, undefined, [time]);
          } finally {
            frameAt = now();
          }
        }]);
      },
    }.requestAnimationFrame,
    writable: true,
    enumerable: true,
    configurable: true,
  });

  for (const type of ['scroll', 'resize', 'load', 'transitionrun', 'animationstart', 'fullscreenchange']) {
    listen(window, type, layoutMayHaveChanged, { capture: true, passive: true });
  }

  function origin() {
    return isTop ? kTopOrigin : host.frameOffset(parentWindow) || null;  // a window that has gone knows nothing
  }

  // A page can put an element into the document of another window, which is then a frame of this one or around it.
  function originOf(element) {
    const place = ownerDocument(element);
    if (place === document) return origin();
    const frame = frameElementOf(defaultView(place));
    return frame === null ? kTopOrigin : contentOffset(frame);
  }

  const { above, isFadedOut, zoomOf, contentBox, wholePixels, drift, spread } = parts.boxes();

  function box(element) {
    if (!isConnected(element)) return kNowhere;
    const from = originOf(element);
    const style = computedStyle(element);
    const { left, top, right, bottom } = contentBox(element);
    if (from === null || from.across * (right - left) < kLeast.width || from.down * (bottom - top) < kLeast.height) return kNowhere;
    if (styleValue(style, 'visibility') !== 'visible' || isFadedOut(element)) return kNowhere;
    const x = Math.round(from.x + from.across * left);
    const y = Math.round(from.y + from.down * top);
    return { x, y, width: Math.round(from.x + from.across * right) - x, height: Math.round(from.y + from.down * bottom) - y };
  }

  function isRendered(element) {
    return isConnected(element) && originOf(element) !== null && clientRects(element).length > 0 &&
      styleValue(computedStyle(element), 'visibility') === 'visible' && !isFadedOut(element);
  }

  function contentWindowOf(element) {
    for (let i = 0; i < frameWindow.length; i += 1) {
      if (element instanceof frameWindow[i].type) return frameWindow[i].contentWindow(element);
    }
    return null;
  }

  // visitor(frame, window) -> boolean: it was the last one. None of those in shadow trees.
  function visitFrames(visitor) {
    for (let i = 0; i < kFrames.length; i += 1) {
      const frames = named(document, kXhtml, kFrames[i]);
      for (let j = 0; j < frames.length; j += 1) {
        const child = contentWindowOf(frames[j]);
        if (child !== null && visitor(frames[j], child)) return;
      }
    }
  }

  // Where the page of the child window begins on the plane, or null while it cannot be seen.
  function offsetOf(child) {
    let found = null;
    visitFrames((frame, childWindow) => {
      if (childWindow === child) found = frame;
      return found !== null;
    });
    const frame = found || frameInShadowTree(child);
    return frame ? contentOffset(frame) : null;
  }

  // A window of another origin does not tell.
  function frameInShadowTree(child) {
    try {
      return frameElementOf(child);
    } catch {
      return null;
    }
  }

  function contentOffset(frame) {
    const from = originOf(frame);
    const { left, top, right, bottom } = boundingBox(frame);
    const style = computedStyle(frame);
    if (from === null || right - left < 1 || bottom - top < 1 || styleValue(style, 'visibility') !== 'visible' || isFadedOut(frame)) return null;
    const padding = (side) => parseFloat(styleValue(style, 'padding-' + side)) || 0;
    const zoom = zoomOf(frame);
    const scale = (length, unscaled) => (unscaled === 0 || Math.abs(length - unscaled) < 1 ? 1 : length / unscaled);  // that is a whole number
    const across = scale(right - left, offsetWidth(frame));
    const down = scale(bottom - top, offsetHeight(frame));
    return {
      x: from.x + from.across * zoom * (left + across * (clientLeft(frame) + padding('left'))),
      y: from.y + from.down * zoom * (top + down * (clientTop(frame) + padding('top'))),
      across: from.across * across,
      down: from.down * down,
      covered: from.covered || cover.look(frame, boundingBox(frame)).isCovered,
    };
  }

  // What lies in this window one above the other, the highest first: ids of its objects, and windows of its frames where others have
  // objects.
  const stacking = parts.stacking(above);

  function stack() {
    const pile = stacking.makePile();
    layer.forEach((element, id) => { if (isConnected(element)) pile.add(element, id); });
    if (host.othersHaveObjects()) {
      visitFrames((frame, child) => {
        pile.add(frame, child);
        return false;
      });
    }
    return pile.top();
  }

  // ---- the plane is seen through what the page paints below an element

  const uncover = parts.videoHole(matching, above, drift, spread);
  const cover = parts.cover(isElement, visit, stacking, above, isFadedOut, now);

  function holeFor(element, fullScreen) {
    const area = fullScreen ? kPlane : boundingBox(element);
    const from = originOf(element);
    if (from === null) return null;
    const isHere = ownerDocument(element) === document;
    const { isCovered, level } = isHere ? cover.look(element, area) : { isCovered: true, level: 0 };
    if (!from.covered && !isCovered) return null;
    if (!fullScreen) return { area: 'box', level, ...wholePixels(element) };
    return { area: 'plane', level, plane: kPlane };
  }

  // ---- console and errors

  const inspect = parts.inspect();

  // Where the page called: the first line of the stack that is not this file's.
  function caller() {
    const lines = String(new Error().stack).split('\n');
    for (const line of lines) {
      const match = /^(?:.*@)?(.+?):(\d+):\d+$/.exec(line);
      if (match !== null && !match[1].startsWith('avc-browser:')) return { source: match[1], line: Number(match[2]) };
    }
    return { source: '', line: 0 };
  }

  function print(level, values) {
    const { source, line } = caller();
    host.print(level, values.map((value) => inspect(value)).join(' '), source, line);
  }

  for (const level of ['log', 'info', 'debug', 'warn', 'error']) {
    const original = console[level];
    console[level] = { [level](...values) {
      print(level, values);
      return apply(original, console, values);
    } }[level];
  }
  const assertOriginal = console.assert;
  console.assert = function assert(condition, ...values) {
    if (!condition) print('error', ['Assertion failed:', ...values]);
    return apply(assertOriginal, console, [condition, ...values]);
  };

  // After the page's own listeners: what they have dealt with is not told.
  function onUnhandled(type, tell) {
    const listener = (event) => {
      if (!event.defaultPrevented) tell(event);
    };
    listen(window, type, () => {
      removeListener(window, type, listener);
      addListener(window, type, listener);
    }, true);
  }

  onUnhandled('error', (event) => {
    if (event.message === undefined) return;
    const { error } = event;  // the engine's message of a thrown object that is no Error says nothing
    const text = typeof error === 'object' && error !== null && !(error instanceof Error) ? inspect(error) : String(event.message);
    host.uncaught(text, String(event.filename), Number(event.lineno) || 0);
  });
  // Of what an element of the page names only the capturing listener hears; it may be an A/V Control object, which has no such error.
  listen(window, 'error', ({ target }) => {
    if (!(target instanceof Element) || isElement(target)) return;
    const address = getAttribute(target, 'src') || getAttribute(target, 'href');
    if (address !== null) host.print('error', 'cannot be loaded: ' + resolveUrl(address, baseUri(target)), documentAddress(document), 0);
  }, true);

  // The engine shows such a page as far as it got, with a box of its own that says why.
  listen(document, 'DOMContentLoaded', () => {
    const box = contentType(document) === 'text/html' ? null : firstInDocument(document, 'parsererror');
    if (box === null) return;
    const [, text, line] = /(error on line (\d+)[^\n]*?)(?:Below is|\n|$)/.exec(textContent(box)) || [null, textContent(box), 0];
    host.uncaught('not well-formed XML: ' + text, documentAddress(document), Number(line));
  });

  onUnhandled('unhandledrejection', ({ reason }) => {
    const known = reason instanceof Error;
    host.uncaught('unhandled rejection: ' + inspect(reason), known ? String(reason.sourceURL) : '', known ? Number(reason.line) || 0 : 0);
  });

  // ---- documents of the television type: the engine takes them for plain XML, in which createElement makes no HTML elements

  defineProperty(Document.prototype, 'createElement', {
    value: function createElement(name) {
      if (lowerCase(contentType(this)) === kTelevisionXhtml) return createElementNS(this, kXhtml, name);
      return apply(originalCreateElement, this, arguments);
    },
    writable: true,
    enumerable: true,
    configurable: true,
  });

  // ---- the parts

  parts.screen();
  parts.bodyKeys(parts.keyPress(listen, parts.keys()));
  parts.applicationTable((text) => host.uncaught(text, documentAddress(document), 0));
  parts.controls(listen, parts.directedFocus(listen, tvMedium.widenRules));
  parts.namedEntities();
  parts.environment({
    settings, subtitlesEnabled: host.subtitlesEnabled, isElement, getAttribute, warn: (text) => host.print('warn', text, '', 0),
  });

  const layer = makeLayer(native, {
    prototypes: [HTMLObjectElement.prototype, HTMLEmbedElement.prototype],
    isElement,
    isConnected,
    localName,
    getAttribute,
    setAttribute(element, name, text) {
      setAttribute(element, name, text);
      pump();
    },
    parameters(element) {
      const out = [];
      for (let child = firstElementChild(element); child !== null; child = nextElementSibling(child)) {
        if (localName(child) !== 'param') continue;
        keepReader(readParameters, child, element);
        out.push([getAttribute(child, 'name') || '', getAttribute(child, 'value') || '']);
      }
      return out;
    },
    box,
    isRendered,
    shows(element, place, fullScreen) {
      const isSeen = fullScreen || (place !== null && place !== kNowhere);
      uncover(element, isSeen ? holeFor(element, fullScreen) : null);
    },
    focus: (element, parameters) => apply(originalFocus, element, parameters),
    documentUrl: (element) => documentAddress(ownerDocument(element)),
    baseUrl: baseUri,
    resolveUrl,
    dispatch: (element, type, fields) => dispatchEvent(element, assign(new Event(type), fields)),
    reportError,
    warn: (text) => host.print('warn', text, '', 0),
    queueTask: (action) => apply(setTimeout, window, [action, 0]),
    now,
    sync: pump,
    upgraded,
    entered,
    wake: host.wake,
    userAgent: settings.userAgent,
  });

  // A page may send events of that name itself.
  listen(window, 'pagehide', ({ isTrusted }) => {
    if (!isTrusted) return;
    hasGone = true;
    host.ended();
  }, true);

  return {
    fire: layer.fire, flush: layer.flush, tick: layer.tick, offsetOf, status: layer.status,
    placeWindows: layer.placeWindows, stack,
    forget() {
      if (defaultView(document) === null) forgetResults(document);
    },
  };
})
