// SPDX-License-Identifier: Apache-2.0
// The A/V Control element: what makes an <object> or <embed> of a supported type a live A/V Control object.
// The same in every shell; what differs between a headless page and a browser's comes in as `page`.
//
// native: create() -> script object of a new native one, or null    id(object) -> number
//         rows(id) -> {properties: [{name, type, access}], methods: [name]}; of id 0: what all objects have, where that is known already
//         reader(index), textReader(index), method(index): a row of those lists as a function whose receiver is a native object's
//         script object; undefined where it can only be read or called by its name. While a text is the one that it gave last for
//         that object, a textReader gives itself.
//         destroy(id): never from inside a handler    setDocumentUrl(id, url)    setWindow(id, x, y, width, height)
//         setFlag(id, name, boolean), flag(id, name) -> boolean    raise(id, eventName): an event without arguments
//         storedNumber(id, name), storedText(id, name): a stored value, which is no script access
//         startSubtitlePlayer(id, start): the page's own subtitle player is to run, or to rest
//         compile(text) -> value of the expression
// page:   prototypes: where the rows go    isElement(value)    isConnected(element)    localName(element)
//         getAttribute(element, name) -> text or null    setAttribute(element, name, text)
//         parameters(element) -> [[name, value]] of its <param> children    box(element) -> {x, y, width, height} or null
//         documentUrl(element)    resolveUrl(text, base) -> text    dispatch(element, type, fields): to DOM listeners
//         reportError(error)    warn(text)    queueTask(function)    now() -> milliseconds
//         and, where a shell has need of it: upgraded(element): it became a live object    entered(element): a live one is in a document now
//         sync(): tell of changed attributes now
//         shows(element, box, fullScreen): where its picture is now, null where it has none    isRendered(element): is any of it shown?
//         focus(element, parameters): the keys are for it from now on
//         baseUrl(element): what addresses are relative to, if that need not be the document's own
//         addressAdvice: what else helps when a source is no web address    wake(): flush has something to do    userAgent: of the media requests, unless the page names one
// The layer that it returns: see the last lines.
(function (native, page) {
  'use strict';

  const kTypes = new Set(['video/mp4', 'video/mpeg', 'video/mp2t', 'audio/mpeg', 'audio/mp4', 'application/dash+xml',
    'application/vnd.apple.mpegurl', 'application/vnd.oipf.contentaccessstreaming+xml', 'application/ttml+xml']);
  const kSubtitleType = 'application/ttml+xml';  // an element without a picture: its clock is what the page's subtitles follow
  // Names of the public standard for the positional arguments of an event.
  const kFields = {
    PlayStateChange: ['state'],
    PlayPositionChanged: ['position'],
    PlaySpeedChanged: ['speed'],
    SelectedComponentChanged: ['componentType', 'source'],
    InBandSubtitleData: ['data'],
    SubtitleFontFamily: ['family', 'location'],
    InBandSubtitleShowHide: ['show'],
    InBandSubtitleChange: [],
    SubtitleSettingsChanged: ['value', 'text'],
    StartStopSubtitlePlayer: ['start'],
    PlayerHandle: ['handle'],
    DRMRightsError: ['errorState', 'contentID', 'DRMSystemID', 'rightsIssuerURL'],
    ParentalRatingChange: ['contentID', 'ratings', 'DRMSystemID', 'blocked'],
    ParentalRatingError: ['contentID', 'ratings', 'DRMSystemID'],
  };
  const kAccessAttribute = 2;
  const kTypeText = 6;
  const kTypeHandler = 8;
  const kStopped = 0;
  const kPlaying = 1;
  const kPaused = 2;
  const kConnecting = 3;
  const kBuffering = 4;
  const kFinished = 5;
  const kError = 6;
  const kReady = 7;          // raised as a play state when the media library has taken a source; the property never has it
  const kReadyWait = 2000;   // how long an object that was given a source counts as busy without a word from the library
  const kStateWait = 15000;  // the same while a pause from stopped or a queued item is on its way
  const kSubtitle = 2;
  const kMostSubtitles = 10;  // as many as the object keeps
  // What no attribute changes is not worth a look for changed ones: that costs as much as the call.
  const kApartFromAttributes = new Set(['setVolume']);
  const kSubtitleRows = new Set(['numOfSubtitles', 'subParamAttr']);
  const kKept = new Set(['persist', 'currentTrackIndex', 'playerType', ...kSubtitleRows]);  // by an element whose object is a fresh one
  const kMostSet = 32;
  const kPlane = { x: 0, y: 0, width: 1280, height: 720 };

  // A page may put functions of its own in the place of the collections': these have theirs as own properties.
  function sealed(collection) {
    const prototype = Object.getPrototypeOf(collection);
    for (const name of Reflect.ownKeys(prototype)) {
      const { value } = Object.getOwnPropertyDescriptor(prototype, name);
      if (typeof value === 'function') Object.defineProperty(collection, name, { value });
    }
    return collection;
  }

  const { apply, deleteProperty, defineProperty: defineOwn } = Reflect;
  const { call } = Function.prototype;
  const deref = Function.prototype.call.bind(WeakRef.prototype.deref);
  const doNothing = () => {};
  const sync = page.sync || doNothing;
  const wake = page.wake || doNothing;
  const upgraded = page.upgraded || doNothing;
  const entered = page.entered || doNothing;
  const isRendered = page.isRendered || (() => true);
  const baseUrl = page.baseUrl || page.documentUrl;

  const records = sealed(new WeakMap());  // element -> its record
  const objects = sealed(new WeakMap());  // element -> its record's object, where that answers all reads itself
  const elements = sealed(new Map());     // native id -> WeakRef of its element
  const held = sealed(new Map());         // native id -> element: what plays stays alive without a reference from the page
  const refused = sealed(new WeakSet());  // elements whose native object could not be made
  const retired = sealed([]);             // native ids to destroy when the running handler has returned
  const removed = sealed(new Set());      // elements that left their document meanwhile
  const attributes = sealed(new Map());   // attribute name -> row name
  const handlers = sealed(new Map());     // lower-case handler name -> handler name
  const values = sealed(new Set());       // names of the other rows
  let rowsDefined = false;
  let geometryChanged = false;

  function typeOf(element) {
    const type = page.getAttribute(element, 'type');
    return type === null ? '' : type.split(';')[0].trim().toLowerCase();
  }

  function supported(element) {
    return kTypes.has(typeOf(element));
  }

  const stateOf = (record) => native.storedNumber(record.id, 'playState');
  const sourceOf = (record) => native.storedText(record.id, 'data');

  // The record of an element that is, or now becomes, a live object; undefined for any other value.
  function lookup(element) {
    const record = records.get(element);
    if (record !== undefined) return record;
    if (!page.isElement(element) || !supported(element) || refused.has(element)) return undefined;
    return upgrade(element);
  }

  // In XML an attribute's name keeps its letters.
  function attributeOf(element, name) {
    const value = page.getAttribute(element, name);
    return value === null ? page.getAttribute(element, name.toLowerCase()) : value;
  }

  // What a page has set while the element was another one is the element's own, and would hide its rows for ever.
  function takeOwn(element) {
    const own = [];
    for (const name of values) {
      const descriptor = Object.getOwnPropertyDescriptor(element, name);
      if (descriptor === undefined || !descriptor.writable || !descriptor.configurable) continue;
      own.push([name, descriptor.value]);
      delete element[name];
    }
    return own.sort(([name], [other]) => Number(name === 'data') - Number(other === 'data'));  // the source comes last
  }

  function upgrade(element, fullScreen = false) {
    const object = native.create();
    if (object === null || object === undefined) {  // undefined: the window has gone
      refused.add(element);
      page.warn('no A/V Control object could be made for an element of type ' + page.getAttribute(element, 'type'));
      return undefined;
    }
    const id = native.id(object);
    if (!rowsDefined) defineRows(native.rows(id));
    const own = takeOwn(element);
    const type = page.getAttribute(element, 'type');
    const record = { object, id, type, speed: 1, queued: false, renewing: false, waitUntil: 0, waitsForReady: false, window: null, isIn: false,
      subtitles: 0, clock: null, told: kStopped, owesStopped: false, texts: { __proto__: null }, set: [], mirrors: false };
    records.set(element, record);
    if (typeOf(element) !== kSubtitleType) objects.set(element, object);
    elements.set(id, new WeakRef(element));
    native.setDocumentUrl(id, page.documentUrl(element));
    native.setFlag(id, 'fullScreen', fullScreen);
    if (page.userAgent !== undefined) object.userAgent = page.userAgent;
    upgraded(element);
    applyMarkup(element, record);
    for (const [name, value] of own) assign(element, record, name, value);
    return record;
  }

  // The source comes last: most of the others take effect when a source is set.
  function applyMarkup(element, record) {
    for (const row of attributes.values()) {
      const value = attributeOf(element, row);
      if (value !== null) record.object[row] = value;
    }
    if (typeOf(element) === kSubtitleType) beSubtitlesOnly(record);
    const parameters = page.parameters(element);
    for (const [name, value] of parameters) applyParameter(record, name, value);
    addSubtitles(element, record, parameters);
    for (const name of handlers.values()) {
      const text = attributeOf(element, name);
      if (text !== null && !Object.hasOwn(element, name)) compileHandler(element, name, text);
    }
    placeWindow(element, record);
    const source = sourceAttribute(element);
    if (source !== null && source.trim() !== '') setSource(element, record, source);
  }

  function applyParameter(record, name, value) {
    const key = name.toLowerCase();
    if (key !== 'type' && attributes.has(key)) record.object[attributes.get(key)] = value;
  }

  // ---- subtitles that the page brings

  // "srclang:eng src:eng.ttml", also several in a row.
  function readSubtitles(text) {
    const found = [];
    for (const word of text.trim().split(/,?\s+|,$|,(?=src(?:lang)?:)/i)) {  // addresses may have commas
      const [, key, value] = /^(srclang|src):(.*)$/i.exec(word) || [];
      if (key === undefined) continue;
      const last = found[found.length - 1];
      const name = key.toLowerCase();
      if (last === undefined || last[name] !== undefined) found.push({ [name]: value });
      else last[name] = value;
    }
    return found.filter((each) => each.src !== undefined && each.src !== '');
  }

  // What would end a field of a record goes escaped, as in an address.
  const inRecord = (text) => text.replace(/[|\x00-\x1f]/g, (letter) => '%' + (letter === '|' ? '7C' : '20'));

  // One component record each. The object takes their number first; what is added later is added to what it has.
  function addSubtitles(element, record, parameters) {
    const all = parameters.filter(([name]) => name.toLowerCase() === 'subtitles').flatMap(([, value]) => readSubtitles(value));
    const added = all.slice(0, kMostSubtitles - record.subtitles);
    if (added.length < all.length) page.warn('an object has no more than ' + kMostSubtitles + ' subtitles of its page');
    if (added.length === 0) return;
    record.object.numOfSubtitles = record.subtitles + added.length;
    for (const each of added) {
      record.subtitles += 1;
      const url = page.resolveUrl(each.src, baseUrl(element));
      record.object.subParamAttr = kSubtitle + '|' + kSubtitleType + '|0|' + record.subtitles + '|0|||0|' + inRecord(url) + '||' +
        inRecord(each.srclang || '') + '||0|';
    }
  }

  // The object's word that one of them was selected, or is not any more, is the only one with a second argument.
  function runSubtitlePlayer(record, name, parameters) {
    if (name !== 'onSelectedComponentChanged' || parameters.length < 2 || stateOf(record) !== kPlaying) return;
    native.startSubtitlePlayer(record.id, native.storedNumber(record.id, 'enableSubtitles') === 1);
  }

  // ---- an element of subtitles only has no media whose time could be read: a clock goes in its place

  function beSubtitlesOnly(record) {
    record.object.playerType = kSubtitleType;
    record.clock = { position: 0, since: 0, rate: 0 };
  }

  function clockPosition(clock) {
    return Math.max(0, clock.position + (page.now() - clock.since) * clock.rate);
  }

  function setClock(clock, position, rate) {
    clock.position = position;
    clock.since = page.now();
    clock.rate = rate;
  }

  const clockReads = {
    playPosition: clockPosition,
    ttmlXmlPlayPosition: (clock) => Math.round(clockPosition(clock)),
    speed: (clock) => clock.rate,
  };

  function playClock(record, speed) {
    setClock(record.clock, clockPosition(record.clock), speed > 0 ? speed : 0);
    native.startSubtitlePlayer(record.id, speed > 0);
  }

  // No state of the object leads back to stopped without media: a fresh one takes its place.
  function stopClock(element, record) {
    startAfresh(element, record);
    return true;
  }

  // <embed> names its source "src" in markup; pages that treat both elements alike set "data".
  function sourceAttribute(element) {
    const data = page.getAttribute(element, 'data');
    return data === null && page.localName(element) === 'embed' ? page.getAttribute(element, 'src') : data;
  }

  function retire(element, record) {
    records.delete(element);
    objects.delete(element);
    elements.delete(record.id);
    held.delete(record.id);
    retired.push(record.id);
    if (page.shows !== undefined) page.shows(element, null, false);
    wake();
  }

  // ---- source, type and other attributes

  function absoluteSource(element, text) {
    if (/^https?:/.test(text)) return text;
    return page.resolveUrl(text, baseUrl(element));
  }

  function setSource(element, record, text) {
    const url = absoluteSource(element, text.trim());
    if (!/^https?:/.test(url)) {
      page.warn('"' + url + '" is no http: or https: address and cannot play; serve the file over HTTP (for example with ' +
        '"python3 -m http.server")' + (page.addressAdvice || ''));
    }
    record.queued = false;
    record.renewing = false;
    const isAnother = sourceOf(record) !== '';
    record.object.data = url;
    if (isAnother) renewWindow(record);
    if (sourceOf(record) === url) expect(element, record, kReadyWait, true);
    updateHold(element, record);
  }

  // The object is given up and a fresh one takes its place, in the state that a page then expects. What the old one still had to tell
  // goes with it: that it stopped is told in its place, before anything of the fresh one.
  function startAfresh(element, record) {
    const isOwed = stateOf(record) !== kStopped || record.told !== kStopped || record.owesStopped;
    const fullScreen = native.flag(record.id, 'fullScreen');
    retire(element, record);
    const fresh = upgrade(element, fullScreen);
    if (fresh !== undefined) setAgain(fresh, record.set);
    if (!isOwed || fresh === undefined) return;
    fresh.owesStopped = true;
    page.queueTask(() => tellStopped(element));
  }

  // What a page sets besides attributes is the element's. Subtitles are set one after another.
  function remember(record, name, value) {
    if (!kSubtitleRows.has(name)) record.set = record.set.filter(([other]) => other !== name);
    if (record.set.length < kMostSet) record.set.push([name, value]);
  }

  function setAgain(fresh, set) {
    for (const [name, value] of set) fresh.object[name] = value;
    fresh.set = set;
  }

  function tellStopped(element) {
    const record = records.get(element);
    if (record === undefined || !record.owesStopped) return;
    record.owesStopped = false;
    raiseState(element, record, 'onPlayStateChange', [kStopped]);
  }

  function releaseSource(element, record) {
    if (sourceOf(record) === '') return;
    startAfresh(element, record);
  }

  // A stop in error leaves the object with another player and without a source.
  function sourceAgain(element, record, source) {
    setSource(element, record, source);
    renewWindow(record);
  }

  // A queued item that has become the source is the attribute's, too.
  function mirrorSource(element, record) {
    const attribute = sourceAttribute(element);
    const source = sourceOf(record);
    if (source === '' || (attribute !== null && absoluteSource(element, attribute.trim()) === source)) return;
    record.mirrors = true;
    page.setAttribute(element, 'data', source);
    record.mirrors = false;
  }

  function sourceChanged(element, record) {
    if (record.mirrors) return;
    const source = sourceAttribute(element);
    if (source === null || source.trim() === '') {
      releaseSource(element, record);
    } else {
      setSource(element, record, source);
    }
  }

  function typeChanged(element, record) {
    if (!supported(element)) {
      retire(element, record);
      return;
    }
    const type = page.getAttribute(element, 'type');
    if (type === record.type) return;  // the same once more changes nothing
    record.type = type;
    if ((typeOf(element) === kSubtitleType) !== (record.clock !== null)) {
      stopClock(element, record);
      return;
    }
    if (stateOf(record) !== kStopped) record.object.stop();
    if (stateOf(record) === kStopped) {
      record.object.type = type;
      return;
    }
    startAfresh(element, record);  // a stop is refused while connecting
  }

  function compileHandler(element, name, text) {
    if (name === 'onFocus' && typeof element.onfocus === 'function') return;  // in HTML one name for two: it is the engine's
    const type = name.slice(2);
    try {
      element[name] = text === null ? null : new Function(...(kFields[type] || ['event']), text);
    } catch (error) {  // no script, or a policy of the page forbids it
      element[name] = null;
      page.reportError(error);
    }
  }

  function layoutChanged() {
    geometryChanged = true;
    wake();
  }

  function attributeChanged(element, attribute) {
    const name = attribute.toLowerCase();
    const value = page.getAttribute(element, attribute);
    if (name === 'type') refused.delete(element);
    const record = records.get(element);
    if (record === undefined) {
      // A new object reads all attributes. One that has left its document is done with until the page uses it again.
      if (name === 'type' || page.isConnected(element)) lookup(element);
    } else if (name === 'type') {
      typeChanged(element, record);
    } else if (name === 'data' || name === 'src') {
      sourceChanged(element, record);
    } else if (attributes.has(name) && value !== null) {
      record.object[attributes.get(name)] = value;
    }
    if (record !== undefined && handlers.has(name)) compileHandler(element, handlers.get(name), value);
    if (name === 'style' || name === 'width' || name === 'height') layoutChanged();
  }

  // ---- rows on the elements' prototypes

  function assign(element, record, name, value) {
    const attribute = name.toLowerCase();
    if (name === 'data') {
      const empty = value === null || value === undefined;
      if (!empty && typeof value !== 'string') record.object.data = value;  // refused, as the script table says
      else page.setAttribute(element, 'data', empty ? '' : value);
    } else if (attributes.has(attribute)) {
      setText(element, attribute, value);
    } else {
      if (kKept.has(name)) remember(record, name, value);
      record.object[name] = value;
    }
  }

  // A value that cannot become a text is refused like any other.
  function setText(element, attribute, value) {
    let text;
    try {
      text = String(value);
    } catch {
      return;
    }
    page.setAttribute(element, attribute, text);
  }

  const calls = {
    play(element, record, parameters) {
      record.renewing = false;
      placeWindow(element, record);
      const speed = parameters.length === 0 ? 1 : parameters[0];
      const result = record.object.play(...parameters);
      if (record.clock !== null && result === true && typeof speed === 'number') playClock(record, speed);
      if (typeof speed === 'number' && speed !== 0) record.speed = speed;
      if (speed === 0 && stateOf(record) === kStopped) expect(element, record, kStateWait, false);
      updateHold(element, record);
      return result;
    },
    stop(element, record, parameters) {
      if (record.clock !== null) return stopClock(element, record);
      record.queued = false;
      record.renewing = false;
      record.waitUntil = 0;
      const source = sourceOf(record);
      const result = record.object.stop(...parameters);
      if (source !== '' && sourceOf(record) === '') sourceAgain(element, record, source);
      updateHold(element, record);
      return result;
    },
    seek(element, record, parameters) {
      if (record.clock === null) return record.object.seek(...parameters);
      if (typeof parameters[0] !== 'number' || !(parameters[0] >= 0)) return false;
      setClock(record.clock, parameters[0], record.clock.rate);
      page.queueTask(() => raise(element, 'onPlayPositionChanged', [parameters[0]]));
      return true;
    },
    queue(element, record, parameters) {
      const parameter = parameters[0];
      const url = typeof parameter === 'string' && parameter !== '' && parameter !== 'null' ? absoluteSource(element, parameter) : null;
      const state = stateOf(record);
      const result = url === null ? record.object.queue(...parameters) : record.object.queue(url);
      if (url === null) record.queued = false;
      else if (result === true && state !== kStopped && state !== kFinished) record.queued = true;
      updateHold(element, record);
      return result;
    },
    focus(element, record, parameters) {
      const result = record.object.focus(...parameters);
      const options = parameters[0];
      if (page.focus !== undefined) page.focus(element, typeof options === 'object' ? [options] : []);
      return result;
    },
    // For the object only an absent argument and undefined mean all of them; for a page null does, too.
    getComponents(element, record, parameters) {
      return parameters[0] === null ? record.object.getComponents() : record.object.getComponents(...parameters);
    },
  };

  function original(descriptor, element) {
    if (descriptor === undefined) return undefined;
    return descriptor.get === undefined ? descriptor.value : apply(descriptor.get, element, []);
  }

  function setOriginal(descriptor, element, name, value) {
    if (descriptor !== undefined && descriptor.set !== undefined) apply(descriptor.set, element, [value]);
    else defineOwn(element, name, { value, writable: true, enumerable: true, configurable: true });  // not when the page has frozen it
  }

  function inherited(prototype, name) {
    for (let at = prototype; at !== null; at = Object.getPrototypeOf(at)) {
      const descriptor = Object.getOwnPropertyDescriptor(at, name);
      if (descriptor !== undefined) return descriptor;
    }
    return undefined;
  }

  // The engine makes a plain call of `run.call(…)` as long as that is its own; here a page cannot change it.
  function callable(run) {
    return Object.defineProperty(run, 'call', { value: call });
  }

  const byName = (name) => function () { return this[name]; };

  // A getter of its own for each row, so that the engine sees one call in each.
  function makeGetter(row, index) {
    return row.type === kTypeText ? makeTextGetter(row.name, index) : makeValueGetter(row.name, index);
  }

  function makeValueGetter(name, index) {
    const read = callable(native.reader(index) || byName(name));
    const readClock = clockReads[name];
    const readOther = (element, descriptor) => {
      const record = lookup(element);
      if (record === undefined) return original(descriptor, element);
      return record.clock !== null && readClock !== undefined ? readClock(record.clock) : read.call(record.object);
    };
    return native.compile(`(function (objects, readOther, read) {
      return function (descriptor) {
        return function () {
          const object = objects.get(this);
          return object === undefined ? readOther(this, descriptor) : read.call(object);
        };
      };
    })`)(objects, readOther, read);
  }

  function makeTextGetter(name, index) {
    const read = callable(native.textReader(index) || byName(name));
    return native.compile(`(function (records, lookup, original, read) {
      return function (descriptor) {
        return function () {
          const record = records.get(this) || lookup(this);
          if (record === undefined) return original(descriptor, this);
          const value = read.call(record.object);
          return value === read ? record.texts.${name} : record.texts.${name} = value;
        };
      };
    })`)(records, lookup, original, read);
  }

  function defineProperty(prototype, name, makeRead) {
    const descriptor = inherited(prototype, name);
    Object.defineProperty(prototype, name, {
      configurable: true,
      enumerable: true,
      get: makeRead(descriptor),
      set(value) {
        const record = lookup(this);
        if (record === undefined) setOriginal(descriptor, this, name, value);
        else assign(this, record, name, value);
      },
    });
  }

  function makeMethod(name, run) {
    return {
      [name](...parameters) {
        sync();
        return run(this, lookup(this) || noReceiver(name), parameters);
      },
    }[name];
  }

  function noReceiver(name) {
    throw new TypeError(name + ' called on something that is no A/V Control object');
  }

  // Like the getters: one call in each, and no list of arguments where there is at most one.
  function makePlainMethod(name, index) {
    const run = callable(native.method(index) || function (...parameters) { return apply(this[name], this, parameters); });
    return native.compile(`(function (records, lookup, noReceiver, sync, apply, run) {
      return { ${name}() {
        ${kApartFromAttributes.has(name) ? '' : 'sync();'}
        const record = records.get(this) || lookup(this) || noReceiver('${name}');
        if (arguments.length === 0) return run.call(record.object);
        return arguments.length === 1 ? run.call(record.object, arguments[0]) : apply(run, record.object, arguments);
      } }.${name};
    })`)(records, lookup, noReceiver, sync, apply, run);
  }

  // An accessor, so that `typeof element.play` says "undefined" on an element of another type.
  function defineMethod(prototype, name, method) {
    const descriptor = inherited(prototype, name);
    Object.defineProperty(prototype, name, {
      configurable: true,
      enumerable: true,
      get() {
        return (records.get(this) || lookup(this)) === undefined ? original(descriptor, this) : method;
      },
      set(value) {
        defineOwn(this, name, { value, writable: true, enumerable: true, configurable: true });
      },
    });
  }

  function defineRows(rows) {
    rowsDefined = true;
    for (const row of rows.properties) {
      if (row.access === kAccessAttribute) attributes.set(row.name.toLowerCase(), row.name);
      if (row.type === kTypeHandler) handlers.set(row.name.toLowerCase(), row.name);
      else values.add(row.name);
    }
    for (const type of Object.keys(kFields)) handlers.set('on' + type.toLowerCase(), 'on' + type);
    const getters = rows.properties.map((row, index) => [row.name, row.type === kTypeHandler ? null : makeGetter(row, index)])
      .filter(([, makeRead]) => makeRead !== null);
    const methods = rows.methods
      .map((name, index) => [name, calls[name] === undefined ? makePlainMethod(name, index) : makeMethod(name, calls[name])]);
    methods.push(['setFullScreen', makeMethod('setFullScreen', setFullScreen)]);
    for (const prototype of page.prototypes) {
      for (const [name, makeRead] of getters) defineProperty(prototype, name, makeRead);
      for (const [name, method] of methods) defineMethod(prototype, name, method);
      // A page's handler becomes the element's own property: the collector then sees what it refers to.
      for (const name of handlers.values()) Object.defineProperty(prototype, name, { value: null, writable: true, configurable: true });
      defineFullScreen(prototype);
    }
  }

  // ---- geometry and full screen

  function sameBox(a, b) {
    return a !== null && a.x === b.x && a.y === b.y && a.width === b.width && a.height === b.height;
  }

  function sendWindow(record, box) {
    native.setWindow(record.id, box.x, box.y, box.width, box.height);
  }

  // Another source gets another player, which fills the plane until it is told.
  function renewWindow(record) {
    if (record.window !== null) sendWindow(record, record.window);
  }

  function tellWhatShows(element, record, box, fillsPlane) {
    if (page.shows === undefined) return;
    const shows = stateOf(record) !== kStopped;
    page.shows(element, shows ? box : null, shows && fillsPlane);
  }

  // What is hidden or in no document shows nothing in full screen either.
  function fillsPlane(element, record) {
    return native.flag(record.id, 'fullScreen') && isRendered(element);
  }

  function placeWindow(element, record) {
    noteWhereItIs(element, record);
    const box = page.box(element);
    const fills = fillsPlane(element, record);
    tellWhatShows(element, record, box, fills);
    const place = fills ? kPlane : box;
    if (place === null || sameBox(record.window, place)) return;
    record.window = place;
    sendWindow(record, place);
  }

  function setFullScreen(element, record, parameters) {
    const on = Boolean(parameters[0]);
    if (native.flag(record.id, 'fullScreen') === on) return;
    native.setFlag(record.id, 'fullScreen', on);
    placeWindow(element, record);
    layoutChanged();
    native.raise(record.id, 'onFullScreenChange');
  }

  function defineFullScreen(prototype) {
    const descriptor = inherited(prototype, 'fullScreen');
    Object.defineProperty(prototype, 'fullScreen', {
      configurable: true,
      enumerable: true,
      get() {
        const record = lookup(this);
        return record === undefined ? original(descriptor, this) : native.flag(record.id, 'fullScreen');
      },
      set(value) {  // of an object of ours only setFullScreen changes it
        if (lookup(this) === undefined) setOriginal(descriptor, this, 'fullScreen', value);
      },
    });
  }

  // ---- events

  function runHandler(element, name, parameters) {
    const handler = element[name];
    if (typeof handler !== 'function') return;
    try {
      apply(handler, element, parameters);
    } catch (error) {
      page.reportError(error);
    }
  }

  // The handler property first, with positional arguments, then the listeners; the event does not bubble.
  function raise(element, name, parameters) {
    runHandler(element, name, parameters);
    const type = name.startsWith('on') ? name.slice(2) : name;
    const fields = {};
    (kFields[type] || []).forEach((field, index) => { fields[field] = parameters[index]; });
    page.dispatch(element, type, fields);
  }

  // The object does not wait for script, and may be further than what is told, or get there while a handler runs. What it has come to
  // has an event of its own: a handler that is told of something earlier does not find it yet, or it would meet one error, or one end,
  // several times.
  function raiseState(element, record, name, parameters) {
    const told = parameters[0];
    let isOver = false;  // the page may have frozen the element
    const get = () => {
      const one = records.get(element);
      if (one === undefined) return undefined;
      const present = stateOf(one);
      return isOver ? present : earlierState(told, present);
    };
    defineOwn(element, 'playState', { get, set() {}, enumerable: true, configurable: true });
    raise(element, name, parameters);
    isOver = true;
    deleteProperty(element, 'playState');
  }

  // A stop that is followed by a play already, and ready, which is no state, are on the way to it.
  function earlierState(told, present) {
    if (present !== kPlaying && present !== kFinished && present !== kError) return present;
    return told === kStopped || told === kReady ? kConnecting : told;
  }

  function fire(id, name, parameters) {
    const weak = elements.get(id);
    const element = weak === undefined ? undefined : deref(weak);
    if (element === undefined) return;
    const record = records.get(element);
    if (record.owesStopped) tellStopped(element);
    if (records.get(element) !== record) return;  // a handler gave the object up
    const state = name === 'onPlayStateChange' ? parameters[0] : undefined;
    if (state !== undefined) noteState(element, record, state);
    if (name === 'onPlayerHandle' && record.renewing) renewWindow(record);
    if (state === undefined) raise(element, name, parameters);
    else raiseState(element, record, name, parameters);
    if (records.get(element) !== record) return;  // a handler gave the object up
    runSubtitlePlayer(record, name, parameters);
    if (state !== undefined) {
      playOn(element, record, state);
      layoutChanged();
    }
    updateHold(element, record);
  }

  // ---- a queued item plays on, although the object leaves it paused at its start

  function noteState(element, record, state) {
    if (state !== kReady) record.told = state;  // which is no state
    const awaited = record.waitsForReady ? state === kReady || state === kError : state !== kReady && !record.renewing;
    if (awaited) record.waitUntil = 0;
    if (state === kFinished && record.queued) {
      record.queued = false;
      record.renewing = true;
      expect(element, record, kStateWait, false);
    } else if (state === kStopped && !record.renewing) {
      record.queued = false;
    } else if (record.renewing && (state === kPlaying || state === kError)) {  // buffering may still be paused: by the play(0) of the renewal
      record.renewing = false;
    }
  }

  function playOn(element, record, state) {
    if (record.renewing && state === kPaused) mirrorSource(element, record);
    if (record.renewing && state === kPaused) record.object.play(record.speed);  // before that, the renewal's own pause would follow
  }

  // No event tells that the library has connected to the source, and a play from paused before that does nothing.
  function retryPlayOn(record) {
    if (record.renewing && page.now() > record.waitUntil) record.renewing = false;
    if (record.renewing && stateOf(record) === kPaused) record.object.play(record.speed);
  }

  // ---- life

  function expect(element, record, milliseconds, ready) {
    record.waitUntil = page.now() + milliseconds;
    record.waitsForReady = ready;
    held.set(record.id, element);
  }

  function isBusy(record) {
    const state = stateOf(record);
    return (state >= kPlaying && state <= kBuffering) || record.waitUntil > page.now();
  }

  function updateHold(element, record) {
    if (isBusy(record)) held.set(record.id, element);
    else held.delete(record.id);
  }

  function flush() {
    removed.forEach((element) => {
      const record = records.get(element);
      if (record !== undefined && !page.isConnected(element)) retire(element, record);
    });
    removed.clear();
    if (geometryChanged) placeWindows();
    while (retired.length > 0) native.destroy(retired.shift());
  }

  // An element may get into a shadow tree, or out of one, unseen.
  function noteWhereItIs(element, record) {
    const isIn = page.isConnected(element);
    if (record.isIn && !isIn) noteRemoval(element);
    if (!record.isIn && isIn) entered(element);
    record.isIn = isIn;
  }

  function noteRemoval(element) {
    removed.add(element);
    wake();
  }

  function placeWindows() {
    geometryChanged = false;
    forEachObject(placeWindow);
  }

  function forEachObject(visit) {
    elements.forEach((weak, id) => {
      const element = deref(weak);
      if (element !== undefined) {
        visit(element, records.get(element));
        return;
      }
      elements.delete(id);  // collected: it was never in a document and nothing refers to it
      retired.push(id);
      wake();
    });
  }

  const known = native.rows(0);
  if (known !== undefined) defineRows(known);

  return {
    // For the shell.
    fire,                      // (id, name, arguments): one event of a native object
    flush,                     // after each entry into script: what had to wait for the running handler to return
    tick() {                   // a few times a second while objects exist
      forEachObject((element, record) => { retryPlayOn(record); updateHold(element, record); });
      flush();
    },
    busy() {                   // is anything still going to happen by itself?
      for (const [id, element] of [...held]) {
        const record = records.get(element);
        if (record === undefined || record.id !== id) held.delete(id);
        else updateHold(element, record);
      }
      return held.size > 0;
    },
    destroyAll() {
      forEachObject((element, record) => retire(element, record));
      flush();
    },
    // For the page.
    attributeChanged,          // (element, name): its attribute was set or removed
    inserted: lookup,          // (element): it was put into a document
    removed(element) {
      if (records.has(element)) noteRemoval(element);
    },
    lookForRemoved: () => forEachObject(noteWhereItIs),  // some may have left their documents unseen
    parameterAdded(element, name, value) {
      const record = records.get(element);
      if (record === undefined) return;
      applyParameter(record, name, value);
      addSubtitles(element, record, [[name, value]]);
    },
    layoutChanged,             // boxes may be elsewhere: they are looked at with the next flush
    placeWindows,              // they are looked at now
    hasObjects: () => elements.size > 0,
    forEach: (visit) => forEachObject((element, record) => visit(element, record.id)),
  };
})
