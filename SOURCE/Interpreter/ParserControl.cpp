// The rules of compound statements: if, while and for.
#include <optional>

#include "AstControl.h"
#include "TavixParser.h"

// if_statement: IF OPAREN bool_expr CPAREN statement_list (ELSE statement_list)? END
StatementPtr TavixParser::if_statement(bool execute) {
  auto node = std::make_unique<IfStatement>();
  node->first = match(tok::IF).index;
  const bool run = Executing(execute);
  std::optional<ExecContext::StatementScope> scope;
  if (run) scope.emplace(m_context, node->first);
  node->condition = condition_in_parentheses(execute);
  // The condition is decided as soon as it is read; the first block runs before the else block
  // is read.
  const bool holds = run && node->condition->Test(m_context);
  node->then = statement_list(false);
  if (holds) node->then->Run(m_context);
  if (LA(1) == tok::ELSE) {
    m_stream.Consume();
    node->otherwise = statement_list(false);
    if (run && !holds) node->otherwise->Run(m_context);
  }
  node->last = match(tok::END).index;
  return node;
}

// condition_in_parentheses: OPAREN bool_expr CPAREN
BoolExpressionPtr TavixParser::condition_in_parentheses(bool execute) {
  match(tok::OPAREN, ConditionStarters());
  BoolExpressionPtr condition = bool_expr(execute);
  match(tok::CPAREN, StatementFollow());
  return condition;
}

// while_statement: WHILE OPAREN bool_expr CPAREN statement_list END
StatementPtr TavixParser::while_statement(bool execute) {
  auto node = std::make_unique<WhileStatement>();
  node->first = match(tok::WHILE).index;
  const bool run = Executing(execute);
  std::optional<ExecContext::StatementScope> scope;
  if (run) scope.emplace(m_context, node->first);
  node->condition = condition_in_parentheses(execute);
  const bool holds = run && node->condition->Test(m_context);
  node->body = statement_list(false);
  node->last = match(tok::END).index;
  if (run) node->Loop(m_context, holds);
  return node;
}

// for_statement: FOR OPAREN ID ASSIGN expr COLON expr CPAREN statement_list END
StatementPtr TavixParser::for_statement(bool execute) {
  auto node = std::make_unique<ForStatement>();
  node->first = match(tok::FOR).index;
  match(tok::OPAREN, {tok::ID});
  node->variable = TextOf(match(tok::ID, {tok::ASSIGN}));
  match(tok::ASSIGN, ExpressionStarters());
  m_bracketContext.push_back(false);
  node->from = expr(execute);
  match(tok::COLON, ExpressionStarters());
  node->to = expr(execute);
  m_bracketContext.pop_back();
  match(tok::CPAREN, StatementFollow());
  node->body = statement_list(false);
  node->last = match(tok::END).index;
  // Bounds are checked and the loop runs once the whole statement has been read.
  if (Executing(execute)) {
    ExecContext::StatementScope scope(m_context, node->first);
    node->Execute(m_context);
  }
  return node;
}

