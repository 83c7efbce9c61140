// TavixConsole: styled output, the input line, history and completion.
#include "TavixConsole.h"

#include <algorithm>
#include <fstream>

#include <cctype>

#include <wx/settings.h>
#include <wx/statline.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "StatementsComplete.h"

namespace {

constexpr std::size_t kHistoryKept = 1000;
const wxColour kErrorColour(190, 20, 20);
const wxColour kWarningColour(190, 110, 0);
const wxColour kCodeColour(20, 70, 160);
const wxColour kRuleColour(150, 150, 150);

wxColour ToWx(const Colour& c) { return wxColour(c.red, c.green, c.blue); }

wxString FromUtf8(const std::string& text) {
  wxString converted = wxString::FromUTF8(text);
  // Text that is not UTF-8 (bytes of a data file, say) is shown as Latin-1 rather than lost.
  return converted.empty() && !text.empty() ? wxString(text.c_str(), wxConvISO8859_1) : converted;
}

}  // namespace

TavixConsole::TavixConsole(wxWindow* parent, Callbacks callbacks, std::string historyFile)
    : wxPanel(parent, wxID_ANY), m_callbacks(std::move(callbacks)), m_historyFile(std::move(historyFile)) {
  m_font = wxFont(wxFontInfo(10).Family(wxFONTFAMILY_TELETYPE));
  m_output = new wxTextCtrl(this, wxID_ANY, wxEmptyString, wxDefaultPosition, wxDefaultSize,
                            wxTE_MULTILINE | wxTE_READONLY | wxTE_RICH2 | wxTE_DONTWRAP | wxBORDER_NONE);
  m_output->SetFont(m_font);
  m_output->SetBackgroundColour(*wxWHITE);
  // When the pane shrinks (another pane opens below it), the latest output stays in view.
  m_output->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    CallAfter([this] { m_output->ShowPosition(m_output->GetLastPosition()); });
  });
  m_input = new wxTextCtrl(this, wxID_ANY, wxEmptyString, wxDefaultPosition, wxSize(-1, 60),
                           wxTE_MULTILINE | wxTE_PROCESS_ENTER | wxTE_PROCESS_TAB | wxTE_RICH2);
  m_input->SetFont(m_font);
  m_input->Bind(wxEVT_KEY_DOWN, &TavixConsole::OnInputKey, this);
  // A multi-line text control shows no hint on every platform: the keys are said below it.
  auto* keys = new wxStaticText(this, wxID_ANY,
                                "Enter runs complete statements; a block waits for its \"end\".\n"
                                "Shift+Enter: a new line    Up, Down: history    Tab: complete a name");
  keys->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));

  auto* sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(m_output, 1, wxEXPAND);
  sizer->Add(new wxStaticLine(this), 0, wxEXPAND);
  sizer->Add(m_input, 0, wxEXPAND);
  sizer->Add(keys, 0, wxEXPAND | wxLEFT | wxRIGHT | wxBOTTOM, 3);
  SetSizer(sizer);
  LoadHistory();
}

void TavixConsole::Append(const std::string& text, const wxTextAttr& style) {
  if (text.empty()) return;
  m_output->SetDefaultStyle(style);
  m_output->AppendText(FromUtf8(text));
  m_output->ShowPosition(m_output->GetLastPosition());
}

void TavixConsole::PrintOnConsole(const std::string& text, const std::optional<Colour>& colour) {
  wxTextAttr style(colour ? ToWx(*colour) : *wxBLACK);
  style.SetFont(m_font);
  Append(text, style);
}

void TavixConsole::PrintOnConsoleBF(const std::string& text, const Colour& colour) {
  wxTextAttr style(ToWx(colour));
  style.SetFont(m_font.Bold());
  Append(text, style);
}

void TavixConsole::PrintOnConsoleBG(const std::string& text, const Colour& background) {
  wxTextAttr style(*wxBLACK, ToWx(background));
  style.SetFont(m_font);
  Append(text, style);
}

void TavixConsole::PrintOnConsoleError(const std::string& text) {
  PrintOnConsoleNewLine();
  wxTextAttr style(kErrorColour);
  style.SetFont(m_font);
  Append(text + (text.empty() || text.back() == '\n' ? "" : "\n"), style);
}

void TavixConsole::PrintOnConsoleWarning(const std::string& text) {
  PrintOnConsoleNewLine();
  wxTextAttr style(kWarningColour);
  style.SetFont(m_font);
  Append(text + (text.empty() || text.back() == '\n' ? "" : "\n"), style);
}

void TavixConsole::PrintOnConsoleLine() {
  PrintOnConsoleNewLine();
  wxTextAttr style(kRuleColour);
  style.SetFont(m_font);
  Append(std::string(72, '-') + "\n", style);
}

void TavixConsole::PrintOnConsoleNewLine() {
  const long last = m_output->GetLastPosition();
  if (last > 0 && m_output->GetRange(last - 1, last) != "\n") {
    Append("\n", wxTextAttr(*wxBLACK));
  }
}

void TavixConsole::PrintOnConsoleCode(const std::string& code) {
  PrintOnConsoleNewLine();
  wxTextAttr prompt(kCodeColour);
  prompt.SetFont(m_font.Bold());
  Append(">> ", prompt);
  wxTextAttr style(kCodeColour);
  style.SetFont(m_font);
  std::string shown = code;
  // Continuation lines are indented under the prompt.
  for (std::size_t at = shown.find('\n'); at != std::string::npos; at = shown.find('\n', at + 4)) {
    shown.insert(at + 1, "   ");
  }
  Append(shown + "\n", style);
}

