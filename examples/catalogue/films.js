// SPDX-License-Identifier: Apache-2.0
// What can be watched. An application of yours would fetch such a list with XMLHttpRequest.
// Where the media are: two folders above this application, or where the address of the page says (index.hbbtv?media=http://…/).
var MEDIA = (/[?&]media=([^&]+)/.exec(location.search) || [])[1];
MEDIA = MEDIA ? decodeURIComponent(MEDIA) : '../../';

var FILMS = [
  { title: 'Test card', kind: 'MP4', type: 'video/mp4', data: 'two.mp4',
    about: 'A progressive MP4 file. Every speed works: forward, backward, slow.' },
  { title: 'Test card, broadcast', kind: 'MPEG-TS', type: 'video/mpeg', data: 'two.ts', about: 'The same as a transport stream.' },
  { title: 'Test card, adaptive', kind: 'DASH', type: 'application/dash+xml', data: 'dash/av.mpd',
    about: 'MPEG-DASH: the player chooses the rate that the line can carry.' },
  { title: 'Test card, playlists', kind: 'HLS', type: 'application/vnd.apple.mpegurl', data: 'hls/master.m3u8', about: 'HTTP live streaming, on demand.' },
  { title: 'A tone', kind: 'MP3', type: 'audio/mpeg', data: 'tone.mp3', about: 'Sound without a picture, as a radio has it.' },
  { title: 'Live', kind: 'DASH live', type: 'application/dash+xml', data: 'live/dash/live.mpd',
    about: 'A presentation without an end. One can go back as far as its window reaches.' },
  { title: 'Two languages', kind: 'Languages', type: 'application/dash+xml', data: 'dash/tracks.mpd',
    about: 'Press red to change the language of the sound, green for subtitles.' },
  { title: 'Subtitles', kind: 'TTML', type: 'application/dash+xml', data: 'dash/text.mpd',
    about: 'Timed text in segments of its own. Green takes the next language, and after the last none.' },
  { title: 'From 16 on', kind: 'Rated', type: 'application/vnd.oipf.ContentAccessStreaming+xml', data: 'rights/rated-16.cas',
    about: 'A descriptor says where the film is, and for whom. A television with a lower limit blocks it.' },
  { title: 'For subscribers', kind: 'Protected', type: 'application/dash+xml', data: 'rights/cenc/av.mpd',
    about: 'Encrypted. A television that has the key plays it, any other says what is missing.' },
  { title: 'Double bill', kind: 'Queue', type: 'video/mp4', data: 'short/two.mp4', next: 'two.mp4',
    about: 'Four seconds, and the next film follows without a pause. Yellow puts one into the queue.' },
  { title: 'Not there', kind: 'Error', type: 'video/mp4', data: 'no-such-film.mp4', about: 'What a viewer sees when a film is gone.' },
  { title: 'Broken', kind: 'Error', type: 'video/mp4', data: 'broken/random.mp4', about: 'What a viewer sees when a film is no film.' }
];
