// The expression rules, loosest binding first: expr, term, factor, postfix_expr, signed_expr,
// primary_expr, and the values they are built from.
#include <charconv>
#include <cmath>
#include <numbers>

#include "AstExpressions.h"
#include "AstFunctions.h"
#include "AstParallelCalls.h"
#include "NumberText.h"
#include "ParallelCalls.h"
#include "TavixParser.h"

namespace {

// The value of a NUMBER token; the lexer guarantees its form.
double NumberValue(std::string_view text) {
  double value = 0.0;
  TextToDouble(text, value);
  return value;
}

ExpressionPtr Literal(double value, const Token& token) {
  auto node = std::make_unique<NumberLiteral>();
  node->value = value;
  node->first = node->last = token.index;
  return node;
}

BinaryOperator OperatorOf(int type) {
  switch (type) {
    case tok::PLUS: return BinaryOperator::Add;
    case tok::MINUS: return BinaryOperator::Subtract;
    case tok::MULT: return BinaryOperator::Multiply;
    case tok::DIV: return BinaryOperator::Divide;
    case tok::EMULT: return BinaryOperator::ElementMultiply;
    case tok::EDIV: return BinaryOperator::ElementDivide;
    case tok::POW: return BinaryOperator::Power;
    default: return BinaryOperator::ElementPower;
  }
}

}  // namespace

ExpressionPtr TavixParser::Binary(ExpressionPtr left, const Token& op, ExpressionPtr right) {
  auto node = std::make_unique<BinaryExpression>();
  node->op = OperatorOf(op.type);
  node->opText = TextOf(op);
  node->first = left->first;
  node->last = right->last;
  node->left = std::move(left);
  node->right = std::move(right);
  return node;
}

bool TavixParser::SignStartsNewElement() const {
  if (m_bracketContext.empty() || !m_bracketContext.back()) return false;
  const Token& op = LT(1);
  if (op.type != tok::PLUS && op.type != tok::MINUS) return false;
  // Inside a matrix literal "[a -b]" has two elements and "[a - b]" one: a sign with a blank
  // before it and none after starts a new element.
  const bool blankBefore = op.index > 0 && m_stream.Get(op.index - 1).channel != tok::DEFAULT_CHANNEL;
  const bool blankAfter = m_stream.Get(op.index + 1).channel != tok::DEFAULT_CHANNEL;
  return blankBefore && !blankAfter;
}

// rhs_matrix: model | expr
ExpressionPtr TavixParser::rhs_matrix(bool execute) {
  return StartsModel() ? model(execute) : expr(execute);
}

// expr: term (add_oper term)*
ExpressionPtr TavixParser::expr(bool execute) {
  const NestingGuard nesting(*this);
  ExpressionPtr left = term(execute);
  while ((LA(1) == tok::PLUS || LA(1) == tok::MINUS) && !SignStartsNewElement()) {
    const Token& op = LT(1);
    m_stream.Consume();
    left = Binary(std::move(left), op, term(execute));
  }
  return left;
}

// term: factor (mlt_oper factor)*
ExpressionPtr TavixParser::term(bool execute) {
  static const TokenSet multiplicative = {tok::MULT, tok::DIV, tok::EMULT, tok::EDIV};
  ExpressionPtr left = factor(execute);
  while (multiplicative.Contains(LA(1))) {
    const Token& op = LT(1);
    m_stream.Consume();
    left = Binary(std::move(left), op, factor(execute));
  }
  return left;
}

// factor: add_oper? postfix_expr
ExpressionPtr TavixParser::factor(bool execute) {
  if (LA(1) != tok::PLUS && LA(1) != tok::MINUS) return postfix_expr(execute);
  const Token& sign = LT(1);
  m_stream.Consume();
  auto node = std::make_unique<UnaryExpression>();
  node->negate = sign.type == tok::MINUS;
  node->operand = postfix_expr(execute);
  node->first = sign.index;
  node->last = node->operand->last;
  return node;
}

// postfix_expr: primary_expr pst_oper* (pow_oper signed_expr)?
ExpressionPtr TavixParser::postfix_expr(bool execute) {
  ExpressionPtr base = Transposed(primary_expr(execute));
  if (LA(1) != tok::POW && LA(1) != tok::EPOW) return base;
  const Token& op = LT(1);
  m_stream.Consume();
  return Binary(std::move(base), op, signed_expr(execute));
}

// signed_expr: add_oper? primary_expr pst_oper*
ExpressionPtr TavixParser::signed_expr(bool execute) {
  if (LA(1) != tok::PLUS && LA(1) != tok::MINUS) return Transposed(primary_expr(execute));
  const Token& sign = LT(1);
  m_stream.Consume();
  auto node = std::make_unique<UnaryExpression>();
  node->negate = sign.type == tok::MINUS;
  node->operand = Transposed(primary_expr(execute));
  node->first = sign.index;
  node->last = node->operand->last;
  return node;
}

