// ScriptEditor: the script editor pane: a notebook of script pages with its own small tool bar.
#pragma once

#include <functional>
#include <string>

#include <wx/fdrepdlg.h>
#include <wx/panel.h>

class ScriptPage;
class wxAuiNotebook;
class wxAuiNotebookEvent;
class wxAuiToolBar;

// A notebook of script pages with its own small tool bar: new, open, save, save as, find and
// replace, run and stop. Its keys (Ctrl+N, Ctrl+O, Ctrl+S, Ctrl+Shift+S, Ctrl+F, F3, F5,
// Shift+F5, Ctrl+W) act only while the focus is inside the editor.
class ScriptEditor : public wxPanel {
public:
  struct Callbacks {
    // Run code as a job: the code, the input name errors will quote (the page's name in double
    // quotes, e.g. "\"model.tvx\""), and the 0-based line of the page where the code starts, so
    // that an error on the page's line L is reported as line L.
    std::function<void(const std::string& code, const std::string& inputName, long firstLine)> run;
    std::function<void()> stop;  // stop the running job
    // The working directory should follow a script just opened or saved (when the user's
    // preference says so; the frame decides).
    std::function<void(const wxString& directory, bool saved)> scriptFileUsed;
  };

  // The editor with its tool bar and no pages.
  ScriptEditor(wxWindow* parent, Callbacks callbacks);
  ~ScriptEditor() override;

  // Adds an empty page "Untitled N" and selects it.
  void NewPage();
  // Opens the file in a page (or selects the page already holding it); false with a message box
  // when it cannot be read.
  bool OpenFile(const wxString& path);
  // While a job runs the run tool is disabled and the stop tool enabled; the other way round after.
  void SetRunning(bool running);
  // True when at least one page is open.
  bool HasPages() const;
  // The current page's file name without folders, or "Untitled N"; empty without pages.
  wxString CurrentPageName() const;
  // The 0-based line of the current selection's start (the caret line without a selection).
  long SelectionStartLine() const;
  // Asks about each modified page (Save, Don't Save, Cancel); false when the user cancelled.
  bool ConfirmClose();
  // The page's text as UTF-8 (for tests).
  std::string PageText(int page) const;
  // Replaces the page's text with UTF-8 `text`, as an edit that marks the page modified.
  void SetPageText(int page, const std::string& text);
  // The number of open pages.
  int PageCount() const;

  // The control of the page with index `page`.
  ScriptPage* PageWindow(int page) const;
  // Selects the page with index `page`.
  void SelectPage(int page);
  // The caption on the page's tab: its name, followed by " *" while it has unsaved changes.
  wxString PageCaption(int page) const;
  // True when the page has changes not yet saved.
  bool IsPageModified(int page) const;
  // Writes the page to `path` and makes the page that file's; false with a message box on failure.
  bool SavePageAs(int page, const wxString& path);
  // Runs the current page's selection, or the whole page without one; does nothing on an empty
  // page or while a job runs.
  void RunCurrentPage();

private:
  ScriptPage* CurrentPage() const;
  // Adds `page` to the notebook, selects and focuses it.
  void AddPage(ScriptPage* page);
  void UpdateCaption(ScriptPage* page);
  void UpdateTools();
  // Writes the page to `path`; reports failure in a message box.
  bool WritePage(ScriptPage* page, const wxString& path);
  // Saves the page, asking for a file name when it has none or `askForName` is set.
  bool SavePage(ScriptPage* page, bool askForName);
  // Asks whether to save a modified page; false when the user cancelled (or saving failed).
  bool MaybeSave(ScriptPage* page);
  // Closes the page with index `index` after asking about unsaved changes.
  bool ClosePage(int index);
  void ShowFindDialog();
  // Finds the next match of the find dialog's text; reports when there is none.
  void FindNext(bool reportMissing);
  int SearchFlags() const;
  // A message box over the find dialog when it is open, over the editor otherwise.
  void Tell(const wxString& message);

  void OnOpen(wxCommandEvent& event);
  void OnFindDialogEvent(wxFindDialogEvent& event);
  void OnPageClose(wxAuiNotebookEvent& event);

  Callbacks m_callbacks;
  wxAuiToolBar* m_toolBar = nullptr;
  wxAuiNotebook* m_notebook = nullptr;
  wxFindReplaceData m_findData;
  wxFindReplaceDialog* m_findDialog = nullptr;
  int m_untitledCount = 0;
  bool m_running = false;

  // Command ids of the tools and keys, unique to this editor.
  const int m_idNew, m_idOpen, m_idSave, m_idSaveAs, m_idFind, m_idFindNext, m_idRun, m_idStop,
      m_idClose;
};
