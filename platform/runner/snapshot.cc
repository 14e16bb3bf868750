// SPDX-License-Identifier: Apache-2.0
#include "platform/runner/snapshot.h"

#include <png.h>

#include <cstring>
#include <vector>

namespace runner {

namespace {

// libpng's simplified writer takes neither a fourth byte without meaning nor an opaque BGRx.
std::vector<unsigned char> toRgb(const std::vector<unsigned char>& bgrx) {
  std::vector<unsigned char> rgb;
  rgb.reserve(bgrx.size() / 4 * 3);
  for (std::size_t at = 0; at < bgrx.size(); at += 4) rgb.insert(rgb.end(), {bgrx[at + 2], bgrx[at + 1], bgrx[at]});
  return rgb;
}

}  // namespace

bool writeSnapshot(const shell::MediaLibrary& library, const std::string& path, std::string& error) {
  std::vector<unsigned char> picture(kMediaPlaneBytes);
  if (!library.snapshot(picture.data(), kMediaPlaneBytes)) {
    error = "the media library gave no picture of its video plane for " + path;
    return false;
  }
  const std::vector<unsigned char> rgb = toRgb(picture);
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = kMediaPlaneWidth;
  image.height = kMediaPlaneHeight;
  image.format = PNG_FORMAT_RGB;
  if (png_image_write_to_file(&image, path.c_str(), 0, rgb.data(), 0, nullptr) != 0) return true;
  error = "cannot write the snapshot " + path + ": " + image.message + "; does its folder exist and may it be written?";
  return false;
}

}  // namespace runner
