// RecordingSink: keeps everything the interpreter shows, for tests.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "OutputSink.h"

// Records each call as an entry, and also the plain console transcript as a batch run would
// print it (text, errors and warnings in order, new lines as "\n").
class RecordingSink : public OutputSink {
public:
  enum class Kind { Text, Error, Warning, Action, Progress };
  struct Entry {
    Kind kind;
    std::string text;
    TextStyle style;
    ConsoleAction action = ConsoleAction::NewLine;
    ProgressUpdate progress;
  };

  void Text(const std::string& text, const TextStyle& style) override;
  void Error(const std::string& text, bool warning) override;
  void Action(ConsoleAction action) override;
  void Progress(const ProgressUpdate& update) override;

  std::vector<Entry> Entries() const;
  std::string Transcript() const;
  // Only the error reports (not warnings), joined in order.
  std::string Errors() const;
  void Clear();

private:
  mutable std::mutex m_mutex;
  std::vector<Entry> m_entries;
};
