// SPDX-License-Identifier: Apache-2.0
// Plays a source with its subtitles and prints what a viewer reads, against the playing clock. After the renderer and
// subtitle_view.js; arguments: the source, its MIME type, the language.

if (arguments.length < 3) {
  console.error('usage: avc-run …/imsc.all.min.js examples/subtitles/subtitle_view.js examples/subtitles/show.js -- ' +
    'http://…/film.mpd application/dash+xml deu');
  exit(2);
}

var video = document.createElement('object');
var screen = document.createElement('div');
var view = new SubtitleView(video, screen, { width: 1280, height: 720 });
var wanted = arguments[2];
var last = '';

function line(text) {
  console.log('  ' + (video.playPosition / 1000).toFixed(2).padStart(7) + ' s  ' + text);
}

function choose() {
  var list = video.getComponents(video.COMPONENT_TYPE_SUBTITLE);
  var i;
  for (i = 0; i < list.length; i += 1) if (list.item(i).language === wanted) return video.selectComponent(list.item(i));
  line('there are no subtitles in ' + wanted);
  exit(1);
}

/// A line break has no text of its own.
function read(element) {
  return element.childNodes.map(function (node) {
    return node.nodeType === 3 ? node.data : node.localName === 'br' ? ' / ' : read(node);
  }).join('');
}

setInterval(function () {
  var text = read(screen);
  if (text !== last && text !== '') line(text);
  last = text;
}, 20);

video.type = arguments[1];
document.body.appendChild(screen);
document.body.appendChild(video);
video.onPlayStateChange = function (state) {
  if (state === 1 && !view.shown) choose();
  if (state === 5 || state === 6) exit(state === 5 ? 0 : 1);
};
video.data = arguments[0];
video.play(1);
