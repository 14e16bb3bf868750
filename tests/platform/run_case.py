#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs one platform test: serves the sample media, runs a case script in avc-run, and judges the outcome.

    run_case.py --avc-run FILE --media DIR --case FILE [--config JSON] [--locale NAME] [--agent TEXT] [--asked-for REGEX COUNT]
                [--never-asked-for REGEX] [--trace-has REGEX]… [--option OPTION]… [--never-says REGEX]

The case passes when avc-run ends with status 0, prints nothing that looks like a defect, and what it is asked to look for is there:
--agent: every request for media carried this user agent; --asked-for: so many different addresses were; --never-asked-for: none was;
--trace-has: a line of the trace matches;
--with: scripts that run before the case; --subtitle-settings: the viewer's;
--heard: the recording of the run has these tones in this order, "440,880"; silence counts where
it is asked for, "440,0,440". On failure the end of the trace
is shown. Everything lies in a temporary folder that is removed.
"""
import argparse
import json
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "media"))
import server as media_server  # noqa: E402  (the folder is only known now)
import tones  # noqa: E402

DEFECT = re.compile(r"CRITICAL \*\*|WARNING \*\*|Sanitizer|runtime error:|assertion .* failed", re.IGNORECASE)
# GStreamer 1.22 says so when a pipeline is closed while its streams begin. What comes of it goes nowhere.
CLOSED_EARLY = re.compile(r".*(Got data flow before (stream-start|segment) event|Sticky event misordering, got '[a-z-]+' before 'stream-start').*")
TRACE_LINES_SHOWN = 60
GRACE_S = 15


def parseArguments():
    parser = argparse.ArgumentParser(description="Runs one platform test.")
    parser.add_argument("--avc-run", required=True)
    parser.add_argument("--media", required=True)
    parser.add_argument("--case", required=True)
    parser.add_argument("--config", default="{}")
    parser.add_argument("--locale", help="run under this locale, for all categories")
    parser.add_argument("--agent", help="the user agent that every request for media must carry")
    parser.add_argument("--asked-for", nargs=2, metavar=("REGEX", "COUNT"), help="so many different paths like this were asked for")
    parser.add_argument("--never-asked-for", metavar="REGEX", help="no path like this was asked for")
    parser.add_argument("--trace-has", action="append", default=[], help="a regular expression that a line of the trace must match")
    parser.add_argument("--heard", help="the tones that must be heard, in their order")
    parser.add_argument("--languages", help="the viewer's languages, most preferred first")
    parser.add_argument("--option", action="append", default=[], help="an option for avc-run")
    parser.add_argument("--never-says", metavar="REGEX", help="neither the output nor the trace says this")
    parser.add_argument("--with", dest="before", action="append", default=[], metavar="FILE", help="a script that runs before the case")
    parser.add_argument("--subtitle-settings", help="the viewer's subtitle settings, VALUE:TEXT")
    parser.add_argument("--timeout", type=int, default=60, help="seconds")
    return parser.parse_args()


def environment(locale):
    variables = dict(os.environ)
    if locale:
        variables["LC_ALL"] = locale
    return variables


def runScripts(options, base, folder):
    """Gives (problem or None, output, trace)."""
    config = os.path.join(folder, "config.js")
    with open(config, "w", encoding="utf-8") as file:
        file.write("const CONFIG = %s;\n" % json.dumps(dict(json.loads(options.config), base=base, media=options.media)))
    trace = os.path.join(folder, "trace.jsonl")
    command = [options.avc_run, "--document-url", base, "--timeout", str(options.timeout), "--trace", trace, *options.option]
    if options.heard:
        command += ["--record-audio", recordingIn(folder)]
    if options.languages:
        command += ["--languages", options.languages]
    if options.subtitle_settings:
        command += ["--subtitle-settings", options.subtitle_settings]
    command += [*options.before, config, os.path.join(HERE, "harness.js"), options.case]
    try:
        result = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                errors="replace", env=environment(options.locale), timeout=options.timeout + GRACE_S, check=False)
    except subprocess.TimeoutExpired as error:
        return "avc-run did not end by itself", (error.stdout or b"").decode(errors="replace"), readTrace(trace)
    problem = None if result.returncode == 0 else "avc-run ended with status %d" % result.returncode
    if problem is None and DEFECT.search(CLOSED_EARLY.sub("", result.stdout)):
        problem = "the output tells of a defect"
    return problem, result.stdout, readTrace(trace)


def recordingIn(folder):
    return os.path.join(folder, "heard.wav")


def wronglyHeard(folder, wanted):
    heard = ",".join(str(tone) for tone in tones.heardIn(recordingIn(folder), with_silence="0" in wanted.split(",")))
    return "the tones %s were heard, not %s" % (heard or "of silence", wanted) if heard != wanted else None


def readTrace(path):
    if not os.path.exists(path):
        return []
    with open(path, encoding="utf-8", errors="replace") as file:
        return file.read().splitlines()


def requests(server):
    return [json.loads(line) for line in server.noted().decode().splitlines()]


def askedForTooFew(server, expression, count):
    paths = {entry["path"] for entry in requests(server) if re.search(expression, entry["path"])}
    return "only %d paths like %s were asked for" % (len(paths), expression) if len(paths) < count else None


def wrongAgent(server, wanted):
    entries = requests(server)
    if not entries:
        return "nothing was asked of the server"
    wrong = [entry for entry in entries if entry["agent"] != wanted]
    return "a request carried another user agent: %s" % wrong[0] if wrong else None


def judge(options, server, output, trace):
    if options.agent:
        problem = wrongAgent(server, options.agent)
        if problem:
            return problem
    if options.asked_for:
        problem = askedForTooFew(server, options.asked_for[0], int(options.asked_for[1]))
        if problem:
            return problem
    if options.never_asked_for and not askedForTooFew(server, options.never_asked_for, 1):
        return "a path like %s was asked for" % options.never_asked_for
    if options.never_says and re.search(options.never_says, "\n".join([output, *trace]), re.IGNORECASE):
        return "the output or the trace says %s" % options.never_says
    for expression in options.trace_has:
        if not any(re.search(expression, line) for line in trace):
            return "no line of the trace matches %s" % expression
    return None


def main():
    options = parseArguments()
    server = media_server.Server(options.media).start()
    try:
        with tempfile.TemporaryDirectory() as folder:
            problem, output, trace = runScripts(options, "http://127.0.0.1:%d/" % server.port, folder)
            if problem is None and options.heard:
                problem = wronglyHeard(folder, options.heard)
        problem = problem or judge(options, server, output, trace)
    finally:
        server.stop()
    sys.stdout.write(output)
    if problem is None:
        return 0
    print("\n".join(line[:240] for line in trace[-TRACE_LINES_SHOWN:]))
    print("run_case.py: %s" % problem)
    return 1


if __name__ == "__main__":
    sys.exit(main())
