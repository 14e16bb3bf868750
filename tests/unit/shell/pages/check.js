// SPDX-License-Identifier: Apache-2.0
// Runs before each page of this folder: counts checks, waits for events, ends the run. A page that never finishes times out.
var checks = 0;
var failures = 0;

function check(condition, what) {
  checks += 1;
  if (condition) return;
  failures += 1;
  console.error('check failed: ' + what);
}

function equal(actual, expected, what) {
  check(Object.is(actual, expected), what + ': ' + String(actual) + ' instead of ' + String(expected));
}

function makeObject(attributes) {
  const element = document.createElement('object');
  for (const name of Object.keys(attributes || { type: 'video/mp4' })) element.setAttribute(name, (attributes || { type: 'video/mp4' })[name]);
  return element;
}

// The next event of that type that satisfies the test. Nothing that came before counts.
function next(element, type, test) {
  return new Promise((resolve) => {
    element.addEventListener(type, function listener(event) {
      if (test !== undefined && !test(event)) return;
      element.removeEventListener(type, listener);
      resolve(event);
    });
  });
}

const state = (element, wanted) => next(element, 'PlayStateChange', (event) => event.state === wanted);
const pause = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

function page(run) {
  Promise.resolve().then(run).then(() => {
    if (failures === 0) console.log('passed ' + checks + ' checks');
    exit(failures === 0 ? 0 : 1);
  });
}
