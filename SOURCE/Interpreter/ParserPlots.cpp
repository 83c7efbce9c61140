// The close statement of figures (the plot statements are built-in calls).
#include "AstPlots.h"
#include "TavixParser.h"

// close_statement: CLOSE OPAREN (ALL | expr) CPAREN SEMICOL
StatementPtr TavixParser::close_statement(bool execute) {
  auto node = std::make_unique<CloseStatement>();
  node->first = match(tok::CLOSE).index;
  match(tok::OPAREN, ExpressionStarters());
  m_bracketContext.push_back(false);
  if (LA(1) == tok::ALL) {
    m_stream.Consume();
    node->all = true;
  } else {
    node->title = expr(execute);
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN, {tok::SEMICOL}).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}
