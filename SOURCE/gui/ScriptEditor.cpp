// ScriptEditor: pages, tool bar, keys, files, find and replace, and running a page's code.
#include "ScriptEditor.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include <wx/accel.h>
#include <wx/artprov.h>
#include <wx/aui/auibar.h>
#include <wx/aui/auibook.h>
#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/graphics.h>
#include <wx/image.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>

#include "ScriptPage.h"

namespace {

const char kWildcard[] = "Tavix scripts (*.tvx)|*.tvx|All files (*)|*";

wxBitmapBundle ToolArt(const wxArtID& id) {
  return wxArtProvider::GetBitmapBundle(id, wxART_TOOLBAR, wxSize(16, 16));
}

// A green "play" triangle for Run, drawn here: some icon themes draw the forward arrow so
// faintly that the tool looks disabled.
wxBitmapBundle RunArt() {
  wxVector<wxBitmap> bitmaps;
  for (const int size : {16, 24, 32}) {
    wxImage image(size, size);
    image.InitAlpha();
    std::fill_n(image.GetAlpha(), size * size, static_cast<unsigned char>(0));
    {
      const std::unique_ptr<wxGraphicsContext> gc(wxGraphicsContext::Create(image));
      if (!gc) return ToolArt(wxART_GO_FORWARD);
      const double s = size / 16.0;
      wxGraphicsPath path = gc->CreatePath();
      path.MoveToPoint(3.5 * s, 2 * s);
      path.AddLineToPoint(13.5 * s, 8 * s);
      path.AddLineToPoint(3.5 * s, 14 * s);
      path.CloseSubpath();
      gc->SetBrush(wxBrush(wxColour(0x2e, 0xa0, 0x45)));
      gc->SetPen(wxPen(wxColour(0x1d, 0x75, 0x30), 1));
      gc->DrawPath(path);
    }  // the image receives the drawing when the context goes
    bitmaps.push_back(wxBitmap(image));
  }
  return wxBitmapBundle::FromBitmaps(bitmaps);
}

}  // namespace

