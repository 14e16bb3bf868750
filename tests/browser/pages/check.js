// SPDX-License-Identifier: Apache-2.0
// What the test pages share. A page calls test(async function) and the browser waits for `done`; what goes wrong is an uncaught
// error, which the browser's exit status tells of.
var done = false;

function check(condition, what) {
  if (!condition) throw new Error(what);
}

function checkEqual(actual, expected, what) {
  var a = JSON.stringify(actual);
  var e = JSON.stringify(expected);
  check(a === e, what + ': is ' + a + ', must be ' + e);
}

// Waits until the condition holds.
function until(condition, what) {
  var deadline = Date.now() + 40000;
  return new Promise(function (resolve, reject) {
    (function look() {
      if (condition()) return resolve();
      if (Date.now() > deadline) return reject(new Error('waited in vain for: ' + what));
      setTimeout(look, 10);
    })();
  });
}

function nextState(video, state) {
  return until(function () { return video.playState === state; }, 'play state ' + state + ', is ' + video.playState + ' (error ' + video.error + ')');
}

// Plays to a picture that stands still.
async function playAndPause(video) {
  video.play(1);
  await until(function () { return video.playState === 1 && video.playPosition > 300; }, 'playing');
  video.play(0);
  await nextState(video, 2);
}

async function test(run) {
  try {
    await run();
  } finally {
    done = true;
  }
}

// For pages with a table `actions`: starts an action when it is first asked for; true when it is done.
var results = {};
function did(name) {
  if (results[name] === undefined) {
    results[name] = 'running';
    Promise.resolve(actions[name]()).then(function () { results[name] = true; });
  }
  return results[name] === true;
}
