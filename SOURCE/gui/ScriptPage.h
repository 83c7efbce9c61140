// ScriptPage: one page of the script editor: a styled text control and the file it belongs to.
#pragma once

#include <string>

#include <wx/stc/stc.h>

// A script being edited: colours the language, matches braces, indents by two spaces and
// reads and writes its file as UTF-8 bytes, exactly.
class ScriptPage : public wxStyledTextCtrl {
public:
  // An empty page called `untitledName` until it is saved to a file.
  ScriptPage(wxWindow* parent, const wxString& untitledName);

  // The file's full path, or empty when the page has never been saved.
  const wxString& Path() const { return m_path; }
  // The file name without folders, or the untitled name.
  wxString Name() const;

  // Replaces the text with the file's contents (UTF-8; other bytes are read as Latin-1) and
  // makes the page that file's. False with `error` set when the file cannot be read.
  bool ReadScript(const wxString& path, wxString& error);
  // Writes the text to `path` unchanged, through a temporary file; on success the page belongs
  // to `path` and is no longer modified. False with `error` set otherwise.
  bool WriteScript(const wxString& path, wxString& error);

  // The whole text as UTF-8.
  std::string TextUtf8() const;
  // Replaces the whole text with UTF-8 `text` (an edit that can be undone).
  void SetTextUtf8(const std::string& text);
  // True for an untitled page that has never held any text.
  bool IsPristine() const;

  // Selects the next match of `what` from the selection on (backwards when `down` is false),
  // wrapping round the ends. `flags` are wxSTC_FIND_ flags. False when there is none.
  bool FindNextMatch(const wxString& what, int flags, bool down);
  // Replaces the selection with `with` when it is a match of `what`, then finds the next match.
  // False when no further match is found.
  bool ReplaceMatch(const wxString& what, const wxString& with, int flags);
  // Replaces every match as one undoable edit; returns how many were replaced.
  int ReplaceAllMatches(const wxString& what, const wxString& with, int flags);

private:
  void OnStyleNeeded(wxStyledTextEvent& event);
  void OnUpdateUi(wxStyledTextEvent& event);
  void OnCharAdded(wxStyledTextEvent& event);
  void OnModified(wxStyledTextEvent& event);
  void OnKeyDown(wxKeyEvent& event);
  // Widens the line-number margin to fit the number of the last line.
  void FitLineNumberMargin();
  // True when the selection is exactly one match of `what` under `flags`.
  bool SelectionMatches(const wxString& what, int flags);

  wxString m_path;
  wxString m_untitledName;
  int m_marginDigits = 0;
};
