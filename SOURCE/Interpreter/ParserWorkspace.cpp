// The rules of workspace statements: clear and setbinary.
#include "AstWorkspace.h"
#include "TavixParser.h"

// clear_statement: CLEAR OPAREN (ALL | MATRICES | DATASETS | MODELS | STRUCTURES | STRINGS
//                  | id_collection) CPAREN SEMICOL
// id_collection: id_item (COMMA id_item)*
StatementPtr TavixParser::clear_statement(bool execute) {
  auto node = std::make_unique<ClearStatement>();
  node->first = match(tok::CLEAR).index;
  match(tok::OPAREN, {tok::ID, tok::ALL});
  switch (LA(1)) {
    case tok::ALL:
    case tok::MATRICES:
    case tok::DATASETS:
    case tok::MODELS:
    case tok::STRUCTURES:
    case tok::STRINGS:
      node->collection = LA(1);
      m_stream.Consume();
      break;
    default:
      node->paths.push_back(id_item(execute).path);
      while (LA(1) == tok::COMMA) {
        m_stream.Consume();
        node->paths.push_back(id_item(execute).path);
      }
  }
  node->last = match(tok::CPAREN, {tok::SEMICOL}).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}

// setbinary_statement: SETBINARY OPAREN word COMMA expr CPAREN SEMICOL, where word is the
// program's name as typed (a name or a keyword such as "octave" or "jags")
StatementPtr TavixParser::setbinary_statement(bool execute) {
  auto node = std::make_unique<SetBinaryStatement>();
  node->first = match(tok::SETBINARY).index;
  match(tok::OPAREN);
  if (LA(1) == tok::STRING) {
    const std::string text = TextOf(match(tok::STRING));
    node->program = text.substr(1, text.size() - 2);
  } else if (LA(1) != tok::COMMA && LA(1) != tok::CPAREN && LA(1) != tok::END_OF_INPUT) {
    node->program = TextOf(LT(1));
    m_stream.Consume();
  }
  match(tok::COMMA, ExpressionStarters());
  m_bracketContext.push_back(false);
  node->directory = expr(execute);
  m_bracketContext.pop_back();
  node->last = match(tok::CPAREN, {tok::SEMICOL}).index;
  match(tok::SEMICOL);
  RunIfExecuting(*node, execute);
  return node;
}
