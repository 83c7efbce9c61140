// Tests of the script editor: the colouring scanner, pages, files, the modified marker, running
// code, find and replace and the Tab key. Needs a display (xvfb-run will do). It has its own
// main, which starts wxWidgets with a plain wxApp: link it with gtest, not gtest_main.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <wx/app.h>
#include <wx/frame.h>
#include <wx/utils.h>

#include "ScriptEditor.h"
#include "ScriptPage.h"
#include "ScriptStyles.h"

namespace {

namespace fs = std::filesystem;
using namespace script_style;

std::string ReadBytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const fs::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
}

// The style the scanner gives to the first occurrence of `needle` in `text`, checked to cover
// the whole of it.
char StyleOf(const std::string& text, const std::string& needle,
             ScanState start = ScanState::Code) {
  std::vector<char> styles;
  std::vector<ScanState> lines;
  StyleScriptText(text, start, styles, lines);
  const std::size_t at = text.find(needle);
  EXPECT_NE(at, std::string::npos) << needle;
  if (at == std::string::npos) return -1;
  for (std::size_t i = at; i < at + needle.size(); ++i)
    EXPECT_EQ(styles[i], styles[at]) << "\"" << needle << "\" is not styled as one piece";
  return styles[at];
}

TEST(ScriptStylesTest, WordsOfTheLanguage) {
  const std::string text = "if x > 1; b = mean(X) + lm(y); end; q = myvar; r = pi + inf;\n";
  EXPECT_EQ(StyleOf(text, "if"), kKeyword);
  EXPECT_EQ(StyleOf(text, "end"), kKeyword);
  EXPECT_EQ(StyleOf(text, "mean"), kBuiltin);
  EXPECT_EQ(StyleOf(text, "lm"), kBuiltin);
  EXPECT_EQ(StyleOf(text, "myvar"), kDefault);
  EXPECT_EQ(StyleOf(text, "pi"), kConstant);
  EXPECT_EQ(StyleOf(text, "inf"), kConstant);
  EXPECT_EQ(StyleOf(text, ";"), kOperator);
  EXPECT_EQ(WordStyle("true"), kKeyword);
  EXPECT_EQ(WordStyle("function"), kKeyword);
  EXPECT_EQ(WordStyle("print"), kBuiltin);
  // A name that merely starts like a keyword is a plain name.
  EXPECT_EQ(WordStyle("iffy"), kDefault);
  EXPECT_EQ(WordStyle("end2"), kDefault);
}

TEST(ScriptStylesTest, NumbersAsTheLexerReadsThem) {
  const std::string text = "a = 1e-3 + 2.5 + .5 + 3. + x1;\n";
  EXPECT_EQ(StyleOf(text, "1e-3"), kNumber);
  EXPECT_EQ(StyleOf(text, "2.5"), kNumber);
  EXPECT_EQ(StyleOf(text, ".5"), kNumber);
  EXPECT_EQ(StyleOf(text, "3."), kNumber);
  EXPECT_EQ(StyleOf(text, "x1"), kDefault);
}

TEST(ScriptStylesTest, StringsCommentsTransposeAndCalls) {
  const std::string text =
      "s = \"a \\\" // not a comment\"; B = X' * Xt; // note \"quoted\"\nc = @f(1); /* x */ dd;\n";
  EXPECT_EQ(StyleOf(text, "\"a \\\" // not a comment\""), kString);
  // A prime is the transpose operator, never the start of a string.
  EXPECT_EQ(StyleOf(text, "'"), kOperator);
  EXPECT_EQ(StyleOf(text, "Xt"), kDefault);
  EXPECT_EQ(StyleOf(text, "// note \"quoted\""), kLineComment);
  EXPECT_EQ(StyleOf(text, "@f"), kUserCall);
  EXPECT_EQ(StyleOf(text, "/* x */"), kBlockComment);
  EXPECT_EQ(StyleOf(text, "dd"), kDefault);
}

