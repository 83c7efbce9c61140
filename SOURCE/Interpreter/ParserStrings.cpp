// The rule of the strreplace statement.
#include "AstStrings.h"
#include "TavixParser.h"

// strreplace_statement: STRREPLACE OPAREN ID COMMA expr COMMA expr (COLON expr)? CPAREN SEMICOL
StatementPtr TavixParser::strreplace_statement(bool execute) {
  auto node = std::make_unique<StringReplaceStatement>();
  node->first = match(tok::STRREPLACE).index;
  match(tok::OPAREN, {tok::ID});
  m_bracketContext.push_back(false);
  node->name = TextOf(match(tok::ID, {tok::COMMA}));
  match(tok::COMMA, ExpressionStarters());
  node->second = expr(execute);
  match(tok::COMMA, ExpressionStarters());
  node->third = expr(execute);
  if (LA(1) == tok::COLON) {
    m_stream.Consume();
    node->rangeEnd = expr(execute);
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN, {tok::SEMICOL}).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}
