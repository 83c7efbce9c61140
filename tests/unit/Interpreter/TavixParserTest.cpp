// The parser framework: statement dispatch, the execute flag, reports, jobs and interrupts.
#include <gtest/gtest.h>

#include <cstdio>

#include "Dataset.h"
#include "InterpreterTestSupport.h"
#include "SystemGlobals.h"
#include "TavixParser.h"
#include "TavixStructure.h"

namespace {

// Exposes token matching for tests of the recovery reports.
class MatchingParser : public TavixParser {
public:
  using TavixParser::match;
  using TavixParser::TavixParser;
};

std::string MatchError(const std::string& code, int first, int expected, TokenSet follow = {}) {
  Session session;
  TokenStream stream(code, "\"m.tvx\"");
  MatchingParser parser(stream, session, "\"m.tvx\"", 0);
  parser.match(first);
  try {
    parser.match(expected, follow);
  } catch (const TavixError& error) {
    return error.what();
  }
  return "";
}

}  // namespace

TEST(TavixParser, EmptyScriptsAndCommentsRunNothing) {
  RecordingSession run;
  for (const char* code : {"", "   \n\t\n", "// note\n", "/* a\n b */", "/* a */ // b\n"}) {
    EXPECT_EQ(run.ErrorOf(code), "") << code;
  }
  EXPECT_TRUE(run.sink->Entries().empty());
}

TEST(TavixParser, WhatCannotStandAloneIsAnIncompleteStatement) {
  RecordingSession run;
  const std::string incomplete = "\nThis appears to be an incomplete statement.";
  EXPECT_EQ(run.ErrorOf("3;"), "Syntax error in input \"test.tvx\", line 1" + incomplete);
  EXPECT_EQ(run.ErrorOf("\n\n  pi;"), "Syntax error in input \"test.tvx\", line 3" + incomplete);
  EXPECT_EQ(run.ErrorOf(";"), "Syntax error in input \"test.tvx\", line 1" + incomplete);
  EXPECT_EQ(run.ErrorOf("\"text\";"), "Syntax error in input \"test.tvx\", line 1" + incomplete);
  EXPECT_EQ(run.ErrorOf(")"), "Syntax error in input \"test.tvx\", line 1" + incomplete);
  // The line offset is added to every line number.
  EXPECT_EQ(run.ErrorOf("\ninf;", 10), "Syntax error in input \"test.tvx\", line 12" + incomplete);
  // The value is evaluated first, so an unknown name is reported as such.
  EXPECT_EQ(run.ErrorOf("  2 + alpha;"),
            "In input \"test.tvx\", line 1\n2 + alpha ...\nSymbol \"alpha\" is not defined.");
}

TEST(TavixParser, AStatementThatNoRuleStartsIsANoViableAlternative) {
  RecordingSession run;
  // A function keyword whose family is not read here yet: no alternative of rhs_matrix.
  EXPECT_EQ(run.ErrorOf("\n range(2, 2);"),
            "Syntax error in input \"test.tvx\", line 2\nThis appears to be an incomplete statement.\n");
  // A built-in standing alone is evaluated, then reported as incomplete.
  EXPECT_EQ(run.ErrorOf("\n ones(2, 2);"),
            "Syntax error in input \"test.tvx\", line 2\nThis appears to be an incomplete statement.");
}

TEST(TavixParser, AStrayTokenAtTheTopLevelIsAnIncompleteStatement) {
  RecordingSession run;
  // A token that starts no statement ends a block's statements; at the top level it is an error
  // on its own line, after what came before it has run.
  const std::string incomplete = "\nThis appears to be an incomplete statement.\n";
  EXPECT_EQ(run.ErrorOf("end 3;"), "Syntax error in input \"test.tvx\", line 1" + incomplete);
  EXPECT_EQ(run.ErrorOf("x = 1;\n+ x;"), "Syntax error in input \"test.tvx\", line 2" + incomplete);
  EXPECT_EQ(run.ErrorOf("for (i = 1 : 2)\n  y = i;\nend\nend"), "Syntax error in input \"test.tvx\", line 4" + incomplete);
  EXPECT_EQ(run.ErrorOf("if (1 == 1)\n  y = 2;\nend"), "");
}