ScriptEditor::ScriptEditor(wxWindow* parent, Callbacks callbacks)
    : wxPanel(parent, wxID_ANY),
      m_callbacks(std::move(callbacks)),
      m_idNew(NewControlId()),
      m_idOpen(NewControlId()),
      m_idSave(NewControlId()),
      m_idSaveAs(NewControlId()),
      m_idFind(NewControlId()),
      m_idFindNext(NewControlId()),
      m_idRun(NewControlId()),
      m_idStop(NewControlId()),
      m_idClose(NewControlId()) {
  m_findData.SetFlags(wxFR_DOWN);
  m_toolBar = new wxAuiToolBar(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                               wxAUI_TB_HORIZONTAL | wxAUI_TB_PLAIN_BACKGROUND);
  m_toolBar->SetToolBitmapSize(wxSize(16, 16));
  m_toolBar->AddTool(m_idNew, "New", ToolArt(wxART_NEW), "New script (Ctrl+N)");
  m_toolBar->AddTool(m_idOpen, "Open", ToolArt(wxART_FILE_OPEN), "Open a script (Ctrl+O)");
  m_toolBar->AddTool(m_idSave, "Save", ToolArt(wxART_FILE_SAVE), "Save the script (Ctrl+S)");
  m_toolBar->AddTool(m_idSaveAs, "Save As", ToolArt(wxART_FILE_SAVE_AS),
                     "Save the script under a new name (Ctrl+Shift+S)");
  m_toolBar->AddSeparator();
  m_toolBar->AddTool(m_idFind, "Find", ToolArt(wxART_FIND_AND_REPLACE),
                     "Find and replace (Ctrl+F; F3 finds the next match)");
  m_toolBar->AddSeparator();
  m_toolBar->AddTool(m_idRun, "Run", RunArt(),
                     "Run the selection, or the whole script without one (F5)");
  m_toolBar->AddTool(m_idStop, "Stop", ToolArt(wxART_STOP), "Stop the running job (Shift+F5)");
  m_toolBar->Realize();

  m_notebook = new wxAuiNotebook(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                 wxAUI_NB_TOP | wxAUI_NB_TAB_MOVE | wxAUI_NB_SCROLL_BUTTONS |
                                     wxAUI_NB_CLOSE_ON_ACTIVE_TAB | wxAUI_NB_MIDDLE_CLICK_CLOSE);

  auto* sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(m_toolBar, 0, wxEXPAND);
  sizer->Add(m_notebook, 1, wxEXPAND);
  SetSizer(sizer);

  wxAcceleratorEntry keys[] = {
      {wxACCEL_CTRL, 'N', m_idNew},
      {wxACCEL_CTRL, 'O', m_idOpen},
      {wxACCEL_CTRL, 'S', m_idSave},
      {wxACCEL_CTRL | wxACCEL_SHIFT, 'S', m_idSaveAs},
      {wxACCEL_CTRL, 'F', m_idFind},
      {wxACCEL_NORMAL, WXK_F3, m_idFindNext},
      {wxACCEL_NORMAL, WXK_F5, m_idRun},
      {wxACCEL_SHIFT, WXK_F5, m_idStop},
      {wxACCEL_CTRL, 'W', m_idClose},
  };
  SetAcceleratorTable(wxAcceleratorTable(static_cast<int>(std::size(keys)), keys));

  Bind(wxEVT_MENU, [this](wxCommandEvent&) { NewPage(); }, m_idNew);
  Bind(wxEVT_MENU, &ScriptEditor::OnOpen, this, m_idOpen);
  Bind(wxEVT_MENU, [this](wxCommandEvent&) {
    if (ScriptPage* page = CurrentPage()) SavePage(page, false);
  }, m_idSave);
  Bind(wxEVT_MENU, [this](wxCommandEvent&) {
    if (ScriptPage* page = CurrentPage()) SavePage(page, true);
  }, m_idSaveAs);
  Bind(wxEVT_MENU, [this](wxCommandEvent&) { ShowFindDialog(); }, m_idFind);
  Bind(wxEVT_MENU, [this](wxCommandEvent&) {
    if (m_findData.GetFindString().empty()) {
      ShowFindDialog();
    } else {
      FindNext(true);
    }
  }, m_idFindNext);
  Bind(wxEVT_MENU, [this](wxCommandEvent&) { RunCurrentPage(); }, m_idRun);
  Bind(wxEVT_MENU, [this](wxCommandEvent&) {
    if (m_running && m_callbacks.stop) m_callbacks.stop();
  }, m_idStop);
  Bind(wxEVT_MENU, [this](wxCommandEvent&) {
    if (const int index = m_notebook->GetSelection(); index != wxNOT_FOUND) ClosePage(index);
  }, m_idClose);

  m_notebook->Bind(wxEVT_AUINOTEBOOK_PAGE_CLOSE, &ScriptEditor::OnPageClose, this);
  m_notebook->Bind(wxEVT_AUINOTEBOOK_PAGE_CLOSED, [this](wxAuiNotebookEvent&) { UpdateTools(); });
  m_notebook->Bind(wxEVT_AUINOTEBOOK_PAGE_CHANGED, [this](wxAuiNotebookEvent& event) {
    event.Skip();
    UpdateTools();
  });
  UpdateTools();
}

ScriptEditor::~ScriptEditor() {
  // The dialog points at m_findData, which goes before the window's children do.
  delete m_findDialog;
}

void ScriptEditor::NewPage() {
  AddPage(new ScriptPage(m_notebook, wxString::Format("Untitled %d", ++m_untitledCount)));
}

