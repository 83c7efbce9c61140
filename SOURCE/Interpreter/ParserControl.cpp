// The rules of compound statements and boolean conditions.
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
  match(tok::OPAREN, ConditionStarters());
  node->condition = bool_expr(execute);
  match(tok::CPAREN, StatementFollow());
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

// while_statement: WHILE OPAREN bool_expr CPAREN statement_list END
StatementPtr TavixParser::while_statement(bool execute) {
  auto node = std::make_unique<WhileStatement>();
  node->first = match(tok::WHILE).index;
  const bool run = Executing(execute);
  std::optional<ExecContext::StatementScope> scope;
  if (run) scope.emplace(m_context, node->first);
  match(tok::OPAREN, ConditionStarters());
  node->condition = bool_expr(execute);
  match(tok::CPAREN, StatementFollow());
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

// bool_expr: bool_signed ((AMP | VERT) bool_signed)*
BoolExpressionPtr TavixParser::bool_expr(bool execute) {
  BoolExpressionPtr first = bool_signed(execute);
  if (LA(1) != tok::AMP && LA(1) != tok::VERT) return first;
  auto chain = std::make_unique<BoolChain>();
  chain->first = first->first;
  chain->head = std::move(first);
  while (LA(1) == tok::AMP || LA(1) == tok::VERT) {
    const bool isAnd = LA(1) == tok::AMP;
    m_stream.Consume();
    BoolExpressionPtr operand = bool_signed(execute);
    chain->last = operand->last;
    chain->rest.emplace_back(isAnd, std::move(operand));
  }
  return chain;
}

// bool_signed: SIM? bool_primary
BoolExpressionPtr TavixParser::bool_signed(bool execute) {
  if (LA(1) != tok::SIM) return bool_primary(execute);
  auto node = std::make_unique<BoolNot>();
  node->first = match(tok::SIM).index;
  node->operand = bool_primary(execute);
  node->last = node->operand->last;
  return node;
}

// bool_primary: BTRUEFALSE | strcmp_bool | (OPAREN bool_expr CPAREN)=> OPAREN bool_expr CPAREN
//             | bool_simple
BoolExpressionPtr TavixParser::bool_primary(bool execute) {
  if (LA(1) == tok::BTRUEFALSE) {
    auto node = std::make_unique<BoolConstant>();
    const Token& word = match(tok::BTRUEFALSE);
    node->value = m_stream.Text(word) == "true";
    node->first = node->last = word.index;
    return node;
  }
  if (LA(1) == tok::STRCMP) return strcmp_bool(execute);
  // "(" opens either a condition or an arithmetic expression, as in (a + b) > c: try the
  // condition first without running anything.
  if (LA(1) == tok::OPAREN && Speculate([&] {
        match(tok::OPAREN);
        bool_expr(false);
        match(tok::CPAREN);
      })) {
    const Token& open = match(tok::OPAREN);
    BoolExpressionPtr inner = bool_expr(execute);
    inner->first = open.index;
    inner->last = match(tok::CPAREN).index;
    return inner;
  }
  return bool_simple(execute);
}

// bool_simple: expr COMPARISON expr
BoolExpressionPtr TavixParser::bool_simple(bool execute) {
  auto node = std::make_unique<BoolComparison>();
  node->left = expr(execute);
  node->first = node->left->first;
  const Token& op = match(tok::COMPARISON, ExpressionStarters());
  node->op = ComparisonOf(m_stream.Text(op));
  node->right = expr(execute);
  node->last = node->right->last;
  return node;
}

// strcmp_bool: STRCMP OPAREN expr COMMA expr CPAREN
BoolExpressionPtr TavixParser::strcmp_bool(bool execute) {
  auto node = std::make_unique<StrcmpCondition>();
  node->first = match(tok::STRCMP).index;
  match(tok::OPAREN, ExpressionStarters());
  m_bracketContext.push_back(false);
  node->left = expr(execute);
  match(tok::COMMA, ExpressionStarters());
  node->right = expr(execute);
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN).index;
  return node;
}
