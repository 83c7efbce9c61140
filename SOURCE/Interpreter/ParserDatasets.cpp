// The rules of statements that change datasets.
#include "AstDatasets.h"
#include "TavixParser.h"

// keepdrop_statement: KEEPDROPIF OPAREN logical_expr (COMMA STRING ASSIGN ID)* CPAREN SEMICOL
StatementPtr TavixParser::keepdrop_statement(bool execute) {
  auto node = std::make_unique<KeepDropStatement>();
  const Token& word = match(tok::KEEPDROPIF);
  node->first = word.index;
  node->keep = TextOf(word) == "keepif";
  match(tok::OPAREN, ExpressionStarters());
  m_bracketContext.push_back(false);
  node->condition = logical_expr(execute);
  while (LA(1) == tok::COMMA) {
    m_stream.Consume();
    const std::string option = TextOf(match(tok::STRING, {tok::ASSIGN}));
    match(tok::ASSIGN, {tok::ID});
    const Token& value = match(tok::ID, {tok::COMMA, tok::CPAREN});
    node->options.push_back({option.substr(1, option.size() - 2), TextOf(value)});
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN, {tok::SEMICOL}).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}
