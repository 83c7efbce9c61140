// The rule of built-in function calls: a function keyword, its arguments and named options.
#include "AstBuiltins.h"
#include "TavixParser.h"

bool TavixParser::IsOptionName(int type) {
  switch (type) {
    case tok::STRING: case tok::LIT_CONSTRAINTS: case tok::LIT_PREFIX: case tok::LIT_STATS:
    case tok::LIT_DIFF: case tok::LIT_LAGS: case tok::LIT_MA:
      return true;
    default:
      return false;
  }
}

bool TavixParser::StartsBuiltin() const {
  return FindBuiltin(std::string(m_stream.Text(LT(1)))) != nullptr;
}

// name_list: OCBRCKT (ID | STRING) (COMMA (ID | STRING))* CCBRCKT | ID
ExpressionPtr TavixParser::name_list() {
  auto node = std::make_unique<NameListExpression>();
  if (LA(1) == tok::ID) {
    const Token& name = match(tok::ID);
    node->names.push_back(TextOf(name));
    node->first = node->last = name.index;
    return node;
  }
  node->first = match(tok::OCBRCKT).index;
  do {
    if (!node->names.empty()) match(tok::COMMA, {tok::ID, tok::STRING});
    if (LA(1) == tok::STRING) {
      const std::string text = TextOf(match(tok::STRING));
      node->names.push_back(text.substr(1, text.size() - 2));
    } else {
      node->names.push_back(TextOf(match(tok::ID, {tok::COMMA, tok::CCBRCKT})));
    }
  } while (LA(1) == tok::COMMA);
  node->last = match(tok::CCBRCKT).index;
  return node;
}

// option_value: BTRUEFALSE | name_list | expr (true and false stand for 1 and 0; a list in braces
// is a list of names or strings, such as a legend)
ExpressionPtr TavixParser::option_value(bool execute) {
  if (LA(1) == tok::OCBRCKT) return name_list();
  if (LA(1) != tok::BTRUEFALSE) return expr(execute);
  const Token& word = match(tok::BTRUEFALSE);
  auto node = std::make_unique<NumberLiteral>();
  node->value = TextOf(word) == "true" ? 1.0 : 0.0;
  node->first = node->last = word.index;
  return node;
}

// builtin_statement: builtin_function SEMICOL, for the built-ins that act rather than yield
StatementPtr TavixParser::builtin_statement(bool execute) {
  auto node = std::make_unique<BuiltinStatement>();
  node->call = builtin_function(execute);
  node->first = node->call->first;
  node->last = node->call->last;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}

// builtin_function: keyword OPAREN (expr | name_list) (COMMA (expr | name_list))* (COLON expr)? (COMMA STRING ASSIGN expr)*
//                   CPAREN
// The keyword's row fixes how many positional arguments it takes and whether options may follow;
// a call with a number of arguments the function does not take is a syntax error.
std::unique_ptr<BuiltinCallExpression> TavixParser::builtin_function(bool execute) {
  auto node = std::make_unique<BuiltinCallExpression>();
  const Token& word = LT(1);
  node->keyword = TextOf(word);
  node->row = FindBuiltin(node->keyword);
  if (!node->row) NoViableAlt();
  m_stream.Consume();
  node->first = word.index;
  match(tok::OPAREN, ExpressionStarters());
  m_bracketContext.push_back(false);
  const BuiltinRow& row = *node->row;
  const int most = row.MaxArguments();
  const bool optionFirst = IsOptionName(LA(1)) && LA(2) == tok::ASSIGN;
  const bool noArguments = row.Accepts(0) && (LA(1) == tok::CPAREN || (row.namedOptions && optionFirst));
  while (!noArguments && static_cast<int>(node->arguments.size()) < most) {
    const bool bareName = ((row.nameArguments >> node->arguments.size()) & 1u) != 0 && LA(1) == tok::ID;
    node->arguments.push_back(LA(1) == tok::OCBRCKT || bareName ? name_list() : expr(execute));
    const int count = static_cast<int>(node->arguments.size());
    if (row.rangeLast && count == most) {
      match(tok::COLON, ExpressionStarters());
      node->arguments.push_back(expr(execute));
    }
    const bool optionNext = LA(1) == tok::COMMA && IsOptionName(LA(2)) && LA(3) == tok::ASSIGN;
    const bool ends = LA(1) != tok::COMMA || (row.namedOptions && optionNext);
    if (count == most || (row.Accepts(count) && ends)) break;
    // A count the function does not take: the next argument is required.
    match(tok::COMMA, ExpressionStarters());
  }
  while (row.namedOptions && (LA(1) == tok::COMMA || (node->arguments.empty() && optionFirst &&
                                                      node->options.empty()))) {
    if (LA(1) == tok::COMMA) m_stream.Consume();
    const Token& name = IsOptionName(LA(1)) ? LT(1) : match(tok::STRING, {tok::ASSIGN});
    if (IsOptionName(LA(1))) m_stream.Consume();
    match(tok::ASSIGN, ExpressionStarters());
    std::string text = TextOf(name);
    node->options.push_back({text.substr(1, text.size() - 2), option_value(execute)});
  }
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN).index;
  return node;
}
