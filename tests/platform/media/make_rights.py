# SPDX-License-Identifier: Apache-2.0
"""Sample media about rights and ratings: content-access-streaming descriptors, rated and protected presentations.

Part of make_media.py. What is made, under OUTDIR/rights/:

    *.cas        descriptors; what each is about is said in DESCRIPTORS. huge.cas is 100 MB that take no space on disc
    *.mpd        DASH with ratings; see RATED_MANIFESTS
    *.ts         transport streams with ratings in their event information; see STREAMS
    cenc/ cbcs/  DASH, encrypted by those schemes with the first key of KEYS; manifests that differ in what they say of the rights
    rotation/    two periods, each with a key of its own
    keys.json    KEYS, for the licence addresses of the server; keys.txt, for the shell
"""
import json
import os
import re

import make_protected
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

CLEARKEY = "urn:uuid:1077efec-c0b2-4d02-ace3-3c1e52e2fb4b"
DESCRIPTORS["clearkey"] = descriptor(url("cenc/av.mpd", "application/dash+xml", CLEARKEY),
                                     rights(CLEARKEY, "cid:9", "http://issuer.example/rights?id=9"))

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


# Key id and key, of samples only.
KEYS = [("00112233445566778899aabbccddee01", "a0a1a2a3a4a5a6a7a8a9aaabacadae01"),
        ("00112233445566778899aabbccddee02", "a0a1a2a3a4a5a6a7a8a9aaabacadae02")]
WIDEVINE_UUID = "edef8ba9-79d6-4ace-a3c8-27dcd51d21ed"
PLAYREADY_UUID = "9a04f079-9840-4286-ab92-e65be0885f95"
DASH_CLEARKEY_UUID = "e2719d58-a985-b3c9-781a-b030af78d30e"


def common(kid, scheme):
    return ('<ContentProtection schemeIdUri="urn:mpeg:dash:mp4protection:2011" value="%s" xmlns:cenc="urn:mpeg:cenc:2013" '
            'cenc:default_KID="%s"/>' % (scheme, make_protected.uuid(kid)))


def system(name, licence="", pssh=""):
    inner = '<dashif:Laurl xmlns:dashif="https://dashif.org/CPS">%s</dashif:Laurl>' % licence if licence else ""
    inner += '<cenc:pssh xmlns:cenc="urn:mpeg:cenc:2013">%s</cenc:pssh>' % pssh if pssh else ""
    return '<ContentProtection schemeIdUri="urn:uuid:%s">%s</ContentProtection>' % (name, inner)


def foreignSystems(kid):
    return "".join(system(name, "http://issuer.example/" + title, make_protected.psshText(kid, name))
                   for name, title in ((WIDEVINE_UUID, "first"), (PLAYREADY_UUID, "second")))


def withProtection(manifest, *elements):
    return re.sub(r"(<AdaptationSet [^>]*>\n)", lambda match: match.group(1) + "\t\t\t" + "".join(elements) + "\n", manifest)


