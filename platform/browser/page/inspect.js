// SPDX-License-Identifier: Apache-2.0
// () -> inspect(value): a value as a console line shows it. It never throws, whatever a page made of the value.
(function () {
  'use strict';

  const { Array, Error, JSON, Node, Object, String } = window;

  function quoted(value, depth) {
    return typeof value === 'string' ? JSON.stringify(value) : inspectAny(value, depth);
  }

  function inspectObject(value, depth) {
    if (value instanceof Error) return String(value);
    if (value instanceof Node) return '<' + value.nodeName.toLowerCase() + (value.id ? ' id="' + value.id + '"' : '') + '>';
    if (value.window === value) return 'Window {…}';  // hundreds of names, which nobody looks for
    if (depth > 2) return Array.isArray(value) ? '[…]' : '{…}';
    if (Array.isArray(value)) return '[' + value.slice(0, 100).map((item) => quoted(item, depth + 1)).join(', ') + ']';
    const name = value.constructor && value.constructor !== Object ? value.constructor.name + ' ' : '';
    const parts = Object.keys(value).slice(0, 100).map((key) => key + ': ' + quoted(value[key], depth + 1));
    return name + '{' + parts.join(', ') + '}';
  }

  function inspectAny(value, depth) {
    if (typeof value === 'function') return '[function ' + (value.name || 'anonymous') + ']';
    if (typeof value === 'object' && value !== null) return inspectObject(value, depth);
    return Object.is(value, -0) ? '-0' : String(value);
  }

  return function inspect(value) {
    try {
      return inspectAny(value, 0);
    } catch {
      return '[' + typeof value + ']';
    }
  };
})
