// SPDX-License-Identifier: Apache-2.0
// An object that plays lives without a reference; its events arrive.
let finished = 0;
(function () {
  for (let i = 0; i < 5; i += 1) {
    const element = makeObject({ type: 'video/mp4' });
    element.data = 'clip?ms=300';
    element.onPlayStateChange = (value) => { if (value === 5) finished += 1; };
    element.play(1);
  }
})();
page(async () => {
  for (let i = 0; i < 20; i += 1) {
    new Array(200000).fill({}).map((value, index) => ({ index }));  // work for the collector
    await pause(50);
  }
  equal(finished, 5, 'objects that played to their end');
});