bool ScriptEditor::OpenFile(const wxString& path) {
  wxFileName name(path);
  name.MakeAbsolute();
  const wxString fullPath = name.GetFullPath();
  for (int i = 0; i < PageCount(); ++i) {
    if (PageWindow(i)->Path() == fullPath) {
      SelectPage(i);
      if (m_callbacks.scriptFileUsed) m_callbacks.scriptFileUsed(name.GetPath(), false);
      return true;
    }
  }

  // An untouched untitled page is taken over rather than left behind.
  ScriptPage* current = CurrentPage();
  const bool reuse = current != nullptr && current->IsPristine();
  ScriptPage* page = reuse ? current : new ScriptPage(m_notebook, wxString());
  wxString error;
  if (!page->ReadScript(fullPath, error)) {
    if (!reuse) page->Destroy();
    wxMessageBox(wxString::Format("Cannot open \"%s\":\n%s", fullPath, error), "Open script",
                 wxOK | wxICON_ERROR, this);
    return false;
  }
  if (reuse) {
    UpdateCaption(page);
    page->SetFocus();
  } else {
    AddPage(page);
  }
  if (m_callbacks.scriptFileUsed) m_callbacks.scriptFileUsed(name.GetPath(), false);
  return true;
}

void ScriptEditor::SetRunning(bool running) {
  m_running = running;
  UpdateTools();
}

bool ScriptEditor::HasPages() const { return m_notebook->GetPageCount() > 0; }

wxString ScriptEditor::CurrentPageName() const {
  const ScriptPage* page = CurrentPage();
  return page ? page->Name() : wxString();
}

long ScriptEditor::SelectionStartLine() const {
  const ScriptPage* page = CurrentPage();
  return page ? page->LineFromPosition(page->GetSelectionStart()) : 0;
}

bool ScriptEditor::ConfirmClose() {
  for (int i = 0; i < PageCount(); ++i) {
    if (!PageWindow(i)->IsModified()) continue;
    SelectPage(i);
    if (!MaybeSave(PageWindow(i))) return false;
  }
  return true;
}

std::string ScriptEditor::PageText(int page) const { return PageWindow(page)->TextUtf8(); }

void ScriptEditor::SetPageText(int page, const std::string& text) {
  PageWindow(page)->SetTextUtf8(text);
}

int ScriptEditor::PageCount() const { return static_cast<int>(m_notebook->GetPageCount()); }

void ScriptEditor::SelectPage(int page) { m_notebook->SetSelection(page); }

wxString ScriptEditor::PageCaption(int page) const { return m_notebook->GetPageText(page); }

bool ScriptEditor::IsPageModified(int page) const { return PageWindow(page)->IsModified(); }

bool ScriptEditor::SavePageAs(int page, const wxString& path) {
  return WritePage(PageWindow(page), path);
}

void ScriptEditor::RunCurrentPage() {
  ScriptPage* page = CurrentPage();
  if (page == nullptr || m_running || !m_callbacks.run) return;
  std::string code;
  long firstLine = 0;
  const int start = page->GetSelectionStart();
  const int end = page->GetSelectionEnd();
  if (page->SelectionIsRectangle()) {
    code = page->GetSelectedTextRaw().data();
    firstLine = page->LineFromPosition(start);
  } else if (start != end) {
    const wxCharBuffer bytes = page->GetTextRangeRaw(start, end);
    code.assign(bytes.data(), static_cast<std::size_t>(end - start));
    firstLine = page->LineFromPosition(start);
  } else {
    code = page->TextUtf8();
  }
  if (code.find_first_not_of(" \t\r\n") == std::string::npos) return;
  // A line comment needs its line end; adding one after the last line moves no line numbers.
  if (code.back() != '\n') code += '\n';
  m_callbacks.run(code, "\"" + page->Name().utf8_string() + "\"", firstLine);
}

ScriptPage* ScriptEditor::PageWindow(int index) const {
  return static_cast<ScriptPage*>(m_notebook->GetPage(static_cast<size_t>(index)));
}

ScriptPage* ScriptEditor::CurrentPage() const {
  const int index = m_notebook->GetSelection();
  return index == wxNOT_FOUND ? nullptr : PageWindow(index);
}