def readText(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


def encryptTracks(source, target, scheme, kid, key):
    """All files of a DASH presentation but its manifest."""
    os.makedirs(target)
    protections = {}
    for name in sorted(os.listdir(source)):
        match = re.fullmatch(r"(init|seg)-(\d+)(-\d+)?\.m4s", name)
        if not match:
            continue
        kind, track = match.group(1, 2)
        with open(os.path.join(source, name), "rb") as file:
            data = file.read()
        if kind == "init":  # sorted before the segments
            protections[track] = make_protected.protectionOf(data, scheme.encode(), kid, key)
        protection = protections[track]
        if protection is not None:
            data = protection.initialization(data) if kind == "init" else protection.segment(data)
        write(os.path.join(target, name), data)


def withOneSize(manifest):
    """So that every player takes the same pictures."""
    return re.sub(r'\t*<Representation id="1" .*?</Representation>\n', "", manifest, count=1, flags=re.DOTALL)


def makeProtected(source, folder, scheme):
    kid, key = KEYS[0]
    encryptTracks(source, folder, scheme, kid, key)
    manifest = readText(source, "av.mpd")
    variants = {"av": [], "foreign": [foreignSystems(kid)]}
    for answer in ("good", "wrong", "none", "junk", "huge", "refused", "silent"):
        variants["licence-" + answer] = [foreignSystems(kid), system(DASH_CLEARKEY_UUID, "../../licence/" + answer)]
    for name, elements in variants.items():
        write(os.path.join(folder, name + ".mpd"), withProtection(manifest, common(kid, scheme), *elements))
    write(os.path.join(folder, "one-size.mpd"), withProtection(withOneSize(manifest), common(kid, scheme)))
    # Its whole video track in one file that says whose the rights are.
    with open(os.path.join(source, "init-0.m4s"), "rb") as file:
        film = make_protected.Protection(scheme.encode(), kid, key, True).initialization(file.read(), [make_protected.CLEARKEY_SYSTEM])
    for name in sorted(os.listdir(folder)):
        if name.startswith("seg-0-"):
            with open(os.path.join(folder, name), "rb") as file:
                film += file.read()
    write(os.path.join(folder, "film.mp4"), film)


def makeRotation(source, folder):
    """The first two seconds with one key, the rest with the other."""
    manifest = readText(source, "av.mpd")
    head, period, tail = re.fullmatch(r"(.*?)(\t<Period .*</Period>\n)(.*)", manifest, re.DOTALL).groups()
    periods = ""
    for index, (kid, key) in enumerate(KEYS):
        encryptTracks(source, os.path.join(folder, str(index)), "cenc", kid, key)
        part = inPeriods(period, index).replace('initialization="', 'initialization="%d/' % index).replace('media="', 'media="%d/' % index)
        periods += withProtection(part, common(kid, "cenc"))
    write(os.path.join(folder, "av.mpd"), head + periods + tail)
    one = withOneSize(withOneSize(head + periods + tail))
    write(os.path.join(folder, "one-size.mpd"), one)


RATING = '<%s schemeIdUri="%s" value="%s"/>'
PROPERTY_16 = RATING % ("SupplementalProperty", "urn:oipf:GermanyFSKCS", "FSK16")
# Manifests over the clear segments: inside each of its periods.
RATED_MANIFESTS = {
    "rated-16": [PROPERTY_16],
    "rated-element": [RATING % ("Rating", "dvb-si", "16")],
    "rated-later": [RATING % ("SupplementalProperty", "dvb-si", "6"), RATING % ("SupplementalProperty", "dvb-si", "18")],
    "rated-strangely": [RATING % ("SupplementalProperty", "urn:example:parental-rating", "frightful")],
}


def makeRatedManifests(source, folder):
    manifest = readText(source, "av.mpd").replace('initialization="', 'initialization="../short/dash/').replace(
        'media="', 'media="../short/dash/')
    head, period, tail = re.fullmatch(r"(.*?)(\t<Period .*</Period>\n)(.*)", manifest, re.DOTALL).groups()
    for name, ratings in RATED_MANIFESTS.items():
        periods = ""
        for index, rating in enumerate(ratings):
            part = inPeriods(period, index) if len(ratings) > 1 else period
            periods += re.sub(r"(<AdaptationSet [^>]*>\n)" if "<Rating" in rating else r"(<Period [^>]*>\n)", r"\1%s\n" % rating, part)
        write(os.path.join(folder, name + ".mpd"), head + periods + tail)


def inPeriods(period, index):
    """Two seconds of it. A whole number of segments; sound and picture begin a period together nearly enough."""
    part = period.replace('id="0" start="PT0.0S"', 'id="p%d" start="PT%d.0S" duration="PT2.0S"' % (index, 2 * index), 1)
    return part.replace('startNumber="1"', 'startNumber="%d" presentationTimeOffset="%d"' % (1 + 2 * index, 2000000 * index))


def makeKeys(folder):
    write(os.path.join(folder, "keys.json"), json.dumps(dict(KEYS)))
    write(os.path.join(folder, "keys.txt"), "# sample keys\n" + "".join("%s:%s\n" % each for each in KEYS))


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
    dash = os.path.join(root, "short", "dash")
    for scheme in ("cenc", "cbcs"):
        makeProtected(dash, os.path.join(folder, scheme), scheme)
    write(os.path.join(dash, "one-size.mpd"), withOneSize(readText(dash, "av.mpd")))
    makeRatedManifests(dash, folder)
    makeRotation(dash, os.path.join(folder, "rotation"))
    makeKeys(folder)
