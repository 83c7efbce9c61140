// The dispatcher and its sinks: what reaches a sink, and how the console shows it.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "CheckID.h"
#include "ConsoleSink.h"
#include "EventDispatcher.h"
#include "RecordingSink.h"

TEST(EventDispatcher, ForwardsEveryCallInOrder) {
  auto sink = std::make_shared<RecordingSink>();
  EventDispatcher out(sink);
  const EventDispatcher copy = out;  // copies share the sink
  out.Print("a", true);
  copy.PrintColor("b", Colour{1, 2, 3});
  out.PrintError("c");
  out.PrintError("d", true);
  out.PrintNewLine();
  out.PrintInternalError("id_item 1");
  out.SetProgress(40);
  out.Exit();

  const auto entries = sink->Entries();
  ASSERT_EQ(entries.size(), 8u);
  EXPECT_TRUE(entries[0].style.bold);
  EXPECT_EQ(entries[1].style.colour, (Colour{1, 2, 3}));
  EXPECT_EQ(entries[2].kind, RecordingSink::Kind::Error);
  EXPECT_EQ(entries[3].kind, RecordingSink::Kind::Warning);
  EXPECT_EQ(entries[5].text, "This is a Tavix internal error: (id_item 1)");
  EXPECT_EQ(entries[5].style.colour, (Colour{200, 50, 0}));
  EXPECT_EQ(entries[6].progress.action, 1);
  EXPECT_EQ(entries[6].progress.value, 40);
  EXPECT_EQ(entries[7].action, ConsoleAction::Exit);
  EXPECT_EQ(sink->Transcript(), "abcd\nThis is a Tavix internal error: (id_item 1)");
  EXPECT_EQ(sink->Errors(), "c");

  EventDispatcher silent;  // no sink: output is dropped, nothing breaks
  silent.Print("x");
  silent.Exit();
}

TEST(ConsoleSink, PlainOnPipesAndColouredOnTerminals) {
  std::ostringstream plain;
  ConsoleSink pipe(plain, false);
  pipe.Text("one ", TextStyle{true, Colour{255, 0, 0}, std::nullopt});
  pipe.Error("two", false);
  pipe.Action(ConsoleAction::NewLine);
  pipe.Action(ConsoleAction::Clear);
  pipe.Error("three", true);
  EXPECT_EQ(plain.str(), "one two\nthree");
  EXPECT_FALSE(pipe.ExitRequested());
  pipe.Action(ConsoleAction::Exit);
  EXPECT_TRUE(pipe.ExitRequested());

  std::ostringstream coloured;
  ConsoleSink terminal(coloured, true);
  terminal.Error("bad", false);
  terminal.Error("careful", true);
  // Errors and warnings look different, and each escape is reset right after its text.
  const std::string text = coloured.str();
  const auto bad = text.find("bad");
  const auto reset = text.find("\033[0m", bad);
  ASSERT_NE(bad, std::string::npos);
  ASSERT_EQ(reset, bad + 3);
  const std::string errorEscape = text.substr(0, bad);
  const std::string warningEscape = text.substr(reset + 4, text.find("careful") - reset - 4);
  EXPECT_FALSE(errorEscape.empty());
  EXPECT_FALSE(warningEscape.empty());
  EXPECT_NE(errorEscape, warningEscape);
}

TEST(CheckID, AcceptsIdentifiersOnly) {
  for (const char* name : {"x", "_a", "alpha_1", "X9"}) EXPECT_TRUE(CheckID(name)) << name;
  for (const char* name : {"", "1x", "a-b", "a b", "a.b", "é"}) EXPECT_FALSE(CheckID(name)) << name;
}
