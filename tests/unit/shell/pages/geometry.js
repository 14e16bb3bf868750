// SPDX-License-Identifier: Apache-2.0
// The boxes are read from the trace by the test that runs this page.
page(async () => {
  const outer = document.createElement('div');
  outer.style.cssText = 'position: absolute; left: 100px; top: 50px; width: 800px; height: 450px';
  const element = makeObject();
  element.style.left = '20px';
  element.style.top = '10px';
  element.style.width = '50%';
  element.setAttribute('height', '200');
  outer.appendChild(element);
  document.body.appendChild(outer);
  element.data = 'clip?ms=5000';
  const playing = state(element, 1);
  element.play(1);
  await playing;  // 120|60|400|200|
  outer.style.left = '0';
  await pause(0);  // 20|60|400|200|
  const changed = next(element, 'FullScreenChange');
  element.setFullScreen(true);
  equal(element.fullScreen, true, 'full screen at once');  // 0|0|1280|720|
  element.fullScreen = false;
  equal(element.fullScreen, true, 'only setFullScreen changes it');
  await changed;
  element.style.left = '30px';  // kept for later
  await pause(0);
  element.setFullScreen(true);  // nothing
  element.setFullScreen(false);  // 30|60|400|200|
  equal(element.fullScreen, false, 'no full screen');
  await next(element, 'FullScreenChange');
  equal(element.getBoundingClientRect().width, 400, 'the box as the page sees it');
});
