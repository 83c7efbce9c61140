// Names of the series kinds.
#include "Figure.h"

const char* SeriesKindName(SeriesKind kind) {
  switch (kind) {
    case SeriesKind::Lines: return "Lines";
    case SeriesKind::XYLines: return "XYLines";
    case SeriesKind::Scatter: return "Scatter";
    case SeriesKind::Histogram: return "Histogram";
    case SeriesKind::ACF: return "ACF";
    case SeriesKind::KDensity: return "KDensity";
  }
  return "Unknown";
}