TEST(ScriptStylesTest, StatesCarryOverLineEnds) {
  const std::string text = "a; /* one\ntwo\nthree */ b;\r\ns = \"x\ny\"; zz;\n";
  std::vector<char> styles;
  std::vector<ScanState> lines;
  const ScanState end = StyleScriptText(text, ScanState::Code, styles, lines);
  EXPECT_EQ(end, ScanState::Code);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], ScanState::BlockComment);
  EXPECT_EQ(lines[1], ScanState::BlockComment);
  EXPECT_EQ(lines[2], ScanState::Code);
  EXPECT_EQ(lines[3], ScanState::String);
  EXPECT_EQ(lines[4], ScanState::Code);
  EXPECT_EQ(StyleOf(text, "two"), kBlockComment);
  EXPECT_EQ(StyleOf(text, "b"), kDefault);
  EXPECT_EQ(StyleOf(text, "zz"), kDefault);
  // Scanning from the middle with the carried state gives the same styles.
  EXPECT_EQ(StyleOf("three */ b;\n", "three */", ScanState::BlockComment), kBlockComment);
  EXPECT_EQ(StyleOf("three */ b;\n", "b", ScanState::BlockComment), kDefault);
  EXPECT_EQ(StyleOf("y\"; zz;\n", "y\"", ScanState::String), kString);
}

