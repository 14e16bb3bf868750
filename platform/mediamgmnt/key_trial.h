// SPDX-License-Identifier: Apache-2.0
// Tries whether decrypted samples are what they should be: a wrong key is no error to a cipher, and decoders hide what it makes of
// a picture.
#pragma once

#include <gst/gst.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace mediamgmnt {

/// Decodes the first samples strictly, beside the pipeline. A key is condemned by the first picture, or by two pieces of sound. One
/// thread at a time.
class KeyTrial {
 public:
  enum class Verdict { Undecided, Fits, Wrong };

  /// @p caps are those of the decrypted stream. @return null when there is no way to try them: an unknown coding, no decoder
  /// library.
  static std::unique_ptr<KeyTrial> begin(const GstCaps* caps);
  KeyTrial(const KeyTrial&) = delete;
  KeyTrial& operator=(const KeyTrial&) = delete;
  ~KeyTrial();

  /// Whether a sample has been taken.
  bool hasBegun() const { return m_good + m_bad > 0; }
  /// Samples in order, from one on that can be decoded by itself.
  Verdict take(const std::uint8_t* sample, std::size_t size);

 private:
  class Decoder;
  KeyTrial(std::unique_ptr<Decoder> decoder, bool isVideo);

  std::unique_ptr<Decoder> m_decoder;
  const bool m_isVideo;
  std::size_t m_bytes = 0;
  int m_good = 0;
  int m_bad = 0;
};

}  // namespace mediamgmnt
