// The rules of conditions: boolean conditions (one truth value) and logical conditions (one truth
// value per element).
#include "AstConditions.h"
#include "TavixParser.h"

template <class Chain, class Operand, class Rule>
std::unique_ptr<Operand> TavixParser::Chained(std::unique_ptr<Operand> head, Rule next) {
  if (LA(1) != tok::AMP && LA(1) != tok::VERT) return head;
  auto chain = std::make_unique<Chain>();
  chain->first = head->first;
  chain->head = std::move(head);
  while (LA(1) == tok::AMP || LA(1) == tok::VERT) {
    const bool isAnd = LA(1) == tok::AMP;
    m_stream.Consume();
    std::unique_ptr<Operand> operand = next();
    chain->last = operand->last;
    chain->rest.emplace_back(isAnd, std::move(operand));
  }
  return chain;
}

template <class Not, class Rule>
auto TavixParser::Negated(Rule primary) -> decltype(primary()) {
  if (LA(1) != tok::SIM) return primary();
  auto node = std::make_unique<Not>();
  node->first = match(tok::SIM).index;
  node->operand = primary();
  node->last = node->operand->last;
  return node;
}

template <class Comparison>
std::unique_ptr<Comparison> TavixParser::Compared(bool execute) {
  auto node = std::make_unique<Comparison>();
  node->left = expr(execute);
  node->first = node->left->first;
  const Token& op = match(tok::COMPARISON, ExpressionStarters());
  node->op = ComparisonOf(m_stream.Text(op));
  node->right = expr(execute);
  node->last = node->right->last;
  return node;
}

template <class Rule>
auto TavixParser::Parenthesised(Rule rule, int kind, bool execute) -> decltype(rule(execute)) {
  // "(" opens either a condition or an arithmetic expression, as in (a + b) > c: try the
  // condition first without running anything. The answer for a position is kept, so nested
  // parentheses are tried once each rather than once per enclosing attempt.
  if (LA(1) != tok::OPAREN) return nullptr;
  const long long key = static_cast<long long>(m_stream.Index()) * 2 + kind;
  auto known = m_speculations.find(key);
  if (known == m_speculations.end()) {
    const bool parses = Speculate([&] {
      match(tok::OPAREN);
      rule(false);
      match(tok::CPAREN);
    });
    known = m_speculations.emplace(key, parses).first;
  }
  if (!known->second) return nullptr;
  const Token& open = match(tok::OPAREN);
  auto inner = rule(execute);
  inner->first = open.index;
  inner->last = match(tok::CPAREN).index;
  return inner;
}

// bool_expr: bool_signed ((AMP | VERT) bool_signed)*
BoolExpressionPtr TavixParser::bool_expr(bool execute) {
  const NestingGuard nesting(*this);
  return Chained<BoolChain>(bool_signed(execute), [&] { return bool_signed(execute); });
}

// bool_signed: SIM? bool_primary
BoolExpressionPtr TavixParser::bool_signed(bool execute) {
  return Negated<BoolNot>([&] { return bool_primary(execute); });
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
  if (BoolExpressionPtr inner = Parenthesised([&](bool e) { return bool_expr(e); }, 0, execute)) {
    return inner;
  }
  return bool_simple(execute);
}

// bool_simple: expr COMPARISON expr
BoolExpressionPtr TavixParser::bool_simple(bool execute) {
  return Compared<BoolComparison>(execute);
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

// logical_expr: logical_signed ((AMP | VERT) logical_signed)*
LogicalExpressionPtr TavixParser::logical_expr(bool execute) {
  const NestingGuard nesting(*this);
  return Chained<LogicalChain>(logical_signed(execute), [&] { return logical_signed(execute); });
}

// logical_signed: SIM? logical_primary
LogicalExpressionPtr TavixParser::logical_signed(bool execute) {
  return Negated<LogicalNot>([&] { return logical_primary(execute); });
}

// logical_primary: (OPAREN logical_expr CPAREN)=> OPAREN logical_expr CPAREN | logical_simple
LogicalExpressionPtr TavixParser::logical_primary(bool execute) {
  if (LogicalExpressionPtr inner = Parenthesised([&](bool e) { return logical_expr(e); }, 1, execute)) {
    return inner;
  }
  return logical_simple(execute);
}

// logical_simple: expr COMPARISON expr
LogicalExpressionPtr TavixParser::logical_simple(bool execute) {
  return Compared<LogicalComparison>(execute);
}
