// ConsoleSink: terminal output with optional escape-code colours.
#include "ConsoleSink.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

std::string ColourEscape(const TextStyle& style) {
  std::string escape;
  if (style.bold) escape += "\033[1m";
  if (style.colour) {
    escape += "\033[38;2;" + std::to_string(style.colour->red) + ";" +
              std::to_string(style.colour->green) + ";" + std::to_string(style.colour->blue) + "m";
  }
  if (style.background) {
    escape += "\033[48;2;" + std::to_string(style.background->red) + ";" +
              std::to_string(style.background->green) + ";" +
              std::to_string(style.background->blue) + "m";
  }
  return escape;
}

constexpr const char* kErrorEscape = "\033[1;31m";
constexpr const char* kWarningEscape = "\033[33m";
constexpr const char* kReset = "\033[0m";

}  // namespace

ConsoleSink::ConsoleSink()
    : ConsoleSink(std::cout, isatty(STDOUT_FILENO) != 0) {}

ConsoleSink::ConsoleSink(std::ostream& out, bool useColour)
    : m_out(out), m_useColour(useColour), m_progressOnTerminal(isatty(STDERR_FILENO) != 0) {}

void ConsoleSink::Write(const std::string& text, const char* escape) {
  std::lock_guard lock(m_mutex);
  if (m_useColour && escape && *escape) {
    m_out << escape << text << kReset;
  } else {
    m_out << text;
  }
  m_out.flush();
}

void ConsoleSink::Text(const std::string& text, const TextStyle& style) {
  Write(text, ColourEscape(style).c_str());
}

void ConsoleSink::Error(const std::string& text, bool warning) {
  Write(text, warning ? kWarningEscape : kErrorEscape);
}

void ConsoleSink::Action(ConsoleAction action) {
  switch (action) {
    case ConsoleAction::NewLine:
      Write("\n", nullptr);
      break;
    case ConsoleAction::Rule:
      Write(kConsoleRule, nullptr);
      break;
    case ConsoleAction::Clear:
      if (m_useColour) Write("\033[2J\033[H", nullptr);
      break;
    case ConsoleAction::Exit:
      m_exitRequested = true;
      break;
    case ConsoleAction::UpdateGUI:
    case ConsoleAction::EnableRun:
    case ConsoleAction::DisableRun:
      break;
  }
}

void ConsoleSink::Progress(const ProgressUpdate& update) {
  if (!m_progressOnTerminal) return;
  std::lock_guard lock(m_mutex);
  switch (update.action) {
    case 0:
      std::fprintf(stderr, "\r  0%%");
      break;
    case 1:
      std::fprintf(stderr, "\r%3d%%", update.value);
      break;
    case 2:
      std::fprintf(stderr, "\r%s", update.message.c_str());
      break;
    default:
      std::fprintf(stderr, "\r\033[K");
      break;
  }
  std::fflush(stderr);
}
