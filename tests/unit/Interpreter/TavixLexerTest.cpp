// The lexer: token types and texts, hidden tokens, positions, keyword families and its report.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "LexerErrorReport.h"
#include "TavixError.h"
#include "TavixLexer.h"

namespace {

// (type, text) of every on-channel token, without the end of input.
std::vector<std::pair<int, std::string>> Lex(const std::string& source) {
  TavixLexer lexer(source, "\"t\"");
  std::vector<std::pair<int, std::string>> out;
  for (const Token& token : lexer.Tokenize()) {
    if (token.channel == tok::DEFAULT_CHANNEL && token.type != tok::END_OF_INPUT) {
      out.emplace_back(token.type, source.substr(token.offset, token.length));
    }
  }
  return out;
}

std::vector<int> Types(const std::string& source) {
  std::vector<int> types;
  for (const auto& [type, text] : Lex(source)) types.push_back(type);
  return types;
}

std::string LexError(const std::string& source) {
  try {
    TavixLexer(source, "\"bad.tvx\"").Tokenize();
  } catch (const TavixError& error) {
    return error.what();
  }
  return "";
}

}  // namespace

TEST(TokenNames, TableHas206EntriesInTheRequiredOrder) {
  const std::vector<std::string> first = {"<invalid>", "<EOR>", "<DOWN>", "<UP>", "ACF",
                                          "ALL",       "AMP",   "ASSIGN", "TAVIX_TEST_STATEMENT"};
  for (std::size_t i = 0; i < first.size(); ++i) EXPECT_EQ(TavixParserTokenNames[i], first[i]);
  EXPECT_STREQ(TavixParserTokenNames[199], "ZEROS");
  EXPECT_STREQ(TavixParserTokenNames[200], "'\"constraints\"'");
  EXPECT_STREQ(TavixParserTokenNames[205], "'\"ma\"'");
  EXPECT_EQ(TokenName(tok::EXP_LOG_SQRT_ABS_TRIG), "EXP_LOG_SQRT_ABS_TRIG");
  EXPECT_EQ(TokenName(tok::END_OF_INPUT), "<EOF>");
  // Every type's name sits at the type's number in the table.
#define TAVIX_TOKEN(name) EXPECT_EQ(TokenName(tok::name), #name);
#define TAVIX_LITERAL(name, text) EXPECT_EQ(TokenName(tok::name), "'" text "'");
#include "TokenList.def"
#undef TAVIX_TOKEN
#undef TAVIX_LITERAL
  // Named tokens are in alphabetical order after the test statement.
  for (int type = tok::BETADIST + 1; type <= tok::ZEROS; ++type) {
    EXPECT_LT(std::string(TavixParserTokenNames[type - 1]), std::string(TavixParserTokenNames[type]))
        << type;
  }
}

TEST(TavixLexer, NamesNumbersAndOperators) {
  EXPECT_EQ(Types("x1_y"), std::vector<int>{tok::ID});
  EXPECT_EQ(Types("1x"), (std::vector<int>{tok::NUMBER, tok::ID}));
  for (const char* number : {"1.", ".5", "1e-3", "2.5E+10", "7E2", "42", "0.25e3"}) {
    EXPECT_EQ(Lex(number), (std::vector<std::pair<int, std::string>>{{tok::NUMBER, number}}));
  }
  EXPECT_EQ(Types("1e"), (std::vector<int>{tok::NUMBER, tok::ID}));  // an exponent needs digits
  EXPECT_EQ(Lex("1e+x"), (std::vector<std::pair<int, std::string>>{
                             {tok::NUMBER, "1"}, {tok::ID, "e"}, {tok::PLUS, "+"}, {tok::ID, "x"}}));
  EXPECT_EQ(Lex("1.5.3 ..5 3.e2"),
            (std::vector<std::pair<int, std::string>>{{tok::NUMBER, "1.5"},
                                                      {tok::NUMBER, ".3"},
                                                      {tok::DOT, "."},
                                                      {tok::NUMBER, ".5"},
                                                      {tok::NUMBER, "3.e2"}}));
  EXPECT_EQ(Types("a.*b"), (std::vector<int>{tok::ID, tok::EMULT, tok::ID}));
  EXPECT_EQ(Types("a./b.^c"), (std::vector<int>{tok::ID, tok::EDIV, tok::ID, tok::EPOW, tok::ID}));
  EXPECT_EQ(Types("a.b"), (std::vector<int>{tok::ID, tok::DOT, tok::ID}));
  EXPECT_EQ(Types("-1"), (std::vector<int>{tok::MINUS, tok::NUMBER}));
  EXPECT_EQ(Types("== <= ~= >= < > = ~"),
            (std::vector<int>{tok::COMPARISON, tok::COMPARISON, tok::COMPARISON, tok::COMPARISON,
                              tok::COMPARISON, tok::COMPARISON, tok::ASSIGN, tok::SIM}));
  EXPECT_EQ(Types("+-*/^,:;()[]{}$|&'"),
            (std::vector<int>{tok::PLUS, tok::MINUS, tok::MULT, tok::DIV, tok::POW, tok::COMMA,
                              tok::COLON, tok::SEMICOL, tok::OPAREN, tok::CPAREN, tok::OBRCKT,
                              tok::CBRCKT, tok::OCBRCKT, tok::CCBRCKT, tok::DOLLAR, tok::VERT,
                              tok::AMP, tok::PRIME}));
  EXPECT_EQ(Lex("@my_f(1)").front(), (std::pair<int, std::string>{tok::FUNCID, "@my_f"}));
}

