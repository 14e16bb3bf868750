// SPDX-License-Identifier: Apache-2.0
const order = [];
document.addEventListener('DOMContentLoaded', () => order.push('content ' + document.readyState));
window.onload = () => order.push('onload');
addEventListener('load', () => order.push('load ' + document.readyState));
equal(document.readyState, 'loading', 'while scripts run');
page(async () => {
  equal(window, globalThis, 'window');
  equal(document.URL, 'http://media.example/app/index.html', 'document.URL');
  equal(location.href, document.URL, 'location');
  equal(location.pathname, '/app/index.html', 'pathname');
  check(/^Mozilla.*HbbTV\/1\.7\.1 \(/.test(navigator.userAgent), 'userAgent');
  equal(arguments.join('|'), 'one|2', 'arguments');
  equal(readFile('pages/text.txt').trim(), 'grüße', 'readFile');
  let thrown = null;
  try { readFile('no such file'); } catch (error) { thrown = error; }
  check(thrown instanceof Error && thrown.message.includes('no such file'), 'readFile of nothing');

  await new Promise((resolve) => setTimeout((a, b) => { equal(a + b, 3, 'arguments of a timer'); resolve(); }, 1, 1, 2));
  equal(order.join(), 'content interactive,onload,load complete', 'the page is loaded after its scripts');
  let ticks = 0;
  await new Promise((resolve) => {
    const id = setInterval(() => { ticks += 1; if (ticks === 3) { clearInterval(id); resolve(); } }, 1);
  });
  equal(ticks, 3, 'an interval');
  const cleared = setTimeout(() => check(false, 'a cleared timer ran'), 1);
  clearTimeout(cleared);
  clearTimeout(12345);
  const now = performance.now();
  await pause(20);
  check(performance.now() - now >= 19, 'performance.now in milliseconds');
  const steps = [];
  queueMicrotask(() => steps.push('microtask'));
  setTimeout(() => steps.push('timer'), 0);
  await pause(5);
  equal(steps.join(), 'microtask,timer', 'microtasks first');

  const div = document.body.appendChild(document.createElement('div'));
  div.id = 'box';
  div.style.backgroundColor = 'black';
  equal(div.getAttribute('style'), 'background-color: black;', 'style');
  equal(document.getElementById('box'), div, 'getElementById');
  const one = div.appendChild(document.createElement('p'));
  const two = div.insertBefore(document.createElement('p'), one);
  equal(div.firstChild, two, 'insertBefore');
  equal(document.getElementsByTagName('p').length, 2, 'getElementsByTagName');
  equal(two.parentNode, div, 'parentNode');
  equal(two.nextSibling, one, 'nextSibling');
  div.removeChild(two);
  equal(two.parentNode, null, 'removed');
  one.remove();
  equal(div.hasChildNodes(), false, 'remove()');
  one.className = 'a b';
  one.classList.toggle('b');
  equal(one.className, 'a', 'classList');
  thrown = null;
  try { div.removeChild(one); } catch (error) { thrown = error; }
  check(thrown !== null, 'removing what is no child');
  let once = 0;
  div.addEventListener('x', () => { once += 1; }, { once: true });
  div.dispatchEvent(new Event('x'));
  div.dispatchEvent(new CustomEvent('x', { detail: 1 }));
  equal(once, 1, 'a listener for once');
  equal(new URL('../a?b#c', document.URL).href, 'http://media.example/a?b#c', 'URL');
  equal(div.hasAttribute('id'), true, 'hasAttribute');
});