// pst_oper: PRIME, applied as often as it is written.
ExpressionPtr TavixParser::Transposed(ExpressionPtr operand) {
  if (LA(1) != tok::PRIME) return operand;
  auto node = std::make_unique<TransposeExpression>();
  node->first = operand->first;
  node->times = 0;
  while (LA(1) == tok::PRIME) {
    node->last = match(tok::PRIME).index;
    ++node->times;
  }
  node->operand = std::move(operand);
  return node;
}

// primary_expr: OPAREN expr CPAREN | tavix_value
ExpressionPtr TavixParser::primary_expr(bool execute) {
  if (LA(1) != tok::OPAREN) return tavix_value(execute);
  const Token& open = match(tok::OPAREN);
  m_bracketContext.push_back(false);
  ExpressionPtr inner = expr(execute);
  m_bracketContext.pop_back();
  const Token& close = match(tok::CPAREN);
  // The parentheses belong to the construct's text.
  inner->first = open.index;
  inner->last = close.index;
  return inner;
}

// tavix_value: NUMBER | INF | NA | PI | NTHREADS | STRING | block_matrix | id_value_range
//            | function_call_value | mthread_call | builtin_function
ExpressionPtr TavixParser::tavix_value(bool execute) {
  switch (LA(1)) {
    case tok::NUMBER: {
      const Token& token = match(tok::NUMBER);
      return Literal(NumberValue(m_stream.Text(token)), token);
    }
    case tok::INF:
      return Literal(INFINITY, match(tok::INF));
    case tok::NA:
      return Literal(NAN, match(tok::NA));
    case tok::PI:
      return Literal(std::numbers::pi, match(tok::PI));
    case tok::STRING:
      return string_item(execute);
    case tok::OBRCKT:
      return block_matrix(execute);
    case tok::ID:
      return id_value_range(execute);
    case tok::FUNCID:
      return function_call_value(execute);
    case tok::MTHREAD:
      return mthread_call(execute);
    case tok::NTHREADS:
      return Literal(HardwareThreads(), match(tok::NTHREADS));
    default:
      if (StartsBuiltin()) return builtin_function(execute);
      NoViableAlt();
  }
}

// block_matrix: OBRCKT (row (SEMICOL row)*)? CBRCKT
// row: expr ((COMMA)? expr)*
ExpressionPtr TavixParser::block_matrix(bool execute) {
  auto node = std::make_unique<BlockMatrixExpression>();
  node->first = match(tok::OBRCKT).index;
  m_bracketContext.push_back(true);
  node->rows.emplace_back();
  while (LA(1) != tok::CBRCKT) {
    if (LA(1) == tok::SEMICOL) {
      m_stream.Consume();
      node->rows.emplace_back();
      continue;
    }
    if (LA(1) == tok::COMMA && !node->rows.back().empty()) m_stream.Consume();
    node->rows.back().push_back(expr(execute));
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CBRCKT).index;
  return node;
}

// id_value_range: id_value (OPAREN index (COMMA index)? CPAREN)?
ExpressionPtr TavixParser::id_value_range(bool execute) {
  ExpressionPtr name = id_value(execute);
  if (LA(1) != tok::OPAREN) return name;
  auto node = std::make_unique<IndexExpression>();
  node->first = name->first;
  node->target = std::move(name);
  match(tok::OPAREN);
  m_bracketContext.push_back(false);
  node->arguments.push_back(index_argument(execute));
  if (LA(1) == tok::COMMA) {
    m_stream.Consume();
    node->arguments.push_back(index_argument(execute));
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN).index;
  return node;
}

// index_argument: COLON | expr (COLON expr)?
std::unique_ptr<IndexArgument> TavixParser::index_argument(bool execute) {
  auto argument = std::make_unique<IndexArgument>();
  argument->first = LT(1).index;
  if (LA(1) == tok::COLON && (LA(2) == tok::COMMA || LA(2) == tok::CPAREN)) {
    argument->all = true;
    argument->last = match(tok::COLON).index;
    return argument;
  }
  argument->from = expr(execute);
  argument->last = argument->from->last;
  if (LA(1) == tok::COLON) {
    m_stream.Consume();
    argument->to = expr(execute);
    argument->last = argument->to->last;
  }
  return argument;
}

// string_item: STRING
ExpressionPtr TavixParser::string_item(bool) {
  const Token& token = match(tok::STRING);
  auto node = std::make_unique<StringLiteral>();
  const std::string_view text = m_stream.Text(token);
  node->text = std::string(text.substr(1, text.size() - 2));
  node->first = node->last = token.index;
  return node;
}