void TavixConsole::ClearConsole() { m_output->Clear(); }

std::string TavixConsole::OutputText() const { return m_output->GetValue().utf8_string(); }

void TavixConsole::SetInput(const std::string& code) {
  m_input->SetValue(wxString::FromUTF8(code));
  m_input->SetInsertionPointEnd();
}

void TavixConsole::FocusInput() { m_input->SetFocus(); }

void TavixConsole::SubmitInput() {
  const std::string code = m_input->GetValue().utf8_string();
  if (code.find_first_not_of(" \t\r\n") == std::string::npos) return;
  if (m_history.empty() || m_history.back() != code) m_history.push_back(code);
  if (m_history.size() > kHistoryKept) m_history.erase(m_history.begin());
  m_historyPosition = m_history.size();
  m_draft.clear();
  SaveHistory();
  m_input->Clear();
  if (m_callbacks.submit) m_callbacks.submit(code);
}

std::string TavixConsole::Input() const { return m_input->GetValue().utf8_string(); }

void TavixConsole::PressKey(int keyCode, bool shift) {
  wxKeyEvent event(wxEVT_KEY_DOWN);
  event.m_keyCode = keyCode;
  event.SetShiftDown(shift);
  event.SetEventObject(m_input);
  OnInputKey(event);
}

void TavixConsole::OnInputKey(wxKeyEvent& event) {
  const int key = event.GetKeyCode();
  if ((key == WXK_RETURN || key == WXK_NUMPAD_ENTER) && !event.ShiftDown()) {
    // As in the terminal, unfinished text (a block without its end) waits for more lines; Enter
    // on an empty last line runs it anyway, so a mistake never traps the user.
    const std::string code = m_input->GetValue().utf8_string();
    const std::size_t lineStart = code.find_last_of('\n');
    const std::string lastLine = lineStart == std::string::npos ? code : code.substr(lineStart + 1);
    if (!StatementsComplete(code) && lastLine.find_first_not_of(" \t\r") != std::string::npos) {
      m_input->SetInsertionPointEnd();
      m_input->WriteText("\n");
      return;
    }
    SubmitInput();
    return;
  }
  if (key == WXK_RETURN || key == WXK_NUMPAD_ENTER) {
    m_input->WriteText("\n");
    return;
  }
  if (key == WXK_TAB) {
    Complete();
    return;
  }
  long column = 0, line = 0;
  m_input->PositionToXY(m_input->GetInsertionPoint(), &column, &line);
  const bool firstLine = line == 0;
  const bool lastLine = line >= m_input->GetNumberOfLines() - 1;
  if (key == WXK_UP && firstLine && m_historyPosition > 0) {
    if (m_historyPosition == m_history.size()) m_draft = m_input->GetValue().utf8_string();
    SetInput(m_history[--m_historyPosition]);
    return;
  }
  if (key == WXK_DOWN && lastLine && m_historyPosition < m_history.size()) {
    ++m_historyPosition;
    SetInput(m_historyPosition == m_history.size() ? m_draft : m_history[m_historyPosition]);
    return;
  }
  event.Skip();
}

// Completes the word before the caret: at once when one name fits, else as far as the names
// agree, listing them on the console.
void TavixConsole::Complete() {
  const long caret = m_input->GetInsertionPoint();
  const std::string before = m_input->GetRange(0, caret).utf8_string();
  std::size_t start = before.size();
  while (start > 0 && (std::isalnum(static_cast<unsigned char>(before[start - 1])) || before[start - 1] == '_')) {
    --start;
  }
  const std::string prefix = before.substr(start);
  if (prefix.empty() || !m_callbacks.completionWords) return;
  std::vector<std::string> matches;
  for (const auto& word : m_callbacks.completionWords()) {
    if (word.rfind(prefix, 0) == 0) matches.push_back(word);
  }
  std::sort(matches.begin(), matches.end());
  matches.erase(std::unique(matches.begin(), matches.end()), matches.end());
  if (matches.empty()) return;
  std::string common = matches.front();
  for (const auto& m : matches) {
    std::size_t n = 0;
    while (n < common.size() && n < m.size() && common[n] == m[n]) ++n;
    common.resize(n);
  }
  if (common.size() > prefix.size()) m_input->WriteText(wxString::FromUTF8(common.substr(prefix.size())));
  if (matches.size() > 1) {
    std::string listing;
    for (const auto& m : matches) listing += m + "  ";
    PrintOnConsoleNewLine();
    PrintOnConsole(listing + "\n", Colour{110, 110, 110});
  }
}

void TavixConsole::LoadHistory() {
  std::ifstream in(m_historyFile, std::ios::binary);
  std::string entry, line;
  // Entries are separated by a line holding a single NUL-free marker, so multi-line code survives.
  while (std::getline(in, line)) {
    if (line == "\x1e") {
      if (!entry.empty()) m_history.push_back(entry);
      entry.clear();
    } else {
      entry += (entry.empty() ? "" : "\n") + line;
    }
  }
  if (m_history.size() > kHistoryKept) m_history.erase(m_history.begin(), m_history.end() - kHistoryKept);
  m_historyPosition = m_history.size();
}

void TavixConsole::SaveHistory() const {
  if (m_historyFile.empty()) return;
  std::ofstream out(m_historyFile, std::ios::binary | std::ios::trunc);
  for (const auto& entry : m_history) out << entry << "\n\x1e\n";
}
