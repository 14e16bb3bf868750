// SPDX-License-Identifier: Apache-2.0
// A small player as an HbbTV application has it: one A/V Control object, the keys of a remote control, and a listener that is told
// what a viewer would see. It runs in any shell that has such objects.

function Player(listener) {
  this.listener = listener;
  this.video = null;
  this.type = "";
}

Player.STATES = ["stopped", "playing", "paused", "connecting", "buffering", "finished", "error"];
Player.ERRORS = ["the format is not supported", "no connection, or it was lost", "unidentified", "not enough resources",
  "the content is broken", "the content is not available", "nothing is available at this position"];

/// An object of one type lives until another type is asked for; another source of the same type is only new data.
Player.prototype.open = function (url, type) {
  if (this.video === null || this.type !== type) this.makeVideo(type);
  this.video.data = url;
};

Player.prototype.makeVideo = function (type) {
  var self = this;
  this.close();
  this.type = type;
  this.video = document.createElement("object");
  this.video.setAttribute("id", "video");
  this.video.setAttribute("type", type);
  this.video.style.position = "absolute";
  this.video.style.left = "0px";
  this.video.style.top = "0px";
  this.video.style.width = "1280px";
  this.video.style.height = "720px";
  this.video.onPlayStateChange = function (state) {
    // 7 is no play state: it says that the source can be played.
    if (state !== 7) self.listener.onState(Player.STATES[state], self.explain(state));
  };
  this.video.onPlaySpeedChanged = function (speed) {
    self.listener.onSpeed(speed);
  };
  this.video.onSelectedComponentChanged = function (type) {
    self.listener.onTrack(Player.KINDS[type]);
  };
  document.body.appendChild(this.video);
};

Player.prototype.explain = function (state) {
  if (state === 6) return Player.ERRORS[this.video.error];
  return state === 1 || state === 2 ? this.clock() : "";
};

Player.prototype.clock = function () {
  var seconds = function (milliseconds) { return (milliseconds / 1000).toFixed(2); };
  var length = this.video.playTime;
  var known = typeof length === "number" && isFinite(length) && length > 0;
  return seconds(this.video.playPosition) + (known ? " of " + seconds(length) : "") + " s";
};

Player.KINDS = ["video", "audio", "subtitle"];

/// What there is to choose from, as a viewer reads it: "audio: English, German (described)". The active ones are marked with a star.
Player.prototype.tracks = function () {
  var self = this;
  return Player.KINDS.map(function (kind, type) {
    var active = self.list(self.video.getCurrentActiveComponents(type)).map(Player.describe);
    var texts = self.list(self.video.getComponents(type)).map(function (component) {
      var text = Player.describe(component);
      return active.indexOf(text) >= 0 ? text + "*" : text;
    });
    return { kind: kind, text: texts.join(", ") };
  }).filter(function (entry) { return entry.text !== ""; });
};

Player.prototype.list = function (collection) {
  var components = [];
  for (var i = 0; i < collection.length; i += 1) components.push(collection.item(i));
  return components;
};

Player.describe = function (component) {
  var marks = [component.encoding];
  if (component.audioDescription) marks.push("described");
  if (component.hearingImpaired) marks.push("for the hard of hearing");
  return (component.language || component.aspectRatio.toFixed(2)) + " (" + marks.join(", ") + ")";
};

Player.prototype.selectLanguage = function (language) {
  var fitting = this.list(this.video.getComponents(1)).filter(function (sound) {
    return sound.language === language && !sound.audioDescription;
  });
  if (fitting.length > 0) this.video.selectComponent(fitting[0]);
  return fitting.length > 0;
};

Player.prototype.play = function (speed) { return this.video.play(speed); };
Player.prototype.pause = function () { return this.video.play(0); };
Player.prototype.seek = function (position) { return this.video.seek(position); };
Player.prototype.stop = function () { return this.video.stop(); };

Player.prototype.close = function () {
  if (this.video === null) return;
  this.video.onPlayStateChange = null;
  this.video.onPlaySpeedChanged = null;
  this.video.onSelectedComponentChanged = null;
  this.video.parentNode.removeChild(this.video);
  this.video = null;
};
