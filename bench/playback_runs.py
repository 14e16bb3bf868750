#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Whole-process comparisons on real media: time to the first frame, time until another language is heard, and processor time of ten
seconds of play.

Usage: playback_runs.py BUILD_DIR MEDIA_URL_BASE [RUNS]
Each figure is the median of RUNS runs (default 7), taken in turns so that a slow moment of the machine hits all sides alike.
"""
import os
import resource
import statistics
import subprocess
import sys
import time

SAMPLE_KEY = "00112233445566778899aabbccddee01:a0a1a2a3a4a5a6a7a8a9aaabacadae01"
OWN_SIZE = "320|180|640|360|"
SILENT = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}


def seconds_of(command, environment=None):
    """Wall time of a whole process; fails loudly when the process does."""
    start = time.monotonic()
    subprocess.run(command, check=True, env={**os.environ, **(environment or {})}, timeout=60, **SILENT)
    return time.monotonic() - start


def processor_seconds_of(command, environment=None):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, check=True, env={**os.environ, **(environment or {})}, timeout=60, **SILENT)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)


def in_turns(sides, measure, runs):
    """sides: name -> argument of measure. Returns name -> median."""
    taken = {name: [] for name in sides}
    for name, argument in sides.items():
        measure(*argument)  # warms the caches of each side
    for _ in range(runs):
        for name, argument in sides.items():
            taken[name].append(measure(*argument))
    return {name: statistics.median(values) for name, values in taken.items()}


def first_frames(program, url, runs):
    """(first player of a process, median of the later ones), milliseconds, in process."""
    first, later = [], []
    for _ in range(runs):
        text = subprocess.run([program, url, "6"], check=True, capture_output=True, text=True, timeout=120).stdout
        values = [float(word) for word in text.split()]
        first.append(values[0])
        later.extend(values[1:])
    return statistics.median(first), statistics.median(later)


def sound_switches(program, url, rounds):
    """Milliseconds from each selection until the new tone is heard. A source of 20 s has time for 20 of them."""
    taken = []
    for _ in range(rounds):
        text = subprocess.run([program, url, "20"], check=True, capture_output=True, text=True, timeout=120).stdout
        taken.extend(float(word) for word in text.split())
    return sorted(taken)


def gst_first_frame(url):
    """Ends with the first decoded picture; the sound is left out so that its end is not waited for."""
    return ["gst-launch-1.0", "-q", "uridecodebin3", f"uri={url}", "!", "video/x-raw", "!", "fakesink", "num-buffers=1"]


def main():
    if len(sys.argv) < 3:
        sys.exit("playback_runs: needs BUILD_DIR and MEDIA_URL_BASE")
    build, base = sys.argv[1], sys.argv[2].rstrip("/")
    runs = int(sys.argv[3]) if len(sys.argv) > 3 else 7
    first_frame = os.path.join(build, "bin", "first_frame")
    plane_seconds = os.path.join(build, "bin", "play_seconds")
    silent_screen = {"SDL_VIDEODRIVER": "dummy", "SDL_AUDIODRIVER": "dummy"}
    sources = {"MP4": f"{base}/two.mp4", "DASH": f"{base}/dash/av.mpd"}

    for name, url in sources.items():
        first, later = first_frames(first_frame, url, runs)
        print(f"first frame, {name}: first player of a process {first:.1f} ms, later ones {later:.1f} ms (in process)")
        whole = in_turns({
            "first_frame": ([first_frame, url],),
            "gst-launch-1.0": (gst_first_frame(url),),
            "ffplay": (["ffplay", "-nostats", "-autoexit", "-t", "0.04", url], silent_screen),
        }, seconds_of, runs)
        floor = whole["first_frame"]
        for side, value in whole.items():
            print(f"first frame, {name}, whole process: {side} {value * 1000:.0f} ms ({value / floor:.2f} of ours)")

    sound_switch = os.path.join(build, "bin", "sound_switch")
    for name, path in {"MP4": "tracks.mp4", "TS": "tracks.ts", "HLS": "hls/tracks.m3u8", "DASH": "dash/tracks.mpd"}.items():
        taken = sound_switches(sound_switch, f"{base}/{path}", max(1, runs // 3))
        print(f"selection until the new language is heard, {name}: median {statistics.median(taken):.0f} ms, "
              f"nine of ten within {taken[len(taken) * 9 // 10]:.0f} ms ({len(taken)} switches)")

    url = sources["MP4"]
    used = in_turns({
        "gst-launch-1.0, decoding only": (["gst-launch-1.0", "-q", "uridecodebin3", f"uri={url}", "name=d",
                                           "d.", "!", "video/x-raw", "!", "queue", "!", "fakesink", "sync=true", "num-buffers=250",
                                           "d.", "!", "audio/x-raw", "!", "queue", "!", "fakesink", "sync=true",
                                           "num-buffers=469"],),
        "ours, with the plane": ([plane_seconds, url, "10"],),
    }, processor_seconds_of, max(3, runs // 2))
    baseline = used["gst-launch-1.0, decoding only"]
    for side, value in used.items():
        print(f"processor time of 10 s of play, MP4 640x360: {side} {value:.2f} s ({value / baseline:.2f} of decoding only)")

    # Both from segments of one size, so that both sides show the same pictures.
    keys = SAMPLE_KEY.split(":")
    sides = {"clear": ([plane_seconds, f"{base}/short/dash/one-size.mpd", "4", OWN_SIZE],)}
    for scheme in ("cenc", "cbcs"):
        sides[scheme] = ([plane_seconds, f"{base}/rights/{scheme}/one-size.mpd", "4", OWN_SIZE, *keys],)
    used = in_turns(sides, processor_seconds_of, max(5, runs))
    for side, value in used.items():
        print(f"processor time of 4 s of play, DASH 640x360, {side}: {value:.3f} s ({value / used['clear']:.3f} of clear)")


if __name__ == "__main__":
    main()
