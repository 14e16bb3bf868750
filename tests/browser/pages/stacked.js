// SPDX-License-Identifier: Apache-2.0
// Two videos that share a part of the screen, and what moves one above the other. The first in the document is the one made last.
var one = null;
var two = null;
var a = document.getElementById('a');
var b = document.getElementById('b');

function makeVideo(left) {
  var video = document.createElement('object');
  video.type = 'video/mp4';
  video.style.cssText = 'position: absolute; left: ' + left + 'px; top: 0; width: 640px; height: 360px';
  return video;
}

function reset() {
  a.style.cssText = b.style.cssText = '';
  one.style.zIndex = two.style.zIndex = '';
}

var actions = {
  start: async function () {
    two = b.appendChild(makeVideo(320));
    two.data = '../media/two.mp4';
    await playAndPause(two);
    one = a.appendChild(makeVideo(0));
    one.data = '../media/two.mp4';
    await playAndPause(one);
  },
  // Both in shadow trees, the second one deeper.
  startInShadowTrees: async function () {
    var deep = b.attachShadow({ mode: 'open' }).appendChild(document.createElement('p')).attachShadow({ mode: 'closed' });
    two = deep.appendChild(makeVideo(320));
    two.data = '../media/two.mp4';
    await playAndPause(two);
    one = a.attachShadow({ mode: 'open' }).appendChild(makeVideo(0));
    one.data = '../media/two.mp4';
    await playAndPause(one);
  },
  reset: reset,
  index: function () { one.style.zIndex = 1; },
  higherIndex: function () { two.style.zIndex = 2; },
  negative: function () { two.style.zIndex = -1; },
  byAncestor: function () {
    reset();
    a.style.cssText = 'position: relative; z-index: 1';
    b.style.cssText = 'position: relative; z-index: 0';
    two.style.zIndex = 99;
  },
  byOpacity: function () {
    reset();
    one.style.zIndex = 1;
    two.style.zIndex = 99;
    b.style.opacity = 0.9;
  },
  opaque: function () { b.style.opacity = ''; },
  // Nothing tells the browser's page side of this.
  byRule: function () {
    reset();
    document.styleSheets[document.styleSheets.length - 1].insertRule('#a { position: relative; z-index: 5 }', 0);
  },
  withoutRule: function () { document.styleSheets[document.styleSheets.length - 1].deleteRule(0); },
  moved: function () { a.parentNode.insertBefore(b, a); },
  movedBack: function () { a.parentNode.insertBefore(a, b); },
  // The one below fills the screen, with the other one above it.
  fullScreen: function () { one.setFullScreen(true); },
  notFullScreen: function () { one.setFullScreen(false); },
  anotherSource: async function () {
    one.data = '../media/short/two.mp4';
    await playAndPause(one);
  },
  // A mark of the page goes to and fro with them.
  toAndFro: async function () {
    reset();
    var mark = document.body.appendChild(document.createElement('div'));
    mark.style.cssText = 'position: absolute; left: 0; top: 400px; width: 320px; height: 40px; background: #fff';
    await frames(30);
    for (var turn = 1; turn <= 20; turn += 1) {
      one.style.zIndex = turn % 2;
      mark.style.left = turn % 2 * 640 + 'px';
      await frames(12);
    }
  },
  // What a page may put in the place of the engine's functions is not asked.
  tampered: function () {
    reset();
    var broken = function () { throw new Error('a function of the page was called'); };
    var names = ' compareDocumentPosition getPropertyValue matches parentElement documentElement querySelectorAll get set exec test push sort ';
    [Array, Map, CSSStyleDeclaration, Node, Element, Document, RegExp].forEach(function (type) {
      Object.getOwnPropertyNames(type.prototype).forEach(function (name) {
        if (names.indexOf(' ' + name + ' ') >= 0) Object.defineProperty(type.prototype, name, { get: broken });
      });
    });
    Object.defineProperty(Array.prototype, 0, { get: broken, set: broken });
    Object.defineProperty(Object.prototype, 'next', { get: broken, set: broken });
    window.getComputedStyle = broken;
    window.Map = broken;
    one.style.zIndex = 1;
  },
};

function frames(count) {
  return new Promise(function (resolve) {
    (function next() {
      count -= 1;
      if (count < 0) resolve();
      else requestAnimationFrame(next);
    })();
  });
}
