// The main window under a virtual X server: typed commands, a script page with an error, the
// panes after a job, the busy warning, stopping a long loop, and a screenshot of the window.
#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/dcmemory.h>
#include <wx/dcscreen.h>
#include <wx/evtloop.h>
#include <wx/image.h>

#include "FigureWindow.h"
#include "ScriptEditor.h"
#include "TavixConsole.h"
#include "TavixFrame.h"
#include "WorkspacePanes.h"

namespace {

class TestApp : public wxApp {
public:
  bool OnInit() override { return true; }
};

wxEventLoop* g_loop = nullptr;

// Handles the window's events until `done` holds or `seconds` pass; false on a time-out.
bool PumpUntil(const std::function<bool()>& done, double seconds = 20.0) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < end) {
    wxTheApp->ProcessPendingEvents();
    while (g_loop->Pending()) g_loop->Dispatch();
    if (done()) {
      wxTheApp->ProcessPendingEvents();
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

// One window for every test, as a user has it: jobs follow each other on one workspace.
class MainWindow : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    static int argc = 1;
    static char name[] = "tavix_gui_tests";
    static char* argv[] = {name, nullptr};
    wxApp::SetInstance(new TestApp);
    ASSERT_TRUE(wxEntryStart(argc, argv));
    wxTheApp->CallOnInit();
    g_loop = new wxEventLoop;
    wxEventLoop::SetActive(g_loop);
    wxImage::AddHandler(new wxPNGHandler);
    s_directory = std::filesystem::temp_directory_path() / "tavix_gui_test";
    std::filesystem::create_directories(s_directory);
    s_frame = new TavixFrame(nullptr, TAVIX_BINARY_DIR);
    s_frame->SetQuietWarnings(true);
    s_frame->Show();
    PumpUntil([] { return false; }, 0.5);
  }
  static void TearDownTestSuite() {
    s_frame->Destroy();
    PumpUntil([] { return false; }, 0.2);
    wxEntryCleanup();
  }
  // Types `code` into the console and presses Enter, then waits for the job to end.
  static void Type(const std::string& code) {
    s_frame->Console()->SetInput(code);
    s_frame->Console()->SubmitInput();
    ASSERT_TRUE(PumpUntil([] { return !s_frame->JobRunning(); }));
  }
  static std::string Console() { return s_frame->Console()->OutputText(); }

  static TavixFrame* s_frame;
  static std::filesystem::path s_directory;
};

TavixFrame* MainWindow::s_frame = nullptr;
std::filesystem::path MainWindow::s_directory;

TEST_F(MainWindow, TypedCommandsAreEchoedRunAndListed) {
  Type("a = [1 2; 3 4];\nprint(a * 2);");
  const std::string text = Console();
  EXPECT_NE(text.find(">> a = [1 2; 3 4];"), std::string::npos) << text;
  EXPECT_NE(text.find("a * 2 =\n  2  4\n  6  8"), std::string::npos) << text;
  EXPECT_EQ(s_frame->Matrices()->Names(), std::vector<std::string>{"a"});
  ASSERT_FALSE(s_frame->Console()->History().empty());
  EXPECT_EQ(s_frame->Console()->History().back(), "a = [1 2; 3 4];\nprint(a * 2);");

  Type("d = dataset([1 2; 3 4], {u, v});\nm = lm(u ~ constant v, \"draws\" = 200, \"burnin\" = 20);");
  EXPECT_EQ(s_frame->Datasets()->Names(), std::vector<std::string>{"d"});
  EXPECT_EQ(s_frame->Models()->Names(), std::vector<std::string>{"m"});
  EXPECT_NE(Console().find("Linear regression model (LM)"), std::string::npos);
}

