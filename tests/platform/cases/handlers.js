// SPDX-License-Identifier: Apache-2.0
// What a page may do inside a handler: everything. Each subject does one thing at its first "playing".

const deeds = {
  stop: (object) => object.stop(),
  pause: (object) => object.play(0),
  seek: (object) => object.seek(2000),
  newData: (object) => { object.data = CONFIG.path; },
  remove: (object) => document.body.removeChild(object),
};
const outcomes = {
  stop: (object) => object.playState === STOPPED,
  pause: (object) => object.playState === PAUSED,
  seek: (object) => object.playState === PLAYING && object.playPosition >= 2000,
  newData: (object) => object.playState === STOPPED,
  remove: (object) => object.parentNode === null,
};

async function playAnd(name) {
  const object = document.createElement("object");
  object.type = CONFIG.type;
  document.body.appendChild(object);
  let done = false;
  object.addEventListener("PlayStateChange", (event) => {
    if (event.state !== PLAYING || done) return;
    done = true;
    deeds[name](object);
  });
  object.data = CONFIG.path;
  object.play(1);
  await until(() => done && outcomes[name](object), () => `the outcome of ${name}; playState ${object.playState}`);
  if (object.parentNode) document.body.removeChild(object);
}

runCase(async () => {
  for (const name of Object.keys(deeds)) await playAnd(name);
});
