// SPDX-License-Identifier: Apache-2.0
// Plays what its argument names and says what happens.   avc-run examples/hello/hello.js -- http://…/film.mp4
if (arguments.length === 0) {
  console.error("usage: avc-run examples/hello/hello.js -- http://…/film.mp4");
  exit(2);
}

const video = document.createElement("object");
video.type = "video/mp4";
video.onPlayStateChange = (state) => {
  console.log("playState", state, "at", Math.round(video.playPosition), "ms");
  if (state === 5 || state === 6) exit(state === 5 ? 0 : 1);
};
document.body.appendChild(video);
video.data = arguments[0];
video.play(1);