void ScriptEditor::AddPage(ScriptPage* page) {
  page->Bind(wxEVT_STC_SAVEPOINTREACHED, [this, page](wxStyledTextEvent&) { UpdateCaption(page); });
  page->Bind(wxEVT_STC_SAVEPOINTLEFT, [this, page](wxStyledTextEvent&) { UpdateCaption(page); });
  m_notebook->AddPage(page, page->Name(), true);
  UpdateCaption(page);
  UpdateTools();
  page->SetFocus();
}

void ScriptEditor::UpdateCaption(ScriptPage* page) {
  const int index = m_notebook->GetPageIndex(page);
  if (index == wxNOT_FOUND) return;
  m_notebook->SetPageText(index, page->IsModified() ? page->Name() + " *" : page->Name());
  m_notebook->SetPageToolTip(index, page->Path().empty() ? page->Name() : page->Path());
}

void ScriptEditor::UpdateTools() {
  const bool page = HasPages();
  m_toolBar->EnableTool(m_idSave, page);
  m_toolBar->EnableTool(m_idSaveAs, page);
  m_toolBar->EnableTool(m_idFind, page);
  m_toolBar->EnableTool(m_idRun, page && !m_running);
  m_toolBar->EnableTool(m_idStop, m_running);
  m_toolBar->Refresh();
}

bool ScriptEditor::WritePage(ScriptPage* page, const wxString& path) {
  wxString error;
  if (!page->WriteScript(path, error)) {
    wxMessageBox(wxString::Format("Cannot save \"%s\":\n%s", path, error), "Save script",
                 wxOK | wxICON_ERROR, this);
    return false;
  }
  UpdateCaption(page);
  if (m_callbacks.scriptFileUsed)
    m_callbacks.scriptFileUsed(wxFileName(page->Path()).GetPath(), true);
  return true;
}

