// SPDX-License-Identifier: Apache-2.0
// The small headless page of avc-run: as much of a document as player code of HbbTV applications touches, and nothing visible.
//
// host: print(level, text)    exit(status)    readFile(path) -> text    now() -> milliseconds since the start
//       setTimer(function, milliseconds, repeats) -> id    clearTimer(id)    reportError(error)
//       setParentalLimit(age) -> whether there is such a limit
//       changeSubtitleSettings(value, text) -> boolean: the viewer's, told to every object
//       resolveUrl(text, base) -> absolute address, or null    documentUrl, userAgent, programArguments: values
// native, makeLayer: see av_element.js
(function (host, native, makeLayer) {
  'use strict';

  const window = globalThis;
  const kWidth = 1280;
  const kHeight = 720;

  // ---- console

  function quoted(value, depth) {
    return typeof value === 'string' ? JSON.stringify(value) : inspect(value, depth);
  }

  function inspectObject(value, depth) {
    if (value instanceof Error) return String(value);
    if (value instanceof Node) return '<' + value.nodeName.toLowerCase() + (value.id ? ' id="' + value.id + '"' : '') + '>';
    if (depth > 2) return Array.isArray(value) ? '[…]' : '{…}';
    if (Array.isArray(value)) return '[' + value.map((item) => quoted(item, depth + 1)).join(', ') + ']';
    const name = value.constructor && value.constructor !== Object ? value.constructor.name + ' ' : '';
    const parts = Object.keys(value).map((key) => key + ': ' + quoted(value[key], depth + 1));
    return name + '{' + parts.join(', ') + '}';
  }

  function inspect(value, depth = 0) {
    if (typeof value === 'function') return '[function ' + (value.name || 'anonymous') + ']';
    if (typeof value === 'object' && value !== null) return inspectObject(value, depth);
    return Object.is(value, -0) ? '-0' : String(value);
  }

  function format(values) {
    return values.map((value) => inspect(value)).join(' ');
  }

  const counts = new Map();
  const clocks = new Map();
  const console = {
    assert(condition, ...values) { if (!condition) host.print('error', 'Assertion failed' + (values.length ? ': ' + format(values) : '')); },
    count(label = 'default') {
      counts.set(label, (counts.get(label) || 0) + 1);
      host.print('log', label + ': ' + counts.get(label));
    },
    time(label = 'default') { clocks.set(label, host.now()); },
    timeEnd(label = 'default') {
      if (clocks.has(label)) host.print('log', label + ': ' + (host.now() - clocks.get(label)).toFixed(3) + ' ms');
      clocks.delete(label);
    },
    group(...values) { if (values.length) console.log(...values); },
    groupEnd() {},
    trace(...values) { host.print('debug', format(values) + '\n' + new Error().stack); },
    dir(value) { console.log(value); },
  };
  for (const level of ['log', 'info', 'debug', 'warn', 'error']) console[level] = (...values) => host.print(level, format(values));

  // ---- timers

  function timer(repeats) {
    return (action, delay = 0, ...parameters) => {
      const run = typeof action === 'function' ? () => Reflect.apply(action, window, parameters) : () => (0, eval)(String(action));
      return host.setTimer(run, Math.max(0, Number(delay) || 0), repeats);
    };
  }

  const setTimeout = timer(false);
  const clearTimer = (id) => host.clearTimer(Number(id) || 0);

  // ---- events

  class Event {
    constructor(type, init = {}) {
      this.type = String(type);
      this.bubbles = Boolean(init.bubbles);
      this.cancelable = Boolean(init.cancelable);
      this.defaultPrevented = false;
      this.target = null;
      this.currentTarget = null;
      this.timeStamp = host.now();
      this.stopped = false;
    }
    preventDefault() { if (this.cancelable) this.defaultPrevented = true; }
    stopPropagation() {}
    stopImmediatePropagation() { this.stopped = true; }
  }

  class CustomEvent extends Event {
    constructor(type, init = {}) {
      super(type, init);
      this.detail = init.detail === undefined ? null : init.detail;
    }
  }

  function runSafely(action) {
    try {
      action();
    } catch (error) {
      host.reportError(error);
    }
  }

  const listeners = new WeakMap();  // target -> [{type, listener, capture, once}]

  function addListener(target, type, listener, options) {
    if (listener === null || listener === undefined) return;
    const capture = typeof options === 'object' && options !== null ? Boolean(options.capture) : Boolean(options);
    const once = typeof options === 'object' && options !== null && Boolean(options.once);
    const list = listeners.get(target) || [];
    const same = (entry) => entry.type === String(type) && entry.listener === listener && entry.capture === capture;
    if (!list.some(same)) list.push({ type: String(type), listener, capture, once });
    listeners.set(target, list);
  }

  function removeListener(target, type, listener, options) {
    const capture = typeof options === 'object' && options !== null ? Boolean(options.capture) : Boolean(options);
    const list = listeners.get(target) || [];
    const at = list.findIndex((entry) => entry.type === String(type) && entry.listener === listener && entry.capture === capture);
    if (at >= 0) list.splice(at, 1);
  }

  function runListener(target, entry, event) {
    const { listener } = entry;
    if (typeof listener === 'function') Reflect.apply(listener, target, [event]);
    else if (typeof listener.handleEvent === 'function') listener.handleEvent(event);
  }

  // Listeners that a listener removes do not run any more, those that it adds not yet.
  function dispatch(target, event) {
    event.target = event.currentTarget = target;
    for (const entry of [...(listeners.get(target) || [])]) {
      if (entry.type !== event.type || !listeners.get(target).includes(entry)) continue;
      if (entry.once) removeListener(target, entry.type, entry.listener, entry.capture);
      runSafely(() => runListener(target, entry, event));
      if (event.stopped) break;
    }
    event.currentTarget = null;
    return !event.defaultPrevented;
  }

  class EventTarget {
    addEventListener(type, listener, options) { addListener(this, type, listener, options); }
    removeEventListener(type, listener, options) { removeListener(this, type, listener, options); }
    dispatchEvent(event) { return dispatch(this, event); }
  }

  // ---- nodes

  class Node extends EventTarget {
    constructor(nodeType, nodeName) {
      super();
      this.nodeType = nodeType;
      this.nodeName = nodeName;
      this.parentNode = null;
      this.childNodes = [];
    }
    get parentElement() { return this.parentNode instanceof Element ? this.parentNode : null; }
    get ownerDocument() { return this === document ? null : document; }
    get firstChild() { return this.childNodes[0] || null; }
    get lastChild() { return this.childNodes[this.childNodes.length - 1] || null; }
    get nextSibling() { return sibling(this, 1); }
    get previousSibling() { return sibling(this, -1); }
    get isConnected() { return document.contains(this); }
    hasChildNodes() { return this.childNodes.length > 0; }
    contains(node) {
      for (let at = node; at; at = at.parentNode) if (at === this) return true;
      return false;
    }
    appendChild(node) { return this.insertBefore(node, null); }
    insertBefore(node, before) {
      if (!(node instanceof Node)) throw new TypeError('not a node');
      if (node.contains(this)) throw new Error('HierarchyRequestError: a node cannot go into itself');
      if (node === before) return node;
      if (before && before.parentNode !== this) throw new Error('NotFoundError: the reference node is no child of this node');
      if (node.parentNode) detach(node);
      const at = before ? this.childNodes.indexOf(before) : this.childNodes.length;
      this.childNodes.splice(at, 0, node);
      node.parentNode = this;
      nodeInserted(node);
      return node;
    }
    removeChild(node) {
      if (!node || node.parentNode !== this) throw new Error('NotFoundError: the node is no child of this node');
      detach(node);
      return node;
    }
    replaceChild(node, old) {
      this.insertBefore(node, old);
      return this.removeChild(old);
    }
    remove() { if (this.parentNode) detach(this); }
    get textContent() { return this.childNodes.map((node) => node.textContent).join(''); }
    set textContent(text) {
      while (this.firstChild) detach(this.firstChild);
      if (text !== null && String(text) !== '') this.appendChild(document.createTextNode(text));
    }
  }

  class Text extends Node {
    constructor(text) {
      super(3, '#text');
      this.data = String(text);
    }
    get nodeValue() { return this.data; }
    get textContent() { return this.data; }
    set textContent(text) { this.data = String(text); }
  }

  function sibling(node, step) {
    const list = node.parentNode ? node.parentNode.childNodes : [];
    return list[list.indexOf(node) + step] || null;
  }

  function* descendants(node) {
    for (const child of node.childNodes) {
      if (!(child instanceof Element)) continue;
      yield child;
      yield* descendants(child);
    }
  }

  function* objectsIn(node) {
    if (node instanceof HTMLObjectElement) yield node;
    for (const element of descendants(node)) if (element instanceof HTMLObjectElement) yield element;
  }

  function detach(node) {
    const wasConnected = node.isConnected;
    node.parentNode.childNodes.splice(node.parentNode.childNodes.indexOf(node), 1);
    node.parentNode = null;
    if (wasConnected) for (const object of objectsIn(node)) layer.removed(object);
  }

  function nodeInserted(node) {
    layer.layoutChanged();
    if (node.localName === 'param' && node.parentNode instanceof HTMLObjectElement) {
      layer.parameterAdded(node.parentNode, node.getAttribute('name') || '', node.getAttribute('value') || '');
    }
    if (node.isConnected) for (const object of objectsIn(node)) layer.inserted(object);
  }

  // ---- style: the few properties that place a box are read, all are kept

  function parseStyle(text) {
    const out = new Map();
    for (const part of text.split(';')) {
      const colon = part.indexOf(':');
      if (colon > 0) out.set(part.slice(0, colon).trim().toLowerCase(), part.slice(colon + 1).trim());
    }
    return out;
  }

  const dashed = (name) => name.replace(/[A-Z]/g, (letter) => '-' + letter.toLowerCase());

  class Style {
    constructor() { this.values = new Map(); }
    getPropertyValue(name) { return this.values.get(name.toLowerCase()) || ''; }
    setProperty(name, value) {
      if (value === null || value === undefined || String(value) === '') this.values.delete(name.toLowerCase());
      else this.values.set(name.toLowerCase(), String(value));
      layer.layoutChanged();
    }
    removeProperty(name) {
      const old = this.getPropertyValue(name);
      this.setProperty(name, '');
      return old;
    }
    get cssText() { return [...this.values].map(([name, value]) => name + ': ' + value + ';').join(' '); }
    set cssText(text) {
      this.values = parseStyle(String(text));
      layer.layoutChanged();
    }
  }

  const styleAccess = {
    get(style, name) {
      if (typeof name !== 'string' || name in style) return Reflect.get(style, name);
      return style.getPropertyValue(name === 'cssFloat' ? 'float' : dashed(name));
    },
    set(style, name, value) {
      if (name === 'cssText') style.cssText = value;
      else style.setProperty(name === 'cssFloat' ? 'float' : dashed(String(name)), value);
      return true;
    },
  };

  function pixels(text, whole) {
    const match = /^\s*(-?\d+(?:\.\d+)?)\s*(px|%)?\s*$/.exec(text || '');
    if (match === null) return null;
    return match[2] === '%' ? (Number(match[1]) * whole) / 100 : Number(match[1]);
  }

  // A box is what styles and attributes say; without flow there is nothing else that could move it.
  function boxOf(element) {
    const parent = element.parentElement;
    const outer = parent === null ? { x: 0, y: 0, width: kWidth, height: kHeight, placed: false } : boxOf(parent);
    const read = (name, whole) => pixels(element.style.getPropertyValue(name), whole);
    const size = (name, whole) => {
      const styled = read(name, whole);
      return styled === null ? pixels(element.getAttribute(name), whole) : styled;
    };
    const left = read('left', outer.width);
    const top = read('top', outer.height);
    const width = size('width', outer.width);
    const height = size('height', outer.height);
    return {
      x: outer.x + (left || 0),
      y: outer.y + (top || 0),
      width: width === null ? outer.width : width,
      height: height === null ? outer.height : height,
      placed: outer.placed || left !== null || top !== null || width !== null || height !== null,
    };
  }

  function windowBox(element) {
    const box = boxOf(element);
    if (!box.placed) return null;  // nothing said: the media library's own choice
    return { x: Math.round(box.x), y: Math.round(box.y), width: Math.round(box.width), height: Math.round(box.height) };
  }

  // ---- elements

  class Element extends Node {
    constructor(name) {
      super(1, name.toUpperCase());
      this.localName = name.toLowerCase();
      this.attributeValues = new Map();
      this.style = new Proxy(new Style(), styleAccess);
    }
    get tagName() { return this.nodeName; }
    get children() { return this.childNodes.filter((node) => node instanceof Element); }
    get firstElementChild() { return this.children[0] || null; }
    get attributes() { return [...this.attributeValues].map(([name, value]) => ({ name, value })); }
    get id() { return this.getAttribute('id') || ''; }
    set id(value) { this.setAttribute('id', value); }
    get className() { return this.getAttribute('class') || ''; }
    set className(value) { this.setAttribute('class', value); }
    get classList() { return classList(this); }
    getAttribute(name) {
      const key = String(name).toLowerCase();
      if (key === 'style') return this.style.cssText === '' ? null : this.style.cssText;
      const value = this.attributeValues.get(key);
      return value === undefined ? null : value;
    }
    hasAttribute(name) { return this.getAttribute(name) !== null; }
    setAttribute(name, value) {
      const key = String(name).toLowerCase();
      if (key === 'style') this.style.cssText = value;
      else this.attributeValues.set(key, String(value));
      this.attributeChanged(key);
    }
    removeAttribute(name) {
      const key = String(name).toLowerCase();
      if (!this.hasAttribute(key)) return;
      if (key === 'style') this.style.cssText = '';
      else this.attributeValues.delete(key);
      this.attributeChanged(key);
    }
    attributeChanged() { layer.layoutChanged(); }
    getElementsByTagName(name) {
      const wanted = String(name).toLowerCase();
      return [...descendants(this)].filter((element) => wanted === '*' || element.localName === wanted);
    }
    getElementsByClassName(name) { return [...descendants(this)].filter((element) => element.classList.contains(name)); }
    querySelectorAll(selector) { return [...descendants(this)].filter(matcher(selector)); }
    querySelector(selector) { return this.querySelectorAll(selector)[0] || null; }
    append(...nodes) { for (const node of nodes) this.appendChild(node instanceof Node ? node : document.createTextNode(node)); }
    getBoundingClientRect() {
      const { x, y, width, height } = boxOf(this);
      return { x, y, left: x, top: y, width, height, right: x + width, bottom: y + height };
    }
    get offsetWidth() { return boxOf(this).width; }
    get offsetHeight() { return boxOf(this).height; }
    get clientWidth() { return boxOf(this).width; }
    get clientHeight() { return boxOf(this).height; }
    get innerHTML() { return this.childNodes.map(markupOf).join(''); }
    set innerHTML(text) {
      while (this.firstChild) detach(this.firstChild);
      parseMarkup(String(text), this);
    }
    focus() {}
    blur() {}
  }

  function classList(element) {
    const names = () => element.className.split(/\s+/).filter(Boolean);
    const store = (list) => { element.className = list.join(' '); };
    return {
      contains: (name) => names().includes(name),
      add: (...added) => store([...new Set([...names(), ...added])]),
      remove: (...gone) => store(names().filter((name) => !gone.includes(name))),
      toggle(name, force = !names().includes(name)) {
        if (force) this.add(name);
        else this.remove(name);
        return force;
      },
    };
  }

  // One compound selector (tag, #id, .class, [attribute], [attribute=value]), or several with commas; no combinators.
  function matcher(selector) {
    const tests = String(selector).split(',').map((part) => compound(part.trim()));
    return (element) => tests.some((test) => test(element));
  }

  function compound(text) {
    const pattern = /^([a-z*][\w-]*|\*)?((?:#[\w-]+|\.[\w-]+|\[[\w-]+(?:=["']?[^\]"']*["']?)?\])*)$/i;
    const match = pattern.exec(text);
    if (match === null || text === '') throw new SyntaxError('the headless page does not know the selector "' + text + '"');
    const rest = match[2].match(/#[\w-]+|\.[\w-]+|\[[^\]]+\]/g) || [];
    return (element) => (!match[1] || match[1] === '*' || element.localName === match[1].toLowerCase()) &&
      rest.every((one) => simple(one, element));
  }

  function simple(text, element) {
    if (text[0] === '#') return element.id === text.slice(1);
    if (text[0] === '.') return element.classList.contains(text.slice(1));
    const [name, value] = text.slice(1, -1).split('=');
    return value === undefined ? element.hasAttribute(name) : element.getAttribute(name) === value.replace(/^["']|["']$/g, '');
  }

  // Sizes of ordinary elements are not attributes; those of objects are.
  class HTMLObjectElement extends Element {
    attributeChanged(name) {
      super.attributeChanged(name);
      layer.attributeChanged(this, name);
    }
  }

  for (const name of ['data', 'src', 'type', 'width', 'height', 'name']) {
    Object.defineProperty(HTMLObjectElement.prototype, name, {
      configurable: true,
      enumerable: true,
      get() { return this.getAttribute(name) || ''; },
      set(value) { this.setAttribute(name, value); },
    });
  }

  class HTMLParamElement extends Element {
    get name() { return this.getAttribute('name') || ''; }
    set name(value) { this.setAttribute('name', value); }
    get value() { return this.getAttribute('value') || ''; }
    set value(value) { this.setAttribute('value', value); }
    attributeChanged() {
      if (this.parentNode instanceof HTMLObjectElement) layer.parameterAdded(this.parentNode, this.name, this.value);
    }
  }

  function makeElement(name) {
    const key = String(name).toLowerCase();
    if (key === 'object' || key === 'embed') return new HTMLObjectElement(key);
    return key === 'param' ? new HTMLParamElement(key) : new Element(key);
  }

  // ---- markup, for innerHTML

  const kEmptyElements = new Set(['br', 'embed', 'hr', 'img', 'input', 'link', 'meta', 'param', 'source']);
  const kEntities = { amp: '&', lt: '<', gt: '>', quot: '"', apos: "'", nbsp: '\u00a0' };

  function decode(text) {
    return text.replace(/&(#x[0-9a-f]+|#\d+|\w+);/gi, (whole, name) => {
      if (name[0] !== '#') return kEntities[name] === undefined ? whole : kEntities[name];
      return String.fromCodePoint(name[1].toLowerCase() === 'x' ? parseInt(name.slice(2), 16) : Number(name.slice(1)));
    });
  }

  function readAttributes(element, text) {
    const pattern = /([^\s=/>]+)(?:\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s>]+)))?/g;
    for (const [, name, double, single, bare] of text.matchAll(pattern)) {
      element.setAttribute(name, decode(double ?? single ?? bare ?? ''));
    }
  }

  // Elements are put into their parents when they are complete, so that an object starts with all its parameters.
  function parseMarkup(text, root) {
    const pattern = /<!--[\s\S]*?-->|<\/([a-z][\w-]*)\s*>|<([a-z][\w-]*)((?:"[^"]*"|'[^']*'|[^'">])*?)(\/?)>|([^<]+|<)/gi;
    const open = [root];
    const close = () => {
      const done = open.pop();
      open[open.length - 1].appendChild(done);
    };
    for (const [, ending, name, attributeText, slash, plain] of text.matchAll(pattern)) {
      if (plain !== undefined) open[open.length - 1].appendChild(document.createTextNode(decode(plain)));
      if (ending !== undefined && open.slice(1).some((element) => element.localName === ending.toLowerCase())) {
        while (open[open.length - 1].localName !== ending.toLowerCase()) close();
        close();
      }
      if (name === undefined) continue;
      const element = makeElement(name);
      readAttributes(element, attributeText);
      open.push(element);
      if (slash || kEmptyElements.has(element.localName)) close();
    }
    while (open.length > 1) close();
  }

  const escaped = (text) => text.replace(/&/g, '&amp;').replace(/</g, '&lt;').replace(/"/g, '&quot;');

  function markupOf(node) {
    if (!(node instanceof Element)) return escaped(node.textContent);
    const list = [...node.attributes];
    if (node.hasAttribute('style')) list.push({ name: 'style', value: node.getAttribute('style') });
    const start = '<' + node.localName + list.map(({ name, value }) => ' ' + name + '="' + escaped(value) + '"').join('');
    return kEmptyElements.has(node.localName) ? start + '>' : start + '>' + node.innerHTML + '</' + node.localName + '>';
  }

  // ---- document and window

  class URL {
    constructor(text, base) {
      const href = host.resolveUrl(String(text), base === undefined ? '' : String(base));
      if (href === null) throw new TypeError('"' + text + '" is no address');
      const [, protocol, , authority, pathname, search, fragment] = /^([^:]+:)(\/\/([^/?#]*))?([^?#]*)(\?[^#]*)?(#.*)?$/.exec(href);
      const name = (authority || '').replace(/^.*@/, '');
      const port = /:(\d*)$/.exec(name);
      Object.assign(this, {
        href, protocol, host: name, hostname: name.replace(/:\d*$/, ''), port: port === null ? '' : port[1],
        pathname: pathname === '' && authority ? '/' : pathname, search: search || '', hash: fragment || '',
        origin: protocol === 'file:' ? 'null' : protocol + '//' + name,
      });
    }
    toString() { return this.href; }
    toJSON() { return this.href; }
  }

  class Document extends Node {
    constructor() {
      super(9, '#document');
      this.readyState = 'loading';
      this.title = '';
      this.cookie = '';
      this.activeElement = null;
    }
    get URL() { return host.documentUrl; }
    get documentURI() { return host.documentUrl; }
    get baseURI() { return host.documentUrl; }
    get location() { return window.location; }
    get defaultView() { return window; }
    get documentElement() { return this.childNodes[0]; }
    get head() { return this.documentElement.childNodes[0]; }
    get body() { return this.documentElement.childNodes[1]; }
    createElement(name) { return makeElement(name); }
    createElementNS(space, name) { return makeElement(String(name).replace(/^.*:/, '')); }
    createTextNode(text) { return new Text(text); }
    createEvent() { return new Event(''); }
    getElementById(id) { return [...descendants(this)].find((element) => element.id === String(id)) || null; }
  }
  for (const name of ['getElementsByTagName', 'getElementsByClassName', 'querySelector', 'querySelectorAll']) {
    Document.prototype[name] = Element.prototype[name];
  }

  let layer = { layoutChanged() {}, inserted() {} };  // until the real one below: nothing is watched while the page is put together
  const document = new Document();
  const html = document.appendChild(makeElement('html'));
  html.appendChild(makeElement('head'));
  html.appendChild(makeElement('body'));

  layer = makeLayer(native, {
    prototypes: [HTMLObjectElement.prototype],
    isElement: (value) => value instanceof HTMLObjectElement && value.attributeValues !== undefined,
    isConnected: (element) => element.isConnected,
    localName: (element) => element.localName,
    getAttribute: (element, name) => element.getAttribute(name),
    setAttribute: (element, name, text) => element.setAttribute(name, text),
    parameters: (element) => element.children.filter((child) => child.localName === 'param').map((child) => [child.name, child.value]),
    box: windowBox,
    documentUrl: () => host.documentUrl,
    resolveUrl: (text, base) => host.resolveUrl(text, base) || text,
    dispatch: (element, type, fields) => dispatch(element, Object.assign(new Event(type), fields)),
    reportError: (error) => host.reportError(error),
    warn: (text) => host.print('warn', text),
    addressAdvice: ' or give a --document-url that begins with http',
    queueTask: (action) => setTimeout(action, 0),
    now: () => host.now(),
  });

  const define = (values) => {
    for (const [name, value] of Object.entries(values)) {
      Object.defineProperty(window, name, { value, writable: true, enumerable: true, configurable: true });
    }
  };
  const page = new URL(host.documentUrl);
  define({
    window, self: window, top: window, parent: window, frames: window, document, console,
    location: Object.assign(Object.create({ toString() { return this.href; } }), page),
    navigator: { userAgent: host.userAgent, appName: 'Netscape', language: 'en', onLine: true, platform: 'Linux' },
    screen: { width: kWidth, height: kHeight, availWidth: kWidth, availHeight: kHeight },
    innerWidth: kWidth, innerHeight: kHeight, devicePixelRatio: 1, onload: null, onunload: null, onerror: null,
    setTimeout, setInterval: timer(true), clearTimeout: clearTimer, clearInterval: clearTimer,
    queueMicrotask: (action) => { Promise.resolve().then(() => runSafely(action)); },
    performance: { now: () => host.now(), timeOrigin: Date.now() - host.now() },
    addEventListener: (type, listener, options) => addListener(window, type, listener, options),
    removeEventListener: (type, listener, options) => removeListener(window, type, listener, options),
    dispatchEvent: (event) => dispatch(window, event),
    reportError: (error) => host.reportError(error),
    getComputedStyle: (element) => element.style,
    exit: (status = 0) => host.exit(Number(status) || 0), readFile: (path) => host.readFile(String(path)),
    setParentalLimit: (age) => host.setParentalLimit(age == null ? -1 : Number(age)),
    changeSubtitleSettings: (value, text = '') => host.changeSubtitleSettings(Number(value), String(text)),
    arguments: host.programArguments,
    URL, Event, CustomEvent, EventTarget, Node, Text, Element, HTMLElement: Element, HTMLObjectElement, HTMLEmbedElement: HTMLObjectElement,
    Document,
  });

  // Like a page whose scripts have all run: whoever waits for one of these gets it.
  function loaded() {
    document.readyState = 'interactive';
    dispatch(document, new Event('DOMContentLoaded'));
    document.readyState = 'complete';
    const event = new Event('load');
    if (typeof window.onload === 'function') runSafely(() => window.onload(event));
    dispatch(window, event);
  }

  return { fire: layer.fire, flush: layer.flush, tick: layer.tick, busy: layer.busy, destroyAll: layer.destroyAll, loaded };
})
