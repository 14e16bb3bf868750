# SPDX-License-Identifier: Apache-2.0
"""Sample media about rights and ratings: content-access-streaming descriptors, rated and protected presentations.

Part of make_media.py. What is made, under OUTDIR/rights/:

    *.cas        descriptors; what each is about is said in DESCRIPTORS. huge.cas is 100 MB that take no space on disc
    *.ts         transport streams with ratings in their event information; see STREAMS
"""
import os

import make_rated

NAMESPACE = "urn:oipf:iptv:ContentAccessStreamingDescriptor:2008-1"
WIDEVINE = "urn:dvb:casystemid:19156"
PLAYREADY = "urn:dvb:casystemid:19219"
CAS_TYPE = "application/vnd.oipf.ContentAccessStreaming+xml"
HUGE_BYTES = 100 * 1000 * 1000


def url(address, kind="video/mp4", system=None):
    rights = ' DRMSystemID="%s"' % system if system else ""
    return '  <ContentURL TransferType="streaming" MIMEType="%s"%s>%s</ContentURL>\n' % (kind, rights, address)


def rights(system, content, issuer):
    return ("  <DRMControlInformation><DRMSystemID>%s</DRMSystemID><DRMContentID>%s</DRMContentID><RightsIssuerURL>%s"
            "</RightsIssuerURL></DRMControlInformation>\n" % (system, content, issuer))


def descriptor(*lines):
    return ('<?xml version="1.0" encoding="UTF-8"?>\n<Contents xmlns="%s">\n <ContentItem>\n  <Title>Test card</Title>\n'
            "  <ContentID>crid://example.org/card</ContentID>\n%s </ContentItem>\n</Contents>\n" % (NAMESPACE, "".join(lines)))


def bomb():
    entities = ["<!ENTITY e0 'aaaaaaaaaaaaaaaa'>"]
    entities += ["<!ENTITY e%d '%s'>" % (level, ("&e%d;" % (level - 1)) * 10) for level in range(1, 10)]
    return "<!DOCTYPE x [%s]>\n<Contents><ContentItem><Title>&e9;</Title>%s</ContentItem></Contents>" % (
        "".join(entities), url("../short/two.mp4"))


FILM = url("../short/two.mp4")
DESCRIPTORS = {
    "mp4": descriptor(FILM),
    "dash": descriptor(url("../short/dash/av.mpd", "application/dash+xml")),
    "no-namespace": descriptor(FILM).replace(' xmlns="%s"' % NAMESPACE, ""),
    # The first two cannot be played here: one for its type, one for its rights.
    "third": descriptor(url("film.wmv", "video/x-ms-wmv"), url("film.mp4", system=WIDEVINE), FILM,
                        rights(WIDEVINE, "cid:1", "http://issuer.example/")),
    "nested": descriptor(url("mp4.cas", CAS_TYPE)),
    # What is said to be a film turns out to be a descriptor.
    "nested-unsaid": descriptor(url("mp4.cas", "video/mp4")),
    "foreign-rights": descriptor(url("film.mp4", system=PLAYREADY), rights(PLAYREADY, "cid:7", "http://issuer.example/rights?id=7")),
    "gone": descriptor(url("none.mp4")),
    "loop": descriptor(url("loop.cas", CAS_TYPE)),
    "loop-a": descriptor(url("loop-b.cas", CAS_TYPE)),
    "loop-b": descriptor(url("loop-a.cas", CAS_TYPE)),
    "loop-unsaid": descriptor(url("loop-unsaid.cas", "video/mp4")),
    "unplayable": descriptor(url("film.wmv", "video/x-ms-wmv"), url("page.html", "text/html")),
    "local-file": descriptor(url("file:///etc/hostname")),
    "no-url": descriptor(),
    "cut": descriptor(FILM)[:200],
    "page": "<!DOCTYPE html>\n<html><body><p>This is a page.</p></body></html>\n",
    "binary": bytes(range(256)) * 40,
    "empty": b"",
    "large": descriptor("  <Synopsis>%s</Synopsis>\n" % ("x" * 256 * 1024), FILM),
    "bomb": bomb(),
    "outside": '<!DOCTYPE x [<!ENTITY a SYSTEM "secret.xml">]>\n<Contents><ContentItem><Title>&a;</Title>%s</ContentItem></Contents>' % FILM,
    "outside-parameter": '<!DOCTYPE x [<!ENTITY %% a SYSTEM "secret.xml">%%a;]>\n<Contents><ContentItem>%s</ContentItem></Contents>' % FILM,
    "outside-type": '<!DOCTYPE Contents SYSTEM "secret.xml">\n' + descriptor(FILM).split("\n", 1)[1],
}


def ratedDescriptor(*ratings):
    """ratings: (scheme, region, value)."""
    lines = ['  <ParentalRating Scheme="%s"%s>%s</ParentalRating>\n' % (scheme, ' Region="%s"' % region if region else "", value)
             for scheme, region, value in ratings]
    return descriptor(FILM, rights(PLAYREADY, "cid:7", "http://issuer.example/"), *lines)


DESCRIPTORS.update({
    "rated-16": ratedDescriptor(("dvb-si", "DE", "16")),
    "rated-fsk": ratedDescriptor(("urn:oipf:GermanyFSKCS", "DE", "FSK16")),
    # In Germany from 6 years on, in Britain from 18.
    "rated-by-country": ratedDescriptor(("dvb-si", "DE", "6"), ("bbfc", "GB", "18")),
    "rated-strangely": ratedDescriptor(("urn:example:nobody", "", "frightful")),
    "rated-partly": ratedDescriptor(("urn:example:nobody", "", "frightful"), ("dvb-si", "", "12")),
    "rated-4": ratedDescriptor(("dvb-si", "", "4")),
})

# (part of the stream, ratings); codes are the age less 3.
STREAMS = {
    "rated-16": [(0, [("DEU", 13)])],
    "rated-later": [(0, [("DEU", 3)]), (0.5, [("DEU", 15)])],
    "rated-by-country": [(0, [("DEU", 3), ("GBR", 15)])],
    "rated-strangely": [(0, [("DEU", 0x42)])],
    "unrated": [(0, [])],
}


def write(path, content):
    with open(path, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def makeHuge(path):
    write(path, b"<Contents><ContentItem><Title>")
    os.truncate(path, HUGE_BYTES)


def makeRights(root):
    folder = os.path.join(root, "rights")
    os.makedirs(folder)
    for name, text in DESCRIPTORS.items():
        write(os.path.join(folder, name + ".cas"), text)
    with open(os.path.join(root, "short", "two.ts"), "rb") as file:
        stream = file.read()
    for name, events in STREAMS.items():
        write(os.path.join(folder, name + ".ts"), make_rated.rated(stream, events))
    makeHuge(os.path.join(folder, "huge.cas"))
