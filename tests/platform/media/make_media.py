#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the sample media of the tests and the demo: small, the same bytes every time, nothing downloaded.

    make_media.py OUTDIR

What is made (every picture is a moving test card, every sound a tone: 440 Hz English, 880 Hz German, 220 Hz described):

    OUTDIR/two.mp4 tail.mp4 frag.mp4 two.ts tone.mp3 tone.aac tone.m4a     20 s, 640x360, 25 frames/s, two languages
    OUTDIR/dash/av.mpd long-tag.mpd                                        the same as DASH; a start tag longer than 512 bytes
    OUTDIR/hls/master.m3u8                                                 the same as HLS with an audio group
    OUTDIR/hls/muxed.m3u8                                                  HLS with picture and sound in one segment
    OUTDIR/tracks.mp4 tracks.ts dash/tracks.mpd hls/tracks.m3u8            two pictures (test card, plain blue), English, German and
                                                                           described English; all but TS with subtitles
    OUTDIR/hls/groups.m3u8                                                 German sounds and subtitles, two of each in one group, and a
                                                                           first variant with a group that has none of them
    OUTDIR/dash/periods.mpd                                                two periods: English and German, then German and French (220 Hz)
    OUTDIR/silent.mp4                                                      a picture without sound
    OUTDIR/stills.mp4                                                      two pictures, each shown for half of the time
    OUTDIR/hevc.mp4 hevc.ts dash/hevc.mpd hls/hevc.m3u8                    HEVC, English as E-AC-3 (5.1), German as AC-3; HLS in MP4 segments
    OUTDIR/hls/hevc-mixed.m3u8                                             both in one group, and nothing that tells which is which
    OUTDIR/bare.mp4                                                        fragments, and nothing that says how long they are in all
    OUTDIR/interlaced.ts                                                   a white bar, as high as the picture, 16 pixels further each field
    OUTDIR/uneven.mp4 uneven.ts                                            a picture that ends after a quarter of the sound
    OUTDIR/longer.mp4 longer-text.mp4                                      German sound, or English text, that goes on after the rest
    OUTDIR/text.mp4 text-frag.mp4 dash/text.mpd                            English and German as timed text, a document a second; DASH
                                                                           also 200 documents ("fra") and odd ones ("ita")
    OUTDIR/hls/text.m3u8                                                   WebVTT in segments, with positions
    OUTDIR/text/LANGUAGE.txt                                               the documents of these: start and end in ms, file
    OUTDIR/short/...                                                       all of the above in 4 s
    OUTDIR/broken/...                                                      what must fail; see makeBroken()
    OUTDIR/rights/...                                                      descriptors, ratings, protection; see make_rights.py