TEST(TavixLexer, KeywordsAndFamiliesMatchOnlyTheirSpelling) {
  EXPECT_EQ(Types("if If IF"), (std::vector<int>{tok::IF, tok::ID, tok::ID}));
  EXPECT_EQ(Types("lm_re lmx lm"), (std::vector<int>{tok::MODELS1, tok::ID, tok::MODELS1}));
  EXPECT_EQ(Types("abs atan true false webimport nan pi inf min max quadrature"),
            (std::vector<int>{tok::EXP_LOG_SQRT_ABS_TRIG, tok::EXP_LOG_SQRT_ABS_TRIG,
                              tok::BTRUEFALSE, tok::BTRUEFALSE, tok::IMPORT, tok::NA, tok::PI,
                              tok::INF, tok::MINCOEFF, tok::MAXCOEFF, tok::QUAD}));
  EXPECT_EQ(Types("diff \"diff\" \"lags\" \"lag\""),
            (std::vector<int>{tok::LAGDIFF, tok::LIT_DIFF, tok::LIT_LAGS, tok::STRING}));
  EXPECT_EQ(Types("nbinomcdf tobitII_re mvprobit3 sf_lc stan set_cs"),
            (std::vector<int>{tok::BINOMDIST, tok::MODELS1, tok::MODELS3, tok::MODELS7,
                              tok::MODELSJAGSBUGSSTAN, tok::SETDATATYPE2}));
}

TEST(TavixLexer, StringsKeepTheirTextAndMaySpanLines) {
  const std::string source = "s = \"a\\tb\\\"c\nsecond\";";
  const auto tokens = Lex(source);
  ASSERT_EQ(tokens.size(), 4u);
  EXPECT_EQ(tokens[2], (std::pair<int, std::string>{tok::STRING, "\"a\\tb\\\"c\nsecond\""}));
  EXPECT_EQ(Types("\""), std::vector<int>{tok::QUOTE});  // a double quote ending the input
  EXPECT_EQ(Types("\"a\" \""), (std::vector<int>{tok::STRING, tok::QUOTE}));
  EXPECT_EQ(Lex("\"\" \"\\\\\" \"constraint\" \"constraints\"x"),
            (std::vector<std::pair<int, std::string>>{{tok::STRING, "\"\""},
                                                      {tok::STRING, "\"\\\\\""},
                                                      {tok::STRING, "\"constraint\""},
                                                      {tok::LIT_CONSTRAINTS, "\"constraints\""},
                                                      {tok::ID, "x"}}));
}

TEST(TavixLexer, HiddenTokensLinesAndPositions) {
  const std::string source = "a = 1; // note\r\n  /* b\n */ bb\t= 2;";
  TavixLexer lexer(source, "\"t\"");
  const auto tokens = lexer.Tokenize();
  std::string joined;
  int index = 0;
  for (const Token& token : tokens) {
    EXPECT_EQ(token.index, index++);
    joined += source.substr(token.offset, token.length);
    const bool hidden = token.type == tok::WHITESPACE || token.type == tok::COMMENT;
    EXPECT_EQ(token.channel, hidden ? tok::HIDDEN_CHANNEL : tok::DEFAULT_CHANNEL);
    if (token.type == tok::WHITESPACE) {
      EXPECT_EQ(token.length, 1u);
    }
  }
  EXPECT_EQ(joined, source);  // the tokens cover the text exactly
  EXPECT_EQ(tokens.back().type, tok::END_OF_INPUT);
  const auto find = [&](const std::string& text) {
    for (const Token& token : tokens) {
      if (source.substr(token.offset, token.length) == text) return token;
    }
    return Token{};
  };
  EXPECT_EQ(find("// note\r\n").type, tok::COMMENT);
  EXPECT_EQ(find("/* b\n */").line, 2);
  EXPECT_EQ(find("/* b\n */").charPositionInLine, 2);
  EXPECT_EQ(find("bb").line, 3);
  EXPECT_EQ(find("bb").charPositionInLine, 4);
  EXPECT_EQ(find("2").charPositionInLine, 9);
  EXPECT_EQ(tokens.back().line, 3);  // the end of input stands just past the last character
  EXPECT_EQ(tokens.back().charPositionInLine, 11);
  EXPECT_EQ(tokens.back().length, 0u);

  // A string spanning lines moves what follows; a carriage return alone starts no line.
  const std::string multi = "s = \"ab\r\ncd\" + x\r\ny\rz";
  const auto after = TavixLexer(multi, "\"t\"").Tokenize();
  std::vector<std::pair<int, int>> where;
  for (const Token& token : after) {
    if (token.channel == tok::DEFAULT_CHANNEL) where.emplace_back(token.line, token.charPositionInLine);
  }
  EXPECT_EQ(where, (std::vector<std::pair<int, int>>{{1, 0}, {1, 2}, {1, 4}, {2, 4}, {2, 6}, {3, 0},
                                                     {3, 2}, {3, 3}}));
}

TEST(TavixLexer, FailuresGiveTheEndOfInputReport) {
  const std::string report =
      "In parsing input \"bad.tvx\"\nunexpected end of input (EOF)\n(This usually indicates an "
      "unterminated multiline comment or a script file ending with a comment line)";
  for (const char* source : {"x = 1; # no", "a ! b", "@ f;", "@1", "s = \"open;\n", "/* open",
                             "x = 1;\n// last line", "// last line\r", "s = \"bad \\q escape\";",
                             "s = \"a\\", "x = @", "/*/", "\x80"}) {
    EXPECT_EQ(LexError(source), report) << source;
  }
  EXPECT_EQ(LexError(std::string("a\0b", 3)), report);
  EXPECT_EQ(LexError("x = 1;\n// last line\n"), "");
  EXPECT_EQ(LexError("/**/ x"), "");
  // Other messages are reported as they are.
  EXPECT_EQ(LexerErrorReport("\"in\"", "bad thing"), "In parsing input \"in\"\nbad thing");
}