// A shown frame holding what a test puts in it, deleted at the end of the test.
class EditorFixture : public ::testing::Test {
protected:
  void SetUp() override {
    m_frame = new wxFrame(nullptr, wxID_ANY, "test", wxDefaultPosition, wxSize(700, 500));
    m_dir = fs::temp_directory_path() /
            ("tavix_editor_test_" + std::to_string(wxGetProcessId()) + "_" +
             ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(m_dir);
  }
  void TearDown() override {
    delete m_frame;
    fs::remove_all(m_dir);
  }

  ScriptEditor* MakeEditor() {
    ScriptEditor::Callbacks callbacks;
    callbacks.run = [this](const std::string& code, const std::string& name, long line) {
      m_runs.push_back({code, name, line});
    };
    callbacks.stop = [this] { ++m_stops; };
    callbacks.scriptFileUsed = [this](const wxString& dir, bool saved) {
      m_used.push_back({dir.ToStdString(), saved});
    };
    auto* editor = new ScriptEditor(m_frame, callbacks);
    m_frame->Show();
    return editor;
  }

  struct RunCall {
    std::string code, name;
    long line;
  };
  wxFrame* m_frame = nullptr;
  fs::path m_dir;
  std::vector<RunCall> m_runs;
  std::vector<std::pair<std::string, bool>> m_used;
  int m_stops = 0;
};

TEST_F(EditorFixture, NewPagesAreNumbered) {
  ScriptEditor* editor = MakeEditor();
  EXPECT_FALSE(editor->HasPages());
  EXPECT_EQ(editor->CurrentPageName(), "");
  editor->NewPage();
  editor->NewPage();
  EXPECT_TRUE(editor->HasPages());
  EXPECT_EQ(editor->PageCount(), 2);
  EXPECT_EQ(editor->CurrentPageName(), "Untitled 2");
  EXPECT_EQ(editor->PageCaption(0), "Untitled 1");
  EXPECT_FALSE(editor->IsPageModified(0));
}

TEST_F(EditorFixture, TextRoundTripsAndMarksTheTab) {
  ScriptEditor* editor = MakeEditor();
  editor->NewPage();
  const std::string text = "x = 1; // \xC3\xA9t\xC3\xA9\r\ny = \"\xE2\x82\xAC\";";
  editor->SetPageText(0, text);
  EXPECT_EQ(editor->PageText(0), text);
  EXPECT_TRUE(editor->IsPageModified(0));
  EXPECT_EQ(editor->PageCaption(0), "Untitled 1 *");
}

TEST_F(EditorFixture, SavingWritesTheTextExactly) {
  ScriptEditor* editor = MakeEditor();
  editor->NewPage();
  const std::string text = "a = 1;\r\nb = \"\xC3\xA9\";\n\n// no final line end";
  editor->SetPageText(0, text);
  const fs::path path = m_dir / "saved.tvx";
  ASSERT_TRUE(editor->SavePageAs(0, wxString(path.string())));
  EXPECT_EQ(ReadBytes(path), text);
  EXPECT_FALSE(editor->IsPageModified(0));
  EXPECT_EQ(editor->PageCaption(0), "saved.tvx");
  EXPECT_EQ(editor->CurrentPageName(), "saved.tvx");
  ASSERT_EQ(m_used.size(), 1u);
  EXPECT_EQ(fs::path(m_used[0].first), m_dir);
  EXPECT_TRUE(m_used[0].second);
}

TEST_F(EditorFixture, OpeningReusesAnUntouchedPageAndFindsOpenFiles) {
  ScriptEditor* editor = MakeEditor();
  editor->NewPage();
  const fs::path path = m_dir / "model.tvx";
  const std::string text = "\xEF\xBB\xBFy = [1; 2];\r\nprint(y');\r\n";
  WriteBytes(path, text);
  ASSERT_TRUE(editor->OpenFile(wxString(path.string())));
  EXPECT_EQ(editor->PageCount(), 1);
  EXPECT_EQ(editor->CurrentPageName(), "model.tvx");
  EXPECT_EQ(editor->PageText(0), text.substr(3));  // without the byte-order mark
  EXPECT_FALSE(editor->IsPageModified(0));
  EXPECT_EQ(editor->PageWindow(0)->GetEOLMode(), wxSTC_EOL_CRLF);  // new lines follow the file
  ASSERT_EQ(m_used.size(), 1u);
  EXPECT_FALSE(m_used[0].second);

  editor->NewPage();
  editor->SetPageText(1, "z = 3;");
  ASSERT_TRUE(editor->OpenFile(wxString(path.string())));
  EXPECT_EQ(editor->PageCount(), 2);
  EXPECT_EQ(editor->CurrentPageName(), "model.tvx");
}

TEST_F(EditorFixture, BytesThatAreNotUtf8AreReadAsLatin1) {
  ScriptEditor* editor = MakeEditor();
  const fs::path path = m_dir / "old.tvx";
  WriteBytes(path, "s = \"caf\xE9\";\n");
  ASSERT_TRUE(editor->OpenFile(wxString(path.string())));
  EXPECT_EQ(editor->PageText(0), "s = \"caf\xC3\xA9\";\n");
  EXPECT_EQ(editor->PageWindow(0)->GetEOLMode(), wxSTC_EOL_LF);
}

TEST_F(EditorFixture, RunSendsThePageOrTheSelection) {
  ScriptEditor* editor = MakeEditor();
  editor->NewPage();
  editor->RunCurrentPage();
  editor->SetPageText(0, "  \n\t\n");
  editor->RunCurrentPage();
  EXPECT_TRUE(m_runs.empty()) << "an empty page runs nothing";

  editor->SetPageText(0, "a = 1;\nb = 2;\nc = 3;\nd = 4; // last");
  editor->RunCurrentPage();
  ASSERT_EQ(m_runs.size(), 1u);
  EXPECT_EQ(m_runs[0].code, "a = 1;\nb = 2;\nc = 3;\nd = 4; // last\n");
  EXPECT_EQ(m_runs[0].name, "\"Untitled 1\"");
  EXPECT_EQ(m_runs[0].line, 0);

  // A selection runs alone, numbered from the page's line where it starts.
  ScriptPage* page = editor->PageWindow(0);
  page->SetSelection(page->PositionFromLine(1) + 2, page->GetLineEndPosition(2));
  EXPECT_EQ(editor->SelectionStartLine(), 1);
  editor->RunCurrentPage();
  ASSERT_EQ(m_runs.size(), 2u);
  EXPECT_EQ(m_runs[1].code, "= 2;\nc = 3;\n");
  EXPECT_EQ(m_runs[1].line, 1);

  // Nothing runs while a job does; stop reaches the job only then.
  editor->SetRunning(true);
  editor->RunCurrentPage();
  EXPECT_EQ(m_runs.size(), 2u);
  editor->SetRunning(false);
  editor->RunCurrentPage();
  EXPECT_EQ(m_runs.size(), 3u);
}

TEST_F(EditorFixture, PagesAreColouredAsTheyAreShown) {
  ScriptEditor* editor = MakeEditor();
  editor->NewPage();
  editor->SetPageText(0, "/* a\nb */ for i = 1:3; print(\"x\"); end;\n");
  ScriptPage* page = editor->PageWindow(0);
  page->Colourise(0, -1);
  const std::string text = editor->PageText(0);
  EXPECT_EQ(page->GetStyleAt(static_cast<int>(text.find('b'))), kBlockComment);
  EXPECT_EQ(page->GetStyleAt(static_cast<int>(text.find("for"))), kKeyword);
  EXPECT_EQ(page->GetStyleAt(static_cast<int>(text.find("print"))), kBuiltin);
  EXPECT_EQ(page->GetStyleAt(static_cast<int>(text.find("1:3"))), kNumber);
  EXPECT_EQ(page->GetStyleAt(static_cast<int>(text.find('"'))), kString);

  // Closing the comment on the first line restyles the lines after it.
  page->InsertText(static_cast<int>(text.find('\n')), " */");
  page->Colourise(0, -1);
  EXPECT_EQ(page->GetStyleAt(page->PositionFromLine(1)), kDefault);
}

TEST_F(EditorFixture, FindAndReplace) {
  ScriptEditor* editor = MakeEditor();
  editor->NewPage();
  editor->SetPageText(0, "x = X + xx + x;\ny = x;\n");
  ScriptPage* page = editor->PageWindow(0);
  page->GotoPos(0);
  const int word = wxSTC_FIND_WHOLEWORD | wxSTC_FIND_MATCHCASE;
  ASSERT_TRUE(page->FindNextMatch("x", word, true));
  EXPECT_EQ(page->GetSelectionStart(), 0);
  ASSERT_TRUE(page->FindNextMatch("x", word, true));
  EXPECT_EQ(page->GetSelectedText(), "x");
  EXPECT_EQ(page->GetSelectionStart(), 13);
  // Backwards from there, and round the end of the text.
  ASSERT_TRUE(page->FindNextMatch("x", word, false));
  EXPECT_EQ(page->GetSelectionStart(), 0);
  ASSERT_TRUE(page->FindNextMatch("x", word, false));
  EXPECT_EQ(page->GetSelectionStart(), 20);
  EXPECT_FALSE(page->FindNextMatch("zz", 0, true));

  page->SetSelection(0, 1);
  EXPECT_TRUE(page->ReplaceMatch("x", "v", word));
  EXPECT_EQ(editor->PageText(0), "v = X + xx + x;\ny = x;\n");
  EXPECT_EQ(page->ReplaceAllMatches("x", "w", word), 2);
  EXPECT_EQ(editor->PageText(0), "v = X + xx + w;\ny = w;\n");
  EXPECT_EQ(page->ReplaceAllMatches("x", "x2", 0), 3);  // any case, inside words too
  EXPECT_EQ(editor->PageText(0), "v = x2 + x2x2 + w;\ny = w;\n");
  // One undo takes back the whole replace-all.
  page->Undo();
  EXPECT_EQ(editor->PageText(0), "v = X + xx + w;\ny = w;\n");
}

TEST_F(EditorFixture, TabInsertsTwoSpaces) {
  ScriptEditor* editor = MakeEditor();
  editor->NewPage();
  ScriptPage* page = editor->PageWindow(0);
  page->SetTextUtf8("a;");
  page->GotoPos(1);
  wxKeyEvent tab(wxEVT_KEY_DOWN);
  tab.m_keyCode = WXK_TAB;
  page->GetEventHandler()->ProcessEvent(tab);
  EXPECT_EQ(editor->PageText(0), "a  ;");
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  wxApp::SetInstance(new wxApp());
  if (!wxEntryStart(argc, argv)) return 1;
  wxTheApp->CallOnInit();
  const int result = RUN_ALL_TESTS();
  wxEntryCleanup();
  return result;
}
