// SPDX-License-Identifier: Apache-2.0
// (page) -> undefined: the objects of an HbbTV page's environment, each small and honest about what is not there.
// page: settings: audioLanguages, subtitleLanguages, uiLanguages, country    isElement(value)    getAttribute(element, name)
//       subtitlesEnabled() -> boolean: does the viewer want them?    warn(text)
(function (page) {
  'use strict';

  // A page may have names of its own.
  const { DOMParser, Event, Map, Object, Proxy, Reflect, Set, URL } = window;

  const { settings } = page;
  const kKeyBits = {
    RED: 0x1, GREEN: 0x2, YELLOW: 0x4, BLUE: 0x8, NAVIGATION: 0x10, VCR: 0x20, SCROLL: 0x40, INFO: 0x80, NUMERIC: 0x100, ALPHA: 0x200,
    OTHER: 0x400,
  };
  const kMediaTypes = ['video/mp4', 'video/mpeg', 'video/mp2t', 'audio/mpeg', 'audio/mp4', 'application/dash+xml',
    'application/vnd.apple.mpegurl', 'application/vnd.oipf.ContentAccessStreaming+xml'];
  const kCapabilities = `<profilelist>
<ui_profile name="OITF_HD_UIPROF+META_SI+TRICKMODE+AVCAD+DRM">
<ext><colorkeys>true</colorkeys><parentalcontrol schemes="dvb-si">true</parentalcontrol>
<drm DRMSystemID="urn:uuid:e2719d58-a985-b3c9-781a-b030af78d30e">MP4_CENC</drm></ext>
</ui_profile>
<audio_profile name="MPEG1_L3" type="audio/mpeg"/>
<audio_profile name="HEAAC" type="audio/mp4"/>
<video_profile name="MP4_AVC_SD_25_HEAAC" type="video/mp4" transport="http"/>
<video_profile name="MP4_AVC_HD_25_HEAAC" type="video/mp4" transport="http"/>
<video_profile name="TS_AVC_HD_25_HEAAC" type="video/mpeg" transport="http"/>
<video_profile name="MP4_AVC_HD_25_HEAAC" type="video/mp4" transport="dash"/>
</profilelist>`;
  const kProfiles = ['OITF_HD_UIPROF', 'META_SI', 'TRICKMODE', 'AVCAD', 'DRM', 'TV_UIPROF'];
  const kStopped = 0;
  const kUnknownDrmSystem = 5;

  // The engine's own player is off: a page that found this part of it would not look for an object.
  for (const name of ['Audio', 'MediaSource', 'ManagedMediaSource', 'SourceBuffer', 'SourceBufferList']) delete window[name];

  // ---- the application and who manages it

  const keyset = {
    ...kKeyBits,
    value: 0,
    otherKeys: [],
    maximumValue: 0x7ff,
    supportsPointer: false,
    getKeyIcon: () => null,
    setValue(value, otherKeys) {
      keyset.value = Number(value) & keyset.maximumValue;
      keyset.otherKeys = Array.isArray(otherKeys) ? [...otherKeys] : [];
      return keyset.value;
    },
  };

  let replacement = null;  // the application that has been started; '': it takes this one's place, which pages that end themselves must not stop

  const application = Object.assign(new EventTarget(), {
    visible: true,
    active: true,
    isPrimaryReceiver: true,
    privateData: { keyset, currentChannel: null, getFreeMem: () => -1 },
    window,
    show() {
      rootElement().removeAttribute('data-application-hidden');
      application.visible = true;
      tellApplication('ApplicationShown');
      return true;
    },
    hide() {
      rootElement().setAttribute('data-application-hidden', '');  // television.css knows it
      application.visible = false;
      tellApplication('ApplicationHidden');
    },
    activate() {},
    deactivate() {},
    activateInput() { return true; },
    deactivateInput() {},
    destroyApplication() {
      if (replacement === '') return;
      leave((top) => top.location.replace(replacement === null ? 'about:blank' : replacement));
      if (replacement !== null) replacement = '';
    },
    createApplication(address) {
      if (!isWebAddress(address)) {
        page.warn('createApplication: "' + address + '" is no http: or https: address, and there is no broadcast to take it from');
        return null;
      }
      const { href } = new URL(address, document.baseURI);
      const another = !isPlaceHere(address);
      if (!leave((top) => { top.location.href = href; })) return null;  // a frame of another origin may not call assign()
      replacement = another ? href : null;
      return application;
    },
  });

  // To go to a place in a document keeps the document.
  function isPlaceHere(address) {
    const wanted = new URL(address, document.baseURI);
    return wanted.hash !== '' && wanted.href.split('#')[0] === fromTop((top) => top.location.href.split('#')[0]);
  }

  // The documents in frames are part of the application, but one of another origin cannot look at the top window.
  function fromTop(look) {
    try {
      return look(window.top);
    } catch {
      return undefined;
    }
  }

  function leave(navigate) {
    const told = fromTop((top) => [navigate(top)]);
    if (told === undefined) page.warn('a frame of another origin may end the application only once the viewer has used it');
    return told !== undefined;
  }

  const rootElement = () => fromTop((top) => top.document.documentElement) || document.documentElement;

  function absolute(address) {
    return isWebAddress(address) ? new URL(address, document.baseURI).href : address;
  }

  function isWebAddress(address) {
    try {
      return /^https?:/i.test(new URL(address, document.baseURI).protocol);
    } catch {
      return false;
    }
  }

  function tellApplication(name) {
    const handler = application['on' + name];
    try {
      if (typeof handler === 'function') Reflect.apply(handler, application, []);
    } catch (error) {
      window.reportError(error);
    }
    application.dispatchEvent(new Event(name));
  }

  // The engine closes no window that has been to another page.
  if (window.top === window) {
    Object.defineProperty(window, 'close', {
      configurable: true,
      enumerable: true,
      writable: true,
      value: function close() { application.destroyApplication(); },
    });
  }

  // The documents of an application have one and the same.
  function ownerApplication() {
    if (window.top === window) return application;
    const shared = fromTop((top) => top.oipfObjectFactory.createApplicationManagerObject().getOwnerApplication(top.document));
    if (shared === undefined) return application;
    if (!seenHere.has(shared)) seenHere.set(shared, new Proxy(shared, ofThisDocument));
    return seenHere.get(shared);
  }

  const seenHere = new WeakMap();  // the top window's application, as this frame sees it

  // What a frame calls a relative address is so to the frame.
  const ofThisDocument = {
    get(shared, name, here) {
      if (name === 'createApplication') return (address) => (shared.createApplication(absolute(address)) === null ? null : here);
      const value = shared[name];
      return typeof value === 'function' && !String(name).startsWith('on') ? value.bind(shared) : value;
    },
    set(shared, name, value) {
      shared[name] = value;
      return true;
    },
  };

  const manager = {
    getOwnerApplication: ownerApplication,
    getChildApplications: () => [],
    gc() {},
  };

  // ---- configuration and capabilities

  const configuration = {
    configuration: {
      preferredAudioLanguage: settings.audioLanguages,
      preferredSubtitleLanguage: settings.subtitleLanguages,
      preferredUILanguage: settings.uiLanguages,
      countryId: settings.country,
      get subtitlesEnabled() { return page.subtitlesEnabled(); },
      audioDescriptionEnabled: false,
      dtt_network_ids: [],
      deviceId: '',
      requestAccessToDistinctiveIdentifier(answered) { setTimeout(() => callSafely(answered, undefined, [false]), 0); },
    },
    localSystem: {
      deviceID: '', systemReady: true, vendorName: 'AVControl', modelName: 'avc-browser', softwareVersion: settings.version,
      hardwareVersion: 'PC', serialNumber: '', familyName: 'avcontrol', releaseVersion: settings.version, majorVersion: '0', minorVersion: '0',
      networkInterfaces: [],
    },
  };

  function supports(type) {
    const bare = String(type).split(';')[0].trim().toLowerCase();
    return objectTypes.has(bare) || kMediaTypes.some((known) => known.toLowerCase() === bare);
  }

  const capabilities = {
    get xmlCapabilities() { return new DOMParser().parseFromString(kCapabilities, 'text/xml'); },
    extraSDVideoDecodes: 3,
    extraHDVideoDecodes: 1,
    // A profile, or fragments of one, each behind a "+".
    hasCapability: (name) => String(name).replace(/^\+/, '').split('+').every((part) => kProfiles.includes(part)),
  };

  // ---- parental control, which is the viewer's: a page can ask what there is of it

  const ratingSchemes = collectionOf([{ name: 'dvb-si', length: 0, item: () => undefined, indexOf: () => -1, iconUri: () => null }]);
  ratingSchemes.getParentalRatingScheme = (name) => (name === ratingSchemes[0].name ? ratingSchemes[0] : null);
  ratingSchemes.addParentalRatingScheme = () => null;

  const parentalControl = { parentalRatingSchemes: ratingSchemes, isPINEntryLocked: false };

  function collectionOf(items) {
    return Object.assign([...items], { item: (index) => items[index] });
  }

  // ---- a DRM agent that has no DRM system to pass messages to: keys are the viewer's to give

  const kDrmSystemUnknown = 1;
  let messages = 0;

  const drmAgent = {
    sendDRMMessage() {
      messages += 1;
      const id = String(messages);
      tellLater(this, 'DRMMessageResult', { msgID: id, resultMsg: '', resultCode: kUnknownDrmSystem });
      return id;
    },
    DRMSystemStatus: () => kDrmSystemUnknown,
    canPlayContent: () => false,
    canRecordContent: () => false,
  };

  // Handlers get the fields as arguments, listeners as members of the event.
  function tellLater(element, type, fields) {
    setTimeout(() => {
      callSafely(element['on' + type], element, Object.values(fields));
      element.dispatchEvent(Object.assign(new Event(type), fields));
    }, 0);
  }

  function callSafely(handler, self, values) {
    try {
      if (typeof handler === 'function') Reflect.apply(handler, self, values);
    } catch (error) {
      window.reportError(error);
    }
  }

  // ---- a broadcast object on a television without a tuner: what needs one fails, and says so

  // The errors of OIPF's onChannelChangeError and onPlayStateChange.
  const kNoChannelList = 10;
  const kNoResources = 11;

  function changeInList() {
    tellLater(this, 'ChannelChangeError', { channel: null, errorState: kNoChannelList });
    return null;
  }

  const fullScreen = new WeakSet();  // broadcast objects that would fill the screen
  const streamListeners = new Set();  // that have not been told of their error

  const broadcast = {
    playState: kStopped,
    COMPONENT_TYPE_VIDEO: 0,
    COMPONENT_TYPE_AUDIO: 1,
    COMPONENT_TYPE_SUBTITLE: 2,
    currentChannel: null,
    get fullScreen() { return fullScreen.has(this); },
    programmes: { length: 0, item: () => undefined },
    bindToCurrentChannel() {
      tellLater(this, 'PlayStateChange', { state: kStopped, error: kNoResources });
      return null;
    },
    setChannel(channel) {
      if (channel === null || channel === undefined) {  // gives the channel back
        tellLater(this, 'ChannelChangeSucceeded', { channel: null });
        return;
      }
      page.warn('setChannel: there is no tuner');
      tellLater(this, 'ChannelChangeError', { channel, errorState: kNoResources });
    },
    prevChannel: changeInList,
    nextChannel: changeInList,
    stop() {},
    release() {},
    setFullScreen(wanted) {
      const isWanted = Boolean(wanted);
      if (fullScreen.has(this) === isWanted) return;
      isWanted ? fullScreen.add(this) : fullScreen.delete(this);
      tellLater(this, 'FullScreenChange', {});
    },
    setVolume: () => false,
    getVolume: () => 0,
    getChannelConfig: () => ({ channelList: { length: 0, item: () => undefined, getChannel: () => null, getChannelByTriplet: () => null,
      getChannelBySourceID: () => null }, currentChannel: null }),
    createChannelObject: () => null,
    getComponents: () => ({ length: 0, item: () => undefined }),
    getCurrentActiveComponents: () => ({ length: 0, item: () => undefined }),
    selectComponent() {},
    unselectComponent() {},
    addStreamEventListener(url, name, listener) {
      const entry = { element: this, url: String(url), name: String(name), listener };
      streamListeners.add(entry);
      const event = Object.assign(new Event('StreamEvent'), { name: entry.name, data: '', text: '', status: 'error' });
      setTimeout(() => { if (streamListeners.delete(entry)) callSafely(listener, this, [event]); }, 0);
    },
    removeStreamEventListener(url, name, listener) {
      for (const entry of streamListeners) {
        const isSame = entry.element === this && entry.url === String(url) && entry.name === String(name) && entry.listener === listener;
        if (isSame) streamListeners.delete(entry);
      }
    },
  };

  const objectTypes = new Map([
    ['application/oipfapplicationmanager', manager],
    ['application/oipfconfiguration', configuration],
    ['application/oipfcapabilities', capabilities],
    ['application/oipfdrmagent', drmAgent],
    ['application/oipfparentalcontrolmanager', parentalControl],
    ['video/broadcast', broadcast],
  ]);

  // ---- an element of such a type has the object's members; on any other element they are not there

  function facadeOf(element) {
    if (!page.isElement(element)) return undefined;
    const type = page.getAttribute(element, 'type');
    return type === null ? undefined : objectTypes.get(type.trim().toLowerCase());
  }

  function inherited(prototype, name) {
    for (let at = prototype; at !== null; at = Object.getPrototypeOf(at)) {
      const descriptor = Object.getOwnPropertyDescriptor(at, name);
      if (descriptor !== undefined) return descriptor;
    }
    return undefined;
  }

  function defineMember(prototype, name) {
    const original = inherited(prototype, name);
    Object.defineProperty(prototype, name, {
      configurable: true,
      enumerable: true,
      get() {
        const facade = facadeOf(this);
        if (facade !== undefined && name in facade) return Reflect.get(facade, name, this);
        return original === undefined || original.get === undefined ? undefined : Reflect.apply(original.get, this, []);
      },
      set(value) {
        const facade = facadeOf(this);
        if (facade !== undefined && name in facade) return;
        if (original !== undefined && original.set !== undefined) Reflect.apply(original.set, this, [value]);
        else Object.defineProperty(this, name, { value, writable: true, enumerable: true, configurable: true });
      },
    });
  }

  const names = new Set([...objectTypes.values()].flatMap((facade) => Object.keys(facade)));
  for (const prototype of [HTMLObjectElement.prototype, HTMLEmbedElement.prototype]) {
    for (const name of names) defineMember(prototype, name);
  }

  function make(type) {
    const element = document.createElement('object');
    element.setAttribute('type', type);
    return element;
  }

  // A line for the developer.
  Object.defineProperty(window, 'debug', {
    configurable: true,
    enumerable: true,
    writable: true,
    value: function debug(text) { console.debug(String(text)); },
  });

  Object.defineProperty(window, 'oipfObjectFactory', {
    configurable: true,
    enumerable: true,
    writable: true,
    value: {
      isObjectSupported: supports,
      createApplicationManagerObject: () => make('application/oipfApplicationManager'),
      createConfigurationObject: () => make('application/oipfConfiguration'),
      createCapabilitiesObject: () => make('application/oipfCapabilities'),
      createDrmAgentObject: () => make('application/oipfDrmAgent'),
      createParentalControlManagerObject: () => make('application/oipfParentalControlManager'),
      createVideoBroadcastObject: () => make('video/broadcast'),
      createVideoMpegObject: () => make('video/mpeg'),
    },
  });
})
