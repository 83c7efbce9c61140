// The assignment and print rules.
#include "AstStatements.h"
#include "TavixParser.h"

// assign_statement: single_assign | multi_assign (by the first token: ID or OBRCKT)
StatementPtr TavixParser::assign_statement(bool execute) {
  return LA(1) == tok::OBRCKT ? multi_assign(execute) : single_assign(execute);
}

// single_assign: id_item (OPAREN index_argument (COMMA index_argument)? CPAREN)? ASSIGN
//                rhs_matrix SEMICOL
StatementPtr TavixParser::single_assign(bool execute) {
  auto node = std::make_unique<AssignStatement>();
  IdItem target = id_item(execute);
  node->first = target.first;
  node->targetLast = target.last;
  node->path = std::move(target.path);
  target_range(*node, execute, {tok::ASSIGN});
  // A name with arguments and no "=" before the ";" is most likely a misspelled function
  // (prnit(A);): say that the name is not defined, as an expression would.
  if (LA(1) == tok::SEMICOL && !node->indices.empty() && Executing(execute) &&
      m_context.workspace().Get(node->path.front()).code == kind::UNKNOWN) {
    node->last = node->first;
    const ExecContext::StatementScope scope(m_context, node->first);
    m_context.Fail(*node, "Symbol \"" + node->path.front() + "\" is not defined.");
  }
  match(tok::ASSIGN, ExpressionStarters());
  node->value = rhs_matrix(execute);
  // Reports quote the statement up to its value, without the ";".
  node->last = node->value->last;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}

// The optional range of an assignment target: OPAREN index_argument (COMMA index_argument)?
// CPAREN, followed by one of `next`.
void TavixParser::target_range(AssignStatement& node, bool execute, const TokenSet& next) {
  if (LA(1) != tok::OPAREN) return;
  m_stream.Consume();
  m_bracketContext.push_back(false);
  node.indices.push_back(index_argument(execute));
  if (LA(1) == tok::COMMA) {
    m_stream.Consume();
    node.indices.push_back(index_argument(execute));
  }
  m_bracketContext.pop_back();
  node.targetLast = match(tok::CPAREN, next).index;
}

// print_statement: PRINT OPAREN rhs_matrix (COMMA rhs_matrix)? CPAREN SEMICOL
StatementPtr TavixParser::print_statement(bool execute) {
  auto node = std::make_unique<PrintStatement>();
  node->first = match(tok::PRINT).index;
  match(tok::OPAREN, ExpressionStarters());
  m_bracketContext.push_back(false);
  node->value = rhs_matrix(execute);
  if (LA(1) == tok::COMMA) {
    m_stream.Consume();
    node->colour = rhs_matrix(execute);
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN, {tok::SEMICOL}).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}
