// JPEG encoding of an RGB buffer with libjpeg, errors returned rather than ending the process.
#pragma once

#include <string>

// Writes `rgb` (width * height * 3 bytes, rows top to bottom) to `path` as a baseline JPEG of the
// given quality (1-100); returns "" or the reason it could not.
std::string WriteJpeg(const std::string& path, const unsigned char* rgb, int width, int height,
                      int quality = 92);
