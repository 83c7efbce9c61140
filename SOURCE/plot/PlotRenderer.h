// Rendering of figures with PLplot: to PNG, JPEG, SVG, EPS and PDF files, and to RGB buffers.
//
// Every call may come from any thread: PLplot is not thread-safe, so renders run one at a time.
// None of them ends the process or throws; a failure comes back as a message.
#pragma once

#include <string>
#include <vector>

#include "Figure.h"

struct RenderSize {
  int width = 800;
  int height = 600;
  int dpiX = 0;  // 0: the device's default; png and jpeg only (text and lines grow with it)
  int dpiY = 0;
};

// Writes `figure` to `path` in `format` ("png", "jpeg", "svg", "eps", "pdf"); returns "" or the
// reason it could not (never ends the process). For png/jpeg the size is in pixels; for the
// vector formats the same numbers are the page size in points. Sizes run from 16 to 10000. On
// failure no partial file is left behind.
std::string RenderFigureToFile(const Figure& figure, const std::string& path, const std::string& format,
                               const RenderSize& size);

// Draws `figure` into `rgb` (width * height * 3 bytes, rows top to bottom) for a window to show.
std::string RenderFigureToRGB(const Figure& figure, int width, int height, std::vector<unsigned char>& rgb);
