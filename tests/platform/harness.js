// SPDX-License-Identifier: Apache-2.0
// What the platform tests share. A case is a script that calls runCase(); CONFIG, made by run_case.py, says which media and what is
// expected. A case passes when runCase's function ends; anything else leaves with status 1 and one line that says why.

const STOPPED = 0, PLAYING = 1, PAUSED = 2, CONNECTING = 3, BUFFERING = 4, FINISHED = 5, ERROR = 6;
const READY = 7; // not a play state: the source may be played
const PATIENCE_MS = 15000;

function check(condition, what) {
  if (!condition) throw new Error(what);
}

function checkEqual(actual, expected, what) {
  const [a, e] = [JSON.stringify(actual), JSON.stringify(expected)];
  check(a === e, `${what}: is ${a}, must be ${e}`);
}

function checkBetween(value, least, most, what) {
  check(typeof value === "number" && value >= least && value <= most, `${what}: is ${value}, must be within ${least} and ${most}`);
}

/// Waits until the condition holds; looks often, because position and speed change without an event.
function until(condition, what, patience_ms = PATIENCE_MS) {
  const deadline = Date.now() + patience_ms;
  return new Promise((resolve, reject) => {
    const look = () => {
      if (condition()) return resolve();
      if (Date.now() > deadline) return reject(new Error(`waited ${patience_ms} ms in vain for: ${what()}`));
      setTimeout(look, 5);
    };
    look();
  });
}

/// Lets time go by, only to see that nothing happens meanwhile.
function quietTime(duration_ms) {
  return new Promise((resolve) => setTimeout(resolve, duration_ms));
}

/// One A/V Control object in the document with a record of what it has told so far.
class Subject {
  constructor(type = CONFIG.type) {
    this.states = [];
    this.ready = 0;
    this.speeds = [];
    this.positions = [];
    this.heard = 0;  // when the last position event came
    this.object = document.createElement("object");
    this.object.type = type;
    this.object.onPlayStateChange = (state) => this.noteState(state);
    this.object.onPlaySpeedChanged = (speed) => this.speeds.push(speed);
    this.object.onPlayPositionChanged = (position) => this.notePosition(position);
    document.body.appendChild(this.object);
  }

  noteState(state) {
    if (state === READY) this.ready += 1;
    else this.states.push(state);
  }

  notePosition(position) {
    this.positions.push(position);
    this.heard = Date.now();
  }

  /// Every seek has had its answer: the object's queue, which refuses an eleventh command, has room again.
  answered() {
    return until(() => this.heard > 0 && Date.now() - this.heard > 150, () => "an end of the position events");
  }

  async open(path = CONFIG.path) {
    const before = this.ready;
    this.object.data = path;
    await until(() => this.ready > before, () => `${path} ready to play`);
    checkEqual(this.ready, before + 1, "the number of times that it said it is ready");
  }

  /// Waits for these play states, no more, no fewer and in this order, and forgets them.
  async expect(...states) {
    const seen = () => `the states ${states}; came: ${this.states}; playState ${this.object.playState}, error ${this.object.error}`;
    await until(() => this.states.length >= states.length, seen);
    checkEqual(this.states.splice(0), states, "play states");
    if (states.length) checkEqual(this.object.playState, states[states.length - 1], "playState");
  }

  async play(path = CONFIG.path) {
    await this.open(path);
    checkEqual(this.object.play(1), true, "play(1)");
    await this.expect(CONNECTING, BUFFERING, PLAYING);
  }

  get position() {
    return this.object.playPosition;
  }

  reach(position) {
    return until(() => this.position >= position, () => `the position ${position}; it is ${this.position}`);
  }

  /// Some formats do not state their length: it is an estimate from what was read so far.
  lengthKnown() {
    return until(() => this.object.playTime > 0, () => `a length; it is ${this.object.playTime}`);
  }

  /// Position milliseconds per real millisecond, over at least `span` of position and ending before the media does.
  // On a busy machine the clock and the position are not read at the same moment: one good measurement of three is enough.
  async expectSpeed(span, low, high, what) {
    let speed = NaN;
    for (let i = 0; i < 3 && !(speed >= low && speed <= high); ++i) speed = await this.measureSpeed(span);
    checkBetween(speed, low, high, what);
  }

  async measureSpeed(span) {
    const first = this.position;
    await until(() => this.position !== first, () => "the position to move");
    const [from, began] = [this.position, Date.now()];
    await until(() => Math.abs(this.position - from) >= span, () => `${span} ms of position`);
    return (this.position - from) / (Date.now() - began);
  }

  async stop() {
    checkEqual(this.object.stop(), true, "stop()");
    await this.expect(STOPPED);
  }

  close() {
    checkEqual(this.states, [], "play states that nobody asked for");
    document.body.removeChild(this.object);
  }
}

function runCase(body) {
  body().then(
    () => exit(0),
    (error) => {
      console.error(`${CONFIG.name}: ${error.message}`);
      exit(1);
    });
}
