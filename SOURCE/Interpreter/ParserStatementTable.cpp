// The statement table: which rule each first token selects. A new statement is one row here.
#include <algorithm>

#include "TavixParser.h"

namespace {

using Rule = TavixParser::StatementRule;

struct Row {
  int token;
  Rule rule;
};

// Stray punctuation, strings and string comparisons cannot stand alone as statements.
constexpr int kStrayTokens[] = {
    tok::ASSIGN, tok::CBRCKT, tok::CCBRCKT, tok::COMMA, tok::CPAREN, tok::DOT, tok::OCBRCKT,
    tok::OPAREN, tok::SEMICOL, tok::STRCMP, tok::STRING,
};

// Neither can the values and functions that start an expression.
constexpr int kValueTokens[] = {
    tok::NUMBER, tok::INF, tok::NA, tok::PI, tok::BETADIST, tok::BETAFUNC, tok::BETAINC,
    tok::BINOMDIST, tok::CEIL, tok::CHI2DIST, tok::CHOL, tok::COLS, tok::CORR, tok::COV, tok::DET,
    tok::DIAG, tok::DRCHRND, tok::EVDIST, tok::EXPDIST, tok::EXP_LOG_SQRT_ABS_TRIG, tok::EYE,
    tok::FDIST, tok::FLOOR, tok::GAMDIST, tok::GAMMAFUNC, tok::GAMMAINC, tok::GROUPSTATS, tok::INV,
    tok::INVPD, tok::IWISHRND, tok::KRON, tok::LAGDIFF, tok::LOGISTICDIST, tok::LOGITNDIST,
    tok::LOGNDIST, tok::LOGSUMEXP, tok::MAXCOEFF, tok::MEAN, tok::MEDIAN, tok::MINCOEFF, tok::MOD,
    tok::MVGAMMA, tok::MVNRND, tok::NORMDIST, tok::NTHREADS, tok::ONES, tok::POISSONDIST,
    tok::RANGE, tok::REPMAT, tok::RESHAPE, tok::RND_CAT, tok::RND_F_P, tok::RND_NN_R, tok::RND_P,
    tok::RND_P_P, tok::RND_TRUNC, tok::ROUND, tok::ROWS, tok::SD, tok::SIZE, tok::SORT,
    tok::SORTROWS, tok::STRFIND, tok::STRLENGTH, tok::SUM, tok::TABULATE, tok::TDIST, tok::TRACE,
    tok::TRUNCNDIST, tok::UNIFRND, tok::VAR, tok::WBLDIST, tok::WISHRND, tok::ZEROS,
};

// Statements, by first token. Rules with `true` match their terminating ";" after the rule.
const Row kStatementRows[] = {
    {tok::ID, {&TavixParser::assign_statement, false}},
    {tok::OBRCKT, {&TavixParser::assign_statement, false}},
    {tok::PRINT, {&TavixParser::print_statement, false}},
    {tok::IF, {&TavixParser::if_statement, false}},
    {tok::WHILE, {&TavixParser::while_statement, false}},
    {tok::FOR, {&TavixParser::for_statement, false}},
    {tok::FUNCTION, {&TavixParser::function_run, false}},
    {tok::FUNCID, {&TavixParser::function_call, true}},
    {tok::MTHREAD, {&TavixParser::mthread_statement, true}},
    {tok::TIC, {&TavixParser::tictoc_statement, false}},
    {tok::CTIC, {&TavixParser::tictoc_statement, false}},
    {tok::TOC, {&TavixParser::tictoc_statement, false}},
    {tok::EVAL, {&TavixParser::system_statement, false}},
    {tok::PAUSE, {&TavixParser::system_statement, false}},
    {tok::RUN, {&TavixParser::system_statement, false}},
    {tok::SYSTEM, {&TavixParser::system_statement, false}},
    {tok::CLC, {&TavixParser::control_statement, false}},
    {tok::GETWD, {&TavixParser::control_statement, false}},
    {tok::WHO, {&TavixParser::control_statement, false}},
    {tok::SEED, {&TavixParser::control_statement, false}},
    {tok::STRREPLACE, {&TavixParser::strreplace_statement, false}},
    {tok::SUMMARY, {&TavixParser::builtin_statement, false}},
    {tok::SORTDATA, {&TavixParser::builtin_statement, false}},
    {tok::SETDATATYPE1, {&TavixParser::builtin_statement, false}},
    {tok::SETDATATYPE2, {&TavixParser::builtin_statement, false}},
    {tok::RENAME, {&TavixParser::builtin_statement, false}},
    {tok::KEEPDROPIF, {&TavixParser::keepdrop_statement, false}},
    {tok::CLEAR, {&TavixParser::clear_statement, false}},
    {tok::SETBINARY, {&TavixParser::setbinary_statement, false}},
    {tok::EXPORT, {&TavixParser::builtin_statement, false}},
    {tok::SAVE, {&TavixParser::builtin_statement, false}},
    {tok::LOAD, {&TavixParser::builtin_statement, false}},
    {tok::MAXFIGURES, {&TavixParser::control_statement, false}},
    {tok::SETWD, {&TavixParser::control_statement, false}},
    {tok::PLOT, {&TavixParser::builtin_statement, false}},
    {tok::SCATTER, {&TavixParser::builtin_statement, false}},
    {tok::HIST, {&TavixParser::builtin_statement, false}},
    {tok::KDEN, {&TavixParser::builtin_statement, false}},
    {tok::ACF, {&TavixParser::builtin_statement, false}},
    {tok::MULTIPLOT, {&TavixParser::builtin_statement, false}},
    {tok::SUBPLOT, {&TavixParser::builtin_statement, false}},
    {tok::CLOSE, {&TavixParser::close_statement, false}},
    {tok::MODELS1, {&TavixParser::model_statement, false}},
    {tok::MODELS2, {&TavixParser::model_statement, false}},
    {tok::MODELS3, {&TavixParser::model_statement, false}},
    {tok::MODELS4, {&TavixParser::model_statement, false}},
    {tok::MODELS5, {&TavixParser::model_statement, false}},
    {tok::MODELS6, {&TavixParser::model_statement, false}},
    {tok::MODELS7, {&TavixParser::model_statement, false}},
    {tok::MODELSJAGSBUGSSTAN, {&TavixParser::model_statement, false}},
    {tok::DIAGNOSTICS, {&TavixParser::print_assign_matrix, false}},
    {tok::MFX, {&TavixParser::print_assign_matrix, false}},
    {tok::TEST, {&TavixParser::print_assign_matrix, false}},
    {tok::IRF, {&TavixParser::plot_assign_statement, false}},
    {tok::PLOTDRAWS, {&TavixParser::plot_assign_statement, false}},
    {tok::FORECAST, {&TavixParser::forecast_statement, false}},
    {tok::PREDICT, {&TavixParser::predict_statement, false}},
    {tok::PMP, {&TavixParser::comparing_statement, false}},
    {tok::STABTEST, {&TavixParser::stabtest_statement, false}},
    {tok::STORE, {&TavixParser::store_statement, false}},
};

std::array<Rule, tok::TOKEN_TYPE_COUNT> BuildTable() {
  std::array<Rule, tok::TOKEN_TYPE_COUNT> table{};
  for (int token : kStrayTokens) table[token] = Rule{&TavixParser::general_error, false};
  for (int token : kValueTokens) table[token] = Rule{&TavixParser::general_error, false};
  for (const Row& row : kStatementRows) {
    if (row.rule.rule != nullptr) table[row.token] = row.rule;
  }
  return table;
}

}  // namespace

