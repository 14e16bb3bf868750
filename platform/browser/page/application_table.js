// SPDX-License-Identifier: Apache-2.0
// (fail) -> undefined: a document that is an application information table in XML (ETSI TS 102 809, 5.4) goes to the application that
// it starts. fail(text): there is none.
(function (fail) {
  'use strict';

  const kType = 'application/vnd.dvb.ait+xml';

  // The namespace differs from one version of the standard to the next.
  function textIn(element, name) {
    const found = element.getElementsByTagNameNS('*', name)[0];
    return found === undefined ? '' : found.textContent.trim();
  }

  function addressOf(application) {
    const base = textIn(application, 'URLBase');
    const location = textIn(application, 'applicationLocation');
    try {
      const address = new URL(base + location, document.URL);
      const isWeb = base !== '' && /^https?:$/.test(address.protocol);
      return isWeb && address.href !== document.URL ? address.href : null;  // not this table again
    } catch {
      return null;
    }
  }

  function start() {
    const all = [...document.getElementsByTagNameNS('*', 'Application')];
    const wanted = all.filter((each) => textIn(each, 'controlCode') === 'AUTOSTART');
    for (const application of [...wanted, ...all]) {
      const address = addressOf(application);
      if (address !== null) return window.location.replace(address);
    }
    return fail('the application information table names no application with an http: or https: address');
  }

  if (document.contentType.toLowerCase() !== kType) return;
  document.addEventListener('DOMContentLoaded', () => {
    try {
      start();
    } catch (error) {
      fail('the application information table cannot be read: ' + error.message);
    }
  });
})
