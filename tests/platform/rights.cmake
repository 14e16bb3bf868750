# SPDX-License-Identifier: Apache-2.0
# Descriptors, ratings and rights, as a page meets them.
set(cas_type "application/vnd.oipf.ContentAccessStreaming+xml")

# Descriptors that play: name, type that the page declares, length.
foreach(action play seek end)
  avc_add_case(descriptor.mp4.${action} playback
    "{\"path\": \"rights/mp4.cas\", \"type\": \"${cas_type}\", \"action\": \"${action}\", \"duration\": 4000}")
endforeach()
foreach(name dash no-namespace third nested nested-unsaid)
  avc_add_case(descriptor.${name} playback
    "{\"path\": \"rights/${name}.cas\", \"type\": \"${cas_type}\", \"action\": \"play\", \"duration\": 4000}")
endforeach()
# What the server says is enough, and what leads there may be a redirection.
avc_add_case(descriptor.served playback
  "{\"path\": \"rights/mp4.cas\", \"type\": \"video/mp4\", \"action\": \"play\", \"duration\": 4000}")
avc_add_case(descriptor.redirected playback
  "{\"path\": \"redirect/rights/mp4.cas\", \"type\": \"${cas_type}\", \"action\": \"play\", \"duration\": 4000}")
avc_add_case(descriptor.agent user_agent
  "{\"path\": \"rights/nested.cas\", \"type\": \"${cas_type}\", \"duration\": 4000, \"agent\": \"Sample/1.0 (television)\"}"
  --agent "Sample/1.0 (television)" --asked-for "rights/.*cas" 2)
# A document type that is only named is not fetched, and does not matter.
avc_add_case(descriptor.outside-type playback
  "{\"path\": \"rights/outside-type.cas\", \"type\": \"${cas_type}\", \"action\": \"play\", \"duration\": 4000}"
  --never-asked-for "secret")

# Descriptors that do not: name and the value of "error".
set(bad_descriptors
  "loop|4" "loop-a|4" "loop-unsaid|4" "unplayable|4" "local-file|4" "no-url|4" "cut|4" "page|4" "binary|4" "empty|4" "large|4" "huge|4"
  "bomb|4" "outside|4" "outside-parameter|4" "gone|5" "none|5" "foreign-rights|2")
foreach(descriptor ${bad_descriptors})
  string(REPLACE "|" ";" fields ${descriptor})
  list(GET fields 0 name)
  list(GET fields 1 code)
  avc_add_case(descriptor.bad.${name} error
    "{\"path\": \"rights/${name}.cas\", \"type\": \"${cas_type}\", \"code\": ${code}, \"patience\": 45000}"
    --never-asked-for "secret" --timeout 90)
endforeach()
foreach(fault "hang|1" "drop|1" "status/403|5" "status/500|1" "close|1" "stall|1")
  string(REPLACE "|" ";" fields ${fault})
  list(GET fields 0 name)
  list(GET fields 1 code)
  string(REPLACE "/" "_" test ${name})
  avc_add_case(descriptor.fault.${test} error
    "{\"path\": \"fault/${name}/rights/mp4.cas\", \"type\": \"${cas_type}\", \"code\": ${code}, \"patience\": 45000}" --timeout 90)
endforeach()

# Ratings: name, path, type, the rest of the configuration, options of avc-run.
set(ts "video/mp2t")
function(avc_add_rated_case name path type config)
  avc_add_case(rated.${name} rated "{\"path\": \"rights/${path}\", \"type\": \"${type}\"${config}}" ${ARGN})
endfunction()
set(ids "\"content\": \"cid:7\", \"system\": \"urn:dvb:casystemid:19219\"")
avc_add_rated_case(descriptor.blocked rated-16.cas ${cas_type} ", \"limit\": 12, \"ratings\": [\"16 13 DE\"], \"blocked\": true, ${ids}")
avc_add_rated_case(descriptor.scheme rated-fsk.cas ${cas_type} ", \"limit\": 12, \"ratings\": [\"FSK16 3 DE\"], \"blocked\": true, ${ids}")
avc_add_rated_case(descriptor.shown rated-16.cas ${cas_type} ", \"limit\": 16, \"ratings\": [\"16 13 DE\"], ${ids}")
avc_add_rated_case(descriptor.no_limit rated-16.cas ${cas_type} ", \"ratings\": [\"16 13 DE\"], ${ids}")
avc_add_rated_case(descriptor.strictest rated-by-country.cas ${cas_type}
  ", \"limit\": 12, \"ratings\": [\"6 3 DE\", \"18 5 GB\"], \"blocked\": true, ${ids}")
avc_add_rated_case(descriptor.country rated-by-country.cas ${cas_type} ", \"limit\": 12, \"ratings\": [\"6 3 DE\", \"18 5 GB\"], ${ids}"
  "--option=--parental-country=de")
avc_add_rated_case(descriptor.unknown rated-strangely.cas ${cas_type} ", \"limit\": 0, \"ratings\": [\"frightful 0 \"], \"error\": true, ${ids}")
avc_add_rated_case(descriptor.partly rated-partly.cas ${cas_type} ", \"limit\": 12, \"ratings\": [\"frightful 0 \", \"12 9 \"], ${ids}")
avc_add_rated_case(descriptor.unrated mp4.cas ${cas_type} ", \"limit\": 0")
avc_add_rated_case(ts.blocked rated-16.ts ${ts} ", \"limit\": 12, \"ratings\": [\"16 13 DE\"], \"blocked\": true")
avc_add_rated_case(ts.shown rated-16.ts ${ts} ", \"limit\": 16, \"ratings\": [\"16 13 DE\"]")
avc_add_rated_case(ts.country rated-by-country.ts ${ts} ", \"limit\": 12, \"ratings\": [\"6 3 DE\", \"18 15 GB\"]"
  "--option=--parental-country=DE")
