// SPDX-License-Identifier: Apache-2.0
// () -> undefined: the television's screen, whatever the desktop's is and however large the window. Pages measure it to choose or to scale
// their layout.
(function () {
  'use strict';

  const kWidth = 1280;
  const kHeight = 720;

  const fix = (value, ...names) => {
    for (const name of names) Object.defineProperty(Screen.prototype, name, { get: () => value });
  };
  fix(kWidth, 'width', 'availWidth');
  fix(kHeight, 'height', 'availHeight');

  // Of the window's own, pages may use the names for something else.
  const own = {
    outerWidth: kWidth, outerHeight: kHeight, devicePixelRatio: 1, screenX: 0, screenY: 0, screenLeft: 0, screenTop: 0,
  };
  for (const [name, value] of Object.entries(own)) Object.defineProperty(window, name, { value, writable: true });
})
