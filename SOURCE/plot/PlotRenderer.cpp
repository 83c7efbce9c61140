// PLplot streams for one render each: device choice, output file checks, failures turned into
// messages, and the touches each format's output needs afterwards.
//
// PLplot ends the process on fatal errors (after calling an exit handler) and prompts on standard
// input for an unknown device or a file it cannot open. Renders therefore check the device and
// the output file before PLplot sees them, and the exit handler throws, so that a failure inside
// the library unwinds back here as an exception. All PLplot calls hold one global mutex.
#include "PlotRenderer.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include <plplot.h>

#include "FigurePainter.h"
#include "JpegWriter.h"

namespace {

constexpr int kMinSize = 16;
constexpr int kMaxSize = 10000;  // a 10000 x 10000 raster already takes 400 MB

std::mutex& PlplotMutex() {
  static std::mutex mutex;
  return mutex;
}

// A fatal PLplot error, thrown by the exit handler instead of letting PLplot exit.
struct PlplotFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The first non-fatal complaint of the current render (PLplot's "abort" messages); guarded by
// the mutex like everything else here.
std::string g_abortMessage;

int ThrowOnExit(const char* message) { throw PlplotFailure(message != nullptr ? message : "PLplot failed"); }

void RecordAbort(const char* message) {
  if (g_abortMessage.empty())
    g_abortMessage = message != nullptr && *message != '\0' ? message : "PLplot failed";
}

// Whether this PLplot build has the named output device.
bool HasDevice(std::string_view name) {
  constexpr int kMaxDevices = 128;
  const char* menus[kMaxDevices];
  const char* names[kMaxDevices];
  const char** menuList = menus;
  const char** nameList = names;
  int count = kMaxDevices;
  plgDevs(&menuList, &nameList, &count);
  for (int i = 0; i < count && i < kMaxDevices; ++i) {
    if (nameList[i] != nullptr && name == nameList[i]) return true;
  }
  return false;
}

// One PLplot stream, made current on creation and ended on destruction.
class Stream {
 public:
  Stream() { plmkstrm(&m_id); }
  ~Stream() { End(); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  // Ends the stream, which is when file devices finish writing; failures are reported as for
  // any other PLplot call.
  void End() {
    if (m_ended) return;
    m_ended = true;
    plsstrm(m_id);
    if (std::uncaught_exceptions() > 0) {
      try {
        plend1();
      } catch (const PlplotFailure&) {
      }
    } else {
      plend1();
    }
  }

 private:
  PLINT m_id = 0;
  bool m_ended = false;
};

// What a render draws into: a device writing a file, or the memory device filling a buffer.
struct Target {
  const char* device = "";
  std::string path;                 // file devices
  unsigned char* memory = nullptr;  // memcairo: width * height * 3 bytes
  bool portrait = false;            // the PostScript device is landscape otherwise
  RenderSize size;
  plot::PageGeometry geometry;
};

// PLplot's failure handlers for the duration of one render; PLplot's own afterwards.
class FailureHandlers {
 public:
  FailureHandlers() {
    g_abortMessage.clear();
    plsexit(ThrowOnExit);
    plsabort(RecordAbort);
  }
  ~FailureHandlers() {
    plsexit(nullptr);
    plsabort(nullptr);
  }
  FailureHandlers(const FailureHandlers&) = delete;
  FailureHandlers& operator=(const FailureHandlers&) = delete;
};

// Draws `figure` on a fresh stream of `target`; returns "" or what went wrong. Holds the mutex.
std::string Draw(const Figure& figure, const Target& target) {
  std::lock_guard<std::mutex> lock(PlplotMutex());
  const FailureHandlers handlers;
  if (!HasDevice(target.device)) return std::string("this PLplot has no ") + target.device + " device";
  try {
    Stream stream;
    plsdev(target.device);
    if (target.portrait) plsetopt("portrait", "");
    if (target.memory != nullptr) {
      plsmem(target.size.width, target.size.height, target.memory);
    } else {
      plsfnam(target.path.c_str());
      plspage(0.0, 0.0, target.size.width, target.size.height, 0, 0);
    }
    plot::SetUpColours();
    plinit();
    pladv(0);
    plot::PaintFigure(figure, target.geometry);
    stream.End();
  } catch (const PlplotFailure& failure) {
    return std::string("PLplot failed: ") + failure.what();
  }
  if (!g_abortMessage.empty()) return "PLplot failed: " + g_abortMessage;
  return "";
}

std::string CheckFigure(const Figure& figure, int width, int height) {
  if (figure.rows < 1 || figure.cols < 1) {
    return "a figure needs at least one row and one column of panels, not " + std::to_string(figure.rows) +
           " x " + std::to_string(figure.cols);
  }
  if (width < kMinSize || height < kMinSize || width > kMaxSize || height > kMaxSize) {
    return "a figure's size must be from " + std::to_string(kMinSize) + " to " + std::to_string(kMaxSize) +
           " in each direction, not " + std::to_string(width) + " x " + std::to_string(height);
  }
  return "";
}

// Creates (or empties) the file at `path`, so that PLplot never meets a file it cannot open.
std::string CheckWritable(const std::string& path) {
  if (path.empty()) return "no file name given";
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return "cannot write " + path + ": " + std::strerror(errno);
  std::fclose(file);
  return "";
}

std::string ReadFile(const std::string& path, bool& ok) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  ok = static_cast<bool>(in);
  return text.str();
}

bool WriteFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  return static_cast<bool>(out);
}

// Touches to PLplot's SVG output. Its device writes every character of a text as a numeric
// reference (&#x41;); plain ASCII is written back as itself so the text reads and searches
// normally. Each text also carries a clip path, the page or the plot area, which the text never
// leaves; some renderers (ImageMagick's among them) drop characters of clipped text, so the text
// clip paths go.
std::string TidySvg(const std::string& svg) {
  const std::string clip = " clip-path=\"url(#text-clipping";
  std::string out;
  out.reserve(svg.size());
  for (std::size_t i = 0; i < svg.size(); ++i) {
    if (svg.compare(i, 3, "&#x") == 0) {
      const std::size_t end = svg.find(';', i + 3);
      if (end != std::string::npos && end - i <= 8) {
        const unsigned long code = std::strtoul(svg.substr(i + 3, end - i - 3).c_str(), nullptr, 16);
        const bool markup = code == '<' || code == '>' || code == '&' || code == '"' || code == '\'';
        if (code >= 0x20 && code < 0x7F && !markup) {
          out += static_cast<char>(code);
          i = end;
          continue;
        }
      }
    }
    if (svg.compare(i, clip.size(), clip) == 0) {
      const std::size_t end = svg.find('"', i + clip.size());
      if (end != std::string::npos) {
        i = end;
        continue;
      }
    }
    out += svg[i];
  }
  return out;
}

// PLplot's PostScript device estimates its bounding box from rough text extents, which can fall
// outside the page; the page is the figure, so the box is the page.
std::string PageBoundingBox(const std::string& eps, int width, int height) {
  const std::string key = "%%BoundingBox:";
  const std::size_t at = eps.find(key);
  if (at == std::string::npos) return eps;
  const std::size_t end = eps.find('\n', at);
  return eps.substr(0, at) + key + " 0 0 " + std::to_string(width) + " " + std::to_string(height) +
         (end == std::string::npos ? std::string() : eps.substr(end));
}

// Rewrites the finished file at `path` through `edit`.
template <typename Edit>
std::string EditFile(const std::string& path, Edit edit) {
  bool ok = false;
  const std::string text = ReadFile(path, ok);
  if (!ok) return "cannot read back " + path;
  if (!WriteFile(path, edit(text))) return "cannot finish writing " + path;
  return "";
}

}  // namespace