It does nothing when OUTDIR holds what this version of the script makes. Needs ffmpeg with libx264, libx265 and
libmp3lame.
"""
import concurrent.futures
import fcntl
import hashlib
import os
import random
import re
import shutil
import subprocess
import sys

import make_protected
import make_rated
import make_rights
import timed_text

LONG_S = 20
SHORT_S = 4
SAMPLE_RATE = 48000
FRAME_RATE = 25
BIT_EXACT = ["-fflags", "+bitexact", "-flags:v", "+bitexact", "-flags:a", "+bitexact", "-map_metadata", "-1"]
LANGUAGES = ["-metadata:s:a:0", "language=eng", "-metadata:s:a:1", "language=deu"]
STAMP = "stamp"


def ffmpeg(*args, cwd=None):
    command = ["ffmpeg", "-hide_banner", "-loglevel", "error", "-nostdin", "-y", *map(str, args)]
    result = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if result.returncode != 0:
        raise RuntimeError("ffmpeg failed: %s\n%s" % (" ".join(command), result.stdout))


def videoArguments(gop, rate_k):
    return ["-c:v", "libx264", "-preset", "veryfast", "-threads", "1", "-profile:v", "main", "-pix_fmt", "yuv420p", "-g", gop,
            "-keyint_min", gop, "-sc_threshold", "0", "-b:v", "%dk" % rate_k, "-maxrate", "%dk" % (rate_k * 7 // 6),
            "-bufsize", "%dk" % (rate_k * 2)]


class Set:
    """One complete set of media of one length. The encoders run once each; everything else is a copy of their streams."""

    def __init__(self, folder, seconds, segment_s):
        self.folder = folder
        self.seconds = seconds
        self.segment_s = segment_s
        self.master = os.path.join(folder, "master")
        os.makedirs(self.master)

    def encodeVideo(self, name, size, rate_k):
        source = "testsrc2=s=%s:r=%d:d=%d" % (size, FRAME_RATE, self.seconds)
        ffmpeg("-f", "lavfi", "-i", source, *videoArguments(FRAME_RATE * self.segment_s, rate_k), *BIT_EXACT,
               os.path.join(self.master, name + ".mp4"))

    def encodeHevc(self):
        picture = ["-f", "lavfi", "-i", "testsrc2=s=640x360:r=%d:d=%d" % (FRAME_RATE, self.seconds)]
        gop = FRAME_RATE * self.segment_s
        encoder = ["-c:v", "libx265", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-tag:v", "hvc1", "-x265-params",
                   "log-level=error:pools=1:frame-threads=1:info=0:scenecut=0:keyint=%d:min-keyint=%d:bitrate=500" % (gop, gop)]
        ffmpeg(*picture, *encoder, *BIT_EXACT, os.path.join(self.master, "hevc.mp4"))
        for name, hertz, sound in [("eac3", 440, ["-c:a", "eac3", "-b:a", "256k", "-ac", "6"]), ("ac3", 880, ["-c:a", "ac3", "-b:a", "192k", "-ac", "2"])]:
            ffmpeg("-f", "lavfi", "-i", "sine=f=%d:r=%d:d=%d" % (hertz, SAMPLE_RATE, self.seconds), *sound, *BIT_EXACT,
                   os.path.join(self.master, name + ".mp4"))

    def encodeBlue(self):
        source = "color=c=blue:s=320x180:r=%d:d=%d" % (FRAME_RATE, self.seconds)
        ffmpeg("-f", "lavfi", "-i", source, *videoArguments(FRAME_RATE * self.segment_s, 100), *BIT_EXACT, os.path.join(self.master, "blue.mp4"))

    def writeSubtitles(self):
        for language in ("eng", "deu"):
            write(os.path.join(self.master, language + ".srt"), subRip(language, self.seconds))

    def encodeSound(self):
        tones = []
        outputs = []
        for index, (name, hertz) in enumerate([("eng", 440), ("deu", 880), ("described", 220)]):
            tones += ["-f", "lavfi", "-i", "sine=f=%d:r=%d:d=%d" % (hertz, SAMPLE_RATE, self.seconds)]
            outputs += ["-map", "%d:a" % index, "-c:a", "aac", "-b:a", "96k", "-ac", "2", *BIT_EXACT,
                        os.path.join(self.master, name + ".m4a")]
        outputs += ["-map", "0:a", "-c:a", "libmp3lame", "-b:a", "128k", "-id3v2_version", "0", *BIT_EXACT,
                    os.path.join(self.folder, "tone.mp3")]
        ffmpeg(*tones, *outputs)

    def inputs(self, *names):
        return [word for name in names for word in ("-i", os.path.join(self.master, name))]

    def makeFiles(self):
        two = [*self.inputs("video.mp4", "eng.m4a", "deu.m4a"), "-map", "0:v", "-map", "1:a", "-map", "2:a", "-c", "copy", *BIT_EXACT,
               *LANGUAGES]
        out = lambda name: os.path.join(self.folder, name)
        ffmpeg(*two, "-movflags", "+faststart", out("two.mp4"))
        ffmpeg(*two, out("tail.mp4"))
        ffmpeg(*two, "-movflags", "+frag_keyframe+delay_moov+default_base_moof+global_sidx", out("frag.mp4"))
        ffmpeg(*two, "-movflags", "+frag_keyframe+empty_moov+default_base_moof+skip_trailer", out("bare.mp4"))
        ffmpeg(*two, "-disposition:a:1", "visual_impaired", "-mpegts_flags", "+resend_headers", "-f", "mpegts", out("two.ts"))
        ffmpeg(*self.inputs("video.mp4"), "-c", "copy", *BIT_EXACT, "-movflags", "+faststart", out("silent.mp4"))
        sound = [*self.inputs("eng.m4a"), "-c", "copy", *BIT_EXACT]
        ffmpeg(*sound, "-movflags", "+faststart", out("tone.m4a"))
        ffmpeg(*sound, "-f", "adts", out("tone.aac"))
        stills = "testsrc2=s=320x180:r=2/%d:d=%d" % (self.seconds, self.seconds)
        ffmpeg("-f", "lavfi", "-i", stills, *videoArguments(1, 100), *BIT_EXACT, "-movflags", "+faststart", out("stills.mp4"))
        bar = ["color=%s:s=%dx720:r=50:d=%d[%s]" % (colour, width, self.seconds, colour) for colour, width in (("black", 1280), ("white", 160))]
        fields = ";".join([*bar, "[black][white]overlay=x=mod(n*16\\,1120):y=0,tinterlace=interleave_top,setfield=tff"])
        ffmpeg("-f", "lavfi", "-i", fields, *self.inputs("eng.m4a"), *videoArguments(FRAME_RATE * self.segment_s, 2000), "-flags", "+ilme+ildct",
               "-x264opts", "tff=1", "-c:a", "copy", *BIT_EXACT, "-f", "mpegts", out("interlaced.ts"))
        uneven = ["-t", self.seconds // 4, *self.inputs("video.mp4", "eng.m4a"), "-map", "0:v", "-map", "1:a", "-c", "copy", *BIT_EXACT]
        ffmpeg(*uneven, "-movflags", "+faststart", out("uneven.mp4"))
        ffmpeg(*uneven, "-mpegts_flags", "+resend_headers", "-f", "mpegts", out("uneven.ts"))
        quarter = [word for name in ("video.mp4", "eng.m4a") for word in ("-t", self.seconds // 4, *self.inputs(name))]
        whole = ["-map", "0:v", "-map", "1:a", "-map", "2", "-c:v", "copy", "-c:a", "copy", *BIT_EXACT, *LANGUAGES, "-movflags", "+faststart"]
        ffmpeg(*quarter, *self.inputs("deu.m4a"), *whole, out("longer.mp4"))
        ffmpeg(*quarter, *self.inputs("eng.srt"), *whole, "-c:s", "mov_text", out("longer-text.mp4"))

    def makeTracks(self):
        """Files with more of everything: two pictures, three sounds, two subtitles."""
        sounds = ["eng.m4a", "deu.m4a", "described.m4a"]
        maps = [word for number in range(5) for word in ("-map", str(number))]
        described = ["-metadata:s:a:2", "language=eng", "-disposition:a:2", "visual_impaired"]
        common = [*self.inputs("video.mp4", "blue.mp4", *sounds)]
        ffmpeg(*common, *self.inputs("eng.srt", "deu.srt"), *maps, "-map", "5", "-map", "6", "-c", "copy", "-c:s", "mov_text", *BIT_EXACT,
               *LANGUAGES, *described, "-metadata:s:s:0", "language=eng", "-metadata:s:s:1", "language=deu", "-disposition:s:1",
               "hearing_impaired", "-movflags", "+faststart", os.path.join(self.folder, "tracks.mp4"))
        ffmpeg(*common, *maps, "-c", "copy", *BIT_EXACT, *LANGUAGES, *described, "-mpegts_flags", "+resend_headers", "-f", "mpegts",
               os.path.join(self.folder, "tracks.ts"))

    def makeHevc(self):
        common = [*self.inputs("hevc.mp4", "eac3.mp4", "ac3.mp4"), "-map", "0:v", "-map", "1:a", "-map", "2:a", "-c", "copy", *BIT_EXACT, *LANGUAGES]
        out = lambda *names: os.path.join(self.folder, *names)
        ffmpeg(*common, "-tag:v", "hvc1", "-movflags", "+faststart", out("hevc.mp4"))
        ffmpeg(*common, "-mpegts_flags", "+resend_headers", "-f", "mpegts", out("hevc.ts"))
        ffmpeg(*common, "-tag:v", "hvc1", "-f", "dash", "-seg_duration", self.segment_s, "-use_template", "1", "-use_timeline", "0", "-init_seg_name",
               "hevc-init-$RepresentationID$.m4s", "-media_seg_name", "hevc-$RepresentationID$-$Number$.m4s", "-adaptation_sets",
               "id=0,streams=0 id=1,streams=1 id=2,streams=2", out("dash", "hevc.mpd"))
        for name in ("hevc", "eac3", "ac3"):
            ffmpeg("-i", os.path.join("..", "master", name + ".mp4"), "-c", "copy", *(["-tag:v", "hvc1"] if name == "hevc" else []), *BIT_EXACT,
                   "-f", "hls", "-hls_time", self.segment_s, "-hls_playlist_type", "vod", "-hls_segment_type", "fmp4", "-hls_fmp4_init_filename",
                   name + "_init.mp4", "-hls_segment_filename", name + "_%d.m4s", name + "_part.m3u8", cwd=out("hls"))
        write(out("hls", "hevc.m3u8"), HLS_HEVC)
        write(out("hls", "hevc-mixed.m3u8"), HLS_HEVC_MIXED)

    def makeDash(self):
        folder = os.path.join(self.folder, "dash")
        os.makedirs(folder)
        ffmpeg(*self.inputs("video.mp4", "small.mp4", "eng.m4a", "deu.m4a", "described.m4a", "blue.mp4"), "-map", "0:v", "-map", "1:v",
               "-map", "2:a", "-map", "3:a", "-map", "4:a", "-map", "5:v", "-c", "copy", *BIT_EXACT, *LANGUAGES, "-metadata:s:a:2",
               "language=eng", "-f", "dash",
               "-seg_duration", self.segment_s, "-use_template", "1", "-use_timeline", "0",
               "-init_seg_name", "init-$RepresentationID$.m4s", "-media_seg_name", "seg-$RepresentationID$-$Number%05d$.m4s",
               "-adaptation_sets", "id=0,streams=0,1 id=1,streams=2 id=2,streams=3 id=3,streams=4 id=4,streams=5",
               os.path.join(folder, "raw.mpd"))
        with open(os.path.join(folder, "raw.mpd"), encoding="utf-8") as file:
            manifest = withRoles(file.read())
        os.remove(os.path.join(folder, "raw.mpd"))
        sets = adaptationSets(manifest)
        subtitles = [sideLoadedText(5, "eng", "subtitle"), sideLoadedText(6, "deu", "caption")]
        for language in ("eng", "deu"):
            write(os.path.join(folder, language + ".ttml"), timedText(language, self.seconds))
        write(os.path.join(folder, "tracks.mpd"), withPeriods(manifest, [[*(sets[number] for number in range(5)), *subtitles]], self.seconds))
        french = sets[3].replace('lang="eng"', 'lang="fra"').replace(ROLES[3], "")
        write(os.path.join(folder, "periods.mpd"), withPeriods(manifest, [[sets[0], sets[1], sets[2]], [sets[0], sets[2], french]], self.seconds))
        manifest = manifest.replace(sets[4], "")
        write(os.path.join(folder, "av.mpd"), manifest)
        # A root start tag that ends behind byte 512: ordinary in the field, and a known trap for type detection.
        filler = "".join(' xmlns:filler%d="urn:example:filler:%d"' % (index, index) for index in range(20))
        write(os.path.join(folder, "long-tag.mpd"), manifest.replace("<MPD ", "<MPD%s " % filler, 1))

    def makeHls(self):
        folder = os.path.join(self.folder, "hls")
        os.makedirs(folder)
        common = ["-c", "copy", *BIT_EXACT, "-f", "hls", "-hls_time", self.segment_s, "-hls_playlist_type", "vod", "-hls_segment_type",
                  "mpegts", "-hls_flags", "independent_segments"]
        for name in ("video.mp4", "blue.mp4", "eng.m4a", "deu.m4a", "described.m4a"):
            stem = name.split(".")[0]
            ffmpeg("-i", os.path.join("..", "master", name), *common, "-hls_segment_filename", stem + "_%03d.ts", stem + ".m3u8", cwd=folder)
        ffmpeg("-i", os.path.join("..", "master", "video.mp4"), "-i", os.path.join("..", "master", "eng.m4a"), "-map", "0:v", "-map", "1:a",
               *common, "-hls_segment_filename", "muxed_%03d.ts", "muxed.m3u8", cwd=folder)
        write(os.path.join(folder, "master.m3u8"), HLS_MASTER)
        write(os.path.join(folder, "tracks.m3u8"), HLS_TRACKS)
        write(os.path.join(folder, "groups.m3u8"), HLS_GROUPS)
        for language in ("eng", "deu"):
            write(os.path.join(folder, language + ".vtt"), webVtt(language, self.seconds))
            write(os.path.join(folder, language + "_text.m3u8"), HLS_TEXT % (self.seconds, self.seconds, language))

    def makeText(self):
        """Timed text, and what it consists of, to compare with."""
        self.texts = {"eng": timed_text.every("eng", 1000, self.seconds), "deu": timed_text.every("deu", 1000, self.seconds),
                      "fra": timed_text.every("fra", self.seconds * 5, self.seconds), "ita": timed_text.odd(self.seconds)}
        folder = os.path.join(self.folder, "text")
        os.makedirs(folder)
        for language, documents in self.texts.items():
            names = ["%s-%03d.ttml" % (language, number) for number in range(len(documents))]
            for name, (_, _, data) in zip(names, documents):
                write(os.path.join(folder, name), data)
            write(os.path.join(folder, language + ".txt"),
                  "".join("%d %d %s\n" % (start, end, name) for name, (start, end, _) in zip(names, documents)))

    def makeTextFiles(self):
        tracks = [(language, self.texts[language]) for language in ("eng", "deu")]
        write(os.path.join(self.folder, "text.mp4"), timed_text.intoFile(read(os.path.join(self.folder, "tail.mp4")), tracks))
        write(os.path.join(self.folder, "text-frag.mp4"), timed_text.intoFragments(read(os.path.join(self.folder, "frag.mp4")), tracks))

    def makeDashText(self):
        folder = os.path.join(self.folder, "dash")
        with open(os.path.join(folder, "av.mpd"), encoding="utf-8") as file:
            manifest = file.read()
        sets = adaptationSets(manifest)
        for number, (language, documents) in enumerate(self.texts.items()):
            init, parts = timed_text.segments(language, documents, self.segment_s * 1000)
            write(os.path.join(folder, "text-%s-init.mp4" % language), init)
            for part in range(1, self.seconds // self.segment_s + 1):
                write(os.path.join(folder, "text-%s-%d.m4s" % (language, part)), parts.get(part, timed_text.emptySegment(part, self.segment_s * 1000)))
            sets.append(segmentedText(10 + number, language, self.segment_s))
        write(os.path.join(folder, "text.mpd"), withPeriods(manifest, [sets], self.seconds))

    def makeHlsText(self):
        folder = os.path.join(self.folder, "hls")
        for language in ("eng", "deu"):
            lines = ["#EXTM3U", "#EXT-X-VERSION:6", "#EXT-X-TARGETDURATION:%d" % self.segment_s, "#EXT-X-MEDIA-SEQUENCE:0",
                     "#EXT-X-PLAYLIST-TYPE:VOD"]
            for start in range(0, self.seconds, self.segment_s):
                name = "%s_%03d.vtt" % (language, start // self.segment_s)
                write(os.path.join(folder, name), placedCues(language, start, self.segment_s))
                lines += ["#EXTINF:%d.000," % self.segment_s, name]
            write(os.path.join(folder, language + "_cues.m3u8"), "\n".join([*lines, "#EXT-X-ENDLIST", ""]))
        write(os.path.join(folder, "text.m3u8"), HLS_TRACKS.replace("_text.m3u8", "_cues.m3u8"))

    def finish(self):
        shutil.rmtree(self.master)


HLS_MASTER = """#EXTM3U
#EXT-X-VERSION:6
#EXT-X-INDEPENDENT-SEGMENTS
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="sound",NAME="English",DEFAULT=YES,AUTOSELECT=YES,LANGUAGE="eng",URI="eng.m3u8"
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="sound",NAME="Deutsch",DEFAULT=NO,AUTOSELECT=YES,LANGUAGE="deu",URI="deu.m3u8"
#EXT-X-STREAM-INF:BANDWIDTH=900000,RESOLUTION=640x360,CODECS="avc1.4d401e,mp4a.40.2",AUDIO="sound"
video.m3u8
"""

HLS_TRACKS = """#EXTM3U
#EXT-X-VERSION:6
#EXT-X-INDEPENDENT-SEGMENTS
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="sound",NAME="English",DEFAULT=YES,AUTOSELECT=YES,LANGUAGE="en",CHANNELS="2",URI="eng.m3u8"
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="sound",NAME="Deutsch",DEFAULT=NO,AUTOSELECT=YES,LANGUAGE="de",CHANNELS="2",URI="deu.m3u8"
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="sound",NAME="English, described",DEFAULT=NO,AUTOSELECT=YES,LANGUAGE="en",CHANNELS="2",\
CHARACTERISTICS="public.accessibility.describes-video",URI="described.m3u8"
#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID="text",NAME="English",DEFAULT=NO,AUTOSELECT=YES,FORCED=NO,LANGUAGE="en",URI="eng_text.m3u8"
#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID="text",NAME="Deutsch",DEFAULT=NO,AUTOSELECT=YES,FORCED=NO,LANGUAGE="de",\
CHARACTERISTICS="public.accessibility.transcribes-spoken-dialog",URI="deu_text.m3u8"
#EXT-X-STREAM-INF:BANDWIDTH=900000,RESOLUTION=640x360,CODECS="avc1.4d401e,mp4a.40.2",AUDIO="sound",SUBTITLES="text"
video.m3u8
#EXT-X-STREAM-INF:BANDWIDTH=300000,RESOLUTION=320x180,CODECS="avc1.4d400c,mp4a.40.2",AUDIO="sound",SUBTITLES="text"
blue.m3u8
""".replace("\\\n", "")

HLS_GROUPS = """#EXTM3U
#EXT-X-VERSION:6
#EXT-X-INDEPENDENT-SEGMENTS
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="few",NAME="English",DEFAULT=YES,AUTOSELECT=YES,LANGUAGE="en",CHANNELS="2",URI="eng.m3u8"
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="all",NAME="English",DEFAULT=YES,AUTOSELECT=YES,LANGUAGE="en",CHANNELS="2",URI="eng.m3u8"
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="all",NAME="Deutsch",DEFAULT=NO,AUTOSELECT=YES,LANGUAGE="de",CHANNELS="2",URI="deu.m3u8"
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="all",NAME="Deutsch, beschrieben",DEFAULT=NO,AUTOSELECT=YES,LANGUAGE="de",CHANNELS="2",URI="described.m3u8"
#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID="text",NAME="Deutsch",DEFAULT=NO,AUTOSELECT=YES,FORCED=NO,LANGUAGE="de",URI="deu_text.m3u8"
#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID="text",NAME="Deutsch, leicht",DEFAULT=NO,AUTOSELECT=YES,FORCED=NO,LANGUAGE="de",URI="eng_text.m3u8"
#EXT-X-STREAM-INF:BANDWIDTH=300000,RESOLUTION=320x180,CODECS="avc1.4d400c,mp4a.40.2",AUDIO="few"
blue.m3u8
#EXT-X-STREAM-INF:BANDWIDTH=900000,RESOLUTION=640x360,CODECS="avc1.4d401e,mp4a.40.2",AUDIO="all",SUBTITLES="text"
video.m3u8
"""

HLS_HEVC = """#EXTM3U
#EXT-X-VERSION:7
#EXT-X-INDEPENDENT-SEGMENTS
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="surround",NAME="English",DEFAULT=YES,AUTOSELECT=YES,LANGUAGE="eng",CHANNELS="6",URI="eac3_part.m3u8"
#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="stereo",NAME="Deutsch",DEFAULT=NO,AUTOSELECT=YES,LANGUAGE="deu",CHANNELS="2",URI="ac3_part.m3u8"
#EXT-X-STREAM-INF:BANDWIDTH=900000,RESOLUTION=640x360,CODECS="hvc1.1.6.L63.90,ec-3",AUDIO="surround"
hevc_part.m3u8
#EXT-X-STREAM-INF:BANDWIDTH=800000,RESOLUTION=640x360,CODECS="hvc1.1.6.L63.90,ac-3",AUDIO="stereo"
hevc_part.m3u8
"""
HLS_HEVC_MIXED = HLS_HEVC.replace('"stereo"', '"surround"').replace(",ec-3", ",ec-3,ac-3").replace("90,ac-3", "90,ec-3,ac-3")

HLS_TEXT = """#EXTM3U
#EXT-X-VERSION:6
#EXT-X-TARGETDURATION:%d
#EXT-X-MEDIA-SEQUENCE:0
#EXT-X-PLAYLIST-TYPE:VOD
#EXTINF:%d.000,
%s.vtt
#EXT-X-ENDLIST
"""


def clock(seconds, comma):
    return "%02d:%02d:%02d%s000" % (seconds // 3600, seconds // 60 % 60, seconds % 60, comma)


def cues(language, seconds):
    return [(start, start + 1, "%s %d" % (language, start)) for start in range(seconds)]


def subRip(language, seconds):
    return "".join("%d\n%s --> %s\n%s\n\n" % (number + 1, clock(start, ","), clock(end, ","), text)
                   for number, (start, end, text) in enumerate(cues(language, seconds)))


def webVtt(language, seconds):
    return "WEBVTT\nX-TIMESTAMP-MAP=LOCAL:00:00:00.000,MPEGTS:126000\n\n" + "".join(
        "%s --> %s\n%s\n\n" % (clock(start, "."), clock(end, "."), text) for start, end, text in cues(language, seconds))


def placedCues(language, start, seconds):
    cues = ["WEBVTT\nX-TIMESTAMP-MAP=LOCAL:00:00:00.000,MPEGTS:126000\n"]
    for second in range(start, start + seconds):
        cues.append("%d\n%s --> %s line:10%% position:25%% size:50%% align:start\n<v Anna><i>%s</i> %d &amp; more\nsecond line\n"
                    % (second, clock(second, "."), clock(second + 1, "."), language, second))
    return "\n".join(cues)


def timedText(language, seconds):
    lines = "".join('<p begin="%s" end="%s">%s</p>' % (clock(start, "."), clock(end, "."), text) for start, end, text in cues(language, seconds))
    return '<tt xmlns="http://www.w3.org/ns/ttml" xml:lang="%s"><body><div>%s</div></body></tt>\n' % (language, lines)


def sideLoadedText(number, language, role):
    return ('\t\t<AdaptationSet id="%d" contentType="text" mimeType="application/ttml+xml" lang="%s">\n'
            '\t\t\t<Role schemeIdUri="urn:mpeg:dash:role:2011" value="%s"/>\n'
            '\t\t\t<Representation id="text-%s" bandwidth="1000"><BaseURL>%s.ttml</BaseURL></Representation>\n'
            '\t\t</AdaptationSet>\n' % (number, language, role, language, language))


def segmentedText(number, language, segment_s):
    font = ""
    if language == "ita":
        font = ('\t\t\t<SupplementalProperty schemeIdUri="urn:dvb:dash:fontdownload:2014" value="1" xmlns:dvb="urn:dvb:dash:dash-extensions:2014-1" '
                'dvb:url="fonts/offered.woff" dvb:fontFamily="Offered" dvb:mimeType="application/font-woff"/>\n')
    return ('\t\t<AdaptationSet id="%d" contentType="text" mimeType="application/mp4" codecs="stpp.ttml.im1t" lang="%s">\n%s'
            '\t\t\t<Role schemeIdUri="urn:mpeg:dash:role:2011" value="subtitle"/>\n'
            '\t\t\t<SegmentTemplate timescale="1" duration="%d" startNumber="1" initialization="text-%s-init.mp4" media="text-%s-$Number$.m4s"/>\n'
            '\t\t\t<Representation id="text-%s" bandwidth="10000"/>\n'
            '\t\t</AdaptationSet>\n' % (number, language, font, segment_s, language, language, language))


def adaptationSets(manifest):
    return re.findall(r"\t\t<AdaptationSet.*?</AdaptationSet>\n", manifest, re.DOTALL)


def withPeriods(manifest, periods, seconds):
    """The manifest with these periods, each a list of its sets and of the whole length, in place of its own."""
    texts = ['\t<Period id="%d" start="PT%dS" duration="PT%dS">\n%s\t</Period>\n' % (number, number * seconds, seconds, "".join(sets))
             for number, sets in enumerate(periods)]
    manifest = re.sub(r"\t<Period.*</Period>\n", lambda _: "".join(texts), manifest, flags=re.DOTALL)
    return re.sub(r'mediaPresentationDuration="[^"]*"', 'mediaPresentationDuration="PT%dS"' % (seconds * len(periods)), manifest)


ROLES = {
    1: '\t\t\t<Role schemeIdUri="urn:mpeg:dash:role:2011" value="main"/>\n',
    2: '\t\t\t<Role schemeIdUri="urn:mpeg:dash:role:2011" value="dub"/>\n',
    3: '\t\t\t<Accessibility schemeIdUri="urn:tva:metadata:cs:AudioPurposeCS:2007" value="1"/>\n'
       '\t\t\t<Role schemeIdUri="urn:mpeg:dash:role:2011" value="alternate"/>\n',
}


def withRoles(manifest):
    """The packager writes no roles and some empty elements: add the one, drop the other."""
    manifest = re.sub(r"\t<(ProgramInformation|ServiceDescription)[^>]*>\s*</\1>\n", "", manifest)
    manifest = re.sub(r"\t<UTCTiming[^>]*/>\n", "", manifest)
    for number, roles in ROLES.items():
        manifest = re.sub(r'(<AdaptationSet id="%d"[^>]*>\n)' % number, lambda match: match.group(1) + roles, manifest)
    return manifest


def write(path, content):
    with open(path, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def read(path):
    with open(path, "rb") as file:
        return file.read()


def withoutSegment(source, target, segment):
    """A copy of a segmented presentation in which one segment is missing on the server."""
    shutil.copytree(source, target)
    os.remove(os.path.join(target, segment))


PAGE = b"<!DOCTYPE html>\n<html><head><title>Not found</title></head><body><p>This is a page, not media.</p></body></html>\n"


def makeBroken(root):
    """Media that must end in an error; named after what is wrong with it."""
    folder = os.path.join(root, "broken")
    os.makedirs(folder)
    out = lambda name: os.path.join(folder, name)
    short = lambda name: os.path.join(root, "short", name)
    whole = read(short("two.mp4"))
    write(out("truncated.mp4"), whole[: len(whole) * 2 // 5])
    tail = read(short("tail.mp4"))
    write(out("no-moov.mp4"), tail[: tail.rindex(b"moov") - 4])
    write(out("random.mp4"), random.Random(7).randbytes(200000))
    write(out("random.ts"), random.Random(8).randbytes(200000))
    write(out("page.mp4"), PAGE)
    write(out("page.mpd"), PAGE)
    write(out("page.m3u8"), PAGE)
    write(out("empty.mp4"), b"")
    write(out("unknown-codec.mp4"), whole.replace(b"avc1", b"zzzv").replace(b"mp4a", b"zzza"))
    manifest = read(short("dash/av.mpd"))
    write(out("malformed.mpd"), manifest[: len(manifest) // 2])
    write(out("malformed.m3u8"), b"#EXTM3U\n#EXT-X-VERSION:six\n#EXT-X-TARGETDURATION:\n#EXTINF:abc\n\x00\xff\xfe\n#EXT-X-ENDLIST\n")
    write(out("text.m3u8"), b"This is plain text, neither a playlist nor media.\n" * 20)
    write(out("no-segments.mpd"), manifest.replace(b"seg-$RepresentationID$-", b"none-$RepresentationID$-"))
    withoutSegment(short("dash"), out("dash-gap"), "seg-0-00003.m4s")
    withoutSegment(short("hls"), out("hls-gap"), "video_002.ts")


def makeSets(root):
    sets = [Set(root, LONG_S, 2), Set(os.path.join(root, "short"), SHORT_S, 1)]
    with concurrent.futures.ThreadPoolExecutor(max_workers=max(2, os.cpu_count() or 2)) as pool:
        steps = [pool.submit(each.encodeVideo, *video) for each in sets for video in (("video", "640x360", 600), ("small", "320x180", 200))]
        steps += [pool.submit(encode) for each in sets for encode in (each.encodeHevc, each.encodeBlue, each.encodeSound, each.writeSubtitles, each.makeText)]
        waitAll(steps)
        waitAll([pool.submit(make) for each in sets for make in (each.makeFiles, each.makeTracks, each.makeDash, each.makeHls)])
        waitAll([pool.submit(make) for each in sets for make in (each.makeHevc, each.makeTextFiles, each.makeDashText, each.makeHlsText)])
    for each in sets:
        each.finish()


def waitAll(futures):
    for future in futures:
        future.result()


# Taken before anything is made: what is made belongs to the script as it was then.
VERSION = hashlib.sha256(b"".join(read(os.path.abspath(each)) for each in (__file__, make_protected.__file__, make_rated.__file__, make_rights.__file__, timed_text.__file__))).hexdigest() + "\n"


def isCurrent(folder):
    stamp = os.path.join(folder, STAMP)
    return os.path.exists(stamp) and read(stamp).decode() == VERSION


def makeMedia(folder):
    """Makes everything beside the target and moves it into place: a broken run leaves no half set behind."""
    folder = os.path.abspath(folder)
    os.makedirs(os.path.dirname(folder), exist_ok=True)
    with open(folder + ".lock", "w", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if isCurrent(folder):
            return
        fresh = folder + ".new"
        shutil.rmtree(fresh, ignore_errors=True)
        os.makedirs(fresh)
        makeSets(fresh)
        makeBroken(fresh)
        make_rights.makeRights(fresh)
        write(os.path.join(fresh, STAMP), VERSION)
        shutil.rmtree(folder, ignore_errors=True)
        os.rename(fresh, folder)


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        print("usage: make_media.py OUTDIR", file=sys.stderr)
        return 2
    try:
        makeMedia(sys.argv[1])
    except (OSError, RuntimeError) as error:
        print("make_media.py: %s" % error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