TEST(TavixParser, MatchReportsUnwantedMissingAndMismatchedTokens) {
  // The expected token follows the offending one: the offending one is unwanted.
  EXPECT_EQ(MatchError("a\n  b ;", tok::ID, tok::SEMICOL),
            "Syntax error in input \"m.tvx\", line 2\nunexpected input:\tb\nat position:\t\t4\n");
  // The offending token may follow the expected one: the expected one is missing.
  EXPECT_EQ(MatchError("a ;", tok::ID, tok::CPAREN, {tok::SEMICOL}),
            "Syntax error in input \"m.tvx\", line 1\nexpecting input:\t\t\t)\nat position:\t\t\t5");
  EXPECT_EQ(MatchError("a ;", tok::ID, tok::NUMBER, {tok::SEMICOL}),
            "Syntax error in input \"m.tvx\", line 1\nexpecting input of type:\t\tNUMBER\n"
            "at position:\t\t\t5");
  EXPECT_EQ(MatchError("a ;", tok::ID, tok::STRING, {tok::SEMICOL}),
            "Syntax error in input \"m.tvx\", line 1\nexpecting input of type:\t\tstring\n"
            "at position:\t\t\t5");
  // Neither: a plain mismatch reports only the first line.
  EXPECT_EQ(MatchError("a ;", tok::ID, tok::COMMA, {tok::CPAREN}),
            "Syntax error in input \"m.tvx\", line 1\n");
}

TEST(TavixParser, NamesResolveThroughStructuresDatasetsAndModels) {
  RecordingSession run;
  Workspace& ws = run.session.workspace;
  ws.Store("x", TavixValue::FromScalar(1.0));
  ws.datasets["x"] = std::make_shared<Dataset>(std::vector<std::string>{"v"},
                                                Eigen::MatrixXd::Constant(2, 1, 5.0));
  auto inner = std::make_shared<TavixStructure>();
  inner->AddMatrix("b", std::make_shared<Eigen::MatrixXd>(Eigen::MatrixXd::Constant(1, 1, 7.0)));
  auto outer = std::make_shared<TavixStructure>();
  outer->AddStructure("a", inner);
  ws.Store("s", TavixValue::FromStructure(outer));
  auto data = std::make_shared<Dataset>(std::vector<std::string>{"num"},
                                        Eigen::MatrixXd::Constant(2, 1, 3.0));
  data->AddStringVariable("town", {"Leeds", "York"});
  ws.Store("d", TavixValue::FromDataset(data));

  auto evaluate = [&](const std::string& code) {
    TokenStream stream(code, "\"t.tvx\"");
    TavixParser parser(stream, run.session, "\"t.tvx\"", 0);
    return parser.id_value(true)->Evaluate(parser.context());
  };
  // A name that is both a matrix and a dataset resolves as the matrix.
  EXPECT_EQ(evaluate("x").code, kind::MATRIX);
  EXPECT_EQ((*evaluate("s.a.b").matrix)(0, 0), 7.0);
  EXPECT_EQ(evaluate("s.a").code, kind::STRUCTURE);
  const TavixValue column = evaluate("d.num");
  ASSERT_EQ(column.code, kind::MATRIX);
  EXPECT_EQ(column.matrix->rows(), 2);

  EXPECT_EQ(run.ErrorOf("z = s.a.c;"),
            "In input \"test.tvx\", line 1\nz = s.a.c ...\nStructure \"s.a\" has no element called \"c\".");
  EXPECT_EQ(run.ErrorOf("z = d.town;"),
            "In input \"test.tvx\", line 1\nz = d.town ...\nVariable \"town\" from dataset \"d\" is a "
            "string variable and cannot be turned to a matrix.");
  EXPECT_EQ(run.ErrorOf("\nz = 1 +\n  d.y;"),
            "In input \"test.tvx\", line 2\nz = 1 +\n  d.y ...\nDataset \"d\" has no variable called \"y\".");
  EXPECT_EQ(run.ErrorOf("z = x.v;"),
            "In input \"test.tvx\", line 1\nz = x.v ...\nSymbol \"x.v\" is not defined.");
  EXPECT_EQ(run.ErrorOf("z = d.num;"), "");
  EXPECT_EQ(run.session.workspace.matrices.at("z")->rows(), 2);
}