// Enter under a block without its end adds a line, as the terminal waits; the block runs once its
// end is typed (or on Enter under an empty line).
TEST_F(MainWindow, EnterWaitsForTheEndOfABlock) {
  TavixConsole& console = *s_frame->Console();
  console.SetInput("for (k = 1 : 2)");
  console.PressKey(WXK_RETURN);
  EXPECT_FALSE(s_frame->JobRunning());
  EXPECT_EQ(console.Input(), "for (k = 1 : 2)\n");
  console.SetInput("for (k = 1 : 2)\n  print(k * 10);");
  console.PressKey(WXK_RETURN);
  EXPECT_EQ(console.Input(), "for (k = 1 : 2)\n  print(k * 10);\n");
  EXPECT_EQ(Console().find("k * 10 ="), std::string::npos);
  console.SetInput("for (k = 1 : 2)\n  print(k * 10);\nend");
  console.PressKey(WXK_RETURN);
  ASSERT_TRUE(PumpUntil([] { return !s_frame->JobRunning(); }));
  EXPECT_NE(Console().find("k * 10 =\n  20"), std::string::npos) << Console();
  EXPECT_EQ(console.Input(), "");
  // Unfinished text runs under an empty line, and reports what is missing.
  console.SetInput("x = [1 2\n");
  console.PressKey(WXK_RETURN);
  ASSERT_TRUE(PumpUntil([] { return !s_frame->JobRunning(); }));
  EXPECT_EQ(console.Input(), "");
}

TEST_F(MainWindow, ScriptPageErrorsNameThePageAndItsLine) {
  ScriptEditor* editor = s_frame->Editor();
  editor->NewPage();
  const int page = editor->PageCount() - 1;
  editor->SetPageText(page, "x = 1;\ny = x + 1;\nz = y + w;\n");
  editor->RunCurrentPage();
  ASSERT_TRUE(PumpUntil([] { return !s_frame->JobRunning(); }));
  const std::string caption = editor->PageCaption(page).utf8_string();
  const std::string name = caption.substr(0, caption.find(" *"));
  EXPECT_NE(Console().find("In input \"" + name + "\", line 3\nz = y + w ...\nSymbol \"w\" is not defined."),
            std::string::npos)
      << Console();
  // The statements before the error took effect and the pane shows them.
  const auto names = s_frame->Matrices()->Names();
  EXPECT_NE(std::find(names.begin(), names.end(), "y"), names.end());
}

TEST_F(MainWindow, BusyWarningAndStoppingALongLoop) {
  s_frame->PrintAndRun("k = 0;\nwhile (k > -1)\n  k = k + 1;\nend");
  ASSERT_TRUE(s_frame->JobRunning());
  PumpUntil([] { return false; }, 0.3);
  const int before = s_frame->BusyWarnings();
  s_frame->PrintAndRun("print(1);");
  EXPECT_EQ(s_frame->BusyWarnings(), before + 1);
  EXPECT_TRUE(s_frame->JobRunning());

  wxCommandEvent stop(wxEVT_STOP_EXECUTION, kFrameEventId);
  s_frame->GetEventHandler()->ProcessEvent(stop);
  EXPECT_FALSE(s_frame->JobRunning());
  PumpUntil([] { return false; }, 0.3);
  EXPECT_NE(Console().find("Operation interrupted."), std::string::npos);
  // The loop's variable kept what it held before the interrupted statement; the window goes on.
  const auto& k = s_frame->GetSession().workspace.matrices.at("k");
  EXPECT_GT((*k)(0, 0), 0.0);
  Type("done = k;");
  const auto names = s_frame->Matrices()->Names();
  EXPECT_NE(std::find(names.begin(), names.end(), "done"), names.end());
}

TEST_F(MainWindow, ShellCommandsPrintTheirOutputThroughTheWindow) {
  Type("system(\"echo from-the-shell\");");
  EXPECT_NE(Console().find("Output from system console:\n\nfrom-the-shell"), std::string::npos) << Console();
}

