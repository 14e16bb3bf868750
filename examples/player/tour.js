// SPDX-License-Identifier: Apache-2.0
// Presses the keys of the player and prints what happens as a timeline. After player.js; arguments: the source, its MIME type.
// It ends with status 1 when something that it waits for does not happen.

if (arguments.length < 2) {
  console.error("usage: avc-run examples/player/player.js examples/player/tour.js -- http://…/film.mp4 video/mp4");
  exit(2);
}

var PATIENCE_MS = 20000;
var LOOK_MS = 20;
var began = Date.now();
var state = "stopped";
var changes = 0;

function line(text, remark) {
  var time = ((Date.now() - began) / 1000).toFixed(3);
  console.log("  " + time.padStart(7) + " s  " + text.padEnd(26) + (remark || ""));
}

function key(text, accepted) {
  line("> " + text, accepted === false ? "refused" : "");
}

function until(condition, what) {
  var deadline = Date.now() + PATIENCE_MS;
  return new Promise(function (resolve, reject) {
    (function look() {
      if (condition()) return resolve();
      if (state === "error" || Date.now() > deadline) return reject(new Error("it did not come to: " + what));
      setTimeout(look, LOOK_MS);
    })();
  });
}

function untilState(wanted) {
  return until(function () { return state === wanted; }, wanted);
}

var player = new Player({
  onState: function (name, remark) {
    state = name;
    line("  " + name, remark);
  },
  onSpeed: function (speed) { line("  speed " + speed); },
  onTrack: function (kind) {
    line("  another " + kind);
    changes += 1;
  },
});

function position() { return player.video.playPosition; }

function watch(milliseconds) {
  var target = position() + milliseconds;
  return until(function () { return position() >= target; }, "play on to " + target + " ms");
}

async function start() {
  key("play", player.play(1));
  await untilState("playing");
  await watch(1500);
}

async function pauseAndResume() {
  key("pause", player.pause());
  await untilState("paused");
  key("resume", player.play(1));
  await untilState("playing");
  await watch(500);
}

async function seekTo(target) {
  key("seek to " + (target / 1000).toFixed(1) + " s", player.seek(target));
  await until(function () { return state === "playing" && Math.abs(position() - target) < 1500; }, "play from there");
  await watch(500);
}

async function fastForward() {
  key("2x", player.play(2));
  await until(function () { return player.video.speed === 2; }, "speed 2");
  await watch(3000);
  line("  still fast", player.clock());
}

async function rewind() {
  var target = position() - 3000;
  key("rewind", player.play(-2));
  await until(function () { return position() <= target; }, "come back to " + target + " ms");
  line("  still rewinding", player.clock());
  key("play", player.play(1));
  await until(function () { return player.video.speed === 1; }, "speed 1");
  await watch(500);
}

async function otherLanguage() {
  player.tracks().forEach(function (entry) { line("  " + entry.kind, entry.text); });
  for (var language of ["deu", "eng"]) {
    var before = changes;
    var accepted = player.selectLanguage(language);
    if (!accepted) continue;
    key("language " + language);
    await until(function () { return changes > before; }, "the language " + language);
    await watch(800);
  }
}

async function endAndReplay(length) {
  await seekTo(length - 1500);
  await untilState("finished");
  key("replay", player.play(1));
  await untilState("playing");
  await watch(500);
}

async function stop() {
  key("stop", player.stop());
  await untilState("stopped");
}

async function tour() {
  await start();
  if (player.list(player.video.getComponents(1)).length > 1) await otherLanguage();
  await pauseAndResume();
  var length = player.video.playTime;
  if (typeof length === "number" && length >= 10000 && isFinite(length)) {
    await seekTo(length / 2);
    await fastForward();
    await rewind();
    await endAndReplay(length);
  } else {
    await watch(5000);
  }
  await stop();
}

/// The other way that a source can end: the player says why.
async function failing() {
  key("play", player.play(1));
  await until(function () { return state === "error" || state === "playing"; }, "an error").catch(function () {});
  if (state !== "error") throw new Error("no error came");
}

var source = arguments[0];
line("  " + source);
player.open(source, arguments[1]);
(arguments[2] === "fails" ? failing() : tour()).then(
  function () {
    player.close();
    exit(0);
  },
  function (error) {
    line("  failed", error.message);
    exit(1);
  });
