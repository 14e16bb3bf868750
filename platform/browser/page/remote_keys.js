// SPDX-License-Identifier: Apache-2.0
// () -> names: the remote control as HbbTV pages know it: KeyEvent, the names VK_…, and the codes of key events. The result names those of
// its keys that make no character, as events have them in key.
(function () {
  'use strict';

  // Also of keys that this remote control lacks: a page that names them must not fail.
  const codes = {
    VK_CANCEL: 3, VK_BACK_SPACE: 8, VK_TAB: 9, VK_ENTER: 13, VK_PAUSE: 19, VK_ESCAPE: 27, VK_SPACE: 32, VK_PAGE_UP: 33, VK_PAGE_DOWN: 34,
    VK_END: 35, VK_HOME: 36, VK_LEFT: 37, VK_UP: 38, VK_RIGHT: 39, VK_DOWN: 40, VK_RED: 403, VK_GREEN: 404, VK_YELLOW: 405, VK_BLUE: 406, VK_REWIND: 412,
    VK_STOP: 413, VK_PLAY: 415, VK_RECORD: 416, VK_FAST_FWD: 417, VK_TRACK_PREV: 424, VK_TRACK_NEXT: 425, VK_CHANNEL_UP: 427,
    VK_CHANNEL_DOWN: 428, VK_VOLUME_UP: 447, VK_VOLUME_DOWN: 448, VK_MUTE: 449, VK_INFO: 457, VK_GUIDE: 458, VK_TELETEXT: 459,
    VK_SUBTITLE: 460, VK_BACK: 461, VK_MENU: 462, VK_PLAY_PAUSE: 463,
  };
  for (let letter = 65; letter <= 90; letter += 1) codes['VK_' + String.fromCharCode(letter)] = letter;
  for (let digit = 0; digit <= 9; digit += 1) codes['VK_' + digit] = 48 + digit;

  // What the engine makes of the keys that the shell sends, what a television makes of it, and the name of the key.
  const sent = new Map([
    [250, [415, 'MediaPlay']], [19, [19, 'MediaPause']], [178, [413, 'MediaStop']], [227, [412, 'MediaRewind']],
    [228, [417, 'MediaFastForward']], [166, [461, 'GoBack']], [124, [463, 'MediaPlayPause']], [125, [457, 'Info']],
    [126, [427, 'ChannelUp']], [127, [428, 'ChannelDown']], [403, [403, 'ColorF0Red']], [404, [404, 'ColorF1Green']],
    [405, [405, 'ColorF2Yellow']], [406, [406, 'ColorF3Blue']],
  ]);

  function KeyEvent() { throw new TypeError('Illegal constructor'); }
  const define = (object, name, value) => Object.defineProperty(object, name, { value, writable: true, enumerable: true, configurable: true });
  for (const [name, code] of Object.entries(codes)) {
    define(KeyEvent, name, code);
    define(window, name, code);
  }
  define(window, 'KeyEvent', KeyEvent);

  // An accessor in the place of the engine's. Events that a page makes keep what the page gave them.
  function replace(prototype, name, read) {
    const descriptor = Object.getOwnPropertyDescriptor(prototype, name);
    const original = Function.prototype.call.bind(descriptor.get);
    Object.defineProperty(KeyboardEvent.prototype, name, {
      configurable: true,
      enumerable: true,
      get() { return read(this, original); },
    });
  }

  const keyCode = Function.prototype.call.bind(Object.getOwnPropertyDescriptor(KeyboardEvent.prototype, 'keyCode').get);
  const trusted = (event) => event.isTrusted && event.type !== 'keypress';
  const find = sent.get.bind(sent);
  const known = (event) => (trusted(event) ? find(keyCode(event)) : undefined);
  const code = (event, original) => {
    const found = known(event);
    return found === undefined ? original(event) : found[0];
  };
  replace(KeyboardEvent.prototype, 'keyCode', code);
  replace(Object.hasOwn(KeyboardEvent.prototype, 'which') ? KeyboardEvent.prototype : UIEvent.prototype, 'which', code);
  replace(KeyboardEvent.prototype, 'key', (event, original) => {
    const found = known(event);
    return found === undefined ? original(event) : found[1];
  });

  const names = ['ArrowLeft', 'ArrowUp', 'ArrowRight', 'ArrowDown'];
  for (const [, name] of sent.values()) names.push(name);
  return names;
})
