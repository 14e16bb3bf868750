// SPDX-License-Identifier: Apache-2.0
// () -> undefined: what a page sets by innerHTML and its like may name the entities of its document type (&nbsp;). The engine knows them
// there while it reads the document, and throws later.
(function () {
  'use strict';

  const { Element } = window;

  const { apply } = Reflect;
  const { getOwnPropertyDescriptor, defineProperty } = Object;
  const uncurry = (method) => Function.prototype.call.bind(method);
  const getter = (prototype, name) => uncurry(getOwnPropertyDescriptor(prototype, name).get);

  const ownerDocument = getter(Node.prototype, 'ownerDocument');
  const contentType = getter(Document.prototype, 'contentType');
  const doctype = getter(Document.prototype, 'doctype');
  const publicId = getter(DocumentType.prototype, 'publicId');
  const textContent = getter(Node.prototype, 'textContent');
  const replace = uncurry(String.prototype.replace);
  const includes = uncurry(String.prototype.includes);
  const test = uncurry(RegExp.prototype.test);
  const innerHtml = getOwnPropertyDescriptor(Element.prototype, 'innerHTML');

  const kTypesWithEntities = /^-\/\/(?:HbbTV\/\/|W3C\/\/DTD XHTML )/;
  const kOwnOfXml = /^&(?:amp|lt|gt|quot|apos);$/;
  const kNames = /<!\[CDATA\[[^]*?\]\]>|&[A-Za-z][A-Za-z0-9]*;/g;
  const reader = document.implementation.createHTMLDocument('').createElement('p');

  function hasEntities(element) {
    const type = doctype(ownerDocument(element));
    return contentType(ownerDocument(element)) !== 'text/html' && type !== null && test(kTypesWithEntities, publicId(type));
  }

  // Names that HTML does not know either, and what is no name, stay.
  function resolved(found) {
    if (found[0] === '<' || test(kOwnOfXml, found)) return found;
    apply(innerHtml.set, reader, [found]);
    const text = textContent(reader);
    return text === found ? found : text;
  }

  function withCharacters(element, markup) {
    if (markup === null) return markup;  // which is no text to these
    const text = `${markup}`;
    return includes(text, '&') && hasEntities(element) ? replace(text, kNames, resolved) : text;
  }

  for (const name of ['innerHTML', 'outerHTML']) {
    const { get, set } = getOwnPropertyDescriptor(Element.prototype, name);
    const accessors = {
      set [name](markup) { apply(set, this, [this instanceof Element ? withCharacters(this, markup) : markup]); },
    };
    defineProperty(Element.prototype, name, {
      get, set: getOwnPropertyDescriptor(accessors, name).set, enumerable: true, configurable: true,
    });
  }

  const insert = Element.prototype.insertAdjacentHTML;
  defineProperty(Element.prototype, 'insertAdjacentHTML', {
    value: {
      insertAdjacentHTML(place, markup) {
        const given = arguments.length > 1 && this instanceof Element ? [place, withCharacters(this, markup)] : arguments;
        return apply(insert, this, given);
      },
    }.insertAdjacentHTML,
    writable: true, enumerable: true, configurable: true,
  });
})
