// FigureExport: the exporter every front end gives its session: figures drawn into files.
#pragma once

#include "Session.h"

// Draws a figure into a file through the renderer (PNG, JPEG, SVG, EPS, PDF).
FigureExporter FileFigureExporter();
