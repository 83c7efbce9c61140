// FigureExport: the session's figure exporter over the renderer.
#include "FigureExport.h"

#include "PlotRenderer.h"

FigureExporter FileFigureExporter() {
  return [](const Figure& figure, const std::string& path, const std::string& format, int width, int height,
            int dpiX, int dpiY) {
    RenderSize size;
    size.width = width;
    size.height = height;
    size.dpiX = dpiX;
    size.dpiY = dpiY;
    return RenderFigureToFile(figure, path, format, size);
  };
}
