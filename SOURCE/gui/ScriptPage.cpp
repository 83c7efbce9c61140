// ScriptPage: a script's text control: colouring, braces, indentation, file reading and writing.
#include "ScriptPage.h"

#include <algorithm>

#include <wx/file.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/strconv.h>

#include "ScriptStyles.h"

namespace {

bool IsBrace(int c) {
  return c == '(' || c == ')' || c == '[' || c == ']' || c == '{' || c == '}';
}

bool IsValidUtf8(const std::string& bytes) {
  return bytes.empty() ||
         wxConvUTF8.ToWChar(nullptr, 0, bytes.data(), bytes.size()) != wxCONV_FAILED;
}

// The line ending the file uses, judged by its first line end.
int EolModeOf(const std::string& bytes) {
  const std::size_t newline = bytes.find('\n');
  if (newline != std::string::npos) return newline > 0 && bytes[newline - 1] == '\r'
                                               ? wxSTC_EOL_CRLF : wxSTC_EOL_LF;
  return bytes.find('\r') != std::string::npos ? wxSTC_EOL_CR : wxSTC_EOL_LF;
}

}  // namespace

ScriptPage::ScriptPage(wxWindow* parent, const wxString& untitledName)
    : wxStyledTextCtrl(parent, wxID_ANY), m_untitledName(untitledName) {
  ApplyScriptStyles(*this);
  SetEOLMode(wxSTC_EOL_LF);
  SetUseTabs(false);
  SetTabWidth(2);
  SetIndent(2);
  SetTabIndents(true);
  SetBackSpaceUnIndents(true);
  SetCodePage(wxSTC_CP_UTF8);
  FitLineNumberMargin();

  Bind(wxEVT_STC_STYLENEEDED, &ScriptPage::OnStyleNeeded, this);
  Bind(wxEVT_STC_UPDATEUI, &ScriptPage::OnUpdateUi, this);
  Bind(wxEVT_STC_CHARADDED, &ScriptPage::OnCharAdded, this);
  Bind(wxEVT_STC_MODIFIED, &ScriptPage::OnModified, this);
  Bind(wxEVT_KEY_DOWN, &ScriptPage::OnKeyDown, this);
}

wxString ScriptPage::Name() const {
  return m_path.empty() ? m_untitledName : wxFileName(m_path).GetFullName();
}

