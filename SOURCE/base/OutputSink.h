// The interface a front end implements to receive everything the interpreter shows.
#pragma once

#include <optional>
#include <string>

#include "Colour.h"

// How a piece of console text is drawn.
struct TextStyle {
  bool bold = false;
  std::optional<Colour> colour;      // foreground; none means the console's normal colour
  std::optional<Colour> background;  // text on a coloured background
};

// Console and window actions that carry no payload.
enum class ConsoleAction {
  NewLine,      // start a new line
  Rule,         // a separating rule
  Clear,        // clear the console
  UpdateGUI,    // a job ended: refresh panes and the status bar
  EnableRun,    // the run button may be used again
  DisableRun,   // a job is running
  Exit,         // the program should quit
};

// How a text console draws the separating rule.
inline const std::string kConsoleRule = "\n" + std::string(72, '-') + "\n";

// Progress of long work: action 0 shows the gauge at 0, 1 sets `value` (0-100), 2 shows
// `message`, anything else hides the gauge.
struct ProgressUpdate {
  int action = 0;
  int value = 0;
  std::string message;
};

// A sink receives the dispatcher's output in order. Implementations must be safe to call from
// the interpreter's thread; they must not call back into the interpreter.
class OutputSink {
public:
  virtual ~OutputSink() = default;
  virtual void Text(const std::string& text, const TextStyle& style) = 0;
  // An error report, or a warning when `warning` is true.
  virtual void Error(const std::string& text, bool warning) = 0;
  virtual void Action(ConsoleAction action) = 0;
  virtual void Progress(const ProgressUpdate& update) = 0;
};