avc_add_rated_case(ts.strictest rated-by-country.ts ${ts} ", \"limit\": 12, \"ratings\": [\"6 3 DE\", \"18 15 GB\"], \"blocked\": true")
avc_add_rated_case(ts.unknown rated-strangely.ts ${ts} ", \"limit\": 0, \"ratings\": [\"66 66 DE\"], \"error\": true")
avc_add_rated_case(ts.unrated unrated.ts ${ts} ", \"limit\": 0")

# Protected content: name, path, type, the rest of the configuration, options of run_case.py.
set(key_file "--option=--clearkey-file=${AVC_SAMPLE_MEDIA}/rights/keys.txt")
set(dash "application/dash+xml")
set(sample_key_id "00112233445566778899aabbccddee01")
set(kid "00112233-4455-6677-8899-aabbccddee01")
set(no_key_said --never-says "[ab]0a1a2a3a4a5a6a7")
function(avc_add_protected_case name path type config)
  avc_add_case(protected.${name} protected "{\"path\": \"rights/${path}\", \"type\": \"${type}\"${config}}" ${no_key_said} ${ARGN})
endfunction()
foreach(scheme cenc cbcs)
  avc_add_protected_case(${scheme}.plays ${scheme}/av.mpd ${dash} "" ${key_file})
  avc_add_protected_case(${scheme}.plays_one_key ${scheme}/av.mpd ${dash} ""
    "--option=--clearkey=${sample_key_id}:a0a1a2a3a4a5a6a7a8a9aaabacadae01")
  avc_add_protected_case(${scheme}.plays_beside_foreign_systems ${scheme}/foreign.mpd ${dash} "" ${key_file})
  avc_add_protected_case(${scheme}.licence ${scheme}/licence-good.mpd ${dash} "" --asked-for "^/licence/good" 1)
  avc_add_protected_case(${scheme}.no_key ${scheme}/av.mpd ${dash} ", \"state\": 0, \"content\": \"${kid}\", \"system\": \"\", \"issuer\": \"\"")
  avc_add_protected_case(${scheme}.wrong_key ${scheme}/av.mpd ${dash}
    ", \"state\": 1, \"content\": \"${kid}\", \"system\": \"\", \"issuer\": \"\""
    "--option=--clearkey=${sample_key_id}:b0a1a2a3a4a5a6a7a8a9aaabacadae01")
  avc_add_protected_case(${scheme}.file_no_key ${scheme}/film.mp4 "video/mp4"
    ", \"state\": 0, \"content\": \"${kid}\", \"system\": \"urn:uuid:1077efec-c0b2-4d02-ace3-3c1e52e2fb4b\", \"issuer\": \"\"")
  avc_add_protected_case(${scheme}.file_wrong_key ${scheme}/film.mp4 "video/mp4"
    ", \"state\": 1, \"content\": \"${kid}\", \"system\": \"urn:uuid:1077efec-c0b2-4d02-ace3-3c1e52e2fb4b\", \"issuer\": \"\""
    "--option=--clearkey=${sample_key_id}:b0a1a2a3a4a5a6a7a8a9aaabacadae01")
endforeach()
avc_add_protected_case(foreign cenc/foreign.mpd ${dash} ", \"state\": 0, \"content\": \"${kid}\", \"issuer\": \"http://issuer.example/first\", \
\"system\": \"urn:uuid:edef8ba9-79d6-4ace-a3c8-27dcd51d21ed\"")
foreach(answer "none|0" "junk|0" "huge|0" "refused|0" "silent|0" "wrong|1")
  string(REPLACE "|" ";" fields ${answer})
  list(GET fields 0 name)
  list(GET fields 1 state)
  avc_add_protected_case(licence_${name} cenc/licence-${name}.mpd ${dash} ", \"state\": ${state}, \"content\": \"${kid}\", \
\"system\": \"urn:uuid:e2719d58-a985-b3c9-781a-b030af78d30e\", \"issuer\": \"BASElicence/${name}\"" --timeout 90)
endforeach()
avc_add_protected_case(rotation rotation/av.mpd ${dash} ", \"straight\": true" ${key_file})
# What the portal's descriptor says of the content goes before what the stream says.
avc_add_protected_case(descriptor.plays clearkey.cas ${cas_type} "" ${key_file})
avc_add_protected_case(descriptor.no_key clearkey.cas ${cas_type} ", \"state\": 0, \"content\": \"cid:9\", \
\"system\": \"urn:uuid:1077efec-c0b2-4d02-ace3-3c1e52e2fb4b\", \"issuer\": \"http://issuer.example/rights?id=9\"")

avc_add_rated_case(dash.blocked rated-16.mpd ${dash} ", \"limit\": 12, \"ratings\": [\"FSK16 3 \"], \"blocked\": true")
avc_add_rated_case(dash.shown rated-16.mpd ${dash} ", \"limit\": 16, \"ratings\": [\"FSK16 3 \"]")
avc_add_rated_case(dash.element rated-element.mpd ${dash} ", \"limit\": 12, \"ratings\": [\"16 13 \"], \"blocked\": true")
avc_add_rated_case(dash.unknown rated-strangely.mpd ${dash} ", \"limit\": 0, \"ratings\": [\"frightful 0 \"], \"error\": true")
avc_add_rated_case(dash.unrated ../short/dash/av.mpd ${dash} ", \"limit\": 0")