// A plot statement opens a window drawn at its size; close removes it; a figure's window closed
// by the user leaves the session's figures.
TEST_F(MainWindow, FiguresOpenInWindowsAndClose) {
  Type("seed(4);\nfx = hist(normrnd(0, 1, 1000, 1), \"title\" = \"Normal draws\");");
  const auto& title = *s_frame->GetSession().workspace.strings.at("fx");
  FigureWindow* window = s_frame->FigureWindowOf(title);
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->GetTitle().utf8_string(), title);
  ASSERT_TRUE(PumpUntil([&] { return window->Picture().IsOk(); }, 5.0));
  const wxBitmap picture = window->Picture();
  EXPECT_GT(picture.GetWidth(), 300);
  wxImage image = picture.ConvertToImage();
  image.SaveFile(wxString::FromUTF8(std::string(TAVIX_BINARY_DIR) + "/figure_window.png"), wxBITMAP_TYPE_PNG);
  // The picture is not blank: it holds more than the background's colour.
  bool varied = false;
  for (int y = 0; y < image.GetHeight() && !varied; y += 7) {
    for (int x = 0; x < image.GetWidth() && !varied; x += 7) {
      varied = image.GetRed(x, y) != image.GetRed(0, 0) || image.GetBlue(x, y) != image.GetBlue(0, 0);
    }
  }
  EXPECT_TRUE(varied);

  Type("close(fx);");
  EXPECT_EQ(s_frame->FigureWindowOf(title), nullptr);
  Type("g = plot([1 3 2]);");
  const auto& second = *s_frame->GetSession().workspace.strings.at("g");
  ASSERT_NE(s_frame->FigureWindowOf(second), nullptr);
  s_frame->FigureWindowOf(second)->Close();
  PumpUntil([] { return false; }, 0.2);
  EXPECT_EQ(s_frame->GetSession().figures.Find(second), nullptr);
}

// plotdraws opens a window of the model's draws (every parameter when none is named), as the
// models pane's "Plot Draws" asks; its picture is kept beside the test for a person to look at.
TEST_F(MainWindow, DrawsOfAModelOpenInAFigureWindow) {
  Type("seed(5);\nq = dataset([normrnd(0, 1, 200, 2)], {u, v});\n"
       "mq = lm(u ~ constant v, \"draws\" = 1000, \"burnin\" = 100, \"chains\" = 2, \"dataset\" = q);\n"
       "plotdraws(\"model\" = mq);");
  const std::string text = Console();
  const std::size_t at = text.find("Draws of u$constant, u$v and tau of model \"mq\" in \"");
  ASSERT_NE(at, std::string::npos) << text;
  const std::size_t start = text.find('"', text.find(" in \"", at)) + 1;
  const std::string title = text.substr(start, text.find('"', start) - start);
  FigureWindow* window = s_frame->FigureWindowOf(title);
  ASSERT_NE(window, nullptr) << title;
  window->SetSize(1100, 800);
  ASSERT_TRUE(PumpUntil([&] { return window->Picture().IsOk() && window->Picture().GetWidth() > 900; }, 5.0));
  EXPECT_TRUE(window->Picture().ConvertToImage().SaveFile(
      wxString::FromUTF8(std::string(TAVIX_BINARY_DIR) + "/plotdraws_window.png"), wxBITMAP_TYPE_PNG));
  Type("diagnostics(\"model\" = mq);");
  EXPECT_NE(Console().find("R-hat"), std::string::npos);
}

// Not a check: the window as a user sees it, saved beside the test for a person to look at.
TEST_F(MainWindow, Screenshot) {
  Type("seed(3);\nfirms = dataset([normrnd(0, 1, 500, 2), round(unifrnd(500, 1) * 10)], {sales, costs, staff});\n"
       "m = lm(sales ~ constant costs staff, \"draws\" = 2000, \"burnin\" = 500, \"dataset\" = firms);");
  ScriptEditor* editor = s_frame->Editor();
  editor->NewPage();
  editor->SetPageText(editor->PageCount() - 1,
                      "// A regression on simulated firms\nseed(3);\nn = 500;\nx = normrnd(0, 1, n, 1);\n"
                      "y = 1 + 0.5 * x + normrnd(0, 0.3, n, 1);\nd = dataset([y, x], {y, x});\n"
                      "m = lm(y ~ constant x, \"chains\" = 2);\nprint(m.post_mean);\n");
  wxCommandEvent viewer(wxEVT_MENU, ids::ViewDataGrid);
  s_frame->GetEventHandler()->ProcessEvent(viewer);
  PumpUntil([] { return false; }, 0.5);
  const wxRect area = s_frame->GetScreenRect();
  wxScreenDC screen;
  wxBitmap shot(area.width, area.height);
  wxMemoryDC memory(shot);
  memory.Blit(0, 0, area.width, area.height, &screen, area.x, area.y);
  memory.SelectObject(wxNullBitmap);
  const std::string file = std::string(TAVIX_BINARY_DIR) + "/main_window.png";
  EXPECT_TRUE(shot.SaveFile(wxString::FromUTF8(file), wxBITMAP_TYPE_PNG));
}

}  // namespace
