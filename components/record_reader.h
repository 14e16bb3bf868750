// SPDX-License-Identifier: Apache-2.0
// Reads the fields of a record text one by one: each field, the last one too, is closed by a "|".
#pragma once

#include <cstddef>

/// @return false when the text says that there is no record ("NOT_AVAILABLE" anywhere in it), and for a null text.
bool holdsRecord(const char* text);

/// A cursor over a NUL-terminated text that is borrowed for the reader's life. It always advances and never passes the end.
/// Each reading function returns false, and leaves its output alone, when no "|" closes the field. Nothing is checked against a
/// range.
class RecordReader {
 public:
  explicit RecordReader(const char* text) : m_rest(text) {}

  /// A malloc copy that the caller owns. "(null)", what a printf of a null text leaves, reads as the empty text.
  bool readText(char*& out);
  /// Digits as far as they go: "12abc" is 12, an empty field 0; overflow saturates.
  bool readInteger(int& out);
  /// A number; any but 0 is true.
  bool readBoolean(bool& out);
  /// A decimal fraction, rounded to single precision.
  bool readFraction(float& out);

 private:
  /// Moves behind the next field. @return its start, or null.
  const char* next(std::size_t& length);

  const char* m_rest;
};