TEST(TavixParser, ExecRunsAStatementListFromATokenAndPutsTheStreamBack) {
  Session session;
  TokenStream stream("3 + foo; 4;", "\"e.tvx\"");
  TavixParser parser(stream, session, "\"e.tvx\"", 0);
  // Reading with the flag false runs nothing, even an unknown name.
  const auto block = parser.statement_list(false);
  ASSERT_EQ(block->statements.size(), 4u);  // two expressions, two stray semicolons
  EXPECT_EQ(stream.LA(1), tok::END_OF_INPUT);
  const int end = stream.Index();
  try {
    parser.exec("statement_list", 0);
    FAIL() << "exec should run the first statement";
  } catch (const TavixError& error) {
    EXPECT_EQ(std::string(error.what()),
              "In input \"e.tvx\", line 1\n3 + foo ...\nSymbol \"foo\" is not defined.");
  }
  stream.Seek(end);
  testing::internal::CaptureStdout();
  parser.exec("bool_expr", 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "exec:\ta non-statement was passed to \"exec\"\n");
  EXPECT_EQ(stream.Index(), end);
}

TEST(TavixParser, AnInterruptStopsTheRunBeforeTheNextStatement) {
  RecordingSession run;
  run.session.interruptRequested = true;
  EXPECT_THROW(RunProgram(run.session, "3;", "\"i.tvx\"", 0), TavixInterrupted);
}

TEST(RunJob, BatchJobsPrintTheirErrorThenTheExitingLine) {
  Tavix_SYSTEM_NAMESPACE::RUN_GUI = false;
  RecordingSession run;
  EXPECT_EQ(RunJob(run.session, "// fine\n", "\"ok.tvx\"", 0), JobOutcome::Completed);
  EXPECT_EQ(run.sink->Transcript(), "\n\nTavix is exiting...\n");
  run.sink->Clear();

  EXPECT_EQ(RunJob(run.session, "\n 1 + q;", "\"bad.tvx\"", 0), JobOutcome::Failed);
  EXPECT_EQ(run.sink->Errors(), "In input \"bad.tvx\", line 2\n1 + q ...\nSymbol \"q\" is not defined.");
  EXPECT_EQ(run.sink->Transcript(),
            "In input \"bad.tvx\", line 2\n1 + q ...\nSymbol \"q\" is not defined.\n\nTavix is exiting...\n");
  EXPECT_EQ(run.sink->Entries().back().action, ConsoleAction::Exit);
  run.sink->Clear();

  // Lexer errors end the job before anything runs.
  EXPECT_EQ(RunJob(run.session, "x;\n/* open", "\"lex.tvx\"", 0), JobOutcome::Failed);
  EXPECT_EQ(run.sink->Errors(),
            "In parsing input \"lex.tvx\"\nunexpected end of input (EOF)\n(This usually indicates "
            "an unterminated multiline comment or a script file ending with a comment line)");
}

TEST(RunJob, WindowJobsRefreshTheWindowInsteadOfExiting) {
  Tavix_SYSTEM_NAMESPACE::RUN_GUI = true;
  RecordingSession run;
  EXPECT_EQ(RunJob(run.session, "", "from the GUI", 0), JobOutcome::Completed);
  const auto entries = run.sink->Entries();
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].action, ConsoleAction::DisableRun);
  EXPECT_EQ(entries[1].action, ConsoleAction::UpdateGUI);
  EXPECT_EQ(entries[2].action, ConsoleAction::EnableRun);
  Tavix_SYSTEM_NAMESPACE::RUN_GUI = false;
}

TEST(SessionStatements, TocPrintsTheTimeSinceTheLatestTimer) {
  RecordingSession run;
  ASSERT_EQ(run.ErrorOf("tic;\npause(0.02);\ntoc;\nctic;\ntoc;"), "");
  // Two lines "Elapsed time: S.SSSSSS seconds.\n"; the first saw the pause on the wall clock.
  const std::string transcript = run.sink->Transcript();
  double first = -1.0;
  double second = -1.0;
  int read = 0;
  ASSERT_EQ(std::sscanf(transcript.c_str(), "Elapsed time: %lf seconds.\nElapsed time: %lf seconds.\n%n",
                        &first, &second, &read),
            2)
      << transcript;
  EXPECT_EQ(static_cast<std::size_t>(read), transcript.size()) << transcript;
  EXPECT_GE(first, 0.02);
  EXPECT_GE(second, 0.0);
  EXPECT_EQ(transcript.find('.', transcript.find(':') + 1) + 7, transcript.find(" seconds"));
}