bool ScriptPage::ReadScript(const wxString& path, wxString& error) {
  std::string bytes;
  {
    wxLogNull quiet;  // the caller reports failures in its own words
    wxFile file;
    if (!wxFileName::FileExists(path)) {
      error = "The file does not exist.";
      return false;
    }
    if (!file.Open(path, wxFile::read)) {
      error = wxSysErrorMsgStr(wxSysErrorCode());
      return false;
    }
    const wxFileOffset length = file.Length();
    if (length < 0 || length > 0x7fffffff) {
      error = "The file is too large to edit.";
      return false;
    }
    bytes.resize(static_cast<std::size_t>(length));
    if (length > 0 && file.Read(bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      error = wxSysErrorMsgStr(wxSysErrorCode());
      return false;
    }
  }
  // A byte-order mark would only trouble the interpreter's lexer.
  if (bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
  if (!IsValidUtf8(bytes)) {
    const wxString latin1(bytes.data(), wxConvISO8859_1, bytes.size());
    const wxScopedCharBuffer utf8 = latin1.utf8_str();
    bytes.assign(utf8.data(), utf8.length());
  }

  SetEOLMode(EolModeOf(bytes));
  ClearAll();
  AddTextRaw(bytes.data(), static_cast<int>(bytes.size()));
  EmptyUndoBuffer();
  SetSavePoint();
  GotoPos(0);
  wxFileName name(path);
  name.MakeAbsolute();
  m_path = name.GetFullPath();
  return true;
}

bool ScriptPage::WriteScript(const wxString& path, wxString& error) {
  const std::string bytes = TextUtf8();
  {
    wxLogNull quiet;
    wxTempFile file;
    if (!file.Open(path) || (!bytes.empty() && !file.Write(bytes.data(), bytes.size())) ||
        !file.Commit()) {
      error = wxSysErrorMsgStr(wxSysErrorCode());
      return false;
    }
  }
  SetSavePoint();
  wxFileName name(path);
  name.MakeAbsolute();
  m_path = name.GetFullPath();
  return true;
}

std::string ScriptPage::TextUtf8() const {
  // The control's getters are not const, though reading the text changes nothing.
  const wxCharBuffer bytes = const_cast<ScriptPage*>(this)->GetTextRaw();
  return std::string(bytes.data(), bytes.length());
}

void ScriptPage::SetTextUtf8(const std::string& text) {
  SetTargetRange(0, GetLength());
  ReplaceTargetRaw(text.data(), static_cast<int>(text.size()));
  GotoPos(0);
}

bool ScriptPage::IsPristine() const {
  return m_path.empty() && GetLength() == 0 && !IsModified() && !CanUndo();
}

bool ScriptPage::FindNextMatch(const wxString& what, int flags, bool down) {
  if (what.empty()) return false;
  SetSearchFlags(flags);
  const int length = GetLength();
  int found;
  if (down) {
    const int from = GetSelectionEnd();
    SetTargetRange(from, length);
    found = SearchInTarget(what);
    if (found < 0) {
      SetTargetRange(0, from);
      found = SearchInTarget(what);
    }
  } else {
    // A target whose start lies after its end is searched backwards.
    const int from = GetSelectionStart();
    SetTargetRange(from, 0);
    found = SearchInTarget(what);
    if (found < 0) {
      SetTargetRange(length, from);
      found = SearchInTarget(what);
    }
  }
  if (found < 0) return false;
  SetSelection(GetTargetStart(), GetTargetEnd());
  EnsureCaretVisible();
  return true;
}

bool ScriptPage::SelectionMatches(const wxString& what, int flags) {
  const int start = GetSelectionStart();
  const int end = GetSelectionEnd();
  if (what.empty() || start == end) return false;
  SetSearchFlags(flags);
  SetTargetRange(start, end);
  return SearchInTarget(what) == start && GetTargetEnd() == end;
}

bool ScriptPage::ReplaceMatch(const wxString& what, const wxString& with, int flags) {
  if (SelectionMatches(what, flags)) {
    SetTargetRange(GetSelectionStart(), GetSelectionEnd());
    ReplaceTarget(with);
    SetSelection(GetTargetEnd(), GetTargetEnd());
  }
  return FindNextMatch(what, flags, true);
}

int ScriptPage::ReplaceAllMatches(const wxString& what, const wxString& with, int flags) {
  if (what.empty()) return 0;
  SetSearchFlags(flags);
  int count = 0;
  int from = 0;
  BeginUndoAction();
  for (;;) {
    SetTargetRange(from, GetLength());
    if (SearchInTarget(what) < 0) break;
    ReplaceTarget(with);
    from = GetTargetEnd();
    ++count;
  }
  EndUndoAction();
  return count;
}

void ScriptPage::OnStyleNeeded(wxStyledTextEvent& event) {
  ColourScript(*this, event.GetPosition());
}

void ScriptPage::OnUpdateUi(wxStyledTextEvent& event) {
  event.Skip();
  // The brace before the caret wins over the one after it; braces in strings and comments,
  // which are not styled as operators, are left alone.
  const int caret = GetCurrentPos();
  int brace = -1;
  if (caret > 0 && IsBrace(GetCharAt(caret - 1)) &&
      GetStyleAt(caret - 1) == script_style::kOperator) {
    brace = caret - 1;
  } else if (caret < GetLength() && IsBrace(GetCharAt(caret)) &&
             GetStyleAt(caret) == script_style::kOperator) {
    brace = caret;
  }
  if (brace < 0) {
    BraceHighlight(wxSTC_INVALID_POSITION, wxSTC_INVALID_POSITION);
    return;
  }
  const int partner = BraceMatch(brace);
  if (partner == wxSTC_INVALID_POSITION) {
    BraceBadLight(brace);
  } else {
    BraceHighlight(brace, partner);
  }
}

void ScriptPage::OnCharAdded(wxStyledTextEvent& event) {
  // A new line starts at the indentation of the line above it.
  const int key = event.GetKey();
  const bool lineEnd = GetEOLMode() == wxSTC_EOL_CR ? key == '\r' : key == '\n';
  if (!lineEnd) return;
  const int line = GetCurrentLine();
  if (line == 0) return;
  const int indent = GetLineIndentation(line - 1);
  if (indent <= 0) return;
  SetLineIndentation(line, indent);
  GotoPos(GetLineIndentPosition(line));
}

void ScriptPage::OnModified(wxStyledTextEvent& event) {
  event.Skip();
  if (event.GetLinesAdded() != 0) FitLineNumberMargin();
}

void ScriptPage::OnKeyDown(wxKeyEvent& event) {
  // Tab inserts two spaces unless it is indenting a selection of several lines.
  if (event.GetKeyCode() == WXK_TAB && event.GetModifiers() == wxMOD_NONE &&
      LineFromPosition(GetSelectionStart()) == LineFromPosition(GetSelectionEnd())) {
    ReplaceSelection("  ");
    return;
  }
  event.Skip();
}

void ScriptPage::FitLineNumberMargin() {
  int digits = 1;
  for (int lines = GetLineCount(); lines >= 10; lines /= 10) ++digits;
  digits = std::max(digits, 3);
  if (digits == m_marginDigits) return;
  m_marginDigits = digits;
  SetMarginWidth(0, TextWidth(wxSTC_STYLE_LINENUMBER, wxString('9', digits + 1)));
}
