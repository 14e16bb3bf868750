#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tells which of the sample media's tones a recording holds, in their order.

    tones.py FILE.wav

prints one line for each stretch: when it begins, how long it is, its tone in hertz. 0 is silence.
"""
import math
import struct
import sys
import wave

TONES = (220, 440, 880)
BLOCK_S = 0.01
SHORT_S = 0.05  # a shorter stretch of sound is the seam between two
QUIET_S = 0.3  # a shorter silence is one, too, or a busy machine was late
QUIET = 100


def strengths(samples, rate):
    found = {}
    for tone in TONES:
        step = 2 * math.pi * tone / rate
        real = sum(sample * math.cos(step * index) for index, sample in enumerate(samples))
        imaginary = sum(sample * math.sin(step * index) for index, sample in enumerate(samples))
        found[tone] = math.hypot(real, imaginary) / len(samples)
    return found


def toneOf(samples, rate):
    """0 for silence, None for what is not clear."""
    if max(map(abs, samples)) < QUIET:
        return 0
    by_strength = sorted(strengths(samples, rate).items(), key=lambda item: item[1], reverse=True)
    return by_strength[0][0] if by_strength[1][1] < by_strength[0][1] / 2 else None


def leftChannel(path):
    with wave.open(path, "rb") as recording:
        rate, channels = recording.getframerate(), recording.getnchannels()
        content = recording.readframes(recording.getnframes())
    samples = struct.unpack("<%dh" % (len(content) // 2), content[: len(content) // 2 * 2])
    return samples[::channels], rate


def stretches(path):
    """Gives (begin, length, tone) of each, in seconds; seams are left out."""
    samples, rate = leftChannel(path)
    block = int(rate * BLOCK_S)
    thinned = 4  # 12 kHz are enough for tones below 1 kHz
    found = []
    for at in range(0, len(samples) - block, block):
        tone = toneOf(samples[at:at + block:thinned], rate / thinned)
        if tone is None:
            continue
        if found and found[-1][2] == tone:
            found[-1][1] += BLOCK_S
        else:
            found.append([at / rate, BLOCK_S, tone])
    return [tuple(each) for each in found if each[1] >= (SHORT_S if each[2] else QUIET_S) - BLOCK_S / 2]


def heardIn(path, with_silence):
    """The tones in their order, without silence before the first and after the last."""
    tones = []
    for _, _, tone in stretches(path):
        if tone == 0 and not with_silence:
            continue
        if not tones or tones[-1] != tone:
            tones.append(tone)
    while tones and tones[0] == 0:
        tones.pop(0)
    while tones and tones[-1] == 0:
        tones.pop()
    return tones


def main():
    if len(sys.argv) != 2:
        print("usage: tones.py FILE.wav", file=sys.stderr)
        return 2
    for begin, length, tone in stretches(sys.argv[1]):
        print("%8.2f s %7.2f s  %s" % (begin, length, "%d Hz" % tone if tone else "silence"))
    return 0


if __name__ == "__main__":
    sys.exit(main())