bool ScriptEditor::SavePage(ScriptPage* page, bool askForName) {
  wxString path = page->Path();
  if (askForName || path.empty()) {
    const wxString folder = path.empty() ? wxString() : wxFileName(path).GetPath();
    const wxString file = path.empty() ? page->Name() + ".tvx" : page->Name();
    wxFileDialog dialog(this, "Save script as", folder, file, kWildcard,
                        wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (dialog.ShowModal() != wxID_OK) return false;
    path = dialog.GetPath();
    // A name typed without an extension under the scripts filter gets one; the dialog did not
    // ask about overwriting that name, so ask here.
    if (dialog.GetFilterIndex() == 0 && wxFileName(path).GetExt().empty()) {
      path += ".tvx";
      if (wxFileName::FileExists(path) &&
          wxMessageBox(wxString::Format("\"%s\" already exists. Replace it?", path),
                       "Save script", wxYES_NO | wxNO_DEFAULT | wxICON_WARNING, this) != wxYES)
        return false;
    }
  }
  return WritePage(page, path);
}

bool ScriptEditor::MaybeSave(ScriptPage* page) {
  if (!page->IsModified()) return true;
  wxMessageDialog ask(this,
                      wxString::Format("Save the changes to \"%s\" before closing?", page->Name()),
                      "Unsaved changes", wxYES_NO | wxCANCEL | wxYES_DEFAULT | wxICON_QUESTION);
  ask.SetYesNoCancelLabels("&Save", "&Don't Save", "Cancel");
  switch (ask.ShowModal()) {
    case wxID_YES: return SavePage(page, false);
    case wxID_NO: return true;
    default: return false;
  }
}

bool ScriptEditor::ClosePage(int index) {
  if (!MaybeSave(PageWindow(index))) return false;
  m_notebook->DeletePage(static_cast<size_t>(index));
  UpdateTools();
  if (ScriptPage* page = CurrentPage()) page->SetFocus();
  return true;
}

void ScriptEditor::ShowFindDialog() {
  ScriptPage* page = CurrentPage();
  if (page == nullptr) return;
  // A selection within one line is what the user most likely wants to find.
  const int start = page->GetSelectionStart();
  const int end = page->GetSelectionEnd();
  if (start != end && page->LineFromPosition(start) == page->LineFromPosition(end))
    m_findData.SetFindString(page->GetSelectedText());
  if (m_findDialog == nullptr) {
    m_findDialog = new wxFindReplaceDialog(this, &m_findData, "Find and replace",
                                           wxFR_REPLACEDIALOG);
    for (const auto type : {wxEVT_FIND, wxEVT_FIND_NEXT, wxEVT_FIND_REPLACE,
                            wxEVT_FIND_REPLACE_ALL, wxEVT_FIND_CLOSE})
      m_findDialog->Bind(type, &ScriptEditor::OnFindDialogEvent, this);
  }
  m_findDialog->Show();
  m_findDialog->Raise();
}

int ScriptEditor::SearchFlags() const {
  const int flags = m_findData.GetFlags();
  return ((flags & wxFR_MATCHCASE) ? wxSTC_FIND_MATCHCASE : 0) |
         ((flags & wxFR_WHOLEWORD) ? wxSTC_FIND_WHOLEWORD : 0);
}

void ScriptEditor::FindNext(bool reportMissing) {
  ScriptPage* page = CurrentPage();
  if (page == nullptr) return;
  const wxString what = m_findData.GetFindString();
  const bool down = (m_findData.GetFlags() & wxFR_DOWN) != 0;
  if (!page->FindNextMatch(what, SearchFlags(), down) && reportMissing)
    Tell(wxString::Format("Cannot find \"%s\".", what));
}

void ScriptEditor::Tell(const wxString& message) {
  wxWindow* parent = m_findDialog != nullptr && m_findDialog->IsShown()
                         ? static_cast<wxWindow*>(m_findDialog) : this;
  wxMessageBox(message, "Find and replace", wxOK | wxICON_INFORMATION, parent);
}

void ScriptEditor::OnOpen(wxCommandEvent&) {
  const ScriptPage* page = CurrentPage();
  const wxString folder = page && !page->Path().empty() ? wxFileName(page->Path()).GetPath()
                                                         : wxString();
  wxFileDialog dialog(this, "Open script", folder, wxString(), kWildcard,
                      wxFD_OPEN | wxFD_FILE_MUST_EXIST | wxFD_MULTIPLE);
  if (dialog.ShowModal() != wxID_OK) return;
  wxArrayString paths;
  dialog.GetPaths(paths);
  for (const wxString& path : paths) OpenFile(path);
}

void ScriptEditor::OnFindDialogEvent(wxFindDialogEvent& event) {
  const wxEventType type = event.GetEventType();
  if (type == wxEVT_FIND_CLOSE) {
    m_findDialog->Destroy();
    m_findDialog = nullptr;
    if (ScriptPage* page = CurrentPage()) page->SetFocus();
    return;
  }
  ScriptPage* page = CurrentPage();
  if (page == nullptr) return;
  const wxString what = m_findData.GetFindString();
  if (type == wxEVT_FIND || type == wxEVT_FIND_NEXT) {
    FindNext(true);
  } else if (type == wxEVT_FIND_REPLACE) {
    if (!page->ReplaceMatch(what, m_findData.GetReplaceString(), SearchFlags()))
      Tell(wxString::Format("Cannot find \"%s\".", what));
  } else if (type == wxEVT_FIND_REPLACE_ALL) {
    const int count = page->ReplaceAllMatches(what, m_findData.GetReplaceString(), SearchFlags());
    Tell(count == 0 ? wxString::Format("Cannot find \"%s\".", what)
                    : wxString::Format("Replaced %d occurrence%s.", count, count == 1 ? "" : "s"));
  }
}

void ScriptEditor::OnPageClose(wxAuiNotebookEvent& event) {
  // The tab's close button: the notebook deletes the page unless the user cancels.
  if (!MaybeSave(PageWindow(event.GetSelection()))) event.Veto();
}
