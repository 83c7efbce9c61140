// Drawing a figure's panels on the current PLplot stream: layout, axes, series and legends.
#pragma once

#include "Figure.h"

namespace plot {

// Loads the colours figures use into colour map 0 of the current stream (before plinit).
void SetUpColours();

// The figure's page as printed, where the device's idea of it differs: PLplot's PostScript device
// maps its fixed page onto the requested size separately in x and y, with pen widths in its own
// units; the cairo devices size text and pens for 72 dots per inch whatever the resolution.
struct PageGeometry {
  double widthMm = 0.0;  // 0: the page size PLplot reports
  double heightMm = 0.0;
  double lineScale = 1.0;  // PLplot pen width that draws a one-point line
  double textScale = 1.0;  // PLplot character height that draws text one millimetre high
};

// Draws `figure` on the current page of the current stream, which must be initialised and
// advanced to a page. Panels beyond rows x cols are not drawn; empty panels stay blank.
void PaintFigure(const Figure& figure, const PageGeometry& geometry = {});

}  // namespace plot
