// SPDX-License-Identifier: Apache-2.0
// What the keys do, and what the page shows of it. Written in the language level of television browsers.
(function () {
  // The play states of the A/V Control object, and what "error" may say.
  var STOPPED = 0, PLAYING = 1, PAUSED = 2, CONNECTING = 3, BUFFERING = 4, FINISHED = 5, ERROR = 6;
  var STATES = ['', '', 'Paused', 'Connecting …', 'Loading …', 'The end', ''];
  var ERRORS = ['This film has a format that cannot be played.', 'There is no connection to the film.', 'The film cannot be played.',
    'There is not enough memory for this film.', 'The film is damaged.', 'The film is not available.', 'The film is not available from here.'];
  var SPEEDS = [-8, -4, -2, 1, 2, 4, 8];
  var STEP_MS = 10000;
  var QUIET_MS = 5000;

  var video = document.getElementById('video');
  var chosen = 0;         // the line of the catalogue
  var watched = null;     // the film in the window
  var refused = false;    // there is no right to it, and the viewer has been told
  var lastKey = Date.now();

  // Subtitles are the page's to draw. From now on this does, whatever is watched and chosen.
  new SubtitleView(video, document.getElementById('subtitles'));

  function show(id, text) {
    document.getElementById(id).textContent = text;
  }

  // ---- the catalogue

  function buildCatalogue() {
    FILMS.forEach(function (film) {
      var line = document.createElement('div');
      var kind = document.createElement('span');
      line.className = 'film';
      kind.className = 'kind';
      kind.textContent = film.kind;
      line.appendChild(kind);
      line.appendChild(document.createTextNode(film.title));
      document.getElementById('films').appendChild(line);
    });
  }

  function choose(line) {
    var lines = document.querySelectorAll('.film');
    lines[chosen].className = 'film';
    chosen = (line + lines.length) % lines.length;
    lines[chosen].className = 'film chosen';
    show('title', FILMS[chosen].title);
    show('about', FILMS[chosen].about);
  }

  // ---- playing

  // The type first: it says how the source that follows is to be read. play() may be called at once; the object waits for
  // the source by itself.
  function watch(film) {
    stop();
    watched = film;
    refused = false;
    video.type = film.type;
    video.data = MEDIA + film.data;
    video.play(1);
    if (film.next) video.queue(MEDIA + film.next);
  }

  function stop() {
    hideMessage();
    video.stop();
  }

  // 1 plays on, other numbers are faster, slower or backwards, 0 pauses.
  function changeSpeed(direction) {
    var at = SPEEDS.indexOf(video.speed);
    if (at < 0) at = SPEEDS.indexOf(1);
    video.play(SPEEDS[Math.max(0, Math.min(SPEEDS.length - 1, at + direction))]);
  }

  // Positions are milliseconds.
  function step(distance) {
    video.seek(Math.max(0, Math.min(video.playPosition + distance, video.playTime - 1000)));
  }

  function playOrPause() {
    if (video.playState === PLAYING && video.speed === 1) video.play(0);
    else video.play(1);
  }

  function leave() {
    if (isWatching()) toggleFullScreen();
    else stop();
  }

  // The video follows its element; a page needs nothing else for full screen.
  function toggleFullScreen() {
    document.body.className = isWatching() ? '' : 'watching';
  }

  function isWatching() {
    return document.body.className.indexOf('watching') >= 0;
  }

  // ---- languages: components are what a film consists of; of each type at most one is presented

  function same(a, b) {
    return a.pid === b.pid && a.componentTag === b.componentTag && a.language === b.language;
  }

  function nextComponent(type) {
    var all = video.getComponents(type);
    var active = video.getCurrentActiveComponents(type);
    if (!all || all.length === 0) return;
    var present = active && active.length > 0 ? active[0] : null;
    var at = -1;
    for (var i = 0; i < all.length; i += 1) if (present && same(all[i], present)) at = i;
    if (type === video.COMPONENT_TYPE_SUBTITLE && at >= 0 && at === all.length - 1) video.unselectComponent(present);
    else video.selectComponent(all[(at + 1) % all.length]);
  }

  function describe(type, name) {
    var all = video.getComponents(type);
    var active = video.getCurrentActiveComponents(type);
    if (!all || all.length < 1) return '';
    var language = active && active.length > 0 ? active[0].language : 'off';
    return name + ' ' + (language || '–') + ' (of ' + all.length + ')';
  }

  // ---- the banner

  function clock(milliseconds) {
    if (!isFinite(milliseconds) || milliseconds < 0) return '–';
    var seconds = Math.floor(milliseconds / 1000);
    return Math.floor(seconds / 60) + ':' + ('0' + seconds % 60).slice(-2);
  }

  // Called a few times a second: the object raises no event while it simply plays.
  function refresh() {
    var state = video.playState;
    var speed = video.speed;
    var known = video.playTime > 0;
    var status = state === PLAYING && speed !== 1 ? speed + '×' : STATES[state];
    show('now', watched ? watched.title + (status ? '   ' + status : '') : '');
    show('times', watched ? clock(video.playPosition) + (known ? ' / ' + clock(video.playTime) : '') : '');
    document.getElementById('progress').style.width = (known ? Math.min(100, 100 * video.playPosition / video.playTime) : 0) + '%';
    var extras = [describe(video.COMPONENT_TYPE_AUDIO, 'Sound:'), describe(video.COMPONENT_TYPE_SUBTITLE, 'Subtitles:')];
    show('extras', watched ? extras.filter(Boolean).join('     ') : '');
    if (isWatching()) {
      var quiet = state === PLAYING && speed === 1 && Date.now() - lastKey > QUIET_MS;
      document.body.className = quiet ? 'watching quiet' : 'watching';
    }
  }

  function showMessage(text) {
    show('message', text);
    document.getElementById('message').style.display = 'block';
  }

  function hideMessage() {
    document.getElementById('message').style.display = 'none';
  }

  // ---- what the object tells

  // States come as events. In a handler everything is allowed, also to play something else.
  video.onPlayStateChange = function (state) {
    if (state === PLAYING) hideMessage();
    if (state === ERROR && !refused) showMessage(ERRORS[video.error] || ERRORS[2]);
    if (state === FINISHED && isWatching()) toggleFullScreen();
    refresh();
  };
  video.onPlaySpeedChanged = refresh;
  video.onPlayPositionChanged = refresh;

  // Licences and ratings have events of their own. Without a right to the film an error follows, which says less.
  video.onDRMRightsError = function (errorState) {
    refused = true;
    showMessage(errorState === 0 ? 'There is no licence for this film.' : 'The licence does not allow this film.');
  };
  // What is blocked stays paused and black, whatever the keys do, until the viewer changes the limit of the television.
  video.onParentalRatingChange = function (contentID, ratings, system, blocked) {
    if (blocked) showMessage('This film is rated ' + names(ratings) + ', above the limit of this television.');
    else hideMessage();
  };

  // One object shows all ratings, each in its turn: it is read before the next one is asked for.
  function names(ratings) {
    var all = [];
    for (var i = 0; i < ratings.length; i += 1) all.push(ratings.item(i).name);
    return all.join(', ');
  }

  // ---- the keys: the names VK_… are globals of every HbbTV page

  var keys = {};
  keys[VK_UP] = function () { if (!isWatching()) choose(chosen - 1); };
  keys[VK_DOWN] = function () { if (!isWatching()) choose(chosen + 1); };
  keys[VK_LEFT] = function () { step(-STEP_MS); };
  keys[VK_RIGHT] = function () { step(STEP_MS); };
  keys[VK_ENTER] = function () { if (isWatching()) playOrPause(); else watch(FILMS[chosen]); };
  keys[VK_PLAY] = function () { video.play(1); };
  keys[VK_PAUSE] = function () { video.play(0); };
  keys[VK_PLAY_PAUSE] = playOrPause;
  keys[VK_STOP] = stop;
  keys[VK_FAST_FWD] = function () { changeSpeed(1); };
  keys[VK_REWIND] = function () { changeSpeed(-1); };
  keys[VK_RED] = function () { nextComponent(video.COMPONENT_TYPE_AUDIO); };
  keys[VK_GREEN] = function () { nextComponent(video.COMPONENT_TYPE_SUBTITLE); };
  keys[VK_YELLOW] = function () { video.queue(MEDIA + FILMS[chosen].data); };
  keys[VK_BLUE] = toggleFullScreen;
  keys[VK_BACK] = leave;

  document.addEventListener('keydown', function (event) {
    var action = keys[event.keyCode];
    lastKey = Date.now();
    if (!action) return;
    event.preventDefault();
    action();
    refresh();
  });

  // An application says which keys it wants; a television keeps the others for itself.
  function askForKeys() {
    var application = document.getElementById('manager').getOwnerApplication(document);
    var keyset = application.privateData.keyset;
    keyset.setValue(keyset.RED | keyset.GREEN | keyset.YELLOW | keyset.BLUE | keyset.NAVIGATION | keyset.VCR);
    application.show();
  }

  buildCatalogue();
  askForKeys();
  choose(0);
  setInterval(refresh, 250);
})();