std::string RenderFigureToRGB(const Figure& figure, int width, int height, std::vector<unsigned char>& rgb) {
  if (std::string problem = CheckFigure(figure, width, height); !problem.empty()) return problem;
  rgb.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 255);
  Target target;
  target.device = "memcairo";
  target.memory = rgb.data();
  target.size.width = width;
  target.size.height = height;
  return Draw(figure, target);
}

std::string RenderFigureToFile(const Figure& figure, const std::string& path, const std::string& format,
                               const RenderSize& size) {
  if (std::string problem = CheckFigure(figure, size.width, size.height); !problem.empty()) return problem;
  Target target;
  target.size = size;
  // PLplot's cairo devices draw text and pens for 72 dots per inch whatever resolution they are
  // given, so they keep their default and the page is declared smaller instead, with text and
  // pens widened to match. One resolution given stands for both.
  const int dpiX = size.dpiX > 0 ? size.dpiX : std::max(size.dpiY, 0);
  const int dpiY = size.dpiY > 0 ? size.dpiY : dpiX;
  if (dpiX > 0) {
    target.geometry.widthMm = size.width * 25.4 / dpiX;
    target.geometry.heightMm = size.height * 25.4 / dpiY;
    target.geometry.lineScale = 0.5 * (dpiX + dpiY) / 72.0;
    target.geometry.textScale = target.geometry.lineScale;
  }
  if (format == "png") {
    target.device = "pngcairo";
  } else if (format == "jpeg" || format == "jpg") {
    target.device = "memcairo";
  } else if (format == "svg") {
    target.device = "svg";  // text stays text, unlike the cairo SVG device's glyph outlines
    target.geometry = {};
  } else if (format == "eps") {
    target.device = "psc";  // likewise; its portrait option keeps the page upright
    target.portrait = true;
    // Its page is a fixed 3000 x 4000 units scaled to the size in points (x by height / 3000,
    // y by width / 4000), with integer pen widths in those units.
    target.geometry.widthMm = size.width * 25.4 / 72.0;
    target.geometry.heightMm = size.height * 25.4 / 72.0;
    target.geometry.lineScale = std::sqrt(12e6 / (static_cast<double>(size.width) * size.height));
    target.geometry.textScale = 1.0;
  } else if (format == "pdf") {
    target.device = "pdfcairo";
    target.geometry = {};
  } else {
    return "unknown figure format \"" + format + "\" (png, jpeg, svg, eps or pdf)";
  }
  // "-" would make PLplot write to standard output.
  target.path = path == "-" ? "./-" : path;
  if (std::string problem = CheckWritable(target.path); !problem.empty()) return problem;

  std::string problem;
  if (target.device == std::string_view("memcairo")) {
    std::vector<unsigned char> rgb(
        static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 3, 255);
    target.memory = rgb.data();
    problem = Draw(figure, target);
    if (problem.empty()) problem = WriteJpeg(target.path, rgb.data(), size.width, size.height);
  } else {
    problem = Draw(figure, target);
    if (problem.empty() && format == "svg") problem = EditFile(target.path, TidySvg);
    if (problem.empty() && format == "eps") {
      problem = EditFile(
          target.path, [&](const std::string& eps) { return PageBoundingBox(eps, size.width, size.height); });
    }
  }
  if (!problem.empty()) std::remove(target.path.c_str());
  return problem;
}
