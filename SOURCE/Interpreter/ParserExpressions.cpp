// The expression rules: the right side of assignments and the values it is built from.
#include <charconv>
#include <cmath>
#include <numbers>

#include "AstExpressions.h"
#include "TavixParser.h"

namespace {

// The value of a NUMBER token; the lexer guarantees its form.
double NumberValue(std::string_view text) {
  double value = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

ExpressionPtr Literal(double value, const Token& token) {
  auto node = std::make_unique<NumberLiteral>();
  node->value = value;
  node->first = node->last = token.index;
  return node;
}

}  // namespace

// rhs_matrix: NUMBER | INF | NA | PI | id_value
ExpressionPtr TavixParser::rhs_matrix(bool execute) {
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
    case tok::ID:
      return id_value(execute);
    default:
      NoViableAlt();
  }
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
