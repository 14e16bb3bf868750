// SPDX-License-Identifier: Apache-2.0
// A player as HbbTV applications write it, in their style and for old engines: it knows nothing of this test. Below it, the test
// presses the keys and looks at what the viewer would see.

var player = {
  video: null,
  info: "",
  lastSpeed: 1,
  timer: null,

  create: function (mime) {
    this.destroy();
    var holder = document.body;
    this.video = document.createElement("object");
    this.video.setAttribute("id", "video");
    this.video.setAttribute("type", mime);
    this.video.style.position = "absolute";
    this.video.style.left = "0px";
    this.video.style.top = "0px";
    this.video.style.width = "1280px";
    this.video.style.height = "720px";
    holder.appendChild(this.video);
    this.video = document.getElementById("video");
    var self = this;
    this.video.onPlayStateChange = function () { self.onState(); };
  },

  destroy: function () {
    if (this.timer) {
      clearInterval(this.timer);
      this.timer = null;
    }
    if (!this.video) return;
    try {
      this.video.stop();
    } catch (ignored) {
      // old receivers throw here
    }
    this.video.onPlayStateChange = null;
    this.video.parentNode.removeChild(this.video);
    this.video = null;
  },

  start: function (url, mime) {
    this.create(mime);
    this.video.data = url;
    this.video.play(1);
  },

  onState: function () {
    switch (this.video.playState) {
      case 0: this.info = "stopped"; break;
      case 1: this.info = "playing"; this.startClock(); break;
      case 2: this.info = "paused"; break;
      case 3: this.info = "connecting"; break;
      case 4: this.info = "buffering"; break;
      case 5: this.info = "finished"; break;
      case 6: this.info = "error " + this.video.error; break;
      default: break;
    }
  },

  startClock: function () {
    if (this.timer) return;
    var self = this;
    this.timer = setInterval(function () {
      if (!self.video) return;
      self.clock = Math.floor(self.video.playPosition / 1000) + "/" + Math.floor(self.video.playTime / 1000);
    }, 50);
  },

  key: function (code) {
    var video = this.video;
    switch (code) {
      case 415: video.play(1); return true;
      case 19: video.play(0); return true;
      case 413: video.stop(); return true;
      case 417: video.play(2); return true;
      case 412: video.seek(Math.max(0, video.playPosition - 1000)); return true;
      case 39: video.seek(video.playPosition + 1000); return true;
      default: return false;
    }
  },
};

runCase(async () => {
  const shows = (text) => until(() => player.info === text, () => `the player to show "${text}"; it shows "${player.info}"`);
  player.start(CONFIG.base + CONFIG.path, CONFIG.type);
  await shows("playing");
  await until(() => player.clock === "0/4" || player.clock === "1/4", () => `the clock; it shows ${player.clock}`);
  player.key(19);
  await shows("paused");
  player.key(415);
  await shows("playing");
  player.key(39);
  await until(() => player.video.playPosition > 1000, () => "the jump forward");
  player.key(417);
  await shows("finished");
  player.key(415);
  await shows("playing");
  player.key(413);
  await shows("stopped");
  player.start(CONFIG.base + "no/such/file.mp4", CONFIG.type);
  await shows("error 5");
  player.start(CONFIG.base + CONFIG.path, CONFIG.type);
  await shows("playing");
  player.destroy();
  checkEqual(document.getElementById("video"), null, "the element after the end");
});
