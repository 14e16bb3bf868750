// SPDX-License-Identifier: Apache-2.0
// What the scripted media library offers the program beside the ten functions of host/mediamgmnt.h.
#pragma once

/// Until this is called the library reports nothing: a page that has set its source has always run on to its play() before a real
/// library is ready, and the program wants to see that order every time.
void scriptedMediaBegin();
