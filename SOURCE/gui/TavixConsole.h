// TavixConsole: the console pane: an output area and an input line for typed commands.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <wx/panel.h>
#include <wx/textctrl.h>

#include "Colour.h"

// Output in a monospace font with the dispatcher's styles; below it the input line: Enter runs what
// is complete (a block waits for its end),
// Shift+Enter adds a line, Up and Down walk the history (kept in a file across sessions), Tab
// completes workspace names and keywords.
class TavixConsole : public wxPanel {
public:
  struct Callbacks {
    std::function<void(const std::string& code)> submit;       // typed code to echo and run
    std::function<std::vector<std::string>()> completionWords;  // names that Tab completes
  };
  TavixConsole(wxWindow* parent, Callbacks callbacks, std::string historyFile);

  void PrintOnConsole(const std::string& text, const std::optional<Colour>& colour = {});
  // Bold text in a colour.
  void PrintOnConsoleBF(const std::string& text, const Colour& colour);
  void PrintOnConsoleBG(const std::string& text, const Colour& background);
  void PrintOnConsoleError(const std::string& text);
  void PrintOnConsoleWarning(const std::string& text);
  // A separating rule across the console.
  void PrintOnConsoleLine();
  // Starts a new line unless the output already ends with one.
  void PrintOnConsoleNewLine();
  // Echo of code that is about to run: a prompt and the code.
  void PrintOnConsoleCode(const std::string& code);
  void ClearConsole();

  // What the output area shows, and the input line (for tests and the frame).
  std::string OutputText() const;
  void SetInput(const std::string& code);
  std::string Input() const;
  // Runs what the input line holds (Enter on complete text does this).
  void SubmitInput();
  // What a key press does in the input line (for tests): Enter, Shift+Enter, Tab, Up, Down.
  void PressKey(int keyCode, bool shift = false);
  void FocusInput();
  const std::vector<std::string>& History() const { return m_history; }

private:
  void Append(const std::string& text, const wxTextAttr& style);
  void OnInputKey(wxKeyEvent& event);
  void Complete();
  void LoadHistory();
  void SaveHistory() const;

  Callbacks m_callbacks;
  std::string m_historyFile;
  wxTextCtrl* m_output = nullptr;
  wxTextCtrl* m_input = nullptr;
  wxFont m_font;
  std::vector<std::string> m_history;
  std::size_t m_historyPosition = 0;  // == size: the line being typed
  std::string m_draft;                // what was typed before walking the history
};