const std::array<TavixParser::StatementRule, tok::TOKEN_TYPE_COUNT>& TavixParser::StatementTable() {
  static const auto table = BuildTable();
  return table;
}

const TokenSet& TavixParser::StatementStarters() {
  static const TokenSet starters = [] {
    TokenSet set;
    const auto& table = StatementTable();
    for (int type = 0; type < tok::TOKEN_TYPE_COUNT; ++type) {
      if (table[type].rule != nullptr) set.Add(type);
    }
    return set;
  }();
  return starters;
}

const TokenSet& TavixParser::StatementFollow() {
  static const TokenSet follow = [] {
    TokenSet set = StatementStarters();
    set |= TokenSet{tok::END, tok::ELSE, tok::END_OF_INPUT};
    return set;
  }();
  return follow;
}

const TokenSet& TavixParser::ExpressionStarters() {
  static const TokenSet starters = [] {
    TokenSet set = {tok::ID,   tok::OBRCKT,  tok::OPAREN, tok::PLUS,      tok::MINUS,
                    tok::STRING, tok::FUNCID, tok::PLOT, tok::SCATTER, tok::HIST,
                    tok::KDEN, tok::ACF,     tok::MULTIPLOT, tok::MTHREAD};
    for (int token : kValueTokens) set.Add(token);
    return set;
  }();
  return starters;
}

const TokenSet& TavixParser::ConditionStarters() {
  static const TokenSet starters = [] {
    TokenSet set = ExpressionStarters();
    set |= TokenSet{tok::SIM, tok::BTRUEFALSE, tok::STRCMP};
    return set;
  }();
  return starters;
}
