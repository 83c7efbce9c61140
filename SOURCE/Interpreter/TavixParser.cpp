// TavixParser: the program and statement rules, token matching and syntax error reports.
#include "TavixParser.h"

#include <iostream>

#include "AstStatements.h"
#include "TavixError.h"

TavixParser::TavixParser(TokenStream& stream, Session& session, std::string inputName,
                         long lineOffset)
    : m_stream(stream), m_context(session, stream, std::move(inputName), lineOffset) {}

TavixParser::TavixParser(TokenStream& stream, Session& session, Workspace& workspace,
                         std::string inputName, long lineOffset)
    : m_stream(stream), m_context(session, workspace, stream, std::move(inputName), lineOffset) {}

void TavixParser::RunIfExecuting(const Statement& statement, bool execute) {
  if (Executing(execute)) m_context.Run(statement);
}

// program: statement_list EOF. A token that starts no statement (a stray end, an operator) ends the
// list; at the top level that is an incomplete statement, not the end of the run.
void TavixParser::program() {
  statement_list(true);
  if (LA(1) != tok::END_OF_INPUT) NoViableAlt();
}

// statement_list: statement*
TavixParser::NestingGuard::NestingGuard(TavixParser& parser) : m_parser(parser) {
  if (++m_parser.m_nesting > kMaxNesting) {
    --m_parser.m_nesting;
    m_parser.ThrowSyntaxError(SyntaxErrorKind::Recognition, m_parser.LT(1), 0,
                              "Nested more than " + std::to_string(kMaxNesting) +
                                  " levels deep (parentheses, brackets, conditions and blocks)");
  }
}

std::unique_ptr<Block> TavixParser::statement_list(bool execute) {
  const NestingGuard nesting(*this);
  auto block = std::make_unique<Block>();
  block->first = m_stream.Index();
  block->last = block->first;
  const TokenSet& starters = StatementStarters();
  while (starters.Contains(LA(1))) {
    StatementPtr node = statement(execute);
    block->last = node->last;
    // Statements that ran are done with; a block that is only read keeps its nodes to run later.
    if (!Executing(execute)) block->statements.push_back(std::move(node));
  }
  return block;
}

// statement: assign_statement | print_statement | ... | general_error (chosen by LT(1))
StatementPtr TavixParser::statement(bool execute) {
  const StatementRule& entry = StatementTable()[static_cast<std::size_t>(std::max(LA(1), 0))];
  if (LA(1) < 0 || entry.rule == nullptr) NoViableAlt();
  m_followStack.push_back(StatementFollow());
  StatementPtr node = (this->*entry.rule)(execute);
  if (entry.semicolonAfter) node->last = match(tok::SEMICOL).index;
  m_followStack.pop_back();
  return node;
}

// general_error: ASSIGN | CBRCKT | CCBRCKT | COMMA | CPAREN | DOT | OCBRCKT | OPAREN | SEMICOL
//              | strcmp_bool | string_item | rhs_matrix
StatementPtr TavixParser::general_error(bool execute) {
  auto node = std::make_unique<GeneralErrorStatement>();
  node->first = m_stream.Index();
  static const TokenSet stray = {tok::ASSIGN, tok::CBRCKT,  tok::CCBRCKT, tok::COMMA, tok::CPAREN,
                                 tok::DOT,    tok::OCBRCKT, tok::OPAREN,  tok::SEMICOL};
  if (stray.Contains(LA(1))) {
    node->last = match(LA(1)).index;
  } else if (LA(1) == tok::STRCMP) {
    node->condition = strcmp_bool(execute);
    node->last = node->condition->last;
  } else {
    node->value = (LA(1) == tok::STRING) ? string_item(execute) : rhs_matrix(execute);
    node->last = node->value->last;
  }
  RunIfExecuting(*node, execute);
  return node;
}

void TavixParser::exec(const std::string& rule, int tokenIndex) {
  if (rule != "statement_list") {
    std::cout << "exec:\ta non-statement was passed to \"exec\"" << std::endl;
    return;
  }
  const int saved = m_stream.Index();
  m_stream.Seek(tokenIndex);
  statement_list(true);
  m_stream.Seek(saved);
}

const Token& TavixParser::match(int type, const TokenSet& follow) {
  const Token& current = LT(1);
  if (current.type == type) {
    m_stream.Consume();
    return current;
  }
  if (m_backtracking > 0) throw BacktrackFailure{};
  // Single-token recovery decides which report fits.
  if (LA(2) == type) ThrowSyntaxError(SyntaxErrorKind::UnwantedToken, current, type, "Unexpected token");
  const TokenSet& mayFollow =
      !follow.Empty() ? follow : (m_followStack.empty() ? TokenSet{} : m_followStack.back());
  if (mayFollow.Contains(current.type)) {
    ThrowSyntaxError(SyntaxErrorKind::MissingToken, current, type);
  }
  ThrowSyntaxError(SyntaxErrorKind::MismatchedToken, current, type);
}

void TavixParser::NoViableAlt() {
  if (m_backtracking > 0) throw BacktrackFailure{};
  ThrowSyntaxError(SyntaxErrorKind::NoViableAlt, LT(1));
}

void TavixParser::ThrowSyntaxError(SyntaxErrorKind kind, const Token& offending, int expectedType,
                                   const std::string& message) {
  SyntaxErrorInfo info;
  info.kind = kind;
  info.line = offending.line;
  info.charPositionInLine = offending.charPositionInLine;
  info.tokenText = offending.type == tok::END_OF_INPUT ? "<EOF>" : TextOf(offending);
  info.expectedType = expectedType;
  info.message = message;
  throw TavixError(
      SyntaxErrorReport(m_context.inputName(), m_context.lineOffset(), info));
}
