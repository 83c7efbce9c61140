// RecordingSink: an in-memory record of the interpreter's output.
#include "RecordingSink.h"

void RecordingSink::Text(const std::string& text, const TextStyle& style) {
  std::lock_guard lock(m_mutex);
  m_entries.push_back(Entry{Kind::Text, text, style, ConsoleAction::NewLine, {}});
}

void RecordingSink::Error(const std::string& text, bool warning) {
  std::lock_guard lock(m_mutex);
  m_entries.push_back(
      Entry{warning ? Kind::Warning : Kind::Error, text, {}, ConsoleAction::NewLine, {}});
}

void RecordingSink::Action(ConsoleAction action) {
  std::lock_guard lock(m_mutex);
  m_entries.push_back(Entry{Kind::Action, {}, {}, action, {}});
}

void RecordingSink::Progress(const ProgressUpdate& update) {
  std::lock_guard lock(m_mutex);
  m_entries.push_back(Entry{Kind::Progress, {}, {}, ConsoleAction::NewLine, update});
}

std::vector<RecordingSink::Entry> RecordingSink::Entries() const {
  std::lock_guard lock(m_mutex);
  return m_entries;
}

std::string RecordingSink::Transcript() const {
  std::lock_guard lock(m_mutex);
  std::string out;
  for (const auto& entry : m_entries) {
    if (entry.kind == Kind::Action) {
      if (entry.action == ConsoleAction::NewLine) out += "\n";
      if (entry.action == ConsoleAction::Rule) out += kConsoleRule;
    } else if (entry.kind != Kind::Progress) {
      out += entry.text;
    }
  }
  return out;
}

std::string RecordingSink::Errors() const {
  std::lock_guard lock(m_mutex);
  std::string out;
  for (const auto& entry : m_entries) {
    if (entry.kind == Kind::Error) out += entry.text;
  }
  return out;
}

void RecordingSink::Clear() {
  std::lock_guard lock(m_mutex);
  m_entries.clear();
}
