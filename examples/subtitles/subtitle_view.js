// SPDX-License-Identifier: Apache-2.0
// Draws the subtitles of one A/V Control object into an element that lies over its video: those of the stream, and those that the
// page brings itself. The drawing is done by the npm package "imsc". Written in the language level of television browsers.
//
//   var view = new SubtitleView(video, document.getElementById('subtitles'));
//
// options, all of which may be left out:
//   imsc    the renderer; else the global of that name
//   load    function (url, done): fetches a document of the page and calls done(text), or done(null); else XMLHttpRequest
//   width, height    of the element in pixels; else what it measures

function SubtitleView(video, target, options) {
  var self = this;
  options = options || {};
  this.video = video;
  this.target = target;
  this.imsc = options.imsc || window.imsc;
  this.load = options.load || SubtitleView.load;
  this.size = options.width ? { width: options.width, height: options.height } : null;
  this.settings = { enabled: true };
  this.problems = 0;    // documents that could not be read, and parts that could not be drawn
  this.source = null;   // of a document that the page brings
  this.shown = false;   // the object says so for those of the stream
  this.clear();
  video.onInBandSubtitleData = function (text) { self.take(text, true); };
  video.onInBandSubtitleShowHide = function (show) { self.show(show); };
  video.onInBandSubtitleChange = function () { self.clear(); };
  video.onSubtitleFontFamily = function (family, location) { self.addFont(family, location); };
  video.onSubtitleSettingsChanged = function (value, text) { self.changeSettings(value, text); };
  video.addEventListener('SelectedComponentChanged', function (event) { self.select(event.componentType, event.source); });
  this.timer = setInterval(function () { self.draw(); }, SubtitleView.INTERVAL_MS);
}

SubtitleView.INTERVAL_MS = 40;
SubtitleView.LARGEST = 500000;  // letters; the renderer makes an element of each that is seen, which would take a television minutes

SubtitleView.load = function (url, done) {
  var request = new XMLHttpRequest();
  request.open('GET', url);
  request.onload = function () { done(request.status >= 200 && request.status < 300 ? request.responseText : null); };
  request.onerror = function () { done(null); };
  request.send();
};

// ---- what the object tells

SubtitleView.prototype.show = function (show) {
  this.shown = show;
  if (!show && this.source === null) this.clear();
};

/// Two arguments: a subtitle of the page. The same event tells that it was selected and that it is not any more.
SubtitleView.prototype.select = function (type, source) {
  var self = this;
  if (type !== 2 || (source === undefined && this.source === null)) return;
  this.source = source !== undefined && this.video.enableSubtitles ? source : null;
  this.clear();
  if (this.source === null) return;
  this.load(source, function (text) {
    if (text !== null && self.source === source) self.take(text, false);
    if (text === null) self.problems += 1;
  });
};

/// A document counts from its medium's beginning. That of a live stream is another one than the object's: such a document is due
/// when it comes, whatever its times say.
SubtitleView.prototype.take = function (text, inBand) {
  var document = this.parse(text);
  var times;
  if (document === null || (inBand && this.source !== null)) return;
  times = document.getMediaTimeEvents();
  this.clear();
  this.document = document;
  this.times = times;
  if (inBand && times.length > 1 && !this.covers(this.position())) this.offset = times[times[0] > 0 ? 0 : 1] - this.position();
  this.draw();
};

SubtitleView.prototype.parse = function (text) {
  if (text.length > SubtitleView.LARGEST) {
    this.problems += 1;
    return null;
  }
  try {
    return this.imsc.fromXML(text, null, null) || null;
  } catch (error) {
    this.problems += 1;  // malformed: the viewer goes on without it
    return null;
  }
};

SubtitleView.prototype.covers = function (seconds) {
  var last = this.times[this.times.length - 1];
  var first = this.times[0] > 0 ? this.times[0] : this.times[1];
  return seconds > first - 5 && (seconds < last + 5 || !isFinite(last));
};

/// Fonts become known to the page by a rule of its own style sheet.
SubtitleView.prototype.addFont = function (family, location) {
  var style = document.createElement('style');
  var quoted = function (text) { return '"' + text.replace(/["\\\n]/g, '') + '"'; };
  style.textContent = '@font-face { font-family: ' + quoted(family) + '; src: url(' + quoted(location) + '); }';
  document.head.appendChild(style);
};

/// "size=150 color=yellow background=navy family=serif": percent of the document's size, and what takes the place of its own.
/// The value 0 stands for a viewer who wants none.
SubtitleView.prototype.changeSettings = function (value, text) {
  var settings = { enabled: value !== 0 };
  text.split(/\s+/).forEach(function (word) {
    var equals = word.indexOf('=');
    if (equals > 0) settings[word.slice(0, equals)] = word.slice(equals + 1);
  });
  this.settings = settings;
  this.drawn = null;
  this.draw();
};

// ---- drawing

SubtitleView.prototype.position = function () {
  return this.video.playPosition / 1000;
};

SubtitleView.prototype.clear = function () {
  this.document = null;
  this.times = [];
  this.offset = 0;
  this.drawn = null;  // what is seen, and how large
  this.target.textContent = '';
};

/// The document changes at certain times only.
SubtitleView.prototype.draw = function () {
  var seconds = this.position() + this.offset;
  var visible = this.settings.enabled && this.document !== null && (this.shown || this.source !== null);
  var from = -1;
  var size = this.measure();
  var state;
  if (visible) this.times.forEach(function (time) { if (time <= seconds + 0.001) from = time; });
  state = from + ' ' + size.width + 'x' + size.height;
  if (state === this.drawn) return;
  this.drawn = state;
  this.target.textContent = '';
  if (from >= 0) this.render(from, size);
};

SubtitleView.prototype.measure = function () {
  return this.size || { width: this.target.offsetWidth, height: this.target.offsetHeight };
};

SubtitleView.prototype.render = function (seconds, size) {
  try {
    this.imsc.renderHTML(this.imsc.generateISD(this.document, seconds), this.target, null, size.height, size.width);
    this.applySettings(this.target);
  } catch (error) {
    this.problems += 1;
  }
};

SubtitleView.prototype.applySettings = function (element) {
  var settings = this.settings;
  var i;
  if (/px$/.test(element.style.fontSize) && settings.size) {
    element.style.fontSize = parseFloat(element.style.fontSize) * settings.size / 100 + 'px';
    element.style.lineHeight = '';
  }
  if (settings.background && (element.localName === 'span' || element.style.backgroundColor)) {
    element.style.backgroundColor = settings.background;
  }
  if (element.localName === 'span') {
    if (settings.color) element.style.color = settings.color;
    if (settings.family) element.style.fontFamily = settings.family;
  }
  for (i = 0; i < element.children.length; i += 1) this.applySettings(element.children[i]);
};

SubtitleView.prototype.close = function () {
  var video = this.video;
  clearInterval(this.timer);
  this.clear();
  ['onInBandSubtitleData', 'onInBandSubtitleShowHide', 'onInBandSubtitleChange', 'onSubtitleFontFamily',
    'onSubtitleSettingsChanged'].forEach(function (name) { video[name] = null; });
};
